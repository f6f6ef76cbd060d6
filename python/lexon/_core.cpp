// The library for Python, in its plainest form: bytes in, tuples of bytes out. `lexon/__init__.py` makes classes of it.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <lexon/lexon.hpp>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace {

constexpr int kEndOfInput = -10;  // the code of what is left behind the last sentence

std::string_view view_of(const py::bytes& bytes) {
  return std::string_view(bytes);
}

// Set by one thread, looked at by those that render.
class Stop {
 public:
  void set() { wanted_ = true; }
  [[nodiscard]] bool is_set() const { return wanted_; }

 private:
  std::atomic<bool> wanted_{false};
};

using Generators = std::vector<std::unique_ptr<lexon::Generator>>;

// A grammar with the generators that are idle. Any number of threads may render with it.
class Renderer {
 public:
  explicit Renderer(lexon::Grammar grammar) : grammar_(std::move(grammar)) {}
  ~Renderer() { forget_after_fork(); }
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;

  [[nodiscard]] const lexon::Grammar& grammar() const { return grammar_; }

  // Without the lock of the interpreter.
  std::vector<lexon::Sentence> render(std::string_view graphs, const lexon::Settings& settings) {
    std::unique_ptr<lexon::Generator> generator = take();
    std::vector<lexon::Sentence> sentences = generator->render(graphs, settings);
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(generator));
    return sentences;
  }

 private:
  // The threads of generators stay in the parent: a child can but leave these generators alone.
  void forget_after_fork() {
    if (owner_ == getpid()) return;
    owner_ = getpid();
    for (std::unique_ptr<lexon::Generator>& generator : idle_) static_cast<void>(generator.release());
    idle_.clear();
  }

  std::unique_ptr<lexon::Generator> take() {
    const std::lock_guard lock(mutex_);
    forget_after_fork();
    // Each has a thread and a session of its own; they share the grammar.
    if (idle_.empty()) return std::make_unique<lexon::Generator>(grammar_);
    std::unique_ptr<lexon::Generator> generator = std::move(idle_.back());
    idle_.pop_back();
    return generator;
  }

  lexon::Grammar grammar_;
  std::mutex mutex_;
  // Under the mutex, as the process that they belong to; at most as many as have rendered at once.
  Generators idle_;
  pid_t owner_ = getpid();
};

// Texts go over as bytes: names of files and words of a dictionary need not be UTF-8.
py::tuple tuple_of(const lexon::Message& message) {
  return py::make_tuple(static_cast<int>(message.kind), py::bytes(message.file), message.line, message.column,
                        py::bytes(message.text));
}

py::list list_of(const std::vector<lexon::Message>& messages) {
  py::list list;
  for (const lexon::Message& message : messages) list.append(tuple_of(message));
  return list;
}

// The order is what the classes of the package unpack.
py::tuple tuple_of(const lexon::Sentence& sentence) {
  return py::make_tuple(py::bytes(sentence.text), to_string(sentence.status), sentence.code, py::bytes(sentence.label),
                        list_of(sentence.messages), py::bytes(sentence.trace), sentence.steps, sentence.memory_bytes,
                        sentence.seconds, sentence.leaves_target, py::bytes(sentence.fallback));
}

// Loading takes long, and touches no object of Python.
std::unique_ptr<Renderer> load(const std::string& dictionary, const std::string& rules, const std::string& cooccurrence,
                               int blocks) {
  const py::gil_scoped_release unlocked;
  return std::make_unique<Renderer>(lexon::Grammar::load({dictionary, rules, cooccurrence, blocks}));
}

std::unique_ptr<Renderer> from_text(const py::bytes& rules, const std::string& dictionary,
                                    const std::string& cooccurrence, int blocks) {
  // The caller holds the bytes while the text is read.
  const std::string_view text = view_of(rules);
  const py::gil_scoped_release unlocked;
  return std::make_unique<Renderer>(lexon::Grammar::from_text(text, {dictionary, {}, cooccurrence, blocks}));
}

// False when a signal has raised an exception, or another thread wants an end.
bool may_go_on(const Stop* stop) {
  if (stop != nullptr && stop->is_set()) return false;
  const py::gil_scoped_acquire locked;
  return PyErr_CheckSignals() == 0;
}

