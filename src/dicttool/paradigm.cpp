// The table of paradigms, a text: letter changes (letter_changes.hpp) and tables. A table has a header, "features" and
// the names of classes, with tabs between; each row below it gives attributes and, for each class, the endings of the
// form, with blanks between several: "+s", "0" for the stem alone, "-" for no form, "@past+st" for another stem of the
// word.
//
// The stems, a text too: a header that names the columns, "stem" and "class" among them, then one stem a line. A column
// named like the attributes of a row holds the whole form for words that do not follow their class; "-": there is none.
#include "dicttool/paradigm.hpp"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "dicttool/letter_changes.hpp"
#include "dicttool/text_fields.hpp"

namespace lexon {

namespace {

// What a form adds to which stem.
struct Ending {
  std::string column;  // of the stem; empty: the column "stem"
  Letters letters;
};

// A row of a table, for one class.
struct Form {
  std::size_t row = 0;  // among all rows
  std::vector<Ending> endings;
};

// Reads the paradigms whole, then goes through the stems line by line and writes the entries of each.
class Inflector {
 public:
  Inflector(Session& session, const Inflection& options, std::FILE* out, std::FILE* log, InflectionFigures& figures)
      : options_(options), form_(options.form), output_(session, form_, out), log_(log), figures_(figures) {
    if (form_.cw.empty()) form_.cw = "{lemma}";
  }

  bool run() {
    // Stems are judged by their paradigms, so without these none is read.
    bool is_whole = read_paradigms();
    for (const std::string& path : options_.stems) is_whole = is_whole && read_stems(path);
    if (figures_.bad_lines > kShownLines) {
      std::fprintf(log_, "... and %lld more bad lines\n", static_cast<long long>(figures_.bad_lines - kShownLines));
    }
    figures_.entries = output_.written();
    figures_.repeated = output_.known();
    return is_whole;
  }

 private:
  bool fault(const std::string& what) {
    std::fprintf(log_, "%s:%lld: %s\n", path_.c_str(), static_cast<long long>(number_), what.c_str());
    return false;
  }

  void bad_line(const std::string& what) {
    // The rest is counted, and told at the end.
    if (++figures_.bad_lines <= kShownLines) fault(what);
  }

  bool read_text(const std::string& path, std::string& text) {
    std::string reason;
    path_ = path;
    number_ = 0;
    if (text_read(path, text, reason)) return true;
    std::fprintf(log_, "%s: %s\n", path.c_str(), reason.c_str());
    return false;
  }

  // ---- Paradigms

  bool read_paradigms() {
    std::string text;
    if (!read_text(options_.paradigms, text)) return false;
    bool is_good = true;
    std::vector<std::string> classes;
    std::string_view rest = text;
    for (std::string_view line; take_line(rest, line);) {
      ++number_;
      // An empty line, or a comment.
      const std::size_t begin = line.find_first_not_of(" \t");
      if (begin == std::string_view::npos || line[begin] == ';') continue;
      const std::string_view word = line.substr(0, line.find_first_of(" \t"));
      if (word == "letters" || word == "pass" || word == "change") {
        const std::string what = changes_.read(line);
        is_good = (what.empty() || fault(what)) && is_good;
        // Every other line belongs to the table whose header came last.
      } else if (line.starts_with("features\t")) {
        is_good = read_header(line, classes) && is_good;
      } else {
        is_good = read_row(line, classes) && is_good;
      }
    }
    if (is_good && forms_.empty())
      return fault("there is no table: its first line is \"features\" and the classes, with tabs between");
    return is_good;
  }

  bool read_header(std::string_view line, std::vector<std::string>& classes) {
    classes.clear();
    for (const std::string_view name : fields_of(line.substr(line.find('\t') + 1), '\t')) classes.emplace_back(name);
    for (const std::string& name : classes) {
      const bool is_name = !name.empty() && name.find(' ') == std::string::npos;
      if (!is_name) return fault("the name of a class is one word");
      // A class may be missing in a table and stand in the next, but not in two.
      if (!forms_.try_emplace(name).second) return fault("the class " + name + " has a table already");
    }
    return true;
  }

