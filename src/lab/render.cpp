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

// The sentences go to standard output, what failed to standard error: so that the lines of the first are sentences alone.
int render(const RunArguments& arguments) {
  const Project project(arguments.grammar);
  Bench bench(project);
  int status = kDone;
  for_each_rendered(bench, arguments.render, [&status](const GraphText& graph, const Rendered& rendered) {
    if (rendered.is_done()) {
      std::cout << escaped(rendered.sentence.text) << '\n';
      return;
    }
    // The others are written all the same.
    status = kFailed;
    tell_failure(graph, rendered);
  });
  return status;
}

}  // namespace

Command add_render(CLI::App& app) {
  CLI::App& command = add_command(app, "render", "Write the sentences of graphs, one a line");
  const auto arguments = std::make_shared<RunArguments>();
  add_run_options(command, *arguments);
  return {&command, [arguments] { return render(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
