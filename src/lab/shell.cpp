// lexon-lab shell: a grammar and graphs at a prompt, or under a script on standard input.

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>

#include <editline/readline.h>
#include <unistd.h>

#include "data/platform.hpp"
#include "dicttool/find.hpp"
#include "front/process.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/explain.hpp"
#include "lab/progress.hpp"
#include "lab/project.hpp"
#include "lab/show.hpp"
#include "lab/text_file.hpp"
#include "lab/why.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// One line a command. The manual has the same list with examples.
constexpr const char* kHelp =
    "dict FILE, rules FILE, cr FILE, graphs FILE   name the files; -d, -r, -c and INPUT of the call do the same\n"
    "list [TEXT]          the sentences of the graphs, or those that hold the text\n"
    "pick LABEL           the sentence that the commands work on; by number where no label fits\n"
    "graph                shows it. A line that looks like a relation begins a graph of your own, an empty one ends "
    "it\n"
    "render [all]         writes the sentence, or all of them\n"
    "explain [-a] [WORD]  the steps that stand; -a: with what was taken back; WORD: the rules that touched it\n"
    "why LINE             what kept the rule of this line from working\n"
    "word TEXT            entries with this form or concept; TEXT*: that begin so; +N +PL: with these attributes\n"
    "rule LINE            shows the rule; rule LINE TEXT changes it, rule LINE - takes it out, rule + TEXT adds one\n"
    "save [FILE]          writes the changed rules\n"
    "reload               reads again what has changed on the disk, and tells what; changed rules are forgotten\n"
    "steps N, time N      limits of each sentence; 0: none\n"
    "help, quit           and every other command of lexon-lab, with these files: coverage, profile, report, ...\n";

constexpr const char* kNotSaved = "the changed rules were not saved";

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())) != 0) text.remove_suffix(1);
  return text;
}

// Takes the first word off, and the blanks around it.
std::string take_word(std::string_view& rest) {
  rest = trimmed(rest);
  const std::size_t end = std::min(rest.find_first_of(" \t"), rest.size());
  const std::string word(rest.substr(0, end));
  rest = trimmed(rest.substr(end));
  return word;
}

void print(const std::string& text) {
  std::cout << escaped(text) << '\n';
}

// The files that something was read from, as they were then.
class Seen {
 public:
  Seen() = default;
  explicit Seen(const std::string& path) { add(path); }
  // The mark is taken now, before or after the file is read as the caller likes; before is the safe order.
  void add(const std::string& path) { files_.emplace_back(path, text_mark(path, nullptr)); }
  // Would reading this path find the same again?
  [[nodiscard]] bool is_still(const std::string& path) const {
    return !files_.empty() && files_.front().first == path &&
           std::ranges::all_of(files_, [](const auto& file) { return text_mark(file.first, nullptr) == file.second; });
  }

 private:
  std::vector<std::pair<std::string, TextMark>> files_;  // the one that was named first
};

// Where lines come from: an edited one with history at a terminal, else standard input.
class Lines {
 public:
  // A history that cannot be read or written is none; the shell works without.
  Lines() : is_terminal_(isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
    if (!is_terminal_) return;
    rl_initialize();
    if (const char* home = std::getenv("HOME"); home != nullptr) history_ = std::string(home) + "/.lexon_lab_history";
    // A first session has no file yet.
    if (!history_.empty()) read_history(history_.c_str());
  }
  ~Lines() {
    if (is_terminal_ && !history_.empty()) write_history(history_.c_str());
  }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  [[nodiscard]] bool is_terminal() const { return is_terminal_; }
  // False at the end of the input.
  bool next(const char* prompt, std::string& line) {
    if (!is_terminal_) return static_cast<bool>(std::getline(std::cin, line));
    std::cout.flush();
    const std::unique_ptr<char, decltype(&std::free)> read(readline(prompt), &std::free);
    // The end of the input, Ctrl-D at a terminal.
    if (read == nullptr) return false;
    line = read.get();
    // Empty lines would push commands out of the history.
    if (!trimmed(line).empty()) add_history(read.get());
    return true;
  }

 private:
  bool is_terminal_;
  std::string history_;
};

// What is loaded, what is changed, and what each line of the prompt does with it. Files are loaded when they are needed
// first; names can be given one after the other, and nothing is read on the way.
class Shell {
 public:
  Shell(GrammarFiles files, std::string graphs, RenderOptions limits)
      : files_(std::move(files)), graph_file_(std::move(graphs)), limits_(std::move(limits)) {}
  int run();

