#include "lab/serve_work.hpp"

#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <optional>
#include <utility>

#include "lab/bench.hpp"
#include "lab/check.hpp"
#include "lab/commands.hpp"
#include "lab/coverage.hpp"
#include "lab/gold.hpp"
#include "lab/project.hpp"
#include "lab/view.hpp"
#include "source/expand.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using Json = Workplace::Json;
using Clock = std::chrono::steady_clock;

// Work that is waited for is given up as soon as nobody wants it any longer.
constexpr std::chrono::milliseconds kWaitingTurn{20};
// What one answer of a run takes before it says how far it has come.
constexpr double kMomentSeconds = 0.3;
// Steps of a sentence that a page steps through.
constexpr std::size_t kStepsShown = 2000;
// Grammars that are kept: a change that is taken back finds the one before.
constexpr std::size_t kMostLoaded = 3;

double seconds_since(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

const char* level_name(MessageKind kind) {
  switch (kind) {
    case MessageKind::error: return "error";
    case MessageKind::warning: return "warning";
    default: return "note";
  }
}

const char* level_name(Level level) {
  switch (level) {
    case Level::error: return "error";
    case Level::warning: return "warning";
    default: return "note";
  }
}

// One sentence of a graph file, and its lines there. What stands between two sentences belongs to the one behind it.
struct Part {
  std::string_view text;   // into the file's text
  std::int64_t first = 1;  // from 1
  std::int64_t last = 1;
  std::int64_t number = 0;  // in its file, from 1
};

// Does no line hold more than a comment?
bool is_without_graph(std::string_view text) {
  while (!text.empty()) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return true;
    // The lines of a comment that stands behind the last sentence, say.
    if (text[begin] != ';') return false;
    text.remove_prefix(std::min(text.find('\n', begin), text.size()));
  }
  return true;
}

// The sentences of a text. What stands behind the last one is none.
std::vector<Part> parts_of(std::string_view graphs) {
  std::vector<Part> parts;
  std::int64_t line = 1;
  for (const std::string_view text : split(graphs)) {
    const auto lines = std::count(text.begin(), text.end(), '\n');
    Part part{text, line, std::max(line, line + lines - (text.ends_with('\n') ? 1 : 0)),
              static_cast<std::int64_t>(parts.size()) + 1};
    line += lines;
    // Its lines are counted all the same.
    if (!is_without_graph(text)) parts.push_back(part);
  }
  return parts;
}

// The line that opens the sentence, or the first one that has something.
std::int64_t head_line(const Part& part) {
  const std::string label = label_of(part.text);
  const std::size_t at = label.empty() ? part.text.find_first_not_of(" \t\r\n") : part.text.find('[' + label);
  if (at == std::string_view::npos) return part.first;
  return part.first + std::count(part.text.begin(), part.text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
}

// A sentence of which nothing is expected was expected to fail.
bool is_as_expected(const Rendered& rendered, const Expected& expected) {
  if (!rendered.is_done()) return expected.texts.empty();
  return std::ranges::find(expected.texts, rendered.sentence.text) != expected.texts.end();
}

// Takes the turn, or gives up because nobody waits for the work any longer.
bool take_turn(std::unique_lock<std::timed_mutex>& turn, const Wanted& wanted) {
  while (wanted()) {
    // While the turn was waited for, the page may have given the work up. The thread sanitizer does not see a wait by the
    // steady clock; a clock that is set back only makes this look late.
    if (turn.try_lock_until(std::chrono::system_clock::now() + kWaitingTurn)) return wanted();
  }
  return false;
}

}  // namespace

// The texts as one request sees them: those that the page has not saved, and the files as they were when the request came.
// What is not among them is read below the folder, or refused. For one thread.
class Workplace::Texts {
 public:
  Texts(const Workplace& place, Overlay overlay) : place_(place), overlay_(std::move(overlay)) {}

  // Null: there is none; `fault` says why.
  [[nodiscard]] std::shared_ptr<const std::string> find(const std::string& path) {
    // What has been read once stays the same for the whole request.
    if (auto text = overlay_.find(path)) return text;
    const std::string inside =
        std::filesystem::path(path).lexically_normal().lexically_relative(place_.folder_.path()).string();
    FolderFault why;
    if (std::optional<FolderText> read = place_.folder_.read(inside, why)) {
      overlay_.put(path, std::move(read->text));
      return overlay_.find(path);
    }
    // What is refused counts as empty: a rule file that includes it gets a message, and the rest of it is read.
    if (!why.is_missing) {
      faults_.push_back(why.text);
      // It is put there, so that it is refused once.
      overlay_.put(path, {});
      return overlay_.find(path);
    }
    return nullptr;
  }

