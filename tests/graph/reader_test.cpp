#include "graph/reader.hpp"

#include "data/pool.hpp"
#include "support/capture.hpp"
#include "support/graph_text.hpp"
#include "support/session.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// A document, and what its first sentence gives.
struct ReadRow {
  const char* name;
  const char* text;
  const char* arcs;
  const char* output;
};

TEST(Lines, AreClassified) {
  const ReadRow rows[] = {
      {"sentence_tag_opens_and_is_copied", "  [S:1] x \nr(a.@entry,b)\n[/S]\nr(c,d)\n", "r:0(a,b)", "[S:1] x \n"},
      {"graph_tag_opens", "{semantics\nr(a.@entry,b)\n{/semantics\nr(c,d)\n[/S]\n", "r:0(a,b)", ""},
      {"several_graphs_make_one", "{sem}\nr(a.@entry,b)\n{/sem}\nr(x,y)\n{sem}\nr(c,d)\n[/S]\n", "r:0(a,b); r:0(c,d)", ""},
      {"text_outside_a_graph", "header (\nr(a,b)\n{sem}\n{/sem}\nr(c,d)\n[/S]\n", "", ";;SEM is Empty\n"},
      {"lines_of_no_meaning", "{sem}\n ;r(a,b)\n<r(a,b)\n\n  \n[x](a,b)\n[/x](a,b)\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"blanks_and_tabs_in_front", "{sem}\n\t r(a.@entry,b)\n  r(c,d)\n   [/S]\n", "r:0(a,b); r:0(c,d)", ""},
      {"a_tab_hides_what_a_line_is", "{sem}\nr(a.@entry,b)\n\t[/S]\n[/S]\n", "r:0(a,b)", ";;Syntactic Error\n\t\t[/S]\n"},
      {"pairs_of_line_end_characters", "{sem}\r\n\r\nr(a.@entry,b)\r\n[/S]\r\n", "r:0(a,b)", ""},
      {"skipped_block", "{sem}\n[R x\nr(a,b)\n[/S]\n [/R]\n[/R]\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"tag_hides_lines_even_the_end", "{sem}\n{note:en}\nr(a,b)\n[/S]\n[S]\n[W]\n{/note}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"graph_tags_work_inside_a_tag", "{note}\n{sem}\nr(a,b)\n{/note}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"closing_tag_may_be_longer", "{sem}\n{a}\n{/abc}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"tag_name_is_cut_at_nine", "{sem}\n{abcdefghijkl}\n{/abcdefghi}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"second_tag_replaces_the_first", "{sem}\n{a}\n{b\n{/b}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"closer_of_a_replaced_tag_opens_another", "{sem}\n{a}\n{b}\n{/a}\n{/b}\nr(a,b)\n[/S]\n{//b}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"stray_closer_opens", "{sem}\n{/a}\nr(a,b)\n{//a}\nr(c.@entry,d)\n[/S]\n", "r:0(c,d)", ""},
      {"tag_without_a_name_opens_nothing", "{sem}\n{a}\n{}\nr(c.@entry,d)\n{:x}\nr(e,f)\n[/S]\n", "r:0(c,d); r:0(e,f)", ""},
  };
  for (const ReadRow& row : rows) {
    SCOPED_TRACE(row.name);

    const GraphRead read = graph_of(row.text);
    EXPECT_EQ(read.status, Status::ok);
    EXPECT_EQ(arcs_text(), row.arcs);
    EXPECT_EQ(read.output, row.output);
  }
}

// Relation lines, and what is said of them.
struct MessageRow {
  const char* name;
  const char* lines;
  const char* arcs;
  const char* output;
};

TEST(Messages, ReadingGoesOn) {
  const MessageRow rows[] = {
      {"syntax_is_headed_once", " r(x\nr(x,y)=0\nx\n", "", ";;Syntactic Error\n\t r(x\n\tr(x,y)=0\n\tx\n"},
      {"no_label", "(x,y)\n  (x,y)\n", "", ";;Rel is not found\n\t(x,y)\n;;Rel is not found\n\t  (x,y)\n"},
      {"label_of_a_number", ":01(x,y)\n", "", ";;Rel is not found\n\t:01(x,y)\n"},
      {"no_from", "q( ,y)\nq(.x,y)\n", "", ";;From-CW is not found\n\tq( ,y)\n;;From-CW is not found\n\tq(.x,y)\n"},
      {"no_to", "q(x,)\nq(x,.y)\n", "", ";;To-CW is not found\n\tq(x,)\n;;To-CW is not found\n\tq(x,.y)\n"},
      {"the_first_fault_is_told", "(,)\nq(,)\n", "", ";;Rel is not found\n\t(,)\n;;From-CW is not found\n\tq(,)\n"},
      {"label_too_long", "abcdef(x,y)\nabcde:01(x,y)\n", "abcde:1(x,y); ", ";;Rel is too long\n\tabcdef(x,y)\n"},
      {"a_number_in_the_middle_of_a_label", "abc:01de(x,y)\n", "abcde:1(x,y); ", ""},
      {"wrong_texts_behind_the_words", "q(x,y)=1 (\nq(x,y)...\n", "q:0(x,y); q:0(x,y); ", ""},
  };
  for (const MessageRow& row : rows) {
    SCOPED_TRACE(row.name);

    const std::string good = "r(a.@entry,b)\n";
    const GraphRead read = graph_of_lines(row.lines + good);
    EXPECT_EQ(read.output, row.output);
    EXPECT_EQ(arcs_text(), std::string(row.arcs) + "r:0(a,b)");
  }
}

// Lines of a sentence, and the node that it starts at.
struct RootRow {
  const char* name;
  const char* text;
  const char* root;
  bool is_named;  // else a message says that no entry was
};

TEST(Root, IsChosen) {
  const RootRow rows[] = {
      {"from", "r(b.@entry,a)\n", "b", true},
      {"to", "r(a,b.@entry)\n", "b", true},
      {"from_before_to", "r(b.@entry,a.@entry)\n", "b", true},
      {"the_first_stays", "r(c.@entry,a)\nr(b.@entry,a)\n", "c", true},
      {"any_text_that_holds_it", "r(a,b.x@entryx)\n", "a", false},
      {"as_a_part_of_an_attribute", "r(a,b.@x@entryx)\n", "b", true},
      {"not_by_another_scope", "r:01(b.@entry,a)\n", "a", false},
      {"not_if_another_scope_is_newer", "r(b,a)\nr:01(b.@entry,c)\nr(b.@entry,d)\n", "a", false},
      {"first_word_that_has_it_by_a_word_block", "[W]\na.@entry\nb\n[/W]\n", "a", true},
      {"none", "r(c,b)\n", "b", false},
  };
  for (const RootRow& row : rows) {
    SCOPED_TRACE(row.name);

    const GraphRead read = graph_of_lines(row.text);
    ASSERT_NE(read.root, nullptr);
    EXPECT_STREQ(read.root->name, row.root);
    EXPECT_EQ(read.output, row.is_named ? "" : ";;No Entry\n");
  }
}

// Word blocks, and the rows that they enter.
TEST(WordBlock, OnlyTheFirstColumnCounts) {
  const GraphRead read = graph_of("[W] \"no word\"\ndog:01.@x\n;c\n[c\n \tcat\n ;d\n [/W]\n\n[/Words\nrest\n[/S]\n");
  EXPECT_EQ(words_text(), "{0:}; ;d{0:}; [/W]{0:}; cat{0:}; dog#1{0:.@x}");
  EXPECT_EQ(read.output, ";;No Entry\n");
}

TEST(WordBlock, EndsWithTheFile) {
  const GraphRead read = graph_of("[S]\n[W]\ndog.@entry\n[/S]\n");
  EXPECT_EQ(read.status, Status::end_of_input);
  EXPECT_EQ(words_text(), "dog{0:@entry}");
  ASSERT_NE(read.root, nullptr);
}

TEST(Reader, GoesOnBehindTheSentence) {
  std::FILE* stream = stream_of("[S 1]\nr(a.@entry,b)\n[/S]\n{open}\n[S 2]\n{/open}\n[S 3]\nq(c,d.@entry)");
  EXPECT_EQ(graph_read(stream).output, "[S 1]\n");
  const GraphRead second = graph_read(stream);
  EXPECT_EQ(second.status, Status::end_of_input);
  EXPECT_EQ(second.output, "[S 3]\n;;Syntactic Error\n\tq(c,d.@entry)");
  EXPECT_EQ(second.root, nullptr);
  const GraphRead third = graph_read(stream);
  EXPECT_EQ(third.status, Status::end_of_input);
  EXPECT_EQ(third.output, "");
  std::fclose(stream);
}

TEST(Reader, LastSentenceNeedsNoEndMark) {
  const GraphRead read = graph_of("[S]\nr(a.@entry,b)\n{open}\n[/S]\n");
  EXPECT_EQ(read.status, Status::end_of_input);
  ASSERT_NE(read.root, nullptr);
  EXPECT_STREQ(read.root->name, "a");
}

TEST(Reader, LongLinesArriveInPieces) {
  // The first piece takes 1,023 characters, so that the second begins with the relation.
  const std::string comment = ";" + std::string(1022, 'x');
  const GraphRead read = graph_of_lines(comment + "r(a.@entry,b)\n");
  EXPECT_EQ(read.output, "");
  EXPECT_EQ(arcs_text(), "r:0(a,b)");
}

TEST(Reader, NulEndsTheTextOfALine) {
  const std::string nul(1, '\0');
  const GraphRead read = graph_of_lines("r(a,b" + nul + ")\nr(a.@entry,b)\n");
  EXPECT_EQ(read.output, ";;Syntactic Error\n\tr(a,b");
  EXPECT_EQ(arcs_text(), "r:0(a,b)");
}

TEST(Reader, LeavesSilentlyWhenAskedToStop) {
  std::FILE* stream = stream_of("[S]\nr(a,b)\n[/S]\n");
  session.stop_requested = true;
  const GraphRead read = graph_read(stream);
  session.stop_requested = false;
  EXPECT_EQ(read.status, Status::stopped);
  EXPECT_EQ(read.output, "");
  std::fclose(stream);
}

void exhaust_pool() {
  for (const int size : {4096, 1024, 512, 256, 128, 64, 32, 16, 8}) {
    while (temp_alloc(session, size) != nullptr) continue;
  }
}

TEST(Reader, ReadsASentenceToItsEndWithoutMemory) {
  sentence_clear(session);
  Capture capture;
  std::FILE* stream = stream_of("[W]\na\n[/W]\n[/S]\n{sem}\nr(a,b)\nr(b,c)\n[/S]\n{sem}\nr(c,d)\n[/S]\n");
  exhaust_pool();
  Node* root = nullptr;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(read_graph(session, stream, root), Status::memory);
    EXPECT_EQ(words_text() + arcs_text(), "");
  }
  EXPECT_EQ(capture.text(), "");
  session.pool.release_all();
  sentence_clear(session);
  EXPECT_EQ(read_graph(session, stream, root), Status::ok);
  EXPECT_EQ(arcs_text(), "r:0(c,d)");
  std::fclose(stream);
  session.pool.release_all();
}

std::string repeated(int count, const char* before, const char* behind) {
  std::string all;
  for (int i = 0; i < count; ++i) all += before + std::to_string(i) + behind;
  return all;
}

// What exceeds a limit ends the building, not the reading.
struct LimitRow {
  const char* name;
  std::string within;
  std::string beyond;
  const char* message;
};

TEST(Limits, RefuseTheSentenceOnce) {
  const LimitRow rows[] = {
      {"words", "[W]\n" + repeated(512, "w", "\n") + "[/W]\n", "r(w511,w512)\n", ";;the graph has more than 512 words\n"},
      {"words_of_a_block", "[W]\n" + repeated(512, "w", "\n") + "[/W]\n", "[W]\nv\n[/W]\n", ";;the graph has more than 512 words\n"},
      {"relations", repeated(128, "r(a,b", ")\n"), "r(a,b)\n", ";;the graph has more than 128 relations\n"},
      {"length_of_a_word", "r(a," + std::string(259, 'w') + ")\n", "r(b," + std::string(260, 'w') + ")\n",
       ";;the graph has a word of more than 259 characters\n"},
      {"merged_attributes", "[W]\nw." + std::string("@") + std::string(999, 'a') + "\nw.@" + std::string(22, 'b') + "\n[/W]\n", "r(w.@c,w)\n",
       ";;the graph has a word with more than 1024 characters of attributes\n"},
  };
  for (const LimitRow& row : rows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(graph_of_lines(row.within).output, ";;No Entry\n");
    EXPECT_FALSE(session.sentence.refused);
    std::FILE* stream = stream_of("{sem}\n" + row.within + row.beyond + "z(y,z)\n[W]\nx\n[/W]\n[/S]\n[S]\n");
    const GraphRead read = graph_read(stream);
    EXPECT_TRUE(session.sentence.refused);
    EXPECT_EQ(read.status, Status::ok);
    EXPECT_EQ(read.output, row.message);
    EXPECT_EQ(graph_read(stream).output, "[S]\n");
    EXPECT_FALSE(session.sentence.refused);
    std::fclose(stream);
  }
}

}  // namespace
}  // namespace lexon::test