 private:
  bool obey(std::string_view line);
  void read_graph(std::string line);
  void load();
  void load_graphs();
  void reload();
  [[nodiscard]] const Project& project();
  [[nodiscard]] Bench& bench();
  [[nodiscard]] const GraphText& graph();
  void list(std::string_view text);
  void pick(const std::string& label);
  void render(const std::string& which);
  void explain(std::string_view rest);
  void find_words(std::string_view rest);
  void rule(std::string_view rest);
  void save(const std::string& path);
  void run_other(const std::string& name, std::string_view rest);
  void set_rules(std::vector<std::string>&& lines);
  [[nodiscard]] std::vector<std::string>& rule_lines();

  GrammarFiles files_;      // that were named; any may still be empty
  std::string graph_file_;  // the same
  RenderOptions limits_;    // of each sentence; its inputs are not used
  Lines lines_;
  std::optional<Project> project_;
  std::unique_ptr<Bench> bench_;
  // Of what the project was made, and the graphs.
  // Of each part: its file, and what else it was read from.
  Seen seen_words_;
  Seen seen_cooccurrence_;
  Seen seen_rules_;
  Seen seen_graphs_;
  std::vector<GraphText> graphs_;        // of `graph_file_`; empty: not read
  std::optional<GraphText> graph_;       // that was picked or typed
  std::vector<std::string> rule_lines_;  // of the text; empty: not read
  std::string rule_line_end_ = "\n";     // as the file has it
  bool is_changed_ = false;              // the rules differ from their file
  bool is_of_file_ = false;              // the rules of the project are those of their file
  bool is_stale_ = false;                // the project is to be loaded again before it is used
};

// ---- What is loaded

// Reads only what has changed, by the marks of the files that were read before: the dictionary and its index, the rules and
// all that a source includes. With what cannot be used, the grammar before stays.
void Shell::load() {
  if (files_.dictionary.empty()) throw Fault("there is no dictionary yet: dict FILE");
  if (files_.rules.empty()) throw Fault("there are no rules yet: rules FILE");
  unsigned kept = Inside::none;  // parts of the grammar before that are taken over
  // Without a grammar before there is nothing that could be kept.
  if (project_.has_value()) {
    if (seen_words_.is_still(files_.dictionary)) kept |= Inside::words;
    if (seen_cooccurrence_.is_still(files_.cooccurrence)) kept |= Inside::cooccurrence;
    if (is_of_file_ && !is_changed_ && seen_rules_.is_still(files_.rules)) kept |= Inside::rules;
  }
  if (kept == (Inside::words | Inside::cooccurrence | Inside::rules)) {
    is_stale_ = false;
    return print("the grammar has not changed");
  }
  // The marks are older than what is read.
  Seen words(files_.dictionary);
  Seen cooccurrence(files_.cooccurrence);
  Seen rules(files_.rules);
  std::string text;
  if (is_changed_) {
    for (const std::string& line : rule_lines_) text += line + '\n';
  }
  const std::string_view changed = text;
  const std::string_view* instead = is_changed_ ? &changed : nullptr;
  // A changed source has to be expanded, so it stands for its file; the text of plain rules is taken as it is.
  Overlay source;
  if (is_changed_ && files_.rules.ends_with(kSourceExtension)) {
    source.put(files_.rules, text);
    // Loaded through an overlay, the grammar takes nothing over.
    kept = Inside::none;
  }
  Project made = !source.is_empty()     ? Project(files_, source)
                 : project_.has_value() ? Project(files_, instead, *project_, kept)
                 : is_changed_          ? Project(files_, changed)
                                        : Project(files_);
  // Which files these are is known only when they have been read.
  words.add(made.loaded().words.index_path);
  cooccurrence.add(made.loaded().cooccurrence.index_path);
  for (const MappedFile& file : made.loaded().source.files) rules.add(file.path);
  // The bench holds on to the project, so it goes first; then the old grammar, before anything more is made.
  bench_.reset();
  project_.reset();
  project_.emplace(std::move(made));
  is_stale_ = false;
  if ((kept & Inside::words) == 0) seen_words_ = std::move(words);
  if ((kept & Inside::cooccurrence) == 0) seen_cooccurrence_ = std::move(cooccurrence);
  if ((kept & Inside::rules) == 0) {
    seen_rules_ = std::move(rules);
    is_of_file_ = !is_changed_;
  }
  // What follows tells the user what was read and what was not.
  const std::string count = count_text(static_cast<std::int64_t>(project_->grammar.rule_count()), "rule");
  if (kept == Inside::none || is_changed_) return print(count + " loaded");
  std::string anew;
  std::string same;
  for (const auto& [part, name] : {std::pair{Inside::words, files_.dictionary},
                                   {Inside::cooccurrence, files_.cooccurrence},
                                   {Inside::rules, files_.rules + " (" + count + ')'}}) {
    std::string& list = (kept & part) != 0 ? same : anew;
    if (!name.empty()) list += (list.empty() ? "" : ", ") + name;
  }
  print("read again: " + anew + "; not changed: " + same);
}

