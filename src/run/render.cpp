#include "run/render.hpp"

#include <ctime>

#include "data/output.hpp"
#include "data/state.hpp"
#include "dict/entry_text.hpp"
#include "engine/loop.hpp"
#include "engine/post_edit.hpp"
#include "graph/graph_dump.hpp"
#include "graph/line_text.hpp"

namespace lexon {

namespace {

// Processor time in milliseconds.
long processor_clock() {
  return static_cast<long>(std::clock() / (CLOCKS_PER_SEC / 1000));
}

void print_word_lists() {
  out_print("================= WORD LISTS : %02d ==================\n", sentence.graph_node_count);
  for (std::int32_t i = 0; i < sentence.graph_node_count && must_leave() == Status::ok; ++i) {
    const Node& node = *sentence.graph_nodes[static_cast<std::size_t>(i)];
    char code[3];
    node_code_write(node.scope, code);
    out_print("%02d  %c%c", i + 1, code[0], code[1]);
    scope_attrs_print(node.scope_attrs, false);
    entry_list_print(state.output, node.candidates, "");
  }
}

void print_graph() {
  out_print("======================== SEM =======================\n");
  for (std::int32_t i = 0; i < sentence.semlst_count && i < kMaxScopes; ++i) {
    const ScopeRow& row = sentence.semlst[static_cast<std::size_t>(i)];
    if (row.entry == nullptr) break;
    if (i != 0) out_print(":%02d\n", row.number);
    graph_dump(*row.entry, 0, row.number, "");
    graph_marks_clear(row.entry, row.number);
  }
  out_print("====================================================\n");
}

// Says what a failed step returned; a stopped one says nothing. For want of memory a step may fail in some way of its
// own.
Status failed_with(Status status) {
  if (status == Status::stopped) return status;
  if (state.abort == Status::memory) {
    status = state.abort;
    state.forced_node = nullptr;  // its search is lost, and must not go on in the next sentence
  }
  out_print(";;return code %d\n", code(status));
  out_flush();
  return status;
}

Status read_sentence(std::FILE* input, InputNotes* notes) {
  const Status status = read_graph(input, sentence.semlst[0].entry, notes);
  state.engine_status = status;
  sentence.root = sentence.semlst[0].entry;
  // A read that was stopped while it waited for data looks like the end of the input.
  if (status == Status::stopped || must_leave() == Status::stopped) return Status::stopped;
  if (sentence.refused) return Status::no_effect;
  if (sentence.root != nullptr) return Status::ok;
  return status == Status::end_of_input ? status : Status::no_effect;
}

Status generate() {
  state.trace_depth = 0;
  state.trace_indent[0] = '\0';
  state.engine_status = generate_scope(sentence.root, false);
  return state.engine_status;
}

Status post_edit_sentence() {
  if (state.trace_level > 1) out_print(";;==>> PostEdit\n");
  out_flush();
  state.engine_status = post_edit(sentence.root);
  return state.engine_status;
}

Status collect_and_print(char* text) {
  text[0] = '\0';
  char* cursor = text;
  const bool fits = collect_sentence(sentence.semlst[0].entry, cursor, text + kSentenceSize, 0);
  if (const Status s = must_leave(); s != Status::ok) return failed_with(s);
  if (!fits) {
    sentence_refuse("the sentence is longer than 1023 characters");
    return Status::no_effect;
  }
  out_print("%s\n", text);
  out_flush();
  return Status::ok;
}

}  // namespace

Status render_sentence(const DictionaryFiles& dictionary, std::FILE* input, char* text,
                       const DictionaryFiles& cr_dictionary, bool post_edit_wanted, InputNotes* notes) {
  sentence.dictionary = dictionary;
  sentence.cr_dictionary = cr_dictionary;
  const long start = processor_clock();
  sentence_clear();
  if (const Status s = read_sentence(input, notes); s != Status::ok) return s;
  if (state.trace_level > 0) {
    print_word_lists();
    print_graph();
    if (const Status s = must_leave(); s != Status::ok) return failed_with(s);
  }
  if (const Status s = generate(); s != Status::ok) return failed_with(s);
  if (post_edit_wanted) {
    if (const Status s = post_edit_sentence(); s != Status::ok) return failed_with(s);
  }
  if (const Status s = collect_and_print(text); s != Status::ok) return s;
  out_print(";;Time %4.1f\tSec\n", static_cast<double>(processor_clock() - start) * 0.001);
  return Status::ok;
}

}  // namespace lexon
