// Lexon for C++ programs: sentences from graphs of meaning, by a dictionary and a file of rules.
//
//   lexon::Grammar grammar = lexon::Grammar::load({.dictionary = "words.dic", .rules = "rules.txt"});
//   if (!grammar) ...                                  // grammar.messages() say why
//   lexon::Generator generator(grammar);               // one for each thread
//   for (const lexon::Sentence& sentence : generator.render(graphs)) std::cout << sentence.text << '\n';
//
// Link with `Lexon::lexon` (CMake) or by `pkg-config lexon`. Text is bytes throughout: Lexon gives back the encoding
// that dictionary, rules and graphs are in, and knows none.
//
// Bad input never ends the process and is never silent: what is wrong comes back as messages. Functions that can throw
// say so, and what; no other exception leaves the library.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#if defined(__GNUC__)
#define LEXON_API __attribute__((visibility("default")))
#define LEXON_LOCAL __attribute__((visibility("hidden")))
#else
#define LEXON_API
#define LEXON_LOCAL
#endif

namespace lexon {
inline namespace v1 {

// The version of the library in use, as "1.2.3"; valid for ever.
[[nodiscard]] LEXON_API const char* version() noexcept;

struct LEXON_LOCAL Inside;  // for Lexon's own tools

enum class MessageKind {
  note,     // nothing is lost
  warning,  // works, but most likely not as it was meant
  error,    // something was left out, or nothing was done
};

// What a user ought to know.
struct Message {
  MessageKind kind = MessageKind::error;
  std::string file;         // empty: it is about text from memory, or about no file
  std::int64_t line = 0;    // from 1; 0: it is about no line. In a graph text, counted from the text's first line
  std::int64_t column = 0;  // byte of the line, from 1; 0: none
  std::string text;         // what is wrong, and where it can be told how to put it right; one line
};

// "file:line:column: text", without the parts that are not there. Throws std::bad_alloc.
[[nodiscard]] LEXON_API std::string to_string(const Message& message);

// The files of a grammar. Paths as the system wants them.
struct GrammarFiles {
  std::string dictionary{};    // binary dictionary, made by `lexon-dict build`; its index lies beside it
  std::string rules{};         // rule text, its source (".lxr") or compiled (".rul"); `Grammar::from_text` reads none
  std::string cooccurrence{};  // co-occurrence dictionary; empty: none
  // Memory for the rules and a sentence of each generator together, in blocks of 65535 bytes: 1 to 65535, and the
  // nearest of these for another number. Rule bases of more than some 27,000 short rules need more.
  int blocks = 200;
};

// A dictionary and rules, ready to render with: read-only, shared by its copies, by generators and by threads without
// locks. Copying is cheap. What a grammar was made from must not change while it lives; it keeps the dictionary files
// open and reads them as it looks words up.
class LEXON_API Grammar {
 public:
  // Without rules: not usable, no messages.
  Grammar() noexcept;
  // Opens the files and compiles the rules, in memory: no file is written, and compiled files beside a rule text are
  // not looked at. What is wrong stands in `messages`. Throws std::bad_alloc.
  [[nodiscard]] static Grammar load(const GrammarFiles& files);
  // The same with rules from memory. Messages about them name no file.
  [[nodiscard]] static Grammar from_text(std::string_view rules, const GrammarFiles& files);

  // Can it render? A rule that is refused leaves it usable; a file that cannot be opened does not, nor does a refused
  // last line, which puts no rule in force.
  [[nodiscard]] bool is_usable() const noexcept;
  explicit operator bool() const noexcept { return is_usable(); }

  // About files and rules, in the order of the rules. Valid as long as any copy of the grammar.
  [[nodiscard]] const std::vector<Message>& messages() const noexcept;

  // The dictionary files that are open, each dictionary in front of its index. Throws std::bad_alloc.
  [[nodiscard]] std::vector<std::string> dictionary_files() const;
  // The plain rules that a grammar source (".lxr") expands to; empty for other rules. Valid as long as any copy of the
  // grammar.
  [[nodiscard]] std::string_view expansion() const noexcept;
  // What a run that compiles these rules prints about them, in front of its sentences; empty for compiled rules. Valid
  // as long as any copy of the grammar.
  [[nodiscard]] std::string_view printed() const noexcept;

  [[nodiscard]] std::size_t rule_count() const noexcept;    // rules in force
  [[nodiscard]] std::size_t memory_bytes() const noexcept;  // of rules and index, without the files

 private:
  friend class Generator;
  friend struct Inside;
  struct LEXON_LOCAL Body;
  std::shared_ptr<const Body> body_;
};

enum class Status {
  done,       // `text` is the sentence
  failed,     // there is none; the messages say why
  over_time,  // the time limit has ended it
  stopped,    // `Generator::stop`, or `keep_going`, has ended it
};

// "done", "failed", "over time", "stopped"; valid for ever.
[[nodiscard]] LEXON_API const char* to_string(Status status) noexcept;

// What came of one sentence of a graph text.
struct Sentence {
  std::string text;  // the same at every trace level; empty unless done
  Status status = Status::failed;
  int code = 0;                   // of the engine, as the manual lists them: 0, or why it failed
  std::string label;              // the line that opened the sentence, such as "[S:1]", without its end; may be empty
  std::vector<Message> messages;  // about the graph; at least one if it failed
  std::string trace;              // all that `lexon` writes for the sentence at the level, down to the banner
  std::int64_t steps = 0;         // passes of the search
  std::int64_t memory_bytes = 0;  // that the sentence took; all is free again
  double seconds = 0;             // on the clock of the wall
  // A forced way back did not reach its target: the next sentence goes on to look for it, which can change its text.
  bool leaves_target = false;
  // What can stand in for a sentence that is not done: the words of its graph, in an order that the manual describes.
  // Empty if done, and where no graph was read.
  std::string fallback;
};

// How sentences are rendered.
struct Settings {
  int trace_level = 0;    // 0 to 4; `Sentence::trace` grows with it
  bool post_edit = true;  // run the post-edit rules
  double time_limit = 0;  // seconds for each sentence; 0: none
  // The sentence in front of the first one `leaves_target`: for who renders a long text in parts.
  bool begins_with_target = false;
  // Asked about every tenth of a second while sentences are rendered, on the thread that called `render`; false stops
  // as `Generator::stop` does. It may not throw. Empty: not asked.
  std::function<bool()> keep_going{};
};

// Renders with one grammar, which it keeps alive. Not to be used by two threads at once, but for `stop`; any number of
// generators work side by side, one for each thread.
//
// It renders on a thread of its own, with a stack (256 MiB of addresses, of which memory is taken as it is used) for
// the deepest search, so that results do not depend on the caller's stack; `render` waits for it. A sentence that would
// overrun even that stack fails, as one without memory does. After a fork the child must not use a generator of its
// parent, nor destroy it: its thread is not there.
class LEXON_API Generator {
 public:
  // Throws std::bad_alloc, also where no thread is to be had.
  explicit Generator(Grammar grammar);
  ~Generator();
  Generator(Generator&& other) noexcept;
  Generator& operator=(Generator&& other) noexcept;

  // Renders every sentence of `graphs`, a text of any length, in order; none gives an empty result. With a grammar that
  // is not usable the result is one failed sentence that says so. Every call begins afresh (unless the settings say
  // otherwise), and within one the sentences follow each other as in a run of `lexon`. Throws std::bad_alloc, when memory for the results is
  // exhausted; the generator stays usable.
  [[nodiscard]] std::vector<Sentence> render(std::string_view graphs, const Settings& settings = {});

  // Ends a `render` that is under way: the sentence that is being rendered comes back as stopped, those behind it not
  // at all. Without one nothing happens. May be called from any thread, as long as the generator lives, but not from a
  // signal handler.
  void stop() noexcept;

 private:
  friend struct Inside;
  struct LEXON_LOCAL Body;
  std::unique_ptr<Body> body_;
};

// Cuts a graph text where its sentences end, by the rules of the reader: what stands in front of a sentence belongs to
// it. Nothing is lost; what stands behind the last sentence comes last, if there is more than white space. The parts
// lie in `graphs`. Throws std::bad_alloc.
[[nodiscard]] LEXON_API std::vector<std::string_view> split(std::string_view graphs);

}  // namespace v1
}  // namespace lexon