// What is loaded, after loading what is needed.
const Project& Shell::project() {
  if (!project_.has_value() || is_stale_) load();
  return *project_;
}

Bench& Shell::bench() {
  const Project& of = project();
  if (bench_ == nullptr) {
    bench_ = std::make_unique<Bench>(of);
  }
  return *bench_;
}

// All sentences of the file, kept in memory: a prompt is for files of a size that one looks through.
void Shell::load_graphs() {
  if (graph_file_.empty()) throw Fault("there are no graphs yet: graphs FILE, or type one");
  RenderOptions all;
  all.inputs = {graph_file_};
  graphs_.clear();
  // In front of the reading: a file that changes meanwhile is read again.
  seen_graphs_ = Seen(graph_file_);
  for_each_sentence(all, [this](const GraphText& sentence) { graphs_.push_back(sentence); });
  print(count_text(static_cast<std::int64_t>(graphs_.size()), "sentence") + " read");
}

// The sentence that commands work on; the first one until another is picked or typed.
const GraphText& Shell::graph() {
  if (graph_.has_value()) return *graph_;
  if (graphs_.empty()) load_graphs();
  if (graphs_.empty()) throw Fault(graph_file_ + ": there is no sentence in it");
  graph_ = graphs_.front();
  return *graph_;
}

void Shell::reload() {
  if (is_changed_) tell_line(kNotSaved);
  is_changed_ = false;
  rule_lines_.clear();
  is_stale_ = true;
  load();
  if (graph_file_.empty() || graphs_.empty() || seen_graphs_.is_still(graph_file_)) return;
  const std::string label = graph_.has_value() ? graph_->label : std::string();
  // A typed graph stays as it is.
  const bool is_of_file = graph_.has_value() && graph_->file == graph_file_;
  load_graphs();
  if (!is_of_file) return;
  graph_.reset();
  for (const GraphText& each : graphs_) {
    if (each.label == label) graph_ = each;
  }
}

// ---- Graphs

void Shell::list(std::string_view text) {
  if (graphs_.empty()) load_graphs();
  for (const GraphText& each : graphs_) {
    if (!text.empty() && each.text.find(text) == std::string::npos) continue;
    // By number, since labels may stand twice.
    const bool is_picked = graph_.has_value() && graph_->number == each.number && graph_->file == each.file;
    print((is_picked ? "* " : "  ") + each.file + ':' + std::to_string(each.line) + "  " + each.label);
  }
}

// A label counts before a number.
void Shell::pick(const std::string& label) {
  if (graphs_.empty()) load_graphs();
  for (const GraphText& each : graphs_) {
    if (!is_asked_for(label, each)) continue;
    graph_ = each;
    return;
  }
  for (const GraphText& each : graphs_) {
    if (std::to_string(each.number) != label) continue;
    graph_ = each;
    return;
  }
  throw Fault("no sentence has the label \"" + label + "\": list shows them");
}

// Up to an empty line or the end of the sentence.
void Shell::read_graph(std::string line) {
  GraphText typed;
  typed.file = "typed";
  typed.line = 1;
  typed.number = 1;
  const bool has_start = line.starts_with("[S");
  // One that is typed without a label gets one, so that messages can name it.
  typed.label = has_start ? line.substr(1, line.find(']') - 1) : "S:typed";
  typed.text = has_start ? line + '\n' : "[S:typed]\n" + line + '\n';
  bool has_end = false;
  while (!has_end && lines_.next("... ", line) && !trimmed(line).empty()) {
    typed.text += line + '\n';
    has_end = trimmed(line).starts_with("[/S");
  }
  if (!has_end) typed.text += "[/S]\n";
  graph_ = std::move(typed);
}

