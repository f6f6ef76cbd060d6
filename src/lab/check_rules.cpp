#include "lab/check_rules.hpp"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <tuple>

#include "data/chain.hpp"
#include "data/chars.hpp"
#include "data/sentence.hpp"
#include "data/session.hpp"
#include "data/utf8.hpp"
#include "lab/text_file.hpp"
#include "rules/parser.hpp"
#include "rules/scanners.hpp"
#include "run/notes.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// The parser of runs cuts labels; here they are read whole, so that what is cut can be shown.
constexpr std::size_t kAnyLength{kLineSize};

// Goes once more over a line that the parser took, and notes where everything stands. It reads with the parser's own
// scanners, so that both see the same items:
//
//   TYPE (group)* PATTERN (group)* PATTERN (group)* P priority ;
//   PATTERN: {conditions : actions : labels : roles}, or the same in quotes
class LineView {
 public:
  LineView(Session& session, Pool& pool, Names& names, const char* line)
      : session_(session), pool_(pool), names_(names), start_(line), cursor_(skip_blanks(line)) {
    parse_.start = line;
    parse_.pool = &pool;
  }

  // False if it is no rule after all; `rule` may hold a part of it then.
  bool read(RuleView& rule) {
    rule.type = parse_rule_type(cursor_);
    cursor_ = skip_blanks(cursor_);
    if (!groups(rule, Place::pre, rule.pre_groups, &rule.pre)) return false;
    if (!pattern(rule, Side::left) || !groups(rule, Place::mid, rule.mid_groups, nullptr)) return false;
    if (!pattern(rule, Side::right) || !groups(rule, Place::suf, rule.suf_groups, &rule.suf)) return false;
    rule.number_begin = at();
    if (*cursor_ == 'P') {
      // The digits are kept as written, so that a finding can point to them and say what they count as.
      const char* begin = ++cursor_;
      while (is_digit(*cursor_)) ++cursor_;
      rule.number.assign(begin, cursor_);
    }
    // wanted: above 255 it wraps, as in a run.
    for (const char c : rule.number) rule.priority = static_cast<std::uint8_t>(rule.priority * 10 + (c - '0'));
    return true;
  }

 private:
  [[nodiscard]] std::uint32_t at() const { return static_cast<std::uint32_t>(cursor_ - start_); }

  // The end of an item behind which the cursor stands, without the commas and blanks between.
  [[nodiscard]] std::uint32_t item_end(std::uint32_t begin) const {
    // Findings underline the item alone.
    std::uint32_t end = at();  // the scanners pass over commas and blanks behind an item
    while (end > begin + 1 && (start_[end - 1] == ',' || is_blank(start_[end - 1]))) --end;
    return end;
  }

  // A condition or an action, read as the parser reads it. Its memory goes with the line; its name is kept as a number.
  bool item(RuleView& rule, Place place, Side side, std::uint16_t group, ItemPlace as) {
    const std::uint32_t begin = at();
    CondItem* read = nullptr;
    ItemKind kind = ItemKind::attribute;
    // The cursor moves on even where this fails; the caller gives the line up then.
    if (parse_cond_item(session_, pool_, parse_, as, cursor_, read, kind) != Status::ok) return false;
    rule.items.push_back({place, side, kind, read->op, group, begin, item_end(begin), names_.enter(read->text)});
    return true;
  }

  // `lone`: the text of the groups, where a lone starred one without attributes says nothing and is left out.
  bool groups(RuleView& rule, Place place, std::uint16_t& count, std::string* lone) {
    const char* begin = cursor_;
    bool has_star = false;
    while (*cursor_ == '(') {
      cursor_ = skip_blanks(cursor_ + 1);
      while (*cursor_ != ')') {
        if (*cursor_ == '\0' || !item(rule, place, Side::left, count, ItemPlace::group)) return false;
      }
      has_star = *++cursor_ == '*';
      if (has_star) ++cursor_;
      ++count;
      cursor_ = skip_blanks(cursor_);
    }
    if (lone == nullptr) return true;
    lone->assign(begin, cursor_);
    // Runs drop such a group too: it would fit anywhere, so that the rule has no context to be judged by.
    const auto is_of_place = [place](const RuleItem& item) { return item.place == place; };
    const bool says_something = std::ranges::any_of(rule.items, [&is_of_place](const RuleItem& item) {
      return is_of_place(item) && item.kind == ItemKind::attribute;
    });
    if (count != 1 || !has_star || says_something) return true;
    std::erase_if(rule.items, is_of_place);
    lone->clear();
    count = 0;
    return true;
  }

