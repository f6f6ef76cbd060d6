#include "run/render.hpp"

#include <ctime>

#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "dict/entry_text.hpp"
#include "engine/loop.hpp"
#include "engine/observer.hpp"
#include "engine/post_edit.hpp"
#include "graph/graph_dump.hpp"
#include "graph/line_text.hpp"

namespace lexon {

namespace {

// Processor time in milliseconds: that of the process, or of the thread where other threads render too.
long processor_clock(const Session& session) {
  if (session.has_company) return static_cast<long>(thread_processor_milliseconds());
  return static_cast<long>(std::clock() / (CLOCKS_PER_SEC / 1000));
}

// The candidates of every node, as the dictionary gave them.
void print_word_lists(Session& session) {
  out_print(session, "================= WORD LISTS : %02d ==================\n", session.sentence.graph_node_count);
  for (std::int32_t i = 0; i < session.sentence.graph_node_count && must_leave(session) == Status::ok; ++i) {
    const Node& node = *session.sentence.graph_nodes[static_cast<std::size_t>(i)];
    char code[3];
    node_code_write(node.scope, code);
    out_print(session, "%02d  %c%c", i + 1, code[0], code[1]);
    scope_attrs_print(session, node.scope_attrs, false);
    entry_list_print(session.output, node.candidates, "");
  }
}

// The graph of the sentence and of each scope. Dumping leaves marks on the nodes, which the next dump must not find.
void print_graph(Session& session) {
  out_print(session, "======================== SEM =======================\n");
  for (const ScopeRow& row : scope_rows(session.sentence)) {
    if (row.entry == nullptr) break;
    if (&row != session.sentence.semlst.data()) out_print(session, ":%02d\n", row.number);
    graph_dump(session, *row.entry, 0, row.number, "");
    graph_marks_clear(session, row.entry, row.number);
  }
  out_print(session, "====================================================\n");
}

// Says what a failed step returned; a stopped one says nothing. For want of memory a step may fail in some way of its
// own.
Status failed_with(Session& session, Status status) {
  if (status == Status::stopped) return status;
  if (session.state.abort == Status::memory) {
    status = session.state.abort;
    session.state.forced_node = nullptr;  // its search is lost, and must not go on in the next sentence
  }
  out_print(session, ";;return code %d\n", code(status));
  out_flush(session);
  return status;
}

Status read_sentence(Session& session, TextSource input, InputNotes* notes) {
  const Status status = read_graph(session, input, session.sentence.semlst[0].entry, notes);
  session.state.engine_status = status;
  session.sentence.root = session.sentence.semlst[0].entry;
  // A read that was stopped while it waited for data looks like the end of the input.
  if (status == Status::stopped || must_leave(session) == Status::stopped) return Status::stopped;
  if (session.sentence.refused) return Status::no_effect;
  if (session.sentence.root != nullptr) return Status::ok;
  return status == Status::end_of_input ? status : Status::no_effect;
}

// The status stays in the session, where what comes behind looks for it.
Status generate(Session& session) {
  session.state.trace_depth = 0;
  session.state.trace_indent[0] = '\0';
  session.state.engine_status = generate_scope(session, session.sentence.root, false);
  if (session.observer != nullptr) session.observer->generated(session, session.state.engine_status);
  return session.state.engine_status;
}

Status post_edit_sentence(Session& session) {
  if (session.state.trace_level > 1) out_print(session, ";;==>> PostEdit\n");
  out_flush(session);
  session.state.engine_status = post_edit(session, session.sentence.root);
  return session.state.engine_status;
}

Status collect_and_print(Session& session, char* text) {
  text[0] = '\0';
  char* cursor = text;
  // Row 0 is read again: generation may have put a copy in the place of the root.
  const bool fits = collect_sentence(session, session.sentence.semlst[0].entry, cursor, text + kSentenceSize, 0);
  if (const Status s = must_leave(session); s != Status::ok) return failed_with(session, s);
  if (!fits) {
    sentence_refuse(session, "the sentence is longer than 1023 characters");
    return Status::no_effect;
  }
  out_print(session, "%s\n", text);
  out_flush(session);
  return Status::ok;
}

// What comes behind the reading.
Status sentence_steps(Session& session, char* text, bool post_edit_wanted, long start) {
  if (session.state.trace_level > 0) {
    print_word_lists(session);
    print_graph(session);
    if (const Status s = must_leave(session); s != Status::ok) return failed_with(session, s);
  }
  if (const Status s = generate(session); s != Status::ok) return failed_with(session, s);
  if (post_edit_wanted) {
    if (const Status s = post_edit_sentence(session); s != Status::ok) return failed_with(session, s);
  }
  if (const Status s = collect_and_print(session, text); s != Status::ok) return s;
  out_print(session, ";;Time %4.1f\tSec\n", static_cast<double>(processor_clock(session) - start) * 0.001);
  return Status::ok;
}

}  // namespace

void lookups_attend(Session& session, const DictionaryFiles& dictionary, const DictionaryFiles& cr_dictionary) {
  session.lookups.attend({dictionary.dictionary, dictionary.index, cr_dictionary.dictionary, cr_dictionary.index});
}

Status render_sentence(Session& session, const DictionaryFiles& dictionary, TextSource input, char* text,
                       const DictionaryFiles& cr_dictionary, bool post_edit_wanted, InputNotes* notes) {
  session.sentence.dictionary = dictionary;
  session.sentence.cr_dictionary = cr_dictionary;
  // From the start of the reading: the lookups of the graph's words count.
  const long start = processor_clock(session);
  sentence_clear(session);
  const Status read = read_sentence(session, input, notes);
  // What stands behind the last sentence of a text is none.
  const bool is_watched = session.observer != nullptr && read != Status::end_of_input;
  if (is_watched) session.observer->sentence_begins(session);
  const Status status = read != Status::ok ? read : sentence_steps(session, text, post_edit_wanted, start);
  if (is_watched) session.observer->sentence_ends(session, status);
  return status;
}

}  // namespace lexon