  // Throws Fault if there is none, or if something has been refused.
  [[nodiscard]] std::shared_ptr<const std::string> demand(const std::string& path) {
    auto text = find(path);
    if (text == nullptr) throw Fault(place_.shown_path(path) + ": is not there");
    if (!faults_.empty()) throw Fault(faults_.front());
    return text;
  }

  // For who reads includes; valid as long as this is. Remembers what was asked for.
  [[nodiscard]] TextLookup lookup() {
    return [this](const std::string& path) -> const std::string* {
      const auto text = find(path);
      if (text != nullptr) asked_.emplace_back(path, text);
      return text.get();
    };
  }

  using Asked = std::vector<std::pair<std::string, std::shared_ptr<const std::string>>>;
  [[nodiscard]] const Asked& asked() const { return asked_; }
  [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }
  [[nodiscard]] const Overlay& overlay() const { return overlay_; }

 private:
  const Workplace& place_;
  Overlay overlay_;
  std::vector<std::string> faults_;
  Asked asked_;
};

// A grammar and what it was made from. Read-only once it is loaded: requests share it.
struct Workplace::Loaded {
  GrammarFiles files;
  Grammar grammar;             // none if it cannot be used; `notes` then say why
  Texts::Asked made_from;      // all texts; if they are the same, so is the grammar
  Json notes = Json::array();  // messages of its reading, as the page shows them
  double seconds = 0;          // that it took
};

Workplace::Workplace(const Folder& folder, ServeFiles files, RenderOptions limits)
    : folder_(folder), files_(std::move(files)), limits_(std::move(limits)) {}

Workplace::~Workplace() = default;

std::string Workplace::whole_path(const std::string& relative) const {
  return folder_.path() + '/' + relative;
}

std::string Workplace::shown_path(std::string_view path) const {
  const std::string& folder = folder_.path();
  if (path.starts_with(folder) && path.substr(folder.size()).starts_with('/')) path.remove_prefix(folder.size() + 1);
  return std::string(path);
}

// In texts that name files.
std::string Workplace::shown_text(std::string text) const {
  const std::string folder = folder_.path() + '/';
  for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) {
    text.erase(at, folder.size());
  }
  return text;
}

// A message as the page shows it. Those of a sentence count its own lines, `lines_before` of its file are in front of them.
Workplace::Json Workplace::note(const Message& message, std::int64_t lines_before) const {
  return {{"file", shown_path(message.file)},
          {"line", message.line == 0 ? 0 : message.line + lines_before},
          {"column", message.column},
          {"level", level_name(message.kind)},
          {"text", shown_text(message.text)}};
}

// Texts that have not changed keep their place in memory, by which what was made of them is known again.
Workplace::Texts Workplace::texts_of(const Unsaved& unsaved) {
  std::vector<std::string> names = files_.graphs;
  names.push_back(files_.rules);
  names.insert(names.end(), files_.entries.begin(), files_.entries.end());
  names.push_back(files_.cooccurrence);
  names.push_back(files_.gold);
  // Files are read on each request: what others have saved counts from the next one on.
  const std::lock_guard lock(texts_);
  names.insert(names.end(), included_.begin(), included_.end());
  for (const auto& [name, text] : unsaved) names.push_back(name);
  // What no longer belongs to the project goes, or what a page has closed without saving it would stay in force.
  for (const std::string& path : held_) {
    const bool is_asked = std::ranges::find(names, shown_path(path)) != names.end();
    if (!is_asked) known_.drop(path);
  }
  held_.clear();
  for (const std::string& name : names) {
    if (name.empty()) continue;
    const std::string path = whole_path(name);
    held_.push_back(path);
    const auto edited = unsaved.find(name);
    std::optional<FolderText> read;
    FolderFault fault;
    if (edited == unsaved.end()) read = folder_.read(name, fault);
    if (edited == unsaved.end() && !read) {
      known_.drop(path);
      continue;
    }
    const std::string& now = edited == unsaved.end() ? read->text : edited->second;
    const auto before = known_.find(path);
    // A put text is another one, even with the same letters.
    if (before == nullptr || *before != now) known_.put(path, now);
  }
  return {*this, known_};
}

