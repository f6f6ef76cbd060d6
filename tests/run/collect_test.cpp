#include "run/render.hpp"
#include "support/session.hpp"
#include "support/step.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

// The sentence that the list makes from any of its nodes; nothing if it does not fit.
std::optional<std::string> collected(Node* from) {
  std::array<char, kSentenceSize> text{};
  char* cursor = text.data();
  const bool fits = collect_sentence(session, from, cursor, text.data() + text.size(), 0);
  return fits ? std::optional<std::string>(text.data()) : std::nullopt;
}

struct ListRow {
  const char* what;
  const char* list;
  const char* scope;  // the list of scope 1; its second node is the entry
  const char* sentence;
};

TEST(Collect, WritesFromLeftToRightAndLeavesTheLinks) {
  const ListRow rows[] = {
      {"Words", "<< the dog hw=cw >>", "", "thedoghw"},
      {"BoundaryWithTheMark", "<< a !>>", "", "a>>"},
      {"ScopeInItsPlace", "<< a SCOPE:01 b >>", "<< c d e >>", "acdeb"},
      {"ScopeWithoutARow", "<< a SCOPE:02 b >>", "<< c >>", "ab"},
      {"ReferenceWithTheMark", "<< a !SCOPE:01 >>", "<< c >>", "aSCOPE:01"},
  };
  for (const ListRow& row : rows) {
    SCOPED_TRACE(row.what);

    fresh_sentence();
    const List list(row.list);
    const List scope(row.scope);
    if (!scope.nodes.empty()) add_scope(1, scope.nodes[1]);
    const std::string before = text_of_list(list.nodes[0]);
    for (Node* node : list.nodes) {
      EXPECT_EQ(collected(node), row.sentence);
      EXPECT_EQ(text_of_list(node), before);
    }
  }
}

struct ArcRow {
  const char* what;
  int from, to;  // places in the list
  const char* label;
  int scope;
  bool used;
  int trace_level;
  const char* sentence;
  const char* second_form = "sees";
};

TEST(Marks, ShowTheArcsThatAreLeft) {
  const ArcRow rows[] = {
      // The cursor goes on by four whatever was written.
      {"BothEnds", 2, 1, "agn", 0, false, 1, "dog<agnsees>agn"},
      {"NotAtLevelZero", 2, 1, "agn", 0, false, 0, "dogsees"},
      {"Used", 2, 1, "agn", 0, true, 1, "dogsees"},
      {"OfAnotherScope", 2, 1, "agn", 1, false, 1, "dogsees"},
      {"FromANodeToItself", 1, 1, "agn", 0, false, 1, "dog<agnsees"},
      {"ShortLabelEndsTheLine", 2, 1, "to", 0, false, 1, "dog<to"},
      {"LongLabelIsWrittenOver", 2, 1, "where", 0, false, 1, "dog<whesees>where"},
      {"EmptyFormEndsALongLabel", 1, 1, "timxy", 0, false, 1, "dog<tim", ""},
  };
  for (const ArcRow& row : rows) {
    SCOPED_TRACE(row.what);

    fresh_sentence();
    const List list("<< dog sees >>");
    WordEntry& second = *list.at(2).candidates;
    second.hw = temp_text(session, row.second_form);
    second.hw_len = static_cast<std::int32_t>(std::strlen(row.second_form));
    arc_between(list.at(static_cast<std::size_t>(row.from)), list.at(static_cast<std::size_t>(row.to)), row.label, row.scope)->used = row.used ? 1 : 0;
    session.state.trace_level = static_cast<std::int8_t>(row.trace_level);
    EXPECT_EQ(collected(list.nodes[0]), row.sentence);
  }
}

TEST(Limit, IsTheLastCharacterOfTheBuffer) {
  struct Row {
    int letters;      // of the one word
    const char* arc;  // from the word to itself, at level 1; none if empty
    bool fits;
  };
  const Row rows[] = {{1023, "", true},      {1024, "", false},      {1019, "agn", true}, {1020, "agn", false},
                      {1017, "where", true}, {1018, "where", false}, {1020, "to", true},  {1021, "to", false}};
  for (const Row& row : rows) {
    fresh_sentence();
    const List list(std::string(static_cast<std::size_t>(row.letters), 'a'));
    const std::string arc(row.arc);
    if (!arc.empty()) arc_between(list.at(0), list.at(0), row.arc);
    session.state.trace_level = 1;
    const std::optional<std::string> sentence = collected(list.nodes[0]);
    EXPECT_EQ(sentence.has_value(), row.fits) << row.letters << arc;
    if (!sentence) continue;
    EXPECT_EQ(sentence->size(), static_cast<std::size_t>(row.letters) + (arc.empty() ? 0 : arc.size() + 1));
  }
}

}  // namespace
}  // namespace lexon::test
