#include "lab/lsp_model.hpp"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "data/chain.hpp"
#include "data/session.hpp"
#include "lab/commands.hpp"
#include "lab/text_file.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// ---- Texts

std::shared_ptr<const LinedText> TextStore::text(const std::string& path) {
  // The same text comes back as the same object for as long as it does not change: others know by the address what they
  // have made of it.
  const std::string key = file_key(path);
  if (const auto found = open_.find(key); found != open_.end()) return found->second.text;
  // A file that cannot be read has a mark, too, and is tried again with each question.
  const TextMark mark = text_mark(key, nullptr);
  Known& known = known_[key];
  if (known.text != nullptr && known.mark == mark) return known.text;
  try {
    known.text = std::make_shared<const LinedText>(std::make_shared<const std::string>(text_file_read(key)));
    // The mark is older than the text: a file that changes in between is read again.
    known.mark = mark;
  } catch (const Fault&) {
    known.text = nullptr;
  }
  return known.text;
}

void TextStore::open(const std::string& path, const std::string& uri, std::string text) {
  unsaved_.put(path, std::move(text));
  // The text is shared with the overlay, which checks read in another thread.
  open_[file_key(path)] = {std::make_shared<const LinedText>(unsaved_.find(path)), uri};
}

std::string TextStore::uri(const std::string& path) const {
  const std::string key = file_key(path);
  const auto found = open_.find(key);
  return found != open_.end() ? found->second.uri : uri_of_path(key);
}

void TextStore::close(const std::string& path) {
  unsaved_.drop(path);
  open_.erase(file_key(path));
}

namespace {

// Adds the names of the lines from `begin` to before `end`, `sign` times (1 or -1). Only for kinds of texts whose lines
// stand for themselves, or for a whole text.
void count_lines(const LinedText& text, TextKind kind, std::size_t begin, std::size_t end, std::int64_t sign,
                 NameCounts& counts) {
  // A fresh scanner knows of nothing that lines in front have left open.
  LineScanner scanner(kind);
  std::vector<Token> tokens;
  for (std::size_t line = begin; line < end; ++line) {
    tokens.clear();
    const std::string_view shown = text.line(line);
    scanner.scan(shown, tokens);
    for (const Token& token : tokens) {
      auto* const names = token.kind == TokenKind::attribute   ? &counts.attributes
                          : token.kind == TokenKind::label     ? &counts.labels
                          : token.kind == TokenKind::mark_name ? &counts.marks
                                                               : nullptr;
      if (names != nullptr) (*names)[std::string(shown.substr(token.begin, token.end - token.begin))] += sign;
    }
  }
}

}  // namespace

const NameCounts& TextStore::names(const TextFile& file) {
  // What was counted of the file before, and of which text.
  CountedText& known = counted_[file.path];
  const std::shared_ptr<const LinedText> now = text(file.path);
  if (known.text == now && known.kind == file.kind) return known.counts;
  const std::shared_ptr<const LinedText> before = known.text;
  const bool is_changed =
      before != nullptr && now != nullptr && known.kind == file.kind && LineScanner::is_line_by_line(file.kind);
  // Between two keys most of a text stays: the lines around what differs are taken off and counted anew.
  if (is_changed) {
    const std::string& a = before->text();
    const std::string& b = now->text();
    const std::size_t shorter = std::min(a.size(), b.size());
    std::size_t head = 0;
    while (head < shorter && a[head] == b[head]) ++head;
    std::size_t tail = 0;
    // A byte that is repeated belongs to the head alone.
    while (tail < shorter - head && a[a.size() - 1 - tail] == b[b.size() - 1 - tail]) ++tail;
    // The same line of both texts, since what is in front of it is equal.
    const std::size_t first = std::min(before->line_of(head), now->line_of(head));
    count_lines(*before, file.kind, first, before->line_of(a.size() - tail) + 1, -1, known.counts);
    count_lines(*now, file.kind, first, now->line_of(b.size() - tail) + 1, 1, known.counts);
  } else {
    known.counts = {};
    if (now != nullptr) count_lines(*now, file.kind, 0, now->line_count(), 1, known.counts);
  }
  known.text = now;
  known.kind = file.kind;
  return known.counts;
}

