// lexon-lab render: sentences alone, without files that are made on the way.

#include <iostream>
#include <memory>

#include "front/process.hpp"
#include "lab/bench.hpp"
#include "lab/commands.hpp"
#include "lab/project.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

struct Arguments {
  GrammarFiles grammar;
  RenderOptions render;
};

int render(const Arguments& arguments) {
  const Project project(arguments.grammar);
  Bench bench(project);
  int status = kDone;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    for (const Rendered& rendered : bench.render(graph.text, arguments.render)) {
      if (rendered.is_done()) {
        std::cout << escaped(rendered.sentence.text) << '\n';
        continue;
      }
      status = kFailed;
      tell_failure(graph, rendered);
    }
  });
  return status;
}

}  // namespace

Command add_render(CLI::App& app) {
  CLI::App& command = add_command(app, "render", "Write the sentences of graphs, one a line");
  const auto arguments = std::make_shared<Arguments>();
  add_grammar_options(command, arguments->grammar);
  add_render_options(command, arguments->render);
  return {&command, [arguments] { return render(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