// Null: it was not wanted any longer.
Workplace::LoadedPointer Workplace::load(Texts& texts, const Wanted& wanted) {
  // One at a time: the next request most often wants the same grammar.
  std::unique_lock turn(loading_, std::defer_lock);
  if (!take_turn(turn, wanted)) return nullptr;
  // Texts are compared by their place in memory first, which is quick.
  const auto is_same = [&texts](const LoadedPointer& loaded) {
    return std::ranges::all_of(loaded->made_from, [&texts](const auto& part) {
      const auto now = texts.find(part.first);
      return now != nullptr && (now == part.second || *now == *part.second);
    });
  };
  const auto known = std::ranges::find_if(loaded_, is_same);
  if (known != loaded_.end()) {
    // The one used last stands in front, and the last of the list goes first.
    loaded_.splice(loaded_.begin(), loaded_, known);
    return loaded_.front();
  }
  loaded_.push_front(load_anew(texts));
  if (loaded_.size() > kMostLoaded) loaded_.pop_back();
  // The next request reads what this one has found to be included.
  const std::lock_guard lock(texts_);
  included_.clear();
  for (const auto& [path, text] : loaded_.front()->made_from) included_.push_back(shown_path(path));
  return loaded_.front();
}

std::shared_ptr<Workplace::Loaded> Workplace::load_anew(Texts& texts) {
  const Clock::time_point begin = Clock::now();
  const auto loaded = std::make_shared<Loaded>();
  const TextLookup lookup = texts.lookup();
  // The path of a dictionary of entry texts, which belong to what the grammar is made from.
  const auto built = [&](BuiltWords& words, const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    for (const std::string& name : names) {
      paths.push_back(whole_path(name));
      static_cast<void>(texts.demand(paths.back()));
      static_cast<void>(lookup(paths.back()));
    }
    return words.dictionary_of(paths, &texts.overlay());
  };
  static_cast<void>(texts.demand(whole_path(files_.rules)));
  GrammarFiles& files = loaded->files;
  files.rules = whole_path(files_.rules);
  files.blocks = files_.blocks;
  files.dictionary = files_.dictionary.empty() ? built(words_, files_.entries) : files_.dictionary;
  files.cooccurrence = files_.built_cooccurrence;
  if (!files_.cooccurrence.empty()) files.cooccurrence = built(pairs_, {files_.cooccurrence});
  // All that the rules include comes through the lookup.
  loaded->grammar = Inside::load(files, lookup);
  // Which files these are is known only now.
  loaded->made_from = texts.asked();
  for (const std::string& fault : texts.faults()) {
    loaded->notes.push_back({{"file", files_.rules}, {"line", 0}, {"level", "error"}, {"text", fault}});
  }
  for (Message message : loaded->grammar.messages()) {
    if (message.file.empty()) message.file = files.rules;
    loaded->notes.push_back(note(message, 0));
  }
  loaded->seconds = seconds_since(begin);
  return loaded;
}

Workplace::Json Workplace::files(const Unsaved& unsaved, const Wanted& wanted) {
  std::vector<std::string> rules = {files_.rules};
  try {
    Texts texts = texts_of(unsaved);
    if (const LoadedPointer loaded = load(texts, wanted)) {
      for (const auto& [path, text] : loaded->made_from) {
        const std::string name = shown_path(path);
        const bool is_other = std::ranges::find(files_.entries, name) != files_.entries.end() ||
                              name == files_.cooccurrence || std::ranges::find(rules, name) != rules.end();
        if (!is_other) rules.push_back(name);
      }
    }
  } catch (const Fault&) {
    // The page shows it with the first sentence.
  }
  // What stands in which pane: the expected sentences beside the graphs, pairs beside the words.
  Json words = files_.entries;
  if (!files_.cooccurrence.empty()) words.push_back(files_.cooccurrence);
  Json graphs = files_.graphs;
  if (!files_.gold.empty()) graphs.push_back(files_.gold);
  return {{"graphs", graphs}, {"rules", rules}, {"words", words}, {"gold", files_.gold}, {"entries", files_.entries}};
}

// Has the sentence around the line shown by `use`, which gets what is known of it already; without sentence or grammar
// that is all.
Workplace::Json Workplace::with_sentence(
    const Unsaved& unsaved, const std::string& graphs, std::int64_t line, const Wanted& wanted,
    const std::function<Json(const Project&, Bench&, const GraphText&, Json&&)>& use) {
  if (std::ranges::find(files_.graphs, graphs) == files_.graphs.end()) throw Fault(graphs + ": is no graph file here");
  Texts texts = texts_of(unsaved);
  const std::string path = whole_path(graphs);
  const auto all = texts.demand(path);  // which the parts point into
  const std::vector<Part> parts = parts_of(*all);
  if (parts.empty()) return {{"status", "empty"}};
  // Between two sentences the next one is meant, behind the last one that.
  const auto around = std::ranges::find_if(parts, [line](const Part& each) { return line <= each.last; });
  const Part& part = around == parts.end() ? parts.back() : *around;
  const LoadedPointer loaded = load(texts, wanted);
  if (loaded == nullptr) return nullptr;
  // A copy of the sentence, since the file may be another one at the next request.
  const GraphText graph{path, part.first, part.number, label_of(part.text), std::string(part.text)};
  Json result{{"label", graph.label}, {"file", graphs},        {"line", head_line(part)}, {"first", part.first},
              {"last", part.last},    {"number", part.number}, {"rules", loaded->notes},  {"load", loaded->seconds}};
  // The reasons stand in `rules`.
  if (!loaded->grammar) {
    result["status"] = "unusable";
    return result;
  }
  const Project project(loaded->files, loaded->grammar);
  Bench bench(project);
  bench.set_keep_going(wanted);
  Json shown = use(project, bench, graph, std::move(result));
  return wanted() ? shown : nullptr;
}

