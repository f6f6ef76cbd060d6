// What a page of `lexon-lab serve` asks for: sentences, findings, a run against the gold sentences, over files of the
// project and what the page has not saved of them.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "lab/bench.hpp"
#include "lab/built_words.hpp"
#include "lab/options.hpp"
#include "lab/project.hpp"
#include "lab/serve_folder.hpp"
#include "lab/word_index.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// The files of the project, relative to its folder but for those that were built.
struct ServeFiles {
  std::vector<std::string> graphs;
  std::string rules;
  std::vector<std::string> entries;  // read as if they were one text
  std::string dictionary;            // built; instead of entries
  std::string cooccurrence;          // text
  std::string built_cooccurrence;    // instead of it
  std::string gold;
  std::vector<std::string> silenced;  // codes of findings that are not wanted
  int blocks = kMaxBlocks;
};

// Texts that stand for files of the project, by relative path.
using Unsaved = std::map<std::string, std::string, std::less<>>;

// Says whether work is still wanted; asked now and then, from any thread.
using Wanted = std::function<bool()>;

class Workplace {
 public:
  using Json = nlohmann::json;

  Workplace(const Folder& folder, ServeFiles files, RenderOptions limits);
  ~Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  // Each of these may be called from several threads at once, throws Fault, and gives null when it was not wanted any
  // longer.

  // The files by their part, those that the rules include among them.
  [[nodiscard]] Json files(const Unsaved& unsaved, const Wanted& wanted);
  // The sentence around line `line` (from 1) of a graph file: its text, status, time, steps and messages.
  [[nodiscard]] Json render(const Unsaved& unsaved, const std::string& graphs, std::int64_t line, const Wanted& wanted);
  // The same sentence with each step of its search.
  [[nodiscard]] Json view(const Unsaved& unsaved, const std::string& graphs, std::int64_t line, const Wanted& wanted);
  // What `lexon-lab check` finds.
  [[nodiscard]] Json check(const Unsaved& unsaved, const Wanted& wanted);
  // Sentences of all graph files from number `from` (from 0) against what is expected of them, as many as take a moment;
  // `next` is where to go on, or null behind the last. With how often the rules were of use in them.
  [[nodiscard]] Json run(const Unsaved& unsaved, std::size_t from, const Wanted& wanted);

 private:
  class Texts;
  struct Loaded;
  using LoadedPointer = std::shared_ptr<const Loaded>;

  [[nodiscard]] Texts texts_of(const Unsaved& unsaved);
  [[nodiscard]] LoadedPointer load(Texts& texts, const Wanted& wanted);
  [[nodiscard]] std::shared_ptr<Loaded> load_anew(Texts& texts);
  [[nodiscard]] Json with_sentence(const Unsaved& unsaved, const std::string& graphs, std::int64_t line,
                                   const Wanted& wanted,
                                   const std::function<Json(const Project&, Bench&, const GraphText&, Json&&)>& use);
  [[nodiscard]] Json note(const Message& message, std::int64_t lines_before) const;
  [[nodiscard]] std::string whole_path(const std::string& relative) const;
  [[nodiscard]] std::string shown_path(std::string_view path) const;
  [[nodiscard]] std::string shown_text(std::string text) const;

  const Folder& folder_;
  const ServeFiles files_;
  const RenderOptions limits_;

  // Texts, grammars and checks each have a lock of their own: a key in a text need not wait for a check.
  std::mutex texts_;
  Overlay known_;                      // as they were last seen
  std::vector<std::string> held_;      // the paths of `known_`
  std::vector<std::string> included_;  // what the last grammar was made from

  std::timed_mutex loading_;
  std::list<LoadedPointer> loaded_;  // the last ones, the newest first
  BuiltWords words_;
  BuiltWords pairs_;

  std::timed_mutex checking_;
  CheckCache checked_;
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