  // Rows of several tables may have the same attributes; they then share a number, and a column of the stems.
  bool read_row(std::string_view line, const std::vector<std::string>& classes) {
    if (classes.empty()) {
      return fault("a line is letters, pass, change, the header of a table, or a row of one");
    }
    const std::vector<std::string_view> cells = fields_of(line, '\t');
    if (cells.size() != classes.size() + 1) {
      return fault("this row has " + std::to_string(cells.size() - 1) + " endings, and the table " +
                   std::to_string(classes.size()) + " classes: a tab stands between them, and - for no form");
    }
    // The attributes of a row are its name.
    const auto [row, is_new] = row_numbers_.try_emplace(std::string(cells[0]), rows_.size());
    if (is_new) rows_.emplace_back(cells[0]);
    for (std::size_t i = 0; i < classes.size(); ++i) {
      Form form;
      form.row = row->second;
      for (const std::string_view text : fields_of(cells[i + 1], ' ')) {
        // The dash is a form of its own beside others.
        if (text == "-" && cells[i + 1] == "-") continue;
        if (!read_ending(text, form))
          return fault("an ending is missing here: write 0 for the stem alone, - for no form");
      }
      if (!form.endings.empty()) forms_[classes[i]].push_back(std::move(form));
    }
    return true;
  }

  bool read_ending(std::string_view text, Form& form) {
    Ending ending;
    // "@past+st": the column in front of the "+", and the "+" goes with the ending as its boundary.
    if (text.starts_with('@')) {
      const std::size_t end = std::min(text.find('+'), text.size());
      ending.column = text.substr(1, end - 1);
      // A column of the stems may have this name.
      stem_columns_.insert(ending.column);
      text.remove_prefix(end);
    } else if (text.empty()) {
      return false;
    }
    if (text != "0") ending.letters = letters_of(text);
    form.endings.push_back(std::move(ending));
    return true;
  }

  // ---- Stems

  bool read_stems(const std::string& path) {
    std::string text;
    if (!read_text(path, text)) return false;
    std::vector<std::string> columns;
    std::string_view rest = text;
    for (std::string_view line; take_line(rest, line);) {
      ++number_;
      if (line.empty() || line.starts_with(';')) continue;
      // Each file has a header of its own.
      if (columns.empty()) {
        for (const std::string_view name : fields_of(line, '\t')) columns.emplace_back(name);
        if (!check_columns(columns)) return false;
        continue;
      }
      const std::vector<std::string_view> cells = fields_of(line, '\t');
      // Fewer cells are all right: the last columns are empty then.
      if (cells.size() > columns.size()) {
        bad_line("this line has " + std::to_string(cells.size()) + " cells, and the header " +
                 std::to_string(columns.size()) + " columns");
        continue;
      }
      inflect(columns, cells);
    }
    return true;
  }

  // A misspelt column would be passed over without a word, so only known names are taken.
  bool check_columns(const std::vector<std::string>& columns) {
    static constexpr std::string_view kKnown[] = {"stem",  "class",    "concept",  "attributes",
                                                  "gloss", "priority", "frequency"};
    std::set<std::string> seen;
    for (const std::string& name : columns) {
      const bool is_known = std::find(std::begin(kKnown), std::end(kKnown), name) != std::end(kKnown) ||
                            stem_columns_.contains(name) || row_numbers_.contains(name);
      if (!is_known) {
        return fault("nothing asks for the column \"" + name +
                     "\": there are stem, class, concept, attributes, gloss, priority, "
                     "frequency, the stems that endings name with @, and the attributes of rows");
      }
      if (!seen.insert(name).second) return fault("two columns \"" + name + "\": rename one");
    }
    if (!seen.contains("stem") || !seen.contains("class")) {
      return fault("the first line names the columns, with tabs between; stem and class must be among them");
    }
    return true;
  }

