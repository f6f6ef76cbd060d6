// UniMorph, the expansions of lttoolbox, CoNLL-U, WordNet and PropBank. Each reader finds form, lemma and a bundle of features in
// its lines; what follows is the same for all.
#include "dicttool/word_import.hpp"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "data/session.hpp"
#include "data/utf8.hpp"
#include "dicttool/propbank.hpp"
#include "dicttool/text_fields.hpp"

namespace lexon {

namespace {

namespace fs = std::filesystem;

// Reads one kind of list and writes entries. Features become attributes by the table; a word whose features the table
// leaves out is counted, and a line that cannot be read is told, and the rest goes on.
class Importer {
 public:
  Importer(Session& session, const WordImport& options, std::FILE* out, std::FILE* log, WordImportFigures& figures)
      : options_(options), form_(form_of(options)), output_(session, form_, out), log_(log), figures_(figures) {}

  bool run() {
    // Without its tables an import would name attributes wrongly, so nothing is written then.
    if (!read_tables()) return false;
    bool is_whole = true;
    if (options_.format == WordFormat::wordnet) {
      is_whole = read_wordnet();
    } else if (options_.format == WordFormat::propbank) {
      is_whole = read_propbank();
    } else {
      for (const std::string& path : options_.inputs) is_whole = read_list(path) && is_whole;
    }
    // The other formats have written each word as it came.
    if (options_.format == WordFormat::conllu) write_counted();
    figures_.entries = output_.written();
    figures_.repeated = output_.known();
    tell_rest();
    return is_whole;
  }

 private:
  static bool has_senses(WordFormat format) { return format == WordFormat::wordnet || format == WordFormat::propbank; }

  static EntryForm form_of(const WordImport& options) {
    EntryForm form = options.form;
    if (form.cw.empty()) form.cw = has_senses(options.format) ? "{lemma}(>{category})" : "{lemma}";
    return form;
  }

  void tell(const std::string& text) { std::fprintf(log_, "%s\n", text.c_str()); }

  // The text of a file, whose lines are counted from now on. False, and told, if it cannot be read.
  bool file_take(const std::string& path, std::string& text) {
    std::string reason;
    path_ = path;
    number_ = 0;
    const bool is_read = text_read(path, text, reason);
    if (!is_read) tell(path + ": " + reason);
    return is_read;
  }

  bool read_tables() {
    std::vector<std::string> faults;
    // The table of the program comes first; rows of the user's tables take the place of its rows.
    table_.read(shipped_table(options_.format), faults);
    for (const std::string& path : options_.tables) {
      std::string text;
      if (!file_take(path, text)) return false;
      table_.read(text, faults);
      for (const std::string& fault : faults) std::fprintf(log_, "%s:%s\n", path.c_str(), fault.c_str());
      if (!faults.empty()) return false;
    }
    return true;
  }

  void bad_line(const char* what) {
    // A file of another format would else fill the screen with its lines.
    if (++figures_.bad_lines <= kShownLines) tell(path_ + ':' + std::to_string(number_) + ": " + what);
  }

  // One word of any list: its features, with ";" between them, become attributes, and it is written.
  void take(std::string_view form, std::string_view lemma, std::string_view category, const std::string& bundle,
            std::uint32_t frequency = 0) {
    // None: the table says that words with one of these features are to be left out.
    const std::optional<std::string> attributes = table_.attributes(bundle);
    if (!attributes) {
      ++figures_.left_out;
      return;
    }
    const EntryOutput::Result result = output_.write(
        {.form = form, .lemma = lemma, .category = category, .attributes = *attributes, .frequency = frequency});
    if (result == EntryOutput::Result::impossible)
      bad_line("no entry can be made of this: it is too long, or ends in a character that entries need");
  }

  bool read_list(const std::string& path) {
    std::string text;
    if (!file_take(path, text)) return false;
    std::string_view rest = text;
    for (std::string_view line; take_line(rest, line);) {
      ++number_;
      if (line.empty()) {
        begins_sentence_ = true;
        continue;
      }
      switch (options_.format) {
        case WordFormat::unimorph: read_unimorph(line); break;
        case WordFormat::lttoolbox: read_lttoolbox(line); break;
        case WordFormat::conllu: read_conllu(line); break;
        case WordFormat::wordnet:
        case WordFormat::propbank: break;
      }
    }
    return true;
  }