// ---- Analysis

std::vector<std::string> canonical_rules(std::string_view text) {
  std::vector<std::string> result;
  std::string copy(text);
  // The parser refuses a text whose last line is not closed, and with it all rules.
  if (!copy.ends_with('\n')) copy += '\n';
  std::string_view rest = copy;
  // What the parser objects to is of no interest here: `check` says it.
  const auto session = std::make_unique<Session>();
  Pool pool;
  Rule* rules = nullptr;
  static_cast<void>(parse_rule_file(*session, pool, rest, rules, nullptr));
  // Its messages go with it.
  static_cast<void>(session->output.take());
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    rule_print(*session, &rule, true);
    std::string line = session->output.take();
    while (line.ends_with('\n')) line.pop_back();
    result.push_back(std::move(line));
  }
  return result;
}

namespace {

// Counted once for all entries: between two keys there is no time to go through some ten thousand sets of them.
EntryAttributes attributes_of(const std::vector<std::shared_ptr<const WordIndex>>& words) {
  EntryAttributes attributes;
  for (const auto& index : words) {
    for (const WordIndex::AttributeSet& set : index->sets()) {
      for (std::string_view rest = set.attributes; !rest.empty();) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        if (end != 0) {
          EntryAttribute& known = attributes[std::string(rest.substr(0, end))];
          if (known.entries == 0) known.first = index->form(index->entries()[set.first]);
          known.entries += set.count;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
      }
    }
  }
  return attributes;
}

}  // namespace

std::shared_ptr<const Analysis> Analyst::look_at(const ProjectFiles& files, const Overlay& unsaved) {
  auto analysis = std::make_shared<Analysis>();
  // First, since it fills the cache with the words.
  analysis->findings = check_project(files, unsaved, cache_);
  for (const std::string& path : files.words) {
    try {
      analysis->words.push_back(cache_.words(path, &unsaved));
    } catch (const Fault&) {
      continue;  // it is a finding
    }
  }
  // Indexes of files that have not changed are the same objects.
  if (attributes_ == nullptr || words_ != analysis->words) {
    words_ = analysis->words;
    attributes_ = std::make_shared<const EntryAttributes>(attributes_of(words_));
  }
  analysis->attributes = attributes_;
  if (files.rules.ends_with(kSourceExtension)) {
    analysis->expansion = expand_source(files.rules, unsaved.lookup());
    for (const MappedFile& file : analysis->expansion.map.files) analysis->sources.push_back(file.path);
  }
  if (files.coverage.empty()) return analysis;
  try {
    Coverage coverage = coverage_read(files.coverage);
    analysis->counted_sentences = coverage.sentences;
    // Several lines of a source can come to the same rule: their counts add up.
    for (RuleCount& count : coverage.rules) {
      std::string text = count.text;
      RuleCount& known = analysis->counts[std::move(text)];
      count.hits += known.hits;
      count.tried += known.tried;
      count.undone += known.undone;
      known = std::move(count);
    }
  } catch (const Fault&) {
    // Nothing has run yet.
  }
  return analysis;
}

// ---- The files

Model::Model(TextStore& store, ProjectFiles files, std::shared_ptr<const Analysis> analysis)
    : store_(store), files_(std::move(files)), analysis_(std::move(analysis)) {
  // What cannot be read is left out: it is a finding of `check`.
  const auto add = [this](const std::string& path, TextKind kind) {
    const auto text = store_.text(path);
    if (text == nullptr) return;
    // The header of a built dictionary is shorter, and holds NULs.
    constexpr std::size_t kHead = 4096;
    if (std::string_view(text->text()).substr(0, kHead).find('\0') != std::string_view::npos) {
      built_.push_back(path);
    } else {
      texts_.push_back({path, kind, store_.uri(path)});
    }
  };
  // Which files a source includes is known from the first look at it on.
  if (analysis_ != nullptr && !analysis_->sources.empty()) {
    for (const std::string& path : analysis_->sources) {
      add(path, path.ends_with(".tsv") ? TextKind::table : TextKind::source);
    }
  } else if (!files_.rules.empty()) {
    add(files_.rules, files_.rules.ends_with(kSourceExtension) ? TextKind::source : TextKind::rules);
  }
  for (const std::string& path : files_.words) add(path, TextKind::entries);
  if (!files_.cooccurrence.empty()) add(files_.cooccurrence, TextKind::cooccurrence);
  for (const std::string& path : files_.graphs) add(path, TextKind::graphs);
}