// Without the lock of the interpreter but where it is asked whether to go on. `stop` may be null.
std::vector<lexon::Sentence> render_all(Renderer& renderer, const py::bytes& graphs, int level, bool post_edit,
                                        double time_limit, const Stop* stop, bool begins_with_target) {
  const lexon::Settings settings{level, post_edit, time_limit, begins_with_target, [stop] { return may_go_on(stop); }};
  const std::string_view text = view_of(graphs);
  std::vector<lexon::Sentence> sentences;
  {
    const py::gil_scoped_release unlocked;
    sentences = renderer.render(text, settings);
  }
  if (PyErr_Occurred() != nullptr) throw py::error_already_set();
  return sentences;
}

py::list render(Renderer& renderer, const py::bytes& graphs, int level, bool post_edit, double time_limit,
                const Stop* stop, bool begins_with_target) {
  py::list list;
  for (const auto& sentence : render_all(renderer, graphs, level, post_edit, time_limit, stop, begins_with_target)) {
    list.append(tuple_of(sentence));
  }
  return list;
}

// What a run writes for the sentences, and its counts, without an object of Python for each of them: the output, how many
// were done, failed, over time and stopped, messages about lines, and the bit that the last one leaves.
py::tuple render_text(Renderer& renderer, const py::bytes& graphs, int level, bool post_edit, double time_limit,
                      const Stop* stop, bool begins_with_target) {
  std::string output;
  std::array<std::int64_t, 4> counts{};
  std::int64_t messages = 0;
  bool leaves_target = begins_with_target;
  for (const auto& sentence : render_all(renderer, graphs, level, post_edit, time_limit, stop, begins_with_target)) {
    output += sentence.trace;
    leaves_target = sentence.leaves_target;
    // What an end of the input leaves without a banner is no sentence.
    if (sentence.code != kEndOfInput) ++counts[static_cast<std::size_t>(sentence.status)];
    messages += std::count_if(sentence.messages.begin(), sentence.messages.end(),
                              [](const lexon::Message& message) { return message.line != 0; });
  }
  const auto count = [&counts](lexon::Status status) { return counts[static_cast<std::size_t>(status)]; };
  return py::make_tuple(py::bytes(output), count(lexon::Status::done), count(lexon::Status::failed),
                        count(lexon::Status::over_time), count(lexon::Status::stopped), messages, leaves_target);
}

// Copies: the parts outlive the text.
py::list split(const py::bytes& graphs) {
  py::list list;
  for (const std::string_view part : lexon::split(view_of(graphs))) list.append(py::bytes(part.data(), part.size()));
  return list;
}

// Where groups of `every` sentences end.
py::list borders(const py::bytes& graphs, std::size_t every) {
  py::list list;
  const std::string_view text = view_of(graphs);
  const std::vector<std::string_view> parts = lexon::split(text);
  for (std::size_t i = every; i < parts.size(); i += every) list.append(parts[i].data() - text.data());
  if (!parts.empty()) list.append(parts.back().data() + parts.back().size() - text.data());
  return list;
}

}  // namespace

PYBIND11_MODULE(_core, module) {
  module.doc() = "The library in its plainest form; see the package lexon.";
  module.def("version", &lexon::version);
  module.def("split", &split, py::arg("graphs"));
  module.def("borders", &borders, py::arg("graphs"), py::arg("every"));
  module.def("load", &load, py::arg("dictionary"), py::arg("rules"), py::arg("cooccurrence"), py::arg("blocks"));
  module.def("from_text", &from_text, py::arg("rules"), py::arg("dictionary"), py::arg("cooccurrence"),
             py::arg("blocks"));
  py::class_<Stop>(module, "Stop").def(py::init<>()).def("set", &Stop::set);
  py::class_<Renderer>(module, "Renderer")
      .def("is_usable", [](const Renderer& self) { return self.grammar().is_usable(); })
      .def("rule_count", [](const Renderer& self) { return self.grammar().rule_count(); })
      .def("dictionary_files",
           [](const Renderer& self) {
             py::list list;
             for (const std::string& path : self.grammar().dictionary_files()) list.append(py::bytes(path));
             return list;
           })
      .def("expansion", [](const Renderer& self) { return py::bytes(std::string(self.grammar().expansion())); })
      .def("printed", [](const Renderer& self) { return py::bytes(std::string(self.grammar().printed())); })
      .def("messages", [](const Renderer& self) { return list_of(self.grammar().messages()); })
      .def("render", &render, py::arg("graphs"), py::arg("level"), py::arg("post_edit"), py::arg("time_limit"),
           py::arg("stop"), py::arg("begins_with_target"))
      .def("render_text", &render_text, py::arg("graphs"), py::arg("level"), py::arg("post_edit"),
           py::arg("time_limit"), py::arg("stop"), py::arg("begins_with_target"));
}