  // lemma, form, features; perhaps the morphemes behind
  void read_unimorph(std::string_view line) {
    const std::vector<std::string_view> fields = fields_of(line, '\t');
    const bool is_row = fields.size() >= 3 && !fields[0].empty() && !fields[1].empty();
    if (!is_row) return bad_line("a line is LEMMA, FORM and FEATURES, with tabs between them");
    take(fields[1], fields[0], {}, std::string(fields[2]));
  }

  // form:lemma<tag><tag>, with ":>:" for what is analysed only and ":<:" for what is generated only
  void read_lttoolbox(std::string_view line) {
    // A pattern that stands for many words, such as all numbers.
    if (line.starts_with("__REGEXP__")) {
      ++figures_.left_out;
      return;
    }
    const std::size_t colon = unescaped(line, ':', 0);
    if (colon == std::string_view::npos) return bad_line("a line is FORM:LEMMA<TAG><TAG>");
    std::string_view analysis = line.substr(colon + 1);
    // A spelling that is understood, and that nobody should write.
    if (analysis.starts_with(">:")) {
      ++figures_.left_out;
      return;
    }
    if (analysis.starts_with("<:")) analysis.remove_prefix(2);
    std::string bundle;
    std::string lemma;
    bool is_joined = false;
    while (!analysis.empty()) {
      const std::size_t open = std::min(unescaped(analysis, '<', 0), analysis.size());
      const std::string_view text = analysis.substr(0, open);
      // A "+" behind the tags of a word begins the next one; within a lemma it is a letter.
      is_joined = is_joined || (!bundle.empty() && unescaped(text, '+', 0) != std::string_view::npos);
      lemma += plain(text);
      analysis.remove_prefix(open);
      if (analysis.empty()) break;
      const std::size_t close = analysis.find('>');
      if (close == std::string_view::npos) return bad_line("a tag is not closed: < stands without >");
      bundle += (bundle.empty() ? "" : ";") + std::string(analysis.substr(1, close - 1));
      analysis.remove_prefix(close + 1);
    }
    // Several words in one, as "del" of "de" and "el": rules make those.
    if (is_joined) {
      ++figures_.left_out;
      return;
    }
    take(plain(line.substr(0, colon)), lemma, {}, bundle);
  }

  // Where a sign stands that has no backslash in front of it.
  static std::size_t unescaped(std::string_view text, char sign, std::size_t at) {
    for (; at < text.size(); ++at) {
      if (text[at] == '\\') {
        ++at;
      } else if (text[at] == sign) {
        return at;
      }
    }
    return std::string_view::npos;
  }

  // Without escapes, and without the mark in front of the rest of a lemma of several words.
  static std::string plain(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '#') continue;
      if (text[i] == '\\' && i + 1 < text.size()) ++i;
      out += text[i];
    }
    return out;
  }

  // Ten columns. A form comes up as often as the text has it, so words are counted first and written at the end, with
  // the count as frequency. Ranges (1-2) and empty nodes (1.1) are no words.
  void read_conllu(std::string_view line) {
    if (line.starts_with('#')) return;
    const std::vector<std::string_view> fields = fields_of(line, '\t');
    if (fields.size() != 10) return bad_line("a line of a word has ten columns, with tabs between them");
    const bool is_word = fields[0].find_first_of("-.") == std::string_view::npos;
    if (!is_word) return;
    const bool is_first = std::exchange(begins_sentence_, false);
    // No lemma was given; a word that is the underscore itself has it as its lemma, too.
    if (fields[2] == "_" && fields[1] != "_") {
      ++figures_.left_out;
      return;
    }
    std::string bundle(fields[3]);
    if (fields[5] != "_") {
      for (const std::string_view feature : fields_of(fields[5], '|')) (bundle += ';') += feature;
    }
    // A proper noun keeps its capital wherever it stands.
    const bool is_name = fields[3] == "PROPN";
    std::string form = is_first && !is_name ? as_lemma(fields[1], fields[2]) : std::string(fields[1]);
    // The number of words so far is the place of a new one in the order of the text.
    const auto [place, is_new] = counts_.try_emplace({std::move(form), std::string(fields[2]), std::move(bundle)},
                                                     std::pair<std::uint32_t, std::size_t>(0, counts_.size()));
    ++place->second.first;
  }

