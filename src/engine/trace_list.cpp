// The node list and the words of a node, as the trace shows them.

#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/entry_text.hpp"
#include "engine/trace.hpp"

namespace lexon {

namespace {

enum class Form { plain, bracket };

// The line in the making. A usual one needs no memory: it stands whole in `end_`.
class ListLine {
 public:
  // The five pieces of a node; any of them may be empty.
  void append(std::string_view a, std::string_view b, std::string_view c, std::string_view d, std::string_view e) {
    const std::size_t size = a.size() + b.size() + c.size() + d.size() + e.size();
    if (size > end_.size() - size_) begin_.append(end_.data(), std::exchange(size_, 0));
    if (size > end_.size()) {
      for (const std::string_view text : {a, b, c, d, e}) begin_ += text;
    } else {
      size_ = static_cast<std::size_t>(texts_copy(end_.data() + size_, a, b, c, d, e) - end_.data());
    }
  }

  [[nodiscard]] std::string_view begin() const { return begin_; }
  [[nodiscard]] std::string_view end() const { return {end_.data(), size_}; }

 private:
  std::string begin_;           // what has found no more room in `end_`
  std::array<char, 2048> end_;  // behind it
  std::size_t size_ = 0;        // of the end
};

// A node with words, behind a "/".
void append_node(ListLine& line, const Node& node, Form form) {
  const std::string_view open = form == Form::plain ? "/" : "/[";
  const std::string_view close = form == Form::plain ? "" : "]";
  if (is_scope_reference(node)) return line.append(open, "SCOPE:", Decimal(node.scope, 2), "", close);
  const std::string_view hw = text_or_empty(node.candidates->hw);
  const std::string_view cw = text_or_empty(node.candidates->cw);
  const bool shows_cw = node.entries != nullptr && !is_boundary(node) && !cw.empty();
  shows_cw ? line.append(open, hw, "|cw=", cw, close) : line.append(open, hw, "", "", close);
}

// The nodes from `node` up to, but not including, `end`. A node without words is an error in the list: it is taken
// out, and the line goes on with its next part.
void append_up_to(Session& session, ListLine& line, Node* node, const Node* end) {
  for (; node != nullptr && node != end && must_leave(session) == Status::ok; node = node->right) {
    if (node->candidates == nullptr) {
      // Not released: the graph can still point at it.
      node_take_out(session, *node);
      return;
    }
    append_node(line, *node, Form::plain);
  }
}

// A place of the window. An empty one leaves no gap in the line.
void append_marked(ListLine& line, const Node* node) {
  if (node != nullptr && node->candidates != nullptr) append_node(line, *node, Form::bracket);
}

// The entry printer knows no session: whether the worker was asked to stop is asked here.
void print_word(Session& session, const WordEntry* word) {
  if (must_leave(session) == Status::stopped) return;
  entry_print(session.output, word, session.state.trace_indent);
}

void print_words(Session& session, const WordEntry* words) {
  if (must_leave(session) == Status::stopped) return;
  entry_list_print(session.output, words, session.state.trace_indent);
}

// What the graph says of the node in this scope; it is not merged into the word yet.
void print_graph_attrs(Session& session, const Node& node) {
  if (const char* text = head_text(node); text != nullptr) trace_line(session, text);
}

}  // namespace

// Collected first: of a sentence that is stopped meanwhile the line is not printed at all.
void print_list_line(Session& session, const Window& window) {
  ListLine line;
  if (window.lnode != nullptr) {
    Node* first = list_first(window.lnode);
    // A node beside itself: rules can bring that about, and the match that follows refuses the list.
    if (first->left == first) {
      out_text(session, trace_indent(session));
      dump_node(session, first, true);
      trace_line(session, ";;lnode loop");
      return;
    }
    append_up_to(session, line, first, window.lnode);
    append_marked(line, window.lnode);
    append_up_to(session, line, window.lnode->right, window.rnode);
  }
  append_marked(line, window.rnode);
  // wanted: behind the window a node without words ends the line and stays in the list.
  const Node* node = window.rnode == nullptr ? nullptr : window.rnode->right;
  for (; node != nullptr && node->candidates != nullptr && must_leave(session) == Status::ok; node = node->right) {
    append_node(line, *node, Form::plain);
  }
  if (must_leave(session) != Status::stopped) out_text(session, trace_indent(session), line.begin(), line.end(), "/\n");
  out_flush(session);
}

void dump_list(Session& session, const Window& window, bool with_words) {
  const int number = current_scope(session).number;
  trace_line(session, "=================== NODE LIST:", Decimal(number, 2), " ===================");
  out_flush(session);
  print_list_line(session, window);
  out_flush(session);
  trace_line(session, "====================================================");
  const Node* lnode = window.lnode;
  trace_line(session, "lnode >>>>>");
  // Before a match the words that are still to be tried are of interest, and after one the word in force.
  const bool shows_open_words = with_words && (lnode == nullptr || is_fresh(*lnode));
  if (shows_open_words) trace_line(session, "-- word candidates for lnode --");
  dump_node(session, lnode, !shows_open_words);
  trace_line(session, "rnode >>>>>");
  out_flush(session);
  const Node* rnode = window.rnode;
  if (!with_words) {
    dump_node(session, rnode, true);
    return;
  }
  if (rnode != nullptr && !is_fresh(*rnode)) {
    if (lnode != nullptr && is_boundary(*lnode) && is_fresh(*lnode)) print_graph_attrs(session, *rnode);
    dump_node(session, rnode, true);
    return;
  }
  if (rnode != nullptr) print_graph_attrs(session, *rnode);
  trace_line(session, "-- word candidates for rnode --");
  dump_node(session, rnode, false);
}

void dump_node(Session& session, const Node* node, bool one) {
  if (node == nullptr || node->candidates == nullptr) return;
  if (one) {
    print_word(session, node->candidates);
  } else if (is_fresh(*node)) {
    print_words(session, node->candidates);
  } else {
    // The changed copies, and the word from which they came.
    const WordEntry* word = node->candidates;
    for (const MatchRecord& record : chain<&MatchRecord::next>(node->matches)) {
      if (record.state == kStateStep || word == nullptr) continue;
      print_word(session, word);
      word = word->next;
    }
    print_word(session, word);
  }
  if (!is_scope_reference(*node)) return;
  // The words of the entry nodes that the reference leads to, through references. These can run in a circle; no way
  // through them is longer than the table.
  int scope = node->scope;
  for (int steps = session.sentence.semlst_count; steps > 0; --steps) {
    const Node* entry = scope_entry_node(session, scope);
    if (entry == nullptr) break;
    if (is_fresh(*entry)) {
      trace_line(session, "-- candidates of scope entry-node --");
      print_words(session, entry->candidates);
    } else {
      trace_line(session, "-- entry of scope entry-node --");
      print_word(session, entry->candidates);
    }
    if (!is_scope_reference(*entry)) return;
    scope = entry->scope;
  }
  if (session.state.trace_level > 1) trace_line(session, "No @entry in Scope");
  out_flush(session);
}

}  // namespace lexon