Workplace::Json Workplace::render(const Unsaved& unsaved, const std::string& graphs, std::int64_t line,
                                  const Wanted& wanted) {
  const auto as_text = [this](const Project&, Bench& bench, const GraphText& graph, Json&& result) {
    const std::vector<Rendered> all = bench.render(graph.text, limits_);
    Json notes = Json::array();
    std::string text;
    for (const Rendered& rendered : all) {
      text += (text.empty() ? "" : "\n") + rendered.sentence.text;
      for (Message message : rendered.sentence.messages) {
        if (message.file.empty()) message.file = graph.file;
        notes.push_back(note(message, graph.line - 1));
      }
      // Of several sentences in a text the last one counts.
      result["status"] = rendered.status();
      result["seconds"] = rendered.sentence.seconds;
      result["steps"] = rendered.sentence.steps;
    }
    if (all.empty()) result["status"] = "empty";
    result["text"] = text;
    result["notes"] = std::move(notes);
    return std::move(result);
  };
  return with_sentence(unsaved, graphs, line, wanted, as_text);
}

Workplace::Json Workplace::view(const Unsaved& unsaved, const std::string& graphs, std::int64_t line,
                                const Wanted& wanted) {
  const auto as_steps = [&](const Project& project, Bench& bench, const GraphText& graph, Json&& result) -> Json {
    std::vector<Json> views = Viewer(project, bench, kStepsShown).data(graph, limits_);
    if (!wanted() || views.empty()) return nullptr;
    view_lay_out(std::span(views).first(1), wanted);
    result["view"] = std::move(views.front());
    return std::move(result);
  };
  return with_sentence(unsaved, graphs, line, wanted, as_steps);
}

Workplace::Json Workplace::check(const Unsaved& unsaved, const Wanted& wanted) {
  // One at a time, since they share what is kept of entries.
  std::unique_lock turn(checking_, std::defer_lock);
  if (!take_turn(turn, wanted)) return nullptr;
  Texts texts = texts_of(unsaved);
  CheckInput input;
  const std::string rules = whole_path(files_.rules);
  input.rules = {rules, *texts.demand(rules)};
  Json findings = Json::array();
  const auto add = [&](const std::string& file, std::int64_t line, std::size_t column, std::size_t end,
                       const char* level, const std::string& code, const std::string& text, const std::string& remedy) {
    findings.push_back({{"file", shown_path(file)},
                        {"line", line},
                        {"column", column},
                        {"end", end},
                        {"level", level},
                        {"code", code},
                        {"text", shown_text(text)},
                        {"fix", shown_text(remedy)}});
  };
  // A source is expanded here, since what is wrong with it is told in its own lines, and its rules in those of its files.
  Expansion expansion;
  if (files_.rules.ends_with(kSourceExtension)) expansion = expand_source(rules, texts.lookup());
  if (expansion.is_source) {
    for (const SourceMessage& message : expansion.messages) {
      add(message.file, message.line, message.line == 0 ? 0 : message.column + 1, 0,
          message.is_warning ? "warning" : "error", "source-syntax", message.text, {});
    }
    if (expansion.has_errors()) return {{"findings", findings}};
    input.rules.text = expansion.text;
    input.source = &expansion.map;
  }
  // The check reads by itself, through the overlay; here it is made sure that everything is in there.
  for (const std::string& name : files_.entries) {
    input.words_files.push_back(whole_path(name));
    static_cast<void>(texts.demand(input.words_files.back()));
  }
  // A built dictionary is read as it is; it is none of the page's texts.
  if (!files_.dictionary.empty()) input.words_files = {files_.dictionary};
  input.cooccurrence_file = files_.built_cooccurrence;
  if (!files_.cooccurrence.empty()) {
    input.cooccurrence_file = whole_path(files_.cooccurrence);
    static_cast<void>(texts.demand(input.cooccurrence_file));
  }
  for (const std::string& name : files_.graphs) {
    input.graphs.push_back({whole_path(name), *texts.demand(whole_path(name))});
  }
  input.blocks = files_.blocks;
  input.unsaved = &texts.overlay();
  input.cache = &checked_;
  // A check cannot be given up half way, so that what is not wanted any longer is told all the same.
  for (const Finding& finding : lab::check(input)) {
    if (std::ranges::find(files_.silenced, finding.code) != files_.silenced.end()) continue;
    add(finding.file, finding.line, finding.column, finding.end_column, level_name(finding.level), finding.code,
        finding.text, finding.remedy);
  }
  checked_.forget_unused();
  return {{"findings", findings}};
}