  // The capital that a sentence begins with is none of the word, unless the lemma has one too.
  static std::string as_lemma(std::string_view form, std::string_view lemma) {
    if (form.empty() || lemma.empty()) return std::string(form);
    const Utf8Character of_form = utf8_first(form);
    const Utf8Character of_lemma = utf8_first(lemma);
    const std::uint32_t small = small_letter(of_form.code);
    const bool is_capital = of_form.is_valid && small != of_form.code;
    if (!is_capital || small_letter(of_lemma.code) != of_lemma.code) return std::string(form);
    std::string out;
    utf8_append(small, out);
    return out.append(form.substr(of_form.length));
  }

  // Of Latin, Greek, Cyrillic and Armenian letters: the capitals lie at a fixed distance from the small ones, or in front of
  // them, in pairs that begin at an even number or at an odd one.
  static std::uint32_t small_letter(std::uint32_t c) {
    const bool is_latin = (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    const bool is_greek_or_cyrillic = (c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F);
    if (is_latin || is_greek_or_cyrillic) return c + 32;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    if (c >= 0x531 && c <= 0x556) return c + 48;
    const bool is_odd_pair = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x4C1 && c <= 0x4CE);
    if (is_odd_pair) return c + (c & 1U);
    const bool is_pair = (c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177) || (c >= 0x460 && c <= 0x481) ||
                         (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F);
    if (is_pair && c != 0x130) return c | 1U;
    return c;
  }

  static void utf8_append(std::uint32_t c, std::string& out) {
    // Two bytes are enough: no small letter above lies beyond U+07FF.
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      out += static_cast<char>(0xC0 | c >> 6);
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }

  // In the order in which they came.
  void write_counted() {
    std::vector<decltype(counts_)::const_iterator> words(counts_.size());
    for (auto word = counts_.begin(); word != counts_.end(); ++word) words[word->second.second] = word;
    for (const auto& word : words) {
      const auto& [form, lemma, bundle] = word->first;
      take(form, lemma, {}, bundle, word->second.first);
    }
  }

  // ---- WordNet

  // A part of speech and what its files are called.
  struct Part {
    const char* file;     // behind "data." and in front of ".exc"
    const char* feature;  // of its words
  };
  static constexpr Part kParts[] = {{"noun", "noun"}, {"verb", "verb"}, {"adj", "adj"}, {"adv", "adv"}};

  // The names of the lexicographers' files, by their numbers.
  static constexpr const char* kCategories[] = {"adj.all",          "adj.pert",           "adv.all",
                                                "noun.top",         "noun.act",           "noun.animal",
                                                "noun.artifact",    "noun.attribute",     "noun.body",
                                                "noun.cognition",   "noun.communication", "noun.event",
                                                "noun.feeling",     "noun.food",          "noun.group",
                                                "noun.location",    "noun.motive",        "noun.object",
                                                "noun.person",      "noun.phenomenon",    "noun.plant",
                                                "noun.possession",  "noun.process",       "noun.quantity",
                                                "noun.relation",    "noun.shape",         "noun.state",
                                                "noun.substance",   "noun.time",          "verb.body",
                                                "verb.change",      "verb.cognition",     "verb.communication",
                                                "verb.competition", "verb.consumption",   "verb.contact",
                                                "verb.creation",    "verb.emotion",       "verb.motion",
                                                "verb.perception",  "verb.possession",    "verb.social",
                                                "verb.stative",     "verb.weather",       "adj.ppl"};