const TextFile* Model::text_file(const std::string& path) const {
  const std::string key = file_key(path);
  for (const TextFile& file : texts_) {
    if (file_key(file.path) == key) return &file;
  }
  return nullptr;
}

// ---- Tokens

bool Model::token_at(const TextFile& file, const TextPosition& position, Token& token) const {
  const auto text = store_.text(file.path);
  if (text == nullptr || position.line < 0 || static_cast<std::size_t>(position.line) >= text->line_count())
    return false;
  const auto wanted = static_cast<std::size_t>(position.line);
  LineScanner scanner(file.kind);
  std::vector<Token> tokens;
  for (std::size_t line = LineScanner::is_line_by_line(file.kind) ? wanted : 0; line < wanted; ++line) {
    if (scanner.needs(text->line(line))) scanner.scan(text->line(line), tokens);
  }
  tokens.clear();
  scanner.scan(text->line(wanted), tokens);
  // A place behind the end of the line counts as its end.
  const std::size_t byte = text->byte_in_line(position);
  bool is_found = false;
  for (const Token& each : tokens) {
    if (each.begin > byte || each.end < byte) continue;
    // At a comma between two names the place is behind the first; the second begins with a sign then.
    // Two tokens can only meet at their borders.
    if (is_found && each.begin != byte) continue;
    token = each;
    is_found = true;
  }
  return is_found;
}

Symbol Model::symbol_at(const TextFile& file, const TextPosition& position, TokenPart& part) const {
  Token token{};
  if (!token_at(file, position, token)) return {};
  const std::string_view line = store_.text(file.path)->line(static_cast<std::size_t>(position.line));
  const Symbol symbol = settled(symbol_of(token, line), token);
  part = symbol_in(token, line, symbol);
  return symbol;
}

Symbol Model::settled(Symbol symbol, const Token& token) const {
  if (token.kind != TokenKind::value || symbol.kind != Symbol::Kind::attribute) return symbol;
  // One other use as a label will do.
  bool is_label = false;
  for_each_use({Symbol::Kind::label, symbol.name}, [&is_label](const NameUse& use) {
    is_label = use.token.kind != TokenKind::value;
    return !is_label;
  });
  if (is_label) symbol.kind = Symbol::Kind::label;
  return symbol;
}

// Searches the text for the letters of the name, and scans only the lines that have them; a rename in 12,000 rules would
// take ten times as long otherwise.
void Model::for_each_use(const Symbol& symbol, const std::function<bool(const NameUse&)>& use) const {
  if (symbol.kind == Symbol::Kind::none || symbol.name.empty()) return;
  std::vector<Token> tokens;
  for (const TextFile& file : texts_) {
    const std::shared_ptr<const LinedText> text = store_.text(file.path);
    if (text == nullptr) continue;
    LineScanner scanner(file.kind);
    const bool is_line_by_line = LineScanner::is_line_by_line(file.kind);
    const std::string& all = text->text();
    // The letters may stand in a comment or in a longer name: the scanner decides.
    std::size_t hit = all.find(symbol.name);
    std::size_t next = 0;  // the first line that has not been looked at
    while (hit != std::string::npos) {
      const std::size_t line = text->line_of(hit);
      // Lines in between are scanned only for what they leave open.
      for (; !is_line_by_line && next < line; ++next) {
        tokens.clear();
        if (scanner.needs(text->line(next))) scanner.scan(text->line(next), tokens);
      }
      tokens.clear();
      scanner.scan(text->line(line), tokens);
      next = line + 1;
      for (const Token& token : tokens) {
        const TokenPart part = symbol_in(token, text->line(line), symbol);
        if (part.begin != part.end && !use({&file, text, line, part, token})) return;
      }
      if (next >= text->line_count()) break;
      hit = all.find(symbol.name, text->start(next));
    }
  }
}

