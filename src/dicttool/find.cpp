// Two ways to the records: a search for a headword or concept word asks the index, as a run does; every other search
// reads the dictionary from its beginning to its end. The conditions are the same on both ways.
#include "dicttool/find.hpp"

#include <algorithm>
#include <optional>

#include "data/chain.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/utf8.hpp"
#include "data/words.hpp"
#include "dict/dictionary.hpp"
#include "dict/entry_text.hpp"
#include "dicttool/entry_line.hpp"
#include "dicttool/record_scan.hpp"

namespace lexon {

namespace {

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A character for each code; a byte that is none stands for itself.
std::wstring wide(std::string_view text) {
  std::wstring out;
  while (!text.empty()) {
    const Utf8Character character = utf8_first(text);
    out += static_cast<wchar_t>(character.code);
    text.remove_prefix(character.length);
  }
  return out;
}

// A regular expression over characters, not bytes, so that "." is one letter of any alphabet. Texts of ASCII alone take
// the faster way over bytes, if the expression is ASCII too.
class Expression {
 public:
  explicit Expression(const std::string& text) : wide_(wide(text), kKind) {
    if (is_ascii(text)) narrow_.emplace(text, kKind);
  }

  [[nodiscard]] bool is_in(std::string_view text) const {
    // Both expressions are the same, so either answers for a text of ASCII.
    if (narrow_ && is_ascii(text)) return std::regex_search(text.begin(), text.end(), *narrow_);
    return std::regex_search(wide(text), wide_);
  }

 private:
  static constexpr auto kKind = std::regex_constants::ECMAScript | std::regex_constants::optimize;
  std::wregex wide_;
  std::optional<std::regex> narrow_;
};

// Is it one of the attributes of a list? Commas and blanks part them, but those in parentheses.
bool has_attribute(std::string_view list, std::string_view name) {
  std::size_t begin = 0;
  int depth = 0;
  for (std::size_t i = 0; i <= list.size(); ++i) {
    const bool parts = i == list.size() || (depth == 0 && (list[i] == ',' || list[i] == ' ' || list[i] == '\t'));
    if (!parts) {
      // An attribute may have parentheses with commas in them.
      depth += list[i] == '(' ? 1 : list[i] == ')' ? -1 : 0;
      continue;
    }
    if (list.substr(begin, i - begin) == name && i > begin) return true;
    begin = i + 1;
  }
  return false;
}

// What is asked for, held against one record after the other; writes those that fit.
class Search {
 public:
  Search(Session& session, const FindQuery& query, std::FILE* out)
      : session_(session), query_(query), out_(out), expressions_(query.regexes.begin(), query.regexes.end()) {}

  // `word`: what the record was made of; may be null. False: no more are wanted.
  bool take(const RecordView& record, const WordEntry* word) {
    if (!fits(record)) return true;
    ++count_;
    if (query_.count_only) return true;
    // A record without a text form can only come from a damaged or foreign dictionary; as a word it can still be shown.
    if (entry_line_write(session_, record, line_)) {
      std::fwrite(line_.data(), 1, line_.size(), out_);
    } else if (word != nullptr) {
      Output printed(out_);
      entry_print(printed, word, "");
    } else {
      ++unwritable_;
    }
    return query_.limit == 0 || count_ < query_.limit;
  }

  [[nodiscard]] std::int64_t count() const { return count_; }
  [[nodiscard]] std::int64_t unwritable() const { return unwritable_; }

 private:
  [[nodiscard]] bool fits(const RecordView& record) const {
    // A look-up gives records of this key alone; a scan gives all, and a second key is held against them here.
    if (query_.wants_hw && record.hw != query_.hw) return false;
    if (query_.wants_cw && record.cw != query_.cw) return false;
    for (const std::string& name : query_.attributes) {
      const bool is_forbidden = name.starts_with('^');
      if (has_attribute(record.attrs, std::string_view(name).substr(is_forbidden ? 1 : 0)) == is_forbidden)
        return false;
    }
    const std::string_view text = record_key(record, query_.field);
    const auto begins = [text](const std::string& prefix) { return text.starts_with(prefix); };
    const auto matches = [text](const std::string& glob) { return glob_matches(glob, text); };
    const auto holds = [text](const Expression& expression) { return expression.is_in(text); };
    return std::all_of(query_.prefixes.begin(), query_.prefixes.end(), begins) &&
           std::all_of(query_.globs.begin(), query_.globs.end(), matches) &&
           std::all_of(expressions_.begin(), expressions_.end(), holds);
  }