  // A stem may have several classes. Of each, the forms are those of its table, but where the line has a form of its
  // own.
  void inflect(const std::vector<std::string>& columns, const std::vector<std::string_view>& cells) {
    const auto cell = [&](std::string_view name) -> std::string_view {
      for (std::size_t i = 0; i < cells.size(); ++i) {
        if (columns[i] == name) return cells[i];
      }
      return {};
    };
    const std::string_view stem = cell("stem");
    if (stem.empty()) return bad_line("the stem is missing");
    ListedWord word{.form = {}, .lemma = stem, .category = {}, .attributes = {}, .gloss = cell("gloss")};
    word.concept_word = cell("concept");
    if (!read_number(cell("priority"), word.priority) || !read_number(cell("frequency"), word.frequency)) {
      return bad_line("a priority is a number to 255, a frequency any number");
    }
    // Whole forms that stand in the line.
    std::map<std::size_t, std::string_view> own;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const auto row = row_numbers_.find(columns[i]);
      if (row != row_numbers_.end() && !cells[i].empty()) own.emplace(row->second, cells[i]);
    }
    bool has_class = false;
    for (const std::string_view name : fields_of(cell("class"), ' ')) {
      const auto forms = forms_.find(name);
      if (forms == forms_.end()) return bad_line("no table has the class \"" + std::string(name) + '"');
      has_class = true;
      for (const Form& form : forms->second) {
        // A whole form that stands in the line replaces all endings of the row.
        const auto irregular = own.find(form.row);
        if (irregular == own.end()) {
          if (!write_regular(form, word, cell)) return;
        } else if (irregular->second != "-") {
          write(irregular->second, form.row, word, cell("attributes"));
        }
      }
      // A form of its own that the class does not have.
      for (const auto& [row, text] : own) {
        const bool is_of_class = std::any_of(forms->second.begin(), forms->second.end(),
                                             [row = row](const Form& f) { return f.row == row; });
        if (!is_of_class && text != "-") write(text, row, word, cell("attributes"));
      }
    }
    // A stem without a class has no forms, and is none.
    if (has_class) ++figures_.stems;
  }

  // False if a stem that an ending asks for is not there, which is told.
  template <typename Cell>
  bool write_regular(const Form& form, const ListedWord& word, const Cell& cell) {
    for (const Ending& ending : form.endings) {
      const std::string_view stem = ending.column.empty() ? word.lemma : cell(ending.column);
      if (stem.empty()) {
        bad_line("the stem \"" + ending.column + "\" is missing, which the endings of the class ask for");
        return false;
      }
      letters_ = letters_of(stem);
      letters_ += ending.letters;
      changes_.apply(letters_);
      text_.clear();
      letters_append(letters_, text_);
      write(text_, form.row, word, cell("attributes"));
    }
    return true;
  }

  void write(std::string_view text, std::size_t row, ListedWord word, std::string_view attributes) {
    // The attributes of the row, and behind them those of the stem itself.
    attributes_ = rows_[row];
    if (!attributes.empty()) attributes_ += (attributes_.empty() ? "" : ",") + std::string(attributes);
    word.form = text;
    word.attributes = attributes_;
    if (output_.write(word) == EntryOutput::Result::impossible) {
      bad_line("no entry can be made of \"" + std::string(text) +
               "\": it is too long, or ends in a character that entries need");
    }
  }

  template <typename Number>
  static bool read_number(std::string_view text, Number& number) {
    // An empty cell leaves the number as it is.
    if (text.empty()) return true;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
  }

  const Inflection& options_;
  EntryForm form_;
  EntryOutput output_;
  std::FILE* log_;
  InflectionFigures& figures_;
  // The file that is read, and its line, for messages.
  std::string path_;
  std::int64_t number_ = 0;
  LetterChanges changes_;
  std::map<std::string, std::vector<Form>, std::less<>> forms_;  // by class
  std::vector<std::string> rows_;                                // the attributes of each row
  std::map<std::string, std::size_t, std::less<>> row_numbers_;
  std::set<std::string> stem_columns_;
  // Kept from word to word for their memory.
  Letters letters_;
  std::string text_;
  std::string attributes_;
};

}  // namespace

bool stems_inflect(Session& session, const Inflection& options, std::FILE* out, std::FILE* log,
                   InflectionFigures& figures) {
  return Inflector(session, options, out, log, figures).run();
}

}  // namespace lexon
