#include "lab/options.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

void add_grammar_options(CLI::App& command, GrammarFiles& files) {
  command.add_option("-d,--dict", files.dictionary, "The dictionary, made by lexon-dict")->required();
  command.add_option("-r,--rules", files.rules, "The rules, as text or compiled (.rul)")->required();
  command.add_option("-c,--cr", files.cooccurrence, "The co-occurrence dictionary");
}

void add_render_options(CLI::App& command, RenderOptions& options) {
  command.add_option("INPUT", options.inputs, "Graphs; - for standard input")->required();
  command
      .add_option("-s,--sentence", options.sentences, "Only the sentence with this label, or number; may be repeated")
      ->allow_extra_args(false);
  command.add_option("-T,--time", options.seconds, "Seconds for each sentence; 0: no limit")->capture_default_str();
  command.add_option("--steps", options.steps, "Steps of the search for each sentence; 0: no limit")
      ->check(CLI::NonNegativeNumber);
  command.add_flag("!--no-post-edit", options.post_edit, "Leave out the rules of post-edit");
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