// Sentences that failed are told as they come; the status of a script says so too, by the Fault at the end.
void Shell::render(const std::string& which) {
  if (!which.empty() && which != "all") pick(which);
  std::vector<GraphText> wanted;
  if (which == "all") {
    if (graphs_.empty()) load_graphs();
    wanted = graphs_;
  } else {
    wanted.push_back(graph());
  }
  // All sentences are tried; the fault at the end is for the status of a script.
  bool is_done = true;
  for (const GraphText& each : wanted) {
    interrupt_check();
    for (const Rendered& rendered : bench().render(each.text, limits_)) {
      is_done = is_done && rendered.is_done();
      if (rendered.is_done()) print(rendered.sentence.text);
      if (!rendered.is_done()) tell_failure(each, rendered);
    }
  }
  if (!is_done) throw Fault("not every sentence was done: explain tells more");
}

// -w may stand in front of the word, as on a command line.
void Shell::explain(std::string_view rest) {
  ExplainOptions options;
  while (!rest.empty()) {
    const std::string word = take_word(rest);
    if (word == "-a" || word == "--all") {
      options.all = true;
    } else if (word != "-w" && word != "--word") {
      options.word = word;
    }
  }
  static_cast<void>(explain_sentence(std::cout, project(), bench(), graph(), limits_, options));
}

// ---- Words

// Words are looked up as they stand; a prefix and attributes are a search over the dictionary, and count together.
void Shell::find_words(std::string_view rest) {
  std::vector<std::string> attrs;  // that an entry must have
  std::string prefix;              // of its form or of its concept word; empty: any
  while (!rest.empty()) {
    const std::string word = take_word(rest);
    if (word.front() == '+') {
      attrs.push_back(word.substr(1));
    } else if (word.ends_with('*')) {
      prefix = word.substr(0, word.size() - 1);
    } else {
      const std::vector<std::string> found = words_found(project(), word);
      for (const std::string& entry : found) print(entry);
      if (found.empty()) print("no entry has the form or the concept " + word);
    }
  }
  // Words alone have been answered above.
  if (attrs.empty() && prefix.empty()) return;
  // The prefix may be that of the form or of the concept word.
  std::vector<std::string> found;
  for (const int field : {kKeyHw, kKeyCw}) {
    if (prefix.empty() && field != kKeyHw) break;
    FindQuery query{.attributes = attrs, .field = field};
    if (!prefix.empty()) query.prefixes.push_back(prefix);
    const auto session = std::make_unique<Session>();
    // The search writes to a file, as the dictionary tool has it.
    const File entries = unnamed_file();
    if (entries == nullptr ||
        dictionary_find(*session, files_.dictionary, query, entries.get(), stderr) == FindResult::failed)
      throw Fault(files_.dictionary + ": cannot be searched");
    std::string text(static_cast<std::size_t>(file_size(entries.get())), '\0');
    if (!text.empty() && !file_read_at(entries.get(), 0, text.data(), text.size()))
      throw Fault("what was found cannot be read");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) found.push_back(std::move(line));
  }
  // A word whose form and concept both begin so is found twice.
  std::ranges::sort(found);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  constexpr std::size_t kMostShown = 200;  // entries; a prefix of one letter finds thousands
  for (std::size_t i = 0; i < std::min(found.size(), kMostShown); ++i) print(found[i]);
  if (found.size() > kMostShown) print("and " + std::to_string(found.size() - kMostShown) + " more");
  if (found.empty()) print("no entry fits");
}

// ---- Rules

// The text that the lines of rules are counted in. Of compiled rules it is the text beside them, once they are loaded.
std::vector<std::string>& Shell::rule_lines() {
  if (!rule_lines_.empty()) return rule_lines_;
  const std::string path = project_.has_value() && !is_stale_ ? project_->rule_text() : files_.rules;
  const std::string text = text_file_read(path);
  const std::vector<std::string_view> lines = lines_of(text);
  rule_lines_.assign(lines.begin(), lines.end());
  // Saved rules keep the line ends of their file.
  rule_line_end_ = text.find("\r\n") == std::string::npos ? "\n" : "\r\n";
  return rule_lines_;
}