  // Synsets first, then exceptions: these take the categories of their words from them.
  bool read_wordnet() {
    bool is_whole = true;
    for (const std::string& input : options_.inputs) {
      std::error_code error;
      if (fs::is_directory(input, error)) {
        for (const Part& part : kParts) {
          const std::string data = input + "/data." + part.file;
          const std::string exceptions = input + '/' + part.file + ".exc";
          // A folder without one of the four parts of speech is told, and is no whole WordNet.
          is_whole = read_wordnet_file(data) && is_whole;
          if (fs::exists(exceptions, error)) is_whole = read_wordnet_file(exceptions) && is_whole;
        }
      } else {
        is_whole = read_wordnet_file(input) && is_whole;
      }
    }
    return is_whole;
  }

  bool read_wordnet_file(const std::string& path) {
    const std::string name = fs::path(path).filename().string();
    const Part* of = nullptr;
    for (const Part& part : kParts) {
      if (name == std::string("data.") + part.file || name == std::string(part.file) + ".exc") of = &part;
    }
    if (of == nullptr) {
      tell(path +
           ": not a file of WordNet that holds words: name data.noun and its like, or noun.exc, or their folder");
      return false;
    }
    std::string text;
    if (!file_take(path, text)) return false;
    std::string_view rest = text;
    const bool is_data = name.starts_with("data.");
    for (std::string_view line; take_line(rest, line);) {
      ++number_;
      if (line.empty() || line.starts_with("  ")) continue;  // the licence
      if (is_data) {
        read_synset(line, *of);
      } else {
        read_exception(line, *of);
      }
    }
    return true;
  }

  // offset, file number, type, count, and for each word itself and a number; the rest leads to other synsets
  void read_synset(std::string_view line, const Part& part) {
    // Behind the bar stands the gloss.
    const std::vector<std::string_view> fields = fields_of(line.substr(0, line.find('|')), ' ');
    std::size_t file = std::size(kCategories);
    std::size_t count = 0;
    const auto read = [](std::string_view text, std::size_t& number, int base) {
      return std::from_chars(text.data(), text.data() + text.size(), number, base).ec == std::errc{};
    };
    // The number of words is hexadecimal, that of the file decimal.
    const bool is_synset = fields.size() > 4 && read(fields[1], file, 10) && read(fields[3], count, 16) &&
                           file < std::size(kCategories) && fields.size() >= 4 + 2 * count;
    if (!is_synset) return bad_line("not a synset of WordNet");
    // What the file is named after serves as category, but for those that say no more than the part of speech.
    const std::string category = kCategories[file];
    std::string_view kind = std::string_view(category).substr(category.find('.') + 1);
    if (kind == "all" || kind == "pert" || kind == "ppl") kind = part.feature;
    for (std::size_t i = 0; i < count; ++i) {
      std::string word(fields[4 + 2 * i]);
      std::string bundle = std::string(part.feature) + ';' + category;
      // An adjective that belongs to the cluster of another one.
      if (fields[2] == "s") bundle += ";satellite";
      // Where an adjective may stand: "(a)", "(p)", "(ip)".
      if (const std::size_t open = word.find('('); open != std::string::npos && word.ends_with(')')) {
        bundle += ";position." + word.substr(open + 1, word.size() - open - 2);
        word.resize(open);
      }
      // Words of several parts are written with underscores.
      std::replace(word.begin(), word.end(), '_', ' ');
      // For the irregular forms, which name their word and no category.
      categories_[part.feature][word].emplace(kind);
      take(word, word, kind, bundle);
    }
  }

  // An irregular form and the words that it is a form of. Read behind the synsets, of which it takes the categories.
  void read_exception(std::string_view line, const Part& part) {
    const std::vector<std::string_view> fields = fields_of(line, ' ');
    if (fields.size() < 2) return bad_line("a line is an irregular form and its word");
    std::string form(fields[0]);
    std::replace(form.begin(), form.end(), '_', ' ');
    std::string bundle = std::string(part.feature) + ";irregular";
    // The list does not say which form it is; the ending does, if it is a regular one.
    const std::string_view of = part.feature;
    for (const char* const end : {"ing", "er", "est"}) {
      // "ing" is an ending of verbs, the other two are of adjectives and adverbs.
      const bool is_sign = end[0] == 'i' ? of == "verb" : of.starts_with("ad");
      if (is_sign && form.ends_with(end)) bundle = std::string(of) + ";irregular." + end;
    }
    for (std::size_t i = 1; i < fields.size(); ++i) {
      if (fields[i].empty()) continue;
      std::string lemma(fields[i]);
      std::replace(lemma.begin(), lemma.end(), '_', ' ');
      const auto known = categories_[part.feature].find(lemma);
      if (known == categories_[part.feature].end()) {
        ++figures_.left_out;
        continue;
      }
      // A word has an entry in each of its categories, and so has its irregular form.
      for (const std::string& category : known->second) take(form, lemma, category, bundle);
    }
  }