std::vector<NameUse> Model::uses(const Symbol& symbol) const {
  std::vector<NameUse> all;
  for_each_use(symbol, [&all](const NameUse& use) {
    all.push_back(use);
    return true;
  });
  return all;
}

std::map<std::string, std::int64_t> Model::names(Symbol::Kind kind) const {
  std::map<std::string, std::int64_t> counts;
  for (const TextFile& file : texts_) {
    // Entries are counted from their index below, which holds those of built dictionaries too.
    if (file.kind == TextKind::entries) continue;
    const NameCounts& own = store_.names(file);
    for (const auto& [name, count] : kind == Symbol::Kind::label  ? own.labels
                                     : kind == Symbol::Kind::mark ? own.marks
                                                                  : own.attributes) {
      // 0: of a name that was struck out since the text was first counted.
      if (count > 0) counts[name] += count;
    }
  }
  if (analysis_ == nullptr || kind != Symbol::Kind::attribute) return counts;
  for (const auto& [name, known] : *analysis_->attributes) counts[name] += known.entries;
  // Rules ask for relations by their marks, too.
  for (const auto& [label, count] : names(Symbol::Kind::label)) {
    // The mark of a relation on the word that it leads from, and on the one that it leads to.
    for (const char sign : {'>', '<'}) counts[sign + label] += count;
  }
  return counts;
}

std::vector<std::string> Model::words_like(std::string_view prefix, bool are_concepts, std::size_t most) const {
  // In the order of the alphabet, but of the first ones in their files: to sort half a million words takes too long.
  std::set<std::string> found;
  if (analysis_ == nullptr) return {};
  for (const auto& index : analysis_->words) {
    for (const WordIndex::Entry& entry : index->entries()) {
      const std::string_view word = are_concepts ? index->concept_word(entry) : index->form(entry);
      if (word.empty() || !word.starts_with(prefix)) continue;
      found.insert(std::string(word));
      // One more than is wanted shows that there are more.
      if (found.size() > most) break;
    }
  }
  return {found.begin(), found.end()};
}

// ---- What is told