// With rules that cannot be used, those before stay.
void Shell::set_rules(std::vector<std::string>&& lines) {
  // `load` takes the rules from the members.
  std::vector<std::string> before = std::exchange(rule_lines_, std::move(lines));
  const bool was_changed = std::exchange(is_changed_, true);
  try {
    load();
  } catch (...) {
    rule_lines_ = std::move(before);
    is_changed_ = was_changed;
    throw;
  }
}

// Shows or changes a line of the rule text. A change is loaded at once, and refused with what the loader says of it.
void Shell::rule(std::string_view rest) {
  const std::string place = take_word(rest);
  if (place.empty()) throw Fault("rule LINE, rule LINE TEXT, rule LINE -, rule + TEXT");
  // A copy: it takes their place only if it can be loaded.
  std::vector<std::string> lines = rule_lines();
  if (place == "+") {
    lines.emplace_back(rest);
    set_rules(std::move(lines));
    print(files_.rules + ':' + std::to_string(rule_lines_.size()) + ": added");
    return;
  }
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(place.data(), place.data() + place.size(), number);
  if (error != std::errc() || end != place.data() + place.size() || number == 0 || number > lines.size())
    throw Fault(place + ": the rules have the lines 1 to " + std::to_string(lines.size()));
  std::string& line = lines[number - 1];
  if (rest.empty()) {
    print(files_.rules + ':' + place + ": " + line);
    for (const Rule& each : chain<&Rule::next>(project().loaded().rules.rules)) {
      const RulePlace place_of_rule = project().line_of(each);
      // A line of a source may have become any number of rules, or none.
      if (place_of_rule.line == number && place_of_rule.file == project().rule_text())
        print("  in force: " + project().text_of(each));
    }
    return;
  }
  // A rule that is taken out stays as a comment, so that the lines behind it keep their numbers.
  line = rest == "-" ? ";" + line : std::string(rest);
  set_rules(std::move(lines));
}

// Written to their own file the rules count as unchanged, and are what the file holds; a copy elsewhere changes nothing.
void Shell::save(const std::string& path) {
  // Of compiled rules the text beside them, which is what was changed.
  const std::string target = path.empty() ? project().rule_text() : path;
  const std::vector<std::string>& lines = rule_lines();
  std::string text;
  for (const std::string& line : lines) text += line + rule_line_end_;
  text_file_write(target, text);
  if (target == project().rule_text()) {
    is_changed_ = false;
    is_of_file_ = target == files_.rules;
    seen_rules_ = Seen(files_.rules);
    // A change of a file that a source includes is to be seen as before.
    for (const MappedFile& file : project().loaded().source.files) seen_rules_.add(file.path);
  }
  print(target + ": written");
}

// ---- Other commands of the program, with the files of the shell.

// Another command of the program: its own words, then the files that the shell knows, as options.
void Shell::run_other(const std::string& name, std::string_view rest) {
  if (is_changed_) throw Fault("the rules have changed: save or reload them first");
  std::vector<std::string> words = {name};
  while (!rest.empty()) words.push_back(take_word(rest));
  // A check names its rules without an option, and its graphs with one, since it can do without them.
  const bool is_check = name == "check";
  const auto add = [&words](const char* option, const std::string& value) {
    if (value.empty()) return;
    if (*option != '\0') words.emplace_back(option);
    words.push_back(value);
  };
  add("-d", files_.dictionary);
  add(is_check ? "" : "-r", files_.rules);
  add("-c", files_.cooccurrence);
  add(is_check ? "-i" : "", graph_file_);
  // The command has told on standard error why.
  if (run_command(words) != kDone) throw Fault(name + ": there are findings, or it failed");
}

// ---- The prompt