  // Labels of relations or names of roles, up to the next colon or the end of the pattern. The mark of a role (< or >) has
  // no meaning and is left out of its name.
  bool labels(RuleView& rule, Place place, Side side) {
    while (!is_section_end(*cursor_)) {
      CondItem* read = perm_new<CondItem>(pool_);
      const std::uint32_t begin = at();
      // Memory of one line: this is the pool that is emptied after each.
      if (read == nullptr) return false;
      if (place == Place::role && (*cursor_ == '<' || *cursor_ == '>')) ++cursor_;
      const Status status = place == Place::role ? scan_attr_token(pool_, cursor_, *read, kRoleTokenLimit)
                                                 : scan_relation_label(pool_, cursor_, *read, kAnyLength);
      if (status != Status::ok || read->text == nullptr) return false;
      cursor_ = skip_commas(cursor_);
      rule.items.push_back(
          {place, side, ItemKind::attribute, kOpHas, 0, begin, item_end(begin), names_.enter(read->text)});
    }
    return true;
  }

  // One of the two patterns, from its brace or quote to the one that closes it, and the blanks behind.
  bool pattern(RuleView& rule, Side side) {
    const std::size_t index = side == Side::left ? 0 : 1;
    rule.is_quote[index] = *cursor_ == '"';
    rule.pattern_begin[index] = at();
    cursor_ = skip_blanks(cursor_ + 1);
    while (!is_section_end(*cursor_)) {
      if (!item(rule, Place::cond, side, 0, ItemPlace::cond)) return false;
    }
    if (*cursor_ == ':') {
      cursor_ = skip_blanks(cursor_ + 1);
      while (!is_section_end(*cursor_)) {
        if (!item(rule, Place::action, side, 0, ItemPlace::action)) return false;
      }
    }
    for (const Place place : {Place::relation, Place::role}) {
      if (*cursor_ != ':') break;
      cursor_ = skip_blanks(cursor_ + 1);
      if (!labels(rule, place, side)) return false;
    }
    cursor_ = skip_blanks(cursor_);
    if (*cursor_ == '\0') return false;
    ++cursor_;
    rule.pattern_end[index] = at();
    cursor_ = skip_blanks(cursor_);
    return true;
  }

  Session& session_;
  Pool& pool_;  // of one line
  Names& names_;
  const char* start_;   // of the line
  const char* cursor_;  // of what is read next
  RuleParse parse_;     // what the parser's functions want to know
};

// Faults that `check` tells apart from a rule that cannot be read.
const char* code_of(RuleFault fault) {
  switch (fault) {
    case RuleFault::endless: return "endless-rule";
    case RuleFault::no_priority: return "no-priority";
    case RuleFault::no_relation: return "idle-type";
    default: return "rule-syntax";
  }
}