namespace {

constexpr std::size_t kShownPlaces = 5;  // of a kind of use, in what hovering tells

std::string count_of(std::int64_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// As code in Markdown. A backtick would end it.
std::string in_code(std::string_view text) {
  std::string code = "`";
  for (const char c : text) code += c == '`' ? '\'' : c;
  return code + '`';
}

// How often, and where first.
struct Uses {
  std::int64_t count = 0;
  std::vector<std::string> places;  // "rules.txt:12", each once

  void add(const std::string& place) {
    ++count;
    if (places.size() < kShownPlaces && (places.empty() || places.back() != place)) places.push_back(place);
  }
  void append_to(const char* what, const char* noun, std::string& out) const {
    if (count == 0) return;
    out += std::string("\n- ") + what + ' ' + count_of(count, noun);
    if (places.empty()) return;
    out += ": ";
    for (std::size_t i = 0; i < places.size(); ++i) (out += i == 0 ? "" : ", ") += places[i];
    if (count > static_cast<std::int64_t>(places.size())) out += " …";
  }
};

}  // namespace

std::string Model::place_name(const NameUse& use) const {
  return std::filesystem::path(use.file->path).filename().string() + ':' + std::to_string(use.line + 1);
}

std::string Model::name_text(const Symbol& symbol) const {
  std::string out;
  if (symbol.kind == Symbol::Kind::form || symbol.kind == Symbol::Kind::concept_word) {
    append_words(symbol.name, symbol.kind == Symbol::Kind::concept_word, out);
    return out;
  }
  // Of a %name the line that gives it its value.
  if (symbol.kind == Symbol::Kind::mark) {
    for_each_use(symbol, [&](const NameUse& use) {
      // Other uses of the mark have no value to show.
      if (use.token.kind == TokenKind::mark_name)
        out += (out.empty() ? "" : "\n\n") + in_code(use.text->line(use.line)) + "  (" + place_name(use) + ')';
      return true;
    });
    return out;
  }
  if (!symbol.is_renamed()) return out;
  // An attribute or a label: a line for each of the ways in which it is used.
  const bool is_label = symbol.kind == Symbol::Kind::label;
  Uses given;
  Uses asked;
  Uses taken;
  Uses followed;
  Uses in_graphs;
  Uses in_values;
  Uses in_pairs;
  for (const NameUse& use : uses(symbol)) {
    // The name of a place takes longer than to count it.
    const std::string place = given.count + asked.count + taken.count + in_graphs.count < 100000 ? place_name(use) : "";
    // Entries are counted from their index, built ones and all.
    if (use.file->kind == TextKind::entries) continue;
    if (use.token.kind == TokenKind::value)
      in_values.add(place);
    else if (use.token.kind == TokenKind::pair)
      in_pairs.add(place);
    else if (use.file->kind == TextKind::graphs)
      in_graphs.add(place);
    else if (use.token.use == TokenUse::follows)
      followed.add(place);
    else if (use.token.use == TokenUse::gives)
      given.add(place);
    else if (use.token.use == TokenUse::takes)
      taken.add(place);
    else
      asked.add(place);
  }
  EntryAttribute in_entries;
  if (!is_label && analysis_ != nullptr) {
    if (const auto found = analysis_->attributes->find(symbol.name); found != analysis_->attributes->end())
      in_entries = found->second;
  }
  out = "**" + std::string(is_label ? "relation " : "attribute ") + in_code(symbol.name) + "**";
  // To tell below whether any line was added.
  const std::size_t head = out.size();
  if (is_built_in(symbol)) out += "\n- given by Lexon itself";
  in_graphs.append_to(is_label ? "stands in" : "given in graphs in", "place", out);
  if (in_entries.entries > 0)
    out += "\n- given by " + std::to_string(in_entries.entries) + (in_entries.entries == 1 ? " entry" : " entries") +
           ", as of " + in_code('[' + in_entries.first + ']');
  given.append_to("given by", "action", out);
  followed.append_to("followed by", "pattern", out);
  asked.append_to("asked for by", "condition", out);
  taken.append_to("taken away by", "action", out);
  in_pairs.append_to("stands in", "co-occurrence entry text", out);
  in_values.append_to("a value of the source in", "place", out);
  if (out.size() == head) out += "\n- nothing gives it, and nobody asks for it";
  return out;
}

void Model::append_words(const std::string& word, bool are_concepts, std::string& out) const {
  if (analysis_ == nullptr || analysis_->words.empty()) return;
  std::int64_t count = 0;
  std::string lines;
  for (const auto& index : analysis_->words) {
    for (const std::uint32_t number : are_concepts ? index->with_concept(word) : index->with_form(word)) {
      // The others are counted only.
      constexpr std::int64_t kShownEntries = 12;
      if (++count > kShownEntries) continue;
      const WordIndex::Entry& entry = index->entries()[number];
      lines +=
          "\n- " + in_code('[' + std::string(index->form(entry)) + "] \"" + std::string(index->concept_word(entry)) +
                           "\" (" + index->sets()[entry.set].attributes + ')');
      if (entry.line != 0) {
        lines += " " + std::filesystem::path(index->path()).filename().string() + ':' + std::to_string(entry.line);
      }
      if (count == kShownEntries) lines += "\n- …";
    }
  }
  out = "**" + std::string(are_concepts ? "concept word " : "form ") + in_code(word) +
        "**: " + (count == 0 ? "no entry" : std::to_string(count) + (count == 1 ? " entry" : " entries")) + lines;
}

std::string Model::rule_text(const TextFile& file, std::size_t line) const {
  if (analysis_ == nullptr) return {};
  const auto text = store_.text(file.path);
  std::vector<std::string> rules;
  if (file.kind == TextKind::rules || analysis_->expansion.map.files.empty() || !analysis_->expansion.is_source) {
    rules = canonical_rules(text->line(line));
  } else {
    // All lines that this one expands to.
    const SourceMap& map = analysis_->expansion.map;
    // The map has the place in the source for each line of the expanded text, one by one.
    std::string expanded;
    std::string_view rest = analysis_->expansion.text;
    const std::string key = file_key(file.path);
    std::vector<bool> is_here;
    // Paths are compared once a file, and not once a line.
    for (const MappedFile& each : map.files) is_here.push_back(file_key(each.path) == key);
    for (const MapLine& from : map.lines) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      if (is_here[from.file] && from.line == line + 1) (expanded += rest.substr(0, end)) += '\n';
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (!expanded.empty()) rules = canonical_rules(expanded);
  }
  if (rules.empty()) return {};
  std::string out = rules.size() == 1
                        ? "**rule** " + in_code(rules.front())
                        : "**" + std::to_string(rules.size()) + " rules**, the first " + in_code(rules.front());
  // A rule is known in the counts by its canonical form: where it stands may have changed since.
  // No run has been read then.
  if (analysis_->counted_sentences < 0) {
    out += files_.coverage.empty() ? "\n- no run is known: `lexon-lab coverage ... --data coverage.json` counts, and "
                                     "`\"coverage\": \"coverage.json\"` in lexon.json names the file"
                                   : "\n- no run is known yet: " + in_code(files_.coverage) + " cannot be read";
    return out;
  }
  // A line of a source can come to many rules, which count together.
  RuleCount sum;
  bool is_known = false;
  for (const std::string& rule : rules) {
    const auto found = analysis_->counts.find(rule);
    if (found == analysis_->counts.end()) continue;
    is_known = true;
    sum.hits += found->second.hits;
    sum.tried += found->second.tried;
    sum.undone += found->second.undone;
    if (sum.example.empty()) sum.example = found->second.example;
  }
  if (!is_known) return out + "\n- was not in the last run: it is new, or has changed since";
  out += "\n- fired " + count_of(sum.hits, "time") + " in the last run, of " + count_of(sum.tried, "try");
  // The plural of "try" is the one that adding an "s" does not give.
  if (out.ends_with("trys")) out.replace(out.size() - 4, 4, "tries");
  out += ", over " + count_of(analysis_->counted_sentences, "sentence");
  if (sum.undone > 0) out += "; " + std::to_string(sum.undone) + " taken back";
  if (!sum.example.empty()) out += "\n- first in " + in_code(sum.example);
  return out;
}

std::vector<NameUse> Model::definitions(const Symbol& symbol) const {
  std::vector<NameUse> found;
  std::set<const TextFile*> seen;  // files of which one place is there
  for_each_use(symbol, [&](const NameUse& use) {
    const bool is_rule = use.file->kind == TextKind::rules || use.file->kind == TextKind::source;
    bool defines = use.token.use == TokenUse::gives;
    // What rules give is worth seeing each time; of words and graphs the first place is enough.
    if (symbol.is_renamed() && !is_rule) defines = defines && seen.insert(use.file).second;
    // A word of a graph is no definition: its entry is.
    if (!symbol.is_renamed() && use.file->kind == TextKind::graphs) defines = false;
    if (defines) found.push_back(use);
    constexpr std::size_t kMost = 1000;
    return found.size() < kMost;
  });
  return found;
}

// ---- Renaming

// Rules of a source can hold names that no line of it shows whole. Returns the first such place, "rules.lxr:12"; empty if
// each stands in the source as it does in the expanded rules.
std::string Model::made_by_marks(const Symbol& symbol) const {
  if (analysis_ == nullptr || !analysis_->expansion.is_source) return {};
  const std::string& all = analysis_->expansion.text;
  const LinedText expanded(std::make_shared<const std::string>(all));
  LineScanner scanner(TextKind::rules);
  std::vector<Token> tokens;
  for (std::size_t hit = all.find(symbol.name); hit != std::string::npos;) {
    const std::size_t line = expanded.line_of(hit);
    tokens.clear();
    scanner.scan(expanded.line(line), tokens);
    for (const Token& token : tokens) {
      const TokenPart part = symbol_in(token, expanded.line(line), symbol);
      if (part.begin == part.end) continue;
      // The map leads from the expanded text back to the source, where the same letters should stand.
      const MappedPlace begin = analysis_->expansion.map.place(static_cast<std::int64_t>(line) + 1, part.begin);
      const auto source = store_.text(begin.file);
      // A place that comes from no file was made by a directive alone.
      if (source == nullptr || begin.line < 1) continue;
      const std::string_view shown = source->line(static_cast<std::size_t>(begin.line) - 1);
      if (shown.substr(std::min(begin.column, shown.size()), symbol.name.size()) == symbol.name) continue;
      return begin.file + ':' + std::to_string(begin.line);
    }
    if (line + 1 >= expanded.line_count()) break;
    hit = all.find(symbol.name, expanded.start(line + 1));
  }
  return {};
}

std::string Model::rename_fault(const Symbol& symbol, const std::string* to) const {
  if (!symbol.is_renamed()) return "only attributes and relation labels can be renamed";
  if (is_built_in(symbol)) return "\"" + symbol.name + "\" is a name that Lexon gives itself, and stays as it is";
  bool is_followed = false;   // by patterns, which compare three bytes of a label
  bool is_in_graphs = false;  // whose labels have up to five
  bool has_values = false;    // in lists of a source
  bool is_other = false;
  for (const NameUse& use : uses(symbol)) {
    is_followed = is_followed || use.token.use == TokenUse::follows;
    is_in_graphs = is_in_graphs || use.file->kind == TextKind::graphs;
    has_values = has_values || use.token.kind == TokenKind::value;
  }
  if (has_values) {
    // The same letters in the other role: a relation for an attribute, an attribute for a relation.
    const Symbol twin{symbol.kind == Symbol::Kind::label ? Symbol::Kind::attribute : Symbol::Kind::label, symbol.name};
    for_each_use(twin, [&is_other](const NameUse& use) {
      is_other = use.token.kind != TokenKind::value;
      return !is_other;
    });
    if (is_other) {
      return "\"" + symbol.name +
             "\" is both an attribute and a relation, and stands in a list of the source: which of "
             "the two is meant there cannot be told; rename it by hand";
    }
  } else if (const std::string place = made_by_marks(symbol); !place.empty()) {
    return "\"" + symbol.name + "\" is put together by marks at " + place + ": rename it there by hand";
  }
  // A dictionary that is built already would keep the old name.
  if (!built_.empty() && symbol.kind == Symbol::Kind::attribute && analysis_ != nullptr) {
    for (const auto& index : analysis_->words) {
      // Entry text is renamed along with the rest.
      if (std::ranges::find(built_, index->path()) == built_.end()) continue;
      for (const WordIndex::AttributeSet& set : index->sets()) {
        if ((',' + set.attributes + ',').find(',' + symbol.name + ',') == std::string::npos) continue;
        return index->path() + " is built already and has this attribute: name its entry text in lexon.json instead";
      }
    }
  }
  // So far of the old name; from here on of the new one.
  if (to == nullptr) return {};
  if (*to == symbol.name) return {};
  // Bytes that count of a name: a longer one would be taken for another that begins so.
  constexpr std::size_t kFollowed = 3;
  constexpr std::size_t kInGraphs = 5;
  constexpr std::size_t kRole = 64;
  // Relations of co-occurrence are written between slashes by custom, and may be long.
  const bool is_role = symbol.name.front() == '/';
  const std::size_t most = is_role ? kRole : is_followed ? kFollowed : is_in_graphs ? kInGraphs : kFollowed;
  if (std::string fault = name_fault(symbol.kind, *to, is_in_graphs, most); !fault.empty()) return fault;
  bool is_taken = false;
  for_each_use({symbol.kind, *to}, [&is_taken](const NameUse&) {
    is_taken = true;
    return false;
  });
  if (is_taken) return "there is \"" + *to + "\" already, and the two would become one";
  return {};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
