// Letters are changed in passes: a pass goes over the word once from left to right and sees what it has written itself on
// its left, and what the pass before has left on its right.
#include "dicttool/letter_changes.hpp"

#include <algorithm>

#include "data/utf8.hpp"

namespace lexon {

namespace {

// Written in front of every ending, and taken out when all passes are through.
constexpr char32_t kBoundary = U'+';
constexpr std::string_view kBlanks = " \t";

std::string_view trimmed_of(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// The next word; words in parentheses are one, blanks and all, with what stands directly behind.
std::string_view take_word(std::string_view& text) {
  text = trimmed_of(text);
  std::size_t end = 0;
  // "(a b)*" is one word: the sign behind the parenthesis belongs to it.
  if (text.starts_with('(')) end = std::min(text.find(')'), text.size());
  end = std::min(text.find_first_of(kBlanks, end), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

}  // namespace

Letters letters_of(std::string_view text) {
  Letters letters;
  while (!text.empty()) {
    const Utf8Character c = utf8_first(text);
    // A byte that is no character keeps its value beyond all characters.
    letters += c.is_valid ? static_cast<char32_t>(c.code) : static_cast<char32_t>(0x110000 + c.code);
    text.remove_prefix(c.length);
  }
  return letters;
}

// UTF-8, and bytes that were no characters as they came.
void letters_append(std::u32string_view letters, std::string& text) {
  for (const char32_t c : letters) {
    if (c >= 0x110000) {
      text += static_cast<char>(c - 0x110000);
    } else if (c < 0x80) {
      text += static_cast<char>(c);
    } else if (c < 0x800) {
      text += static_cast<char>(0xC0 | c >> 6);
      text += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      text += static_cast<char>(0xE0 | c >> 12);
      text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      text += static_cast<char>(0xF0 | c >> 18);
      text += static_cast<char>(0x80 | (c >> 12 & 0x3F));
      text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      text += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
}

std::string LetterChanges::read(std::string_view line) {
  const std::string_view kind = take_word(line);
  if (kind == "pass") {
    if (!trimmed_of(line).empty()) return "nothing stands behind \"pass\"";
    passes_.emplace_back();
    return {};
  }
  if (kind == "letters") {
    const std::string_view name = take_word(line);
    Letters set;
    while (!trimmed_of(line).empty()) {
      const Letters letter = letters_of(take_word(line));
      if (letter.size() != 1) return "a set has single letters, with blanks between them";
      set += letter;
    }
    if (name.empty() || set.empty()) return "write letters NAME a b c";
    std::sort(set.begin(), set.end());  // searched by halves in fits()
    if (!sets_.emplace(name, set).second)
      return "the set " + std::string(name) + " is there already: choose another name";
    return {};
  }
  // Changes in front of the first "pass" make one of their own.
  if (passes_.empty()) passes_.emplace_back();
  return read_change(line);
}

// The text is split at "->", at " / " and at the "_" of the context that stands alone. What is put in (FROM is "0")
// wants a context, or it would be put in everywhere.
std::string LetterChanges::read_change(std::string_view text) {
  Change change;
  const std::size_t arrow = text.find("->");
  if (arrow == std::string_view::npos) return "write change FROM -> TO, or change FROM -> TO / LEFT _ RIGHT";
  std::string_view behind = text.substr(arrow + 2);
  // With blanks around it, since "/" may be a letter.
  const std::size_t slash = behind.find(" / ");
  const std::string_view context = slash == std::string_view::npos ? std::string_view() : behind.substr(slash + 3);
  behind = behind.substr(0, slash);
  if (std::string fault = read_letters(trimmed_of(text.substr(0, arrow)), change.from); !fault.empty()) return fault;
  if (std::string fault = read_letters(trimmed_of(behind), change.to); !fault.empty()) return fault;
  // All letters of a set may become one.
  if (change.to.size() == 1) change.to.resize(change.from.size(), change.to.front());
  // Each letter of the one set becomes the letter at the same place in the other.
  if (change.from.size() != change.to.size()) return "the sets on both sides of -> have not the same number of letters";
  if (slash != std::string_view::npos) {
    std::size_t place = std::string_view::npos;
    for (std::size_t i = 0; i < context.size(); ++i) {
      const bool stands_alone = context[i] == '_' &&
                                (i == 0 || kBlanks.find(context[i - 1]) != std::string_view::npos) &&
                                (i + 1 == context.size() || kBlanks.find(context[i + 1]) != std::string_view::npos);
      if (stands_alone) place = i;
    }
    // Of several that stand alone the last one counts.
    if (place == std::string_view::npos) return "the context has no place: write LEFT _ RIGHT";
    if (std::string fault = read_context(context.substr(0, place), true, change.left); !fault.empty()) return fault;
    if (std::string fault = read_context(context.substr(place + 1), false, change.right); !fault.empty()) return fault;
  }
  const bool inserts = change.from.front().empty();
  if (inserts && change.left.elements.empty() && change.right.elements.empty()) {
    return "what is put in needs a context: write change 0 -> TO / LEFT _ RIGHT";
  }
  // Letters with which no change begins are passed over quickly.
  Pass& pass = passes_.back();
  for (const Letters& from : change.from) {
    pass.inserts = pass.inserts || from.empty();
    // Of what is put in there is no first letter, which `inserts` remembers.
    pass.begins += from.substr(0, 1);
  }
  std::sort(pass.begins.begin(), pass.begins.end());
  pass.changes.push_back(std::move(change));
  return {};
}

// A word, which is one item, or a set in parentheses, whose words are the items; "0" is an empty item.
std::string LetterChanges::read_letters(std::string_view text, std::vector<Letters>& letters) const {
  if (text.starts_with('(')) {
    if (!text.ends_with(')')) return "this set is not closed: write ) behind its last letter";
    std::string_view inside = text.substr(1, text.size() - 2);
    while (!trimmed_of(inside).empty()) {
      const std::string_view word = take_word(inside);
      letters.push_back(word == "0" ? Letters() : letters_of(word));
    }
  } else if (text.find_first_of(kBlanks) == std::string_view::npos && !text.empty()) {
    letters.push_back(text == "0" ? Letters() : letters_of(text));
  }
  return letters.empty() ? "letters are missing here, without blanks between them: write 0 for none" : std::string();
}

// A word of several letters gives an element for each. The elements are kept from the place outwards, so those on the
// left are turned round.
std::string LetterChanges::read_context(std::string_view text, bool is_left, Context& context) const {
  while (!trimmed_of(text).empty()) {
    std::string_view word = take_word(text);
    Element element;
    // Alone the two signs are letters.
    if (word.size() > 1 && (word.ends_with('?') || word.ends_with('*'))) {
      element.may_miss = true;
      element.may_repeat = word.ends_with('*');
      word.remove_suffix(1);
    }
    if (word.starts_with('(')) {
      if (!word.ends_with(')')) return "this set is not closed: write ) behind its last letter";
      std::vector<Letters> letters;
      if (std::string fault = read_letters(word, letters); !fault.empty()) return fault;
      for (const Letters& letter : letters) {
        if (letter.size() != 1) return "a set has single letters, with blanks between them";
        element.set += letter;
      }
      std::sort(element.set.begin(), element.set.end());
    } else if (word == "#") {
      element.is_edge = true;
    } else if (const auto set = sets_.find(word); set != sets_.end()) {
      element.set = set->second;
    } else {
      const Letters letters = letters_of(word);
      const bool is_one = letters.size() == 1;
      if (!is_one && element.may_miss) return "? and * stand behind one letter or a set: part the letters with blanks";
      // The last letter of the word is the element itself, those in front of it are elements of their own.
      for (std::size_t i = 0; !is_one && i + 1 < letters.size(); ++i) {
        Element one;
        one.set = letters.substr(i, 1);
        context.elements.push_back(std::move(one));
      }
      element.set = letters.substr(letters.size() - 1);
    }
    context.names_boundary = context.names_boundary || element.set.find(kBoundary) != Letters::npos;
    context.elements.push_back(std::move(element));
  }
  if (is_left) std::reverse(context.elements.begin(), context.elements.end());
  return {};
}

// Does `text`, all that stands on that side of the place, fit the elements from `number` on? An element that may miss
// is first tried as missing, which is where the search branches.
bool LetterChanges::fits(const Context& context, std::size_t number, std::u32string_view text, bool is_left) {
  while (number < context.elements.size()) {
    const Element& element = context.elements[number];
    // A context that does not name the boundary does not see it.
    while (!context.names_boundary && !text.empty() && (is_left ? text.back() : text.front()) == kBoundary) {
      is_left ? text.remove_suffix(1) : text.remove_prefix(1);
    }
    if (element.is_edge) {
      // The edge of the word takes no letter.
      const bool is_at_edge = text.empty();
      if (!is_at_edge) return false;
      ++number;
      continue;
    }
    if (element.may_miss && fits(context, number + 1, text, is_left)) return true;
    if (text.empty()) return false;
    const char32_t letter = is_left ? text.back() : text.front();
    if (!std::binary_search(element.set.begin(), element.set.end(), letter)) return false;
    is_left ? text.remove_suffix(1) : text.remove_prefix(1);
    // One that may repeat stays, and ends when it is tried as missing.
    if (!element.may_repeat) ++number;
  }
  return true;
}

void LetterChanges::apply(Letters& word) const {
  // `out` is what the pass has written, `rest` from `at` on what is still to come.
  Letters out;
  for (const Pass& pass : passes_) {
    out.clear();
    const std::u32string_view rest = word;
    std::size_t at = 0;
    const auto change_here = [&](bool inserts) {
      for (const Change& change : pass.changes) {
        // Its first item decides whether a change puts something in.
        if (change.from.front().empty() != inserts) continue;
        for (std::size_t i = 0; i < change.from.size(); ++i) {
          const Letters& from = change.from[i];
          const bool is_here = rest.substr(at).starts_with(from);
          if (!is_here || !fits(change.left, 0, out, true) ||
              !fits(change.right, 0, rest.substr(at + from.size()), false))
            continue;
          // The first change that fits here is the one; the pass goes on behind what it took.
          out += change.to[i];
          at += from.size();
          return true;
        }
      }
      return false;
    };
    // Something may be put in at every place, the end included, before the letter there is looked at.
    while (true) {
      if (pass.inserts) change_here(true);
      if (at == rest.size()) break;
      const bool may_change = std::binary_search(pass.begins.begin(), pass.begins.end(), rest[at]);
      if (!may_change || !change_here(false)) out += rest[at++];
    }
    word.swap(out);
  }
  // The boundaries have served their purpose.
  word.erase(std::remove(word.begin(), word.end(), kBoundary), word.end());
}

}  // namespace lexon