  // ---- PropBank

  bool read_propbank() {
    bool is_whole = true;
    std::vector<std::string> files;
    for (const std::string& input : options_.inputs) {
      std::error_code error;
      const std::size_t before = files.size();
      if (!fs::is_directory(input, error)) {
        files.push_back(input);
      } else {
        for (const fs::directory_entry& entry : fs::directory_iterator(input, error)) {
          if (entry.path().extension() == ".xml") files.push_back(entry.path().string());
        }
        // A folder names its files in any order; entries are to come in the same one on every machine.
        std::sort(files.begin() + static_cast<std::ptrdiff_t>(before), files.end());
        if (files.size() == before) {
          tell(input + ": no frame file (.xml) is in this folder");
          is_whole = false;
        }
      }
    }
    // A frame is named after its verb, and a noun after the verb that it comes from: the names of all files tell
    // which is which.
    VerbSet verbs;
    for (const std::string& file : files) verbs.insert(fs::path(file).stem().string());
    for (const std::string& file : files) is_whole = read_frames(file, verbs) && is_whole;
    return is_whole;
  }

  // A file that is not well-formed counts as one bad line; the rest goes on.
  bool read_frames(const std::string& path, const VerbSet& verbs) {
    std::string text;
    if (!file_take(path, text)) return false;
    const FrameFault fault = frames_read(text, verbs, [&](const FrameSense& sense) {
      // A sense without a verb has nouns or adjectives alone, which the table may want to mark.
      const bool has_verb = std::any_of(sense.names.begin(), sense.names.end(),
                                        [](const FrameName& name) { return std::string_view(name.part) == "verb"; });
      for (const FrameName& name : sense.names) {
        take(name.form, sense.lemma, sense.number,
             name.part + std::string(has_verb ? "" : ";without.verb") + sense.features);
      }
    });
    number_ = fault.line;
    if (fault.line != 0) bad_line(("the file is left out, as it is not well-formed: " + fault.text).c_str());
    return true;
  }

  // ---- The end

  // Features that no table knows, the most frequent first.
  void tell_rest() {
    if (figures_.bad_lines > kShownLines)
      tell("... and " + std::to_string(figures_.bad_lines - kShownLines) + " more bad lines");
    // Counts are negative, so that sorting puts the most frequent first, and equal ones by name.
    std::vector<std::pair<std::int64_t, std::string>> unknown;
    for (const auto& [feature, count] : table_.unknown()) unknown.emplace_back(-count, feature);
    std::sort(unknown.begin(), unknown.end());
    for (const auto& [count, feature] : unknown) {
      tell("the table lacks " + feature + ", of " + std::to_string(-count) + (count == -1 ? " word" : " words"));
    }
  }

  const WordImport& options_;
  EntryForm form_;  // that of the options, with the usual concept word of the format if they name none
  FeatureTable table_;
  EntryOutput output_;
  std::FILE* log_;
  WordImportFigures& figures_;
  std::string path_;  // the file that is read, and its line, for messages
  std::int64_t number_ = 0;
  bool begins_sentence_ = true;  // of CoNLL-U
  // Of CoNLL-U: form, lemma and features of each word; how often it came, and its place among the words.
  std::map<std::tuple<std::string, std::string, std::string>, std::pair<std::uint32_t, std::size_t>> counts_;
  std::map<std::string, std::map<std::string, std::set<std::string>>> categories_;  // of words, by their part of speech
};

}  // namespace

bool words_import(Session& session, const WordImport& options, std::FILE* out, std::FILE* log,
                  WordImportFigures& figures) {
  return Importer(session, options, out, log, figures).run();
}

}  // namespace lexon