  Session& session_;
  const FindQuery& query_;
  std::FILE* out_;
  std::vector<Expression> expressions_;  // those of the query, compiled
  std::string line_;                     // kept for its memory
  std::int64_t count_ = 0;               // records that fit
  std::int64_t unwritable_ = 0;          // of these, records that could not be written
};

// By one of the two keys that every dictionary has, in the order in which a run would try the words.
bool look_up(Session& session, const Dictionary& opened, const FindQuery& query, Search& search, std::FILE* log) {
  LookupGroup* groups = nullptr;
  const int key_field = query.wants_hw ? kKeyHw : kKeyCw;
  const std::string& key = query.wants_hw ? query.hw : query.cw;
  if (const Status s = dict_lookup(session, opened.files(), key_field, key.c_str(), groups); s != Status::ok) {
    std::fprintf(log, "%s: the lookup failed with status %d: damaged, or without this key\n", opened.path.c_str(),
                 code(s));
    return false;
  }
  WordEntry* words = nullptr;
  groups_flatten(session, groups, words);
  entry_list_sort(words);
  for (const WordEntry& word : chain<&WordEntry::next>(words)) {
    // The word is handed on, as its record may have no text form.
    if (!search.take(record_of(word), &word)) break;
  }
  // The words lay in the pool of the session, which nothing else uses here.
  session.pool.release_all();
  return true;
}

// The range of an expression in brackets behind `at`: where it ends, and whether the character is in it. None if it is
// not closed. A "]" at the beginning is a letter of it, and a "-" at the end, as in the shell.
struct Range {
  std::size_t end;
  bool holds;
};
std::optional<Range> range_read(std::string_view pattern, std::size_t at, std::uint32_t c) {
  std::size_t i = at + 1;
  // The shell writes "!", and expressions "^"; both are taken.
  const bool is_negated = i < pattern.size() && (pattern[i] == '!' || pattern[i] == '^');
  if (is_negated) ++i;
  bool holds = false;
  for (bool is_first = true; i < pattern.size() && (is_first || pattern[i] != ']'); is_first = false) {
    const Utf8Character from = utf8_first(pattern.substr(i));
    i += from.length;
    std::uint32_t to = from.code;
    // A "-" in front of the closing bracket is a letter.
    if (i + 1 < pattern.size() && pattern[i] == '-' && pattern[i + 1] != ']') {
      const Utf8Character last = utf8_first(pattern.substr(i + 1));
      to = last.code;
      i += 1 + last.length;
    }
    holds = holds || (c >= from.code && c <= to);
  }
  if (i >= pattern.size()) return std::nullopt;
  return Range{i + 1, holds != is_negated};
}

}  // namespace

// From left to right. Where the pattern does not take a character, the last star takes one more instead, and the
// pattern goes on behind it; no star further left has to be tried again.
bool glob_matches(std::string_view pattern, std::string_view text) {
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t p = 0;
  std::size_t t = 0;
  std::size_t star = kNone;  // the last one, and how far the text was taken for it
  std::size_t taken = 0;
  while (t < text.size()) {
    const Utf8Character c = utf8_first(text.substr(t));
    // A star takes nothing at first.
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      taken = t;
      continue;
    }
    std::size_t behind = kNone;  // where the pattern goes on if it takes this character
    if (p < pattern.size()) {
      const std::optional<Range> range = pattern[p] == '[' ? range_read(pattern, p, c.code) : std::nullopt;
      // A backslash at the end of the pattern is a letter.
      const bool is_escape = pattern[p] == '\\' && p + 1 < pattern.size();
      const std::size_t at = is_escape ? p + 1 : p;
      const Utf8Character wanted = utf8_first(pattern.substr(at));
      if (range) {
        if (range->holds) behind = range->end;
      } else if ((!is_escape && pattern[p] == '?') || wanted.code == c.code) {
        behind = at + wanted.length;
      }
    }
    if (behind != kNone) {
      p = behind;
      t += c.length;
    } else if (star != kNone) {
      taken += utf8_first(text.substr(taken)).length;
      t = taken;
      p = star + 1;
    } else {
      return false;
    }
  }
  // Stars at the end may stand for nothing.
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

FindResult dictionary_find(Session& session, const std::string& path, const FindQuery& query, std::FILE* out,
                           std::FILE* log) {
  Dictionary opened;
  if (!dictionary_open(path, PairCheck::quick, opened)) {
    std::fprintf(log, "%s\n", opened.fault.c_str());
    return FindResult::failed;
  }
  // Compiling an expression can throw, and is told as a fault of the option.
  std::optional<Search> search;
  try {
    search.emplace(session, query, out);
  } catch (const std::regex_error& error) {
    std::fprintf(log, "--regex: %s\n", error.what());
    return FindResult::failed;
  }
  bool is_good = true;
  // An expression is compiled above, and may still turn out too complex for a text.
  try {
    is_good = query.wants_hw || query.wants_cw
                  ? look_up(session, opened, query, *search, log)
                  : records_scan(opened, log, [&search](const RecordView& record, std::int64_t) {
                      return search->take(record, nullptr);
                    });
  } catch (const std::regex_error& error) {
    std::fprintf(log, "--regex: this expression takes too long: %s\n", error.what());
    return FindResult::failed;
  }
  // A look-up notes it in the session and ends early, with what it has found so far.
  if (must_leave(session) == Status::memory) {
    std::fprintf(log, "memory is exhausted\n");
    return FindResult::failed;
  }
  if (query.count_only) std::fprintf(out, "%lld\n", static_cast<long long>(search->count()));
  if (search->unwritable() != 0) {
    std::fprintf(log, "%s: %lld of these have no text form\n", path.c_str(),
                 static_cast<long long>(search->unwritable()));
  }
  if (!is_good || !is_written(out)) return FindResult::failed;
  return search->count() == 0 ? FindResult::nothing : FindResult::found;
}

}  // namespace lexon
