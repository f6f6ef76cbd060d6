// A sentence is read line by line. Each line is classified by its beginning; the lines of word blocks and the relation
// lines go into the graph at once, the others turn the reader's few switches or are passed over. What is wrong with a
// line stands in the output, and the reading goes on.
#include "graph/reader.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/text_line.hpp"
#include "graph/graph_nodes.hpp"
#include "graph/graph_words.hpp"
#include "graph/line_kind.hpp"
#include "graph/line_text.hpp"
#include "graph/relations.hpp"

namespace lexon {

namespace {

// What the record of a relation has room for; a line with a longer label is left out.
constexpr std::size_t kLabelLength = sizeof(Relation::label) - 1;

struct Reader {
  TextSource input;
  Node*& root;
  InputNotes* notes;
  std::array<char, kLineSize> line;        // is cut in place
  std::array<char, kLineSize> saved_line;  // as read, for messages
  BlockTag open_tag;                       // hides lines
  bool in_graph = false;
  bool syntax_reported = false;
  std::array<int, 2> rows = {-1, -1};  // of the two words that were named last
  // What the end of the file must not meet open: the first line of the sentence, and of a block.
  InputNotes::Line sentence{};
  InputNotes::Line block{};
};

// Exhausted memory ends the building, as a broken limit does, and not the reading: the next sentence has to begin where
// this one ends.
bool is_lost(Session& session) {
  return session.sentence.refused || session.state.abort == Status::memory;
}

// The next line, or what ends the reading. A lost sentence is read on to its end.
Status line_read(Session& session, Reader& reader) {
  if (const Status s = must_leave(session); s != Status::ok && s != Status::memory) return s;
  TextWatch* watch = reader.notes == nullptr ? nullptr : &reader.notes->text;
  return text_line_read(reader.input, reader.line.data(), kLineSize, watch) ? Status::ok : Status::end_of_input;
}

// Remembers the line, to name it if the file ends before the block does.
void block_opened(Reader& reader, const char* why) {
  if (reader.notes != nullptr) reader.block = {reader.notes->text.line, why};
}

void sentence_opened(Reader& reader) {
  if (reader.notes == nullptr || reader.sentence.number != 0) return;
  reader.sentence = {reader.notes->text.line, "this sentence is not closed: \"[/S]\" is missing"};
  reader.notes->has_sentence = true;
}

// A line that was to say something and comes to nothing: counted, and the first few are kept by number.
void note_left_out(Session& session, Reader& reader, const char* why) {
  if (reader.notes == nullptr) return;
  InputNotes& notes = *reader.notes;
  remark(session, notes.text.line, why);
  const auto count = static_cast<std::size_t>(notes.left_out++);
  if (count < notes.first.size()) notes.first[count] = {notes.text.line, why};
}

void tag_change(Reader& reader, std::string_view line) {
  block_tag_change(reader.open_tag, line);
  reader.block = {};
  if (!reader.open_tag.empty()) block_opened(reader, "this block is not closed, and hides what stands behind it");
}

// Enters the words up to the end of the block. Here only the first column counts.
Status word_block_read(Session& session, Reader& reader) {
  sentence_opened(reader);
  block_opened(reader, "this block of words is not closed: \"[/W]\" is missing, or does not begin its line");
  while (true) {
    if (const Status s = line_read(session, reader); s != Status::ok) return s;
    char* line = reader.line.data();
    if (std::string_view(line).starts_with(kWordBlockEnd)) {
      reader.block = {};
      return Status::ok;
    }
    if (*line == '[') note_left_out(session, reader, "inside a block of words");
    if (*line == ';' || *line == '[' || is_lost(session)) continue;
    line[std::strcspn(line, "\n")] = '\0';
    // What cannot be entered is missing in the graph, or the sentence is refused.
    (void)graph_word_add(session, line, 0);
  }
}

// Nothing in it is looked at but how its lines begin.
Status skipped_block_read(Session& session, Reader& reader) {
  block_opened(reader, "this block is not closed: \"[/R]\" is missing, or does not begin its line");
  while (true) {
    if (const Status s = line_read(session, reader); s != Status::ok) return s;
    if (std::string_view(reader.line.data()).starts_with(kSkippedBlockEnd)) break;
  }
  reader.block = {};
  return Status::ok;
}

// The message with the line as it was read, its line end included: cutting has changed the reader's own.
void line_report(Session& session, Reader& reader, const char* what) {
  out_print(session, ";;%s\n\t%s", what, reader.saved_line.data());
  out_flush(session);
  note_left_out(session, reader, what);
}

// An empty text, or one that begins with what belongs behind it.
bool is_missing(const char* text, char wrong_start) {
  return *text == '\0' || *text == wrong_start;
}

// What is wrong with the parts of a relation line, or null.
const char* fault_of(const RelationText& text) {
  if (is_missing(text.label, ':')) return "Rel is not found";
  if (is_missing(text.from, '.')) return "From-CW is not found";
  if (is_missing(text.to, '.')) return "To-CW is not found";
  return nullptr;
}

// A new relation in the table; null if the sentence is refused or memory is exhausted.
Relation* relation_new(Session& session, std::string_view label, int scope) {
  if (session.sentence.graph_relation_count == kMaxRelations) {
    sentence_refuse(session, "the graph has more than 128 relations");
    return nullptr;
  }
  auto* relation = temp_new<Relation>(session);
  if (relation == nullptr) return nullptr;
  // The record is zeroed: the label ends in a terminator, and the arc is not used. Of the number 8 bits are kept.
  label.copy(relation->label, kLabelLength);
  relation->scope = static_cast<std::uint8_t>(scope);
  session.sentence.graph_relations[static_cast<std::size_t>(session.sentence.graph_relation_count++)] = relation;
  return relation;
}

// The node of a word as written, or null. `rows` are those of the words of the line before, or of this line so far: one
// of them is often meant again.
Node* node_of(Session& session, char* text, int scope, std::array<int, 2>& rows) {
  Node* node = nullptr;
  const int count = session.sentence.graph_word_count;
  const int row = graph_word_add(session, text, scope, rows);
  if (row >= 0) (void)node_build(session, row, node);
  // A new row moves those behind it.
  const bool has_moved = session.sentence.graph_word_count != count && rows[1] >= row;
  rows = {has_moved ? rows[1] + 1 : rows[1], row};
  return node;
}

bool is_entry_of_sentence(const Node& node) {
  return node.scope_attrs != nullptr && node.scope_attrs->scope == 0 && holds_entry(node);
}

// Ties two words together. A word without a node, because its lookup failed, leaves the relation unconnected.
void relation_tie(Session& session, Reader& reader, const RelationText& text, int scope, Relation& relation) {
  Node* from = node_of(session, text.from, scope, reader.rows);
  if (is_lost(session)) return;
  Node* to = node_of(session, text.to, scope, reader.rows);
  if (from == nullptr || to == nullptr) return;
  relation_connect(session, *from, *to, relation);
  // The first word with "@entry" in a relation of the top scope. wanted: the start of the arc is asked first
  if (relation.scope != 0 || reader.root != nullptr) return;
  if (is_entry_of_sentence(*from)) {
    reader.root = from;
  } else if (is_entry_of_sentence(*to)) {
    reader.root = to;
  }
}

void relation_read(Session& session, Reader& reader, std::string_view whole) {
  // Before anything is cut: messages show the line as it stands in the text.
  std::memcpy(reader.saved_line.data(), whole.data(), whole.size() + 1);
  RelationText text;
  if (split_relation(reader.line.data(), text) <= 0) {
    // Each faulty line is shown, under one headline for the sentence.
    if (!reader.syntax_reported) out_print(session, ";;Syntactic Error\n");
    reader.syntax_reported = true;
    out_print(session, "\t%s", reader.saved_line.data());
    out_flush(session);
    return note_left_out(session, reader, "no relation: label(from, to)");
  }
  if (const char* fault = fault_of(text); fault != nullptr) {
    return line_report(session, reader, fault);
  }
  // The number goes before the length is measured: it is no part of the label.
  const int scope = label_scope(text.label);
  if (std::strlen(text.label) > kLabelLength) {
    return line_report(session, reader, "Rel is too long");
  }
  if (Relation* relation = relation_new(session, text.label, scope); relation != nullptr) {
    relation_tie(session, reader, text, scope, *relation);
  }
}

void graph_start(Reader& reader) {
  reader.in_graph = true;
  sentence_opened(reader);
}

// A relation that stands in no graph is left out without a word in the output.
// wanted: what merely looks like one, in a line of text, has a blank in its label.
void stray_line_note(Session& session, Reader& reader) {
  if (reader.notes == nullptr || !reader.open_tag.empty()) return;
  RelationText text;
  const bool is_relation = split_relation(reader.line.data(), text) > 0 && fault_of(text) == nullptr;
  if (is_relation && std::strpbrk(text.label, " \t[") == nullptr)
    note_left_out(session, reader, "outside of a sentence");
}

// Reads lines up to the end of the sentence: ok at its end mark, or what ended the reading before.
Status lines_read(Session& session, Reader& reader) {
  while (true) {
    Status status = line_read(session, reader);
    if (status != Status::ok) return status;
    const std::string_view whole(reader.line.data());
    const char* line = whole.data();
    while (*line == ' ') ++line;
    switch (line_kind({line, whole.data() + whole.size()}, reader.open_tag)) {
      case LineKind::ignored: break;
      case LineKind::graph_start: graph_start(reader); break;
      case LineKind::graph_end: reader.in_graph = false; break;
      case LineKind::block_tag: tag_change(reader, line); break;
      case LineKind::sentence_end: return Status::ok;
      case LineKind::word_block: status = word_block_read(session, reader); break;
      case LineKind::skipped_block: status = skipped_block_read(session, reader); break;
      case LineKind::sentence_start:
        out_text(session, line);
        session.label = line;
        // The rest of the sentence can be long in coming.
        if (is_waiting_stream(reader.input.stream())) session.output.flush();
        graph_start(reader);
        break;
      case LineKind::graph_line:
        if (!reader.in_graph) {
          stray_line_note(session, reader);
        } else if (!is_lost(session)) {
          relation_read(session, reader, whole);
        }
        break;
    }
    if (status != Status::ok) return status;
  }
}

}  // namespace

Status read_graph(Session& session, TextSource input, Node*& root, InputNotes* notes) {
  root = nullptr;
  session.sentence.graph_relations.fill(nullptr);
  session.sentence.graph_relation_count = 0;
  Reader reader{input, root, notes, {}, {}, {}};
  const Status stop = lines_read(session, reader);
  const InputNotes::Line& open = reader.block.number != 0 ? reader.block : reader.sentence;
  if (stop == Status::end_of_input && open.number != 0) notes->unclosed = open;
  if (session.state.abort == Status::memory && stop != Status::stopped) return Status::memory;
  const bool has_come_to_an_end = stop == Status::ok || stop == Status::end_of_input;
  if (!has_come_to_an_end || root != nullptr || session.sentence.refused) return stop;
  if (session.sentence.graph_word_count != 0) {
    // The first word in sort order stands in for an entry that no relation has named.
    if (node_build(session, 0, root) == Status::ok && !holds_entry(*root)) {
      out_print(session, ";;No Entry\n");
      out_flush(session);
      remark(session, 0, "No Entry");
    }
  } else if (stop == Status::ok) {
    out_print(session, ";;SEM is Empty\n");
    remark(session, notes == nullptr ? 0 : notes->text.line, "SEM is Empty");
  }
  return stop;
}

}  // namespace lexon
