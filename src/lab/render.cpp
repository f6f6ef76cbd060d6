// lexon-lab render: sentences alone, without files that are made on the way.

#include <iostream>
#include <memory>

#include "front/process.hpp"
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
  Generator generator(project.grammar);
  Settings settings;
  settings.post_edit = arguments.render.post_edit;
  settings.time_limit = arguments.render.seconds;
  int status = kDone;
  for_each_sentence(arguments.render, [&](const GraphText& graph) {
    for (const Sentence& sentence : generator.render(graph.text, settings)) {
      if (sentence.status == Status::done) {
        std::cout << escaped(sentence.text) << '\n';
        continue;
      }
      status = kFailed;
      tell_line(graph.file + ':' + std::to_string(graph.line) + ": " + sentence.label + ": " +
                to_string(sentence.status));
      for (const Message& message : sentence.messages) tell_line("  " + to_string(message));
    }
  });
  return status;
}

}  // namespace

Command add_render(CLI::App& app) {
  CLI::App* command = app.add_subcommand("render", "Write the sentences of graphs, one a line");
  const auto arguments = std::make_shared<Arguments>();
  add_grammar_options(*command, arguments->grammar);
  add_render_options(*command, arguments->render);
  return {command, [arguments] { return render(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