// Turns what the parser noted into findings, and adds what only the end shows: no rule in force, no room.
void check_parser(const CheckInput& input, const RuleNotes& notes, const Pool& pool, std::vector<Finding>& findings) {
  const std::string& file = input.rules.file;
  check_encoding(file, notes.text, findings);
  for (const RuleNote& note : notes.notes) {
    std::string what = rule_fault_text(note.fault);
    const char* code = code_of(note.fault);
    const bool is_whole_line = note.fault == RuleFault::endless;
    const std::size_t begin = is_whole_line ? 0 : std::min(note.column, note.text.size());
    const char there = begin < note.text.size() ? note.text[begin] : ' ';
    // What may stand where a priority is looked for without being the reason that there is none.
    constexpr std::string_view kNothingElse = " \t\r\n;P0123456789";
    if (note.fault == RuleFault::no_priority && (there == '{' || there == '"')) {
      what = "a third pattern, and what stands behind the second is not read: strike it out, a rule has two";
      code = "third-pattern";
    } else if (note.fault == RuleFault::no_priority && kNothingElse.find(there) == std::string_view::npos) {
      what = std::string("what begins with ") + there +
             " is not read, and neither is a priority behind it: the priority stands behind the last pattern or group";
    }
    // Texts of faults read "what is wrong: how to put it right".
    // Both halves are shown, the second as the remedy.
    const std::size_t colon = what.find(": ");
    findings.push_back(finding_at(file, note.line, note.text, begin, is_whole_line ? note.text.size() : begin + 1,
                                  is_warning(note.fault) ? Level::warning : Level::error, code, what.substr(0, colon),
                                  colon == std::string::npos ? std::string() : what.substr(colon + 2)));
  }
  if (notes.last_line_fails) {
    findings.push_back({file, notes.notes.empty() ? 0 : notes.notes.back().line, 0, 0, Level::error, "last-line",
                        "no rule of the file is in force, as its last line is refused",
                        "mend that line, or end the text with an empty one"});
    findings.back().fix = {Fix::Kind::text_end, "", "\n"};
  }
  // Rules and sentence share the blocks of a run, and a sentence needs some of them.
  const std::int64_t room = std::int64_t{input.blocks} * kFirstBlockSize;
  constexpr std::int64_t kScarceBytes = std::int64_t{2} << 20;
  const std::int64_t used = pool.bytes_used();
  if (used <= room - kScarceBytes) return;
  findings.push_back({file, 0, 0, 0, used > room ? Level::error : Level::warning, "rules-room",
                      "the rules take " + std::to_string(used / 1000) + " of " + std::to_string(room / 1000) + " KB" +
                          (used > room ? "" : ", and little is left for sentences"),
                      "run lexon with --blocks " + std::to_string(2 * input.blocks)});
}

// The lines of sources, each file read once: many findings lie in one.
class SourceLines {
 public:
  explicit SourceLines(const Overlay* unsaved) : unsaved_(unsaved) {}

  std::string_view line(const std::string& path, std::int64_t number) {
    const auto [known, is_new] = files_.try_emplace(path);
    if (is_new) {
      known->second.text = text_file_read(path, unsaved_);
      known->second.lines = lines_of(known->second.text);
    }
    // A line behind the end is that of a source that has changed since it was expanded.
    const auto index = static_cast<std::size_t>(number) - 1;
    return index < known->second.lines.size() ? known->second.lines[index] : std::string_view();
  }

 private:
  struct File {
    std::string text;  // that the lines point into
    std::vector<std::string_view> lines;
  };
  const Overlay* unsaved_;
  std::map<std::string, File> files_;
};

}  // namespace

Finding finding_at(const std::string& file, std::int64_t line, std::string_view text, std::size_t begin,
                   std::size_t end, Level level, const char* code, std::string what, std::string remedy) {
  begin = std::min(begin, text.size());  // behind the end: the finding is about what is missing there
  // Editors count characters; bytes of another encoding count one each.
  const std::size_t column = utf8_count(text.substr(0, begin)) + 1;
  const std::string_view piece = begin < text.size() ? text.substr(begin, end - begin) : std::string_view();
  return {file,  line, column,          column + std::max<std::size_t>(utf8_count(piece), 1),
          level, code, std::move(what), std::move(remedy),
          {}};
}

std::string rule_line_name(const CheckInput& input, std::int64_t line) {
  if (input.source == nullptr) return "line " + std::to_string(line);
  const MappedPlace place = input.source->place(line, 0);
  const bool is_of_main = place.file == input.rules.file;
  return (is_of_main ? "line " : place.file + ':') + std::to_string(place.line);
}