// False to end.
bool Shell::obey(std::string_view line) {
  std::string_view rest = trimmed(line);
  // Scripts have comments.
  if (rest.empty() || rest.front() == '#') return true;
  // A relation has its parenthesis before any blank, and no command has one.
  const bool is_graph = rest.starts_with("[S") || rest.find('(') < rest.find_first_of(" \t");
  if (is_graph) {
    read_graph(std::string(rest));
    return true;
  }
  const std::string word = take_word(rest);
  // Files may have blanks in their names, so the rest of the line is one argument.
  const std::string argument(rest);
  // Names a file of the grammar; it is read when it is needed first.
  const auto set_file = [&](std::string& file) {
    if (argument.empty()) throw Fault(word + " FILE");
    file = argument;
    is_stale_ = true;
    // Changed rules stay with another dictionary, and go with the file that they are of.
    if (&file != &files_.rules) return;
    if (is_changed_) tell_line(kNotSaved);
    rule_lines_.clear();
    is_changed_ = false;
  };
  // The rest of the line as a number that is not negative.
  const auto number = [&argument, &word] {
    double value = 0;
    const auto [end, error] = std::from_chars(argument.data(), argument.data() + argument.size(), value);
    // Digits can name infinity, too, and what no counter holds.
    constexpr double kMost = 1e15;
    const bool is_number = error == std::errc() && end == argument.data() + argument.size();
    if (!is_number || !(value >= 0 && value <= kMost)) throw Fault(word + " N: a number from 0 up");
    return value;
  };
  // Below, a word a line in the order of the help; what is none of these may be a command of the program.
  if (word == "quit" || word == "exit") return false;
  if (word == "help") {
    std::cout << kHelp;
  } else if (word == "dict") {
    set_file(files_.dictionary);
  } else if (word == "rules") {
    set_file(files_.rules);
  } else if (word == "cr") {
    set_file(files_.cooccurrence);
  } else if (word == "graphs") {
    if (argument.empty()) throw Fault("graphs FILE");
    graph_file_ = argument;
    graph_.reset();
    load_graphs();
  } else if (word == "list") {
    list(argument);
  } else if (word == "pick") {
    pick(argument);
  } else if (word == "graph") {
    const GraphText& shown = graph();
    std::cout << shown.file << ':' << shown.line << '\n' << trimmed(shown.text) << '\n';
  } else if (word == "render") {
    render(argument);
  } else if (word == "explain") {
    explain(rest);
  } else if (word == "why") {
    if (argument.empty()) throw Fault("why LINE");
    static_cast<void>(why_sentence(std::cout, project(), bench(), graph(), limits_, argument));
  } else if (word == "word") {
    find_words(rest);
  } else if (word == "rule") {
    rule(rest);
  } else if (word == "save") {
    save(argument);
  } else if (word == "reload") {
    reload();
  } else if (word == "steps") {
    // A fraction of a step is cut off.
    limits_.steps = static_cast<std::int64_t>(number());
  } else if (word == "time") {
    limits_.seconds = number();
  } else {
    run_other(word, rest);
  }
  return true;
}

// A script goes on behind a line that fails, and its status says so in the end; at a prompt failures have been seen.
int Shell::run() {
  // The key ends what is under way, and not the shell.
  interrupts_are_noted();
  if (lines_.is_terminal()) std::cout << "lexon-lab " LEXON_VERSION "; help shows the commands\n";
  int status = kDone;
  std::int64_t number = 0;
  std::string line;
  while (lines_.next("lexon> ", line)) {
    ++number;
    interrupt_forget();
    try {
      if (!obey(line)) break;
    } catch (const Fault& fault) {
      status = kFailed;
      tell_line(lines_.is_terminal() ? fault.what() : "line " + std::to_string(number) + ": " + fault.what());
    }
    std::cout.flush();
  }
  // The prompt that Ctrl-D has ended stands without a line end.
  if (lines_.is_terminal()) std::cout << '\n';
  if (is_changed_) tell_line(kNotSaved);
  return lines_.is_terminal() ? kDone : status;
}

struct Arguments {
  GrammarFiles grammar;
  std::string graphs;
  RenderOptions limits;
};

}  // namespace

Command add_shell(CLI::App& app) {
  CLI::App& command = add_command(app, "shell", "Work with a grammar at a prompt, or by a script on standard input");
  const auto arguments = std::make_shared<Arguments>();
  add_option(command, "-d,--dict", arguments->grammar.dictionary, "The dictionary, made by lexon-dict");
  add_option(command, "-r,--rules", arguments->grammar.rules, "The rules, as text or compiled (.rul)");
  add_option(command, "-c,--cr", arguments->grammar.cooccurrence, "The co-occurrence dictionary");
  add_option(command, "INPUT", arguments->graphs, "Graphs");
  add_option(command, "-T,--time", arguments->limits.seconds, "Seconds for each sentence; 0: no limit",
             {.shows_default = true});
  add_option(command, "--steps", arguments->limits.steps, "Steps of the search for each sentence; 0: no limit",
             {.not_negative = true});
  return {&command, [arguments] { return Shell(arguments->grammar, arguments->graphs, arguments->limits).run(); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
