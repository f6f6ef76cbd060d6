// A sentence's run as data, for a page that shows it. Two pages do: that of `lexon-lab view`, and the one to work in.
//
// `web/view/view.js` draws the data: `lexonView(element, data)`. All texts in it are valid UTF-8; a byte that is none
// stands as "\xE9". Lists hold numbers of what stands in the tables, so that a long search stays small:
//
//   label, file, line, number   of the sentence; `line` is its first in the file
//   status                      "done", "failed", "over time", "over steps", "stopped"
//   text, seconds, passes, taken_back, messages: [text]
//   graph: {source,             the lines of the sentence as they stand
//           nodes: [{name, instance, scope, attrs: [[scope, text]], unknown}]   `scope` of a reference; -1: a word
//           relations: [{label, scope, from, to, used}]                numbers of nodes
//           scopes: [{number, entry}]                                  number of a node; -1: it has no @entry
//           layout: {width, height, nodes: [[x, y, width, height]],    as Graphviz has it, in points; null: none
//                    relations: [{path, x, y, tip: [x, y, x, y]}], references: [as relations, from references of
//                    scopes to their entries], scopes: [{number, x, y, width, height}]}
//           notice}             why there is no layout; may be empty
//   rules: [{place, text, source, values}]      `source`: the line as it stands there; `values`: of loops, "V=go"
//   entries: [[text, attrs]]    of the dictionary
//   nodes: [{name, from, graph}]                places of lists; `from`: the node that it is a copy of, or -1;
//                                               `graph`: the node of the graph, or -1
//   states: [[node, text, attrs, entry, untouched]]                    a node at a time; no entry: -1
//   lists: [[state, ...]]       -5 stands for five nodes that are left out
//   used: [text]                which relations had been followed: a "1" or "0" for each
//   steps: [[number, size, kind, rule, scope, before, at, after, at, used]]
//       In the order of time; `number` from 1, with gaps where steps are not kept. A step and all that followed on it
//       are `size` numbers, so that a step whose number lies within another's size stands below it. `kind`: 0 a rule
//       was carried out, 1 a word test narrowed the words, 2 a word test asked for a step back, 3 no rule was left;
//       + 8 in post-edit, + 16 taken back. `before` and `after` are numbers of lists, each with the index of the left
//       place of the window in it; -1: unknown. Kinds 2 and 3 have no `after` (-1), kind 3 has no rule (-1).
//   kept: {steps, of}           how many steps are here, and how many there were
//   final: list                 the words of the sentence; -1: there is none
//   trouble: {steps, list, unfollowed: [text], debts: [text], tests: [text], windows: [text]}; null when it is done
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "lab/bench.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// Steps of a sentence that are kept, if nothing else is asked for: of a longer search the first and the last ones.
inline constexpr std::size_t kViewSteps = 10000;

// Makes the data of one sentence after the other. Project and bench must outlive it.
class Viewer {
 public:
  Viewer(const Project& project, Bench& bench, std::size_t steps_kept = kViewSteps);
  ~Viewer();
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  // From the next sentence on.
  void keep(std::size_t steps);
  // Renders the sentences of `graph`, most often one. No layout yet.
  [[nodiscard]] std::vector<nlohmann::json> data(const GraphText& graph, const RenderOptions& limits);

 private:
  struct Inner;
  std::unique_ptr<Inner> inner_;
};

// Has the graphs laid out by Graphviz, all by one run if none takes it longer than some seconds. What kept it from that
// stands in the `notice` of the sentence; the page then draws the graph without it. Returns the last notice, or an empty
// text. Where `wanted` is asked now and then and says no, Graphviz is stopped and the rest is left as it is.
std::string view_lay_out(std::span<nlohmann::json> sentences, const std::function<bool()>& wanted = {});

// The data as text that can stand inside of <script type="application/json">.
[[nodiscard]] std::string view_json_text(const nlohmann::json& data);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