void findings_to_sources(const CheckInput& input, std::vector<Finding>& findings) {
  if (input.source == nullptr) return;
  const std::vector<std::string_view> lines = lines_of(input.rules.text);
  SourceLines sources(input.unsaved);
  // Columns are counted in characters, places of the map in bytes.
  const auto byte_at = [&lines](std::int64_t line, std::size_t column) {
    std::string_view text =
        static_cast<std::size_t>(line) <= lines.size() ? lines[static_cast<std::size_t>(line) - 1] : std::string_view();
    std::size_t at = 0;
    for (; column > 1 && at < text.size(); --column) at += utf8_first(text.substr(at)).length;
    return at;
  };
  // What the turns of a loop show in one place of a source is one finding; `more` counts the others.
  std::map<std::tuple<std::string, std::int64_t, std::size_t, std::string_view, std::string>, std::size_t> known;
  std::vector<std::size_t> more;
  std::vector<Finding> result;
  for (Finding& finding : findings) {
    if (finding.file != input.rules.file || finding.line == 0) {
      result.push_back(std::move(finding));
      continue;
    }
    const std::size_t begin = byte_at(finding.line, finding.column);
    const std::size_t end = std::max(byte_at(finding.line, finding.end_column), begin + 1);
    const MappedPlace place = input.source->place(finding.line, begin);
    // The end is looked up by its last byte: the place behind it may come from somewhere else.
    const MappedPlace last = input.source->place(finding.line, end - 1);
    if (!place.file.empty()) {
      const std::string_view line = sources.line(place.file, place.line);
      // A text that was put together from several places is pointed to where it begins.
      const bool is_one_stretch = last.file == place.file && last.line == place.line && last.column >= place.column;
      std::string text = std::move(finding.text);
      if (const std::string around = surroundings_text(place); !around.empty()) text += " (" + around + ')';
      Finding moved =
          finding_at(place.file, place.line, line, place.column, (is_one_stretch ? last.column : place.column) + 1,
                     finding.level, finding.code, std::move(text), std::move(finding.remedy));
      if (finding.column == 0) moved.column = moved.end_column = 0;
      moved.fix = std::move(finding.fix);
      finding = std::move(moved);
    }
    // The text of a finding names the values of the turn, so it is no part of what makes two the same.
    const auto [first, is_new] = known.try_emplace(
        std::tuple(finding.file, finding.line, finding.column, std::string_view(finding.code), finding.remedy),
        result.size());
    if (is_new) {
      result.push_back(std::move(finding));
      more.resize(result.size());
    } else {
      ++more[first->second];
    }
  }
  for (std::size_t i = 0; i < more.size(); ++i) {
    if (more[i] != 0) result[i].text += ", and " + std::to_string(more[i]) + " more of the same line";
  }
  findings = std::move(result);
}

void check_encoding(const std::string& file, const TextWatch& watch, std::vector<Finding>& findings) {
  for (const TextNote& note : text_notes(watch)) {
    const std::size_t colon = note.text.find(": ");
    findings.push_back({file, note.line, 1, 2, note.is_loss ? Level::error : Level::warning, "encoding",
                        note.text.substr(0, colon),
                        colon == std::string::npos ? std::string() : note.text.substr(colon + 2)});
  }
}

bool is_compiled(std::string_view text) {
  const bool is_utf16 = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
  return !is_utf16 && text.find('\0') != std::string_view::npos;
}

RuleBase read_rules(const CheckInput& input, Names& names, std::vector<Finding>& findings) {
  RuleBase base;
  const auto session = std::make_unique<Session>();
  Pool pool;
  pool.limit_blocks(65535);  // rules that are too many for a run are still checked
  RuleNotes notes;
  // First the parser of runs reads the text, for its findings; then each line that it took is gone over once more, for the
  // places of all that it says.
  std::string_view rest = input.rules.text;
  Rule* list = nullptr;
  // The status speaks of the last line alone; the notes tell.
  (void)parse_rule_file(*session, pool, rest, list, &notes);
  check_parser(input, notes, pool, findings);
  base.bytes = pool.bytes_used();

  std::vector<std::int64_t> refused;
  for (const RuleNote& note : notes.notes) {
    if (!is_warning(note.fault)) refused.push_back(note.line);
  }
  Pool scratch;
  rest = input.rules.text;
  TextWatch watch;
  char line[kLineSize];
  bool goes_on = false;
  while (text_line_read(rest, line, kLineSize, &watch)) {
    const bool is_first_piece = !goes_on;
    goes_on = watch.goes_on;
    const char first = *skip_blanks(line);
    // The rest of a line that is too long is no rule, and the parser passes it over too.
    if (!is_first_piece || first == ';' || first == '\n' || first == '\0') continue;
    // Refused lines come in ascending order, as they were read.
    if (std::binary_search(refused.begin(), refused.end(), watch.line)) continue;
    RuleView rule;
    rule.line = watch.line;
    if (LineView(*session, scratch, names, line).read(rule)) {
      // The line as text without its end, since findings of later checks show and measure it.
      rule.text = line;
      while (!rule.text.empty() && rule.text.back() == '\n') rule.text.pop_back();
      base.rules.push_back(std::move(rule));
    }
    scratch.release_all();
  }
  // The order of trial: by priority, and the lines in order where that is the same.
  std::ranges::stable_sort(base.rules, std::ranges::greater(), &RuleView::priority);
  return base;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
