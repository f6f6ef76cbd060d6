// lexon-lab view: sentences as a page to look at.
//
// The page is one file that fetches nothing. Each sentence is a piece of data of its own, which is read when it is shown,
// and is written as soon as it is there, so that memory does not grow with the input.

#include <algorithm>
#include <filesystem>
#include <memory>

#include "front/process.hpp"
#include "lab/child_process.hpp"
#include "lab/commands.hpp"
#include "lab/show.hpp"
#include "lab/view.hpp"

namespace lexon {

namespace embedded {
extern const std::string_view view_css, view_css_hash;
extern const std::string_view view_js, view_js_hash;
extern const std::string_view view_page_js, view_page_js_hash;
}  // namespace embedded

inline namespace v1 {
namespace lab {

namespace {

using nlohmann::json;

constexpr std::int64_t kMostSentences = 200;  // without --all
// Of all sentences together; from there on each keeps few.
constexpr std::size_t kMostSteps = 200000;
constexpr std::size_t kFewSteps = 1000;
// Of one batch that is laid out at a time.
constexpr std::size_t kBatchSentences = 100;
constexpr std::size_t kBatchSteps = 20000;

struct Arguments : RunArguments {
  std::string output = "view.html";
  std::size_t kept = kViewSteps;
  bool all = false;
  bool failed = false;
  bool open = false;
};

// As text between tags. Control characters, which HTML has none of, become blanks.
std::string html_text(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '&': safe += "&amp;"; break;
      case '<': safe += "&lt;"; break;
      case '>': safe += "&gt;"; break;
      default: safe += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
  }
  return safe;
}

// The file in the making, which takes its name when it is whole; or standard output.
class Page {
 public:
  explicit Page(const std::string& path) : path_(path) {
    // Who has the page open meanwhile sees the old one whole.
    if (path != "-" && !draft_.open_beside(path)) throw Fault(path + ": cannot be written: " + std::strerror(errno));
    stream_ = path == "-" ? stdout : draft_.stream();
  }
  void write(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stream_); }
  void write_script(const std::string& name, const json& data) {
    // Data and no script: the policy below lets no other script run.
    write("<script type=\"application/json\" id=\"" + name + "\">" + view_json_text(data) + "</script>\n");
  }
  void close() {
    if (path_ != "-" && !draft_.put_in_place(path_))
      throw Fault(path_ + ": cannot be written: " + std::strerror(errno));
  }

 private:
  std::string path_;
  DraftFile draft_;
  std::FILE* stream_ = nullptr;
};

// The page may run its own two scripts and fetch nothing: whatever texts of graphs and rules hold, they stay texts.
void write_head(Page& page, const std::string& title) {
  // The hashes are made with the program, from the files that it holds.
  const auto hash = [](std::string_view text) { return " 'sha256-" + std::string(text) + "'"; };
  page.write("<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
  page.write("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src" +
             hash(embedded::view_js_hash) + hash(embedded::view_page_js_hash) + "; style-src" +
             hash(embedded::view_css_hash) + "; base-uri 'none'; form-action 'none'\">\n");
  page.write("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n");
  page.write("<meta name=\"color-scheme\" content=\"light dark\">\n<title>" + html_text(title) + "</title>\n<style>");
  page.write(embedded::view_css);
  page.write("</style>\n</head>\n<body>\n<div id=\"page\"></div>\n");
}

// The index of the sentences, their texts for who has no scripts, and the scripts, which come last since they read it all.
void write_tail(Page& page, const json& index) {
  page.write_script("index", index);
  page.write("<noscript>\n<p>The steps are shown by a script, which this browser does not run.</p>\n<ul>\n");
  for (const json& sentence : index["sentences"]) {
    page.write("<li>" + html_text(sentence["label"].get_ref<const std::string&>()) + " " +
               html_text(sentence["status"].get_ref<const std::string&>()) + ": " +
               html_text(sentence["text"].get_ref<const std::string&>()) + "</li>\n");
  }
  page.write("</ul>\n</noscript>\n<script>");
  page.write(embedded::view_js);
  page.write("</script>\n<script>");
  page.write(embedded::view_page_js);
  page.write("</script>\n</body>\n</html>\n");
}

// What is written, batch by batch: to start Graphviz takes longer than to lay most graphs out.
class Writer {
 public:
  Writer(Page& page, json& index) : page_(page), index_(index) {}

  void add(json&& sentence) {
    const std::size_t steps = sentence.contains("steps") ? sentence["steps"].size() : 0;
    // A batch is in memory: its end comes with its sentences or its steps.
    steps_ += steps;
    batch_steps_ += steps;
    batch_.push_back(std::move(sentence));
    if (batch_.size() >= kBatchSentences || batch_steps_ >= kBatchSteps) flush();
  }
  void flush() {
    // One run of Graphviz for the whole batch.
    const std::string notice = view_lay_out(batch_);
    if (!notice.empty()) notice_ = notice;
    for (const json& data : batch_) {
      json& sentences = index_["sentences"];
      page_.write_script("s" + std::to_string(sentences.size()), data);
      json row;
      // What the list of sentences shows before one of them is opened.
      for (const char* key : {"label", "status", "text", "file", "line", "taken_back"}) row[key] = data[key];
      sentences.push_back(std::move(row));
    }
    batch_.clear();
    batch_steps_ = 0;
  }
  [[nodiscard]] std::size_t steps() const { return steps_; }
  [[nodiscard]] const std::string& notice() const { return notice_; }

 private:
  Page& page_;
  json& index_;
  std::vector<json> batch_;
  std::size_t batch_steps_ = 0;
  std::size_t steps_ = 0;
  std::string notice_;
};

int view(const Arguments& arguments) {
  refuse_own_files(arguments, arguments.output, "--output");
  if (arguments.open && arguments.output == "-") throw Fault("--open wants a file: give --output a name");
  const Project project(arguments.grammar);
  Bench bench(project);
  Page page(arguments.output);
  json index = {{"sentences", json::array()},        {"notices", json::array()},
                {"inputs", arguments.render.inputs}, {"dictionary", arguments.grammar.dictionary},
                {"rules", arguments.grammar.rules},  {"cooccurrence", arguments.grammar.cooccurrence}};
  write_head(page, "Run of " + arguments.render.inputs.front());
  Writer writer(page, index);
  Viewer viewer(project, bench, arguments.kept);
  std::int64_t read = 0;
  std::int64_t shown = 0;
  std::int64_t failed = 0;
  bool has_cut = false;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    ++read;
    // Reading goes on, so that the page can say how many there are.
    if (!arguments.all && shown >= kMostSentences) return;
    // A page of some ten thousand steps for each of many sentences would be too much for a browser.
    if (writer.steps() >= kMostSteps && arguments.kept > kFewSteps && !std::exchange(has_cut, true))
      viewer.keep(kFewSteps);
    // A graph that failed counts whether it is shown or not: the status says so.
    for (json& sentence : viewer.data(graph, arguments.render)) {
      const bool has_failed = sentence["status"] != "done";
      failed += has_failed ? 1 : 0;
      if (arguments.failed && !has_failed) continue;
      ++shown;
      writer.add(std::move(sentence));
    }
  });
  writer.flush();
  std::vector<std::string> notices;
  if (!writer.notice().empty()) notices.push_back(writer.notice());
  // What the page does not show it says at its head, and standard error too.
  if (!arguments.all && shown >= kMostSentences && read > shown) {
    notices.push_back("The page shows " + std::to_string(shown) + " of " + std::to_string(read) +
                      " sentences: --sentence names others, --failed shows what came to nothing, --all shows all");
  }
  if (has_cut) {
    notices.push_back("The page has many steps: from a sentence in the middle on it keeps " +
                      std::to_string(kFewSteps) + " of each; --sentence shows one with more");
  }
  index["notices"] = notices;
  write_tail(page, index);
  page.close();
  for (const std::string& notice : notices) tell_line("lexon-lab: " + notice);
  if (arguments.output != "-") {
    tell_line(arguments.output + ": " + count_text(shown, "sentence") + ", " + std::to_string(failed) + " failed");
    if (arguments.open)
      browser_show(std::filesystem::absolute(arguments.output).string(), "open " + arguments.output + " in a browser");
  }
  return failed == 0 ? kDone : kFailed;
}

}  // namespace

Command add_view(CLI::App& app) {
  CLI::App& command = add_command(app, "view", "Write a page that shows graphs, steps and words of sentences");
  const auto arguments = std::make_shared<Arguments>();
  add_run_options(command, *arguments);
  add_option(command, "-o,--output", arguments->output, "The page; - for standard output", {.shows_default = true});
  add_flag(command, "-a,--all", arguments->all, "All sentences, however many; else the first 200");
  add_flag(command, "-f,--failed", arguments->failed, "Only sentences that came to nothing");
  add_option(command, "-k,--keep", arguments->kept, "Steps that are kept of each sentence",
             {.shows_default = true, .range = {{100, 1000000}}});
  add_flag(command, "--open", arguments->open, "Open the page in the browser");
  return {&command, [arguments] { return view(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