namespace {

// Lines of rules with what was counted: [file, line, of use, taken back, tried, offered].
Json coverage_rows(const std::vector<RuleCount>& rules,
                   const std::function<std::string(std::string_view)>& shown_path) {
  // Several rules can come from one line of a source.
  std::map<std::pair<std::string, std::uint32_t>, std::array<std::int64_t, 4>> lines;
  for (const RuleCount& rule : rules) {
    // Compiled rules without their text have no line to show a count at.
    if (rule.line == 0) continue;
    auto& line = lines[{shown_path(rule.file), rule.line}];
    line[0] += rule.hits;
    line[1] += rule.undone;
    line[2] += rule.tried;
    line[3] += rule.offered;
  }
  Json rows = Json::array();
  for (const auto& [place, counts] : lines) {
    rows.push_back({place.first, place.second, counts[0], counts[1], counts[2], counts[3]});
  }
  return rows;
}

}  // namespace

Workplace::Json Workplace::run(const Unsaved& unsaved, std::size_t from, const Wanted& wanted) {
  const Clock::time_point begin = Clock::now();
  Texts texts = texts_of(unsaved);
  const LoadedPointer loaded = load(texts, wanted);
  if (loaded == nullptr) return nullptr;
  if (!loaded->grammar) return {{"status", "unusable"}, {"rules", loaded->notes}};
  struct FilePart {
    const std::string& file;
    Part part;
  };
  // Sentences of all files are numbered through.
  std::vector<FilePart> parts;
  for (const std::string& file : files_.graphs) {
    for (const Part& part : parts_of(*texts.demand(whole_path(file)))) parts.push_back({file, part});
  }
  const bool has_gold = !files_.gold.empty();
  Gold gold(has_gold ? std::string_view(*texts.demand(whole_path(files_.gold))) : std::string_view());
  // Those that came before have taken what is expected of them.
  std::size_t number = 0;
  for (; number < std::min(from, parts.size()); ++number)
    static_cast<void>(gold.next(label_of(parts[number].part.text)));

  const Project project(loaded->files, loaded->grammar);
  Bench bench(project);
  // An answer counts its own sentences; the page adds the answers up.
  CoverageCounter counter(project);
  bench.watchers().add(counter);
  bench.set_keep_going(wanted);
  Json sentences = Json::array();
  for (; number < parts.size(); ++number) {
    // At least one sentence an answer, however long it takes.
    if (seconds_since(begin) > kMomentSeconds && !sentences.empty()) break;
    const auto& [file, part] = parts[number];
    const std::string label = label_of(part.text);
    counter.set_sentence(label.empty() ? std::to_string(number + 1) : label);
    const std::vector<Rendered> all = bench.render(std::string(part.text), limits_);
    if (!wanted()) return nullptr;
    // Asked for before anything is left out, so that the order holds.
    const Expected* expected = gold.next(label);
    if (all.empty()) continue;
    const Rendered& rendered = all.front();
    Json one{{"label", label},
             {"number", part.number},
             {"file", file},
             {"line", head_line(part)},
             {"status", rendered.status()},
             {"text", rendered.sentence.text},
             {"seconds", rendered.sentence.seconds}};
    if (!rendered.is_done() && !rendered.sentence.messages.empty())
      one["why"] = shown_text(rendered.sentence.messages.front().text);
    if (expected != nullptr) {
      one["expected"] = expected->texts;
      one["good"] = is_as_expected(rendered, *expected);
    }
    sentences.push_back(std::move(one));
  }
  const bool is_over = number == parts.size();
  return {
      {"sentences", sentences},
      {"next", is_over ? Json(nullptr) : Json(number)},
      {"gold", has_gold},
      {"left", is_over && has_gold ? gold.rest().size() : 0},
      {"coverage", coverage_rows(counter.result().rules, [this](std::string_view path) { return shown_path(path); })}};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
