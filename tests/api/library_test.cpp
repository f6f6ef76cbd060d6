// The library from C++ and C: what Python does not reach. Results, messages and limits are tested through the module.
#include <lexon/lexon.h>
#include <pthread.h>
#include <lexon/lexon.hpp>

#include <atomic>
#include <thread>

#include "support/capture.hpp"
#include "support/program.hpp"
#include "support/test.hpp"

namespace lexon::test {
namespace {

constexpr const char* kDog = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n";
// Ten words for each concept, none of which may end the sentence: the search comes to no end.
constexpr const char* kEndless = "[S:2]\nnxt(a.@entry,b)\nnxt(b,c)\nnxt(c,d)\nnxt(d,e)\nnxt(e,f)\nnxt(f,g)\nnxt(g,h)\nnxt(h,i)\n[/S]\n";
constexpr const char* kRules = ":{N:::}\"N::nxt:\"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n";
constexpr const char* kLoudRules = ":{OK,^loud:+loud:::}{STAIL:::}P9;\n:{OK,loud:[DOG]:::}{^x:+x:::}P8;\nR{OK:::}{:::}P1;\n";

class Library : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string entries = "[dog]{} \"dog\" (OK);\n";
    for (char name = 'a'; name <= 'i'; ++name) {
      for (int word = 0; word < 10; ++word) {
        entries += std::string("[") + name + std::to_string(word) + "]{} \"" + name + "\" (N);\n";
      }
    }
    const std::string text = file_of("api-entries.txt", entries);
    ASSERT_EQ(run_program("lexon-dict", {"build", text, dictionary()}).exit_status, 0);
  }

  [[nodiscard]] static std::string dictionary() { return ::testing::TempDir() + "api-words.dic"; }
  [[nodiscard]] static Grammar grammar(const char* rules = kRules) { return Grammar::from_text(rules, {.dictionary = dictionary()}); }
};

std::string texts_of(const std::vector<Sentence>& sentences) {
  std::string text;
  for (const Sentence& sentence : sentences) text += to_string(sentence.status) + (": " + sentence.text) + '\n';
  return text;
}

TEST_F(Library, StopEndsTheSentenceAtWorkAndThoseBehindIt) {
  Generator generator(grammar());
  const std::string graphs = std::string(kDog) + kEndless + kDog;
  for (int round = 0; round < 3; ++round) {
    std::atomic<bool> has_returned = false;
    // Until it is heeded: it may come before the rendering begins.
    std::thread stopper([&] {
      while (!has_returned) generator.stop();
    });
    const std::string texts = texts_of(generator.render(graphs, {.time_limit = 60}));
    has_returned = true;
    stopper.join();
    EXPECT_TRUE(texts.empty() || texts == "stopped: \n" || texts == "done: dog\n" || texts == "done: dog\nstopped: \n") << texts;
    EXPECT_EQ(texts_of(generator.render(kDog)), "done: dog\n");
  }
  int questions = 0;
  EXPECT_EQ(texts_of(generator.render(graphs, {.keep_going = [&] { return ++questions < 2; }})), "done: dog\nstopped: \n");
}

TEST_F(Library, GeneratorsOfTwoGrammarsWorkSideBySide) {
  const Grammar grammars[] = {grammar(), grammar(kLoudRules)};
  ASSERT_TRUE(grammars[0] && grammars[1]);
  std::string graphs;
  for (int i = 0; i < 50; ++i) graphs += kDog;
  std::string wanted[2];
  for (int i = 0; i < 2; ++i) wanted[i] = texts_of(Generator(grammars[i]).render(graphs, {.trace_level = 4}));
  ASSERT_NE(wanted[0], wanted[1]);
  std::string found[4];
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { found[i] = texts_of(Generator(grammars[i % 2]).render(graphs, {.trace_level = 4})); });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 4; ++i) EXPECT_EQ(found[i], wanted[i % 2]);
}

TEST_F(Library, AGeneratorKeepsItsGrammarAndMoves) {
  Generator generator{Generator(grammar())};
  Generator other{Grammar()};
  EXPECT_EQ(texts_of(other.render(kDog)), "failed: \n");
  other = std::move(generator);
  EXPECT_EQ(texts_of(other.render(kDog)), "done: dog\n");
}

constexpr const char* kNestingRules =
    "R{SHEAD:::}{OK:::}P9;\n:{OK:::}\"SCOPE::pat:\"P8;\nR{CHEAD:::}{OK:::}P7;\nR{OK:::}{SCOPE:::}P5;\n"
    "R{OK:::}{CTAIL:::}P3;\nR{SCOPE:::}{CTAIL:::}P3;\nR{SCOPE:::}{STAIL:::}P3;\n";

// A word and a scope in each of 99 scopes, one within the other.
std::string nested_graph() {
  const auto digit = [](int number) { return "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[number]; };
  const auto code = [&](int number) { return std::string{digit(number / 36), digit(number % 36)}; };
  std::string graph = "[S:1]\npat(dog.@entry,:01)\n";
  for (int i = 1; i < 99; ++i) graph += "pat:" + code(i) + "(dog:" + code(i) + ".@entry,:" + code(i + 1) + ")\n";
  return graph + "mod:" + code(99) + "(dog:" + code(99) + ".@entry,a)\n[/S]\n";
}

TEST_F(Library, RendersDeepScopesForACallerWithASmallStack) {
  struct Call {
    Generator generator;
    std::string texts{};
  };
  Call call{Generator(grammar(kNestingRules))};
  const auto render = [](void* at) -> void* {
    Call& from = *static_cast<Call*>(at);
    from.texts = texts_of(from.generator.render(nested_graph(), {.trace_level = 4}));
    return nullptr;
  };
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{64} << 10), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, render, &call), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  std::string wanted = "done: ";
  for (int i = 0; i < 100; ++i) wanted += "dog";
  EXPECT_EQ(call.texts, wanted + '\n');
}

TEST_F(Library, CHasTheSame) {
  const std::string words = dictionary();
  lexon_grammar* grammar = lexon_grammar_from_text(words.c_str(), "R{a}{b}\n", 8, nullptr);
  ASSERT_NE(grammar, nullptr);
  EXPECT_EQ(lexon_grammar_rule_count(grammar), 1U);
  ASSERT_EQ(lexon_grammar_message_count(grammar), 1U);
  EXPECT_EQ(lexon_grammar_message(grammar, 0).kind, LEXON_WARNING);
  EXPECT_EQ(lexon_grammar_message(grammar, 0).line, 1);
  lexon_grammar_free(grammar);

  lexon_grammar_files files{};
  files.dictionary = words.c_str();
  files.rules_text = kRules;
  files.rules_size = std::strlen(kRules);
  files.blocks = 1;
  grammar = lexon_grammar_open(&files);
  EXPECT_EQ(lexon_grammar_is_usable(grammar), 1);
  lexon_grammar_free(grammar);
  grammar = lexon_grammar_from_text(words.c_str(), kRules, std::strlen(kRules), nullptr);
  lexon_generator* generator = lexon_generator_new(grammar);
  lexon_grammar_free(grammar);
  const std::string graphs = std::string(kDog) + "[S:2]\n[/S]\n";
  const lexon_settings settings = {.trace_level = 1, .no_post_edit = 1, .time_limit = 0, .begins_with_target = 0};
  lexon_result* result = lexon_generator_render(generator, graphs.data(), graphs.size(), &settings);
  ASSERT_EQ(lexon_result_count(result), 2U);
  const lexon_sentence dog = lexon_result_sentence(result, 0);
  EXPECT_EQ(std::string(dog.text, dog.text_size), "dog");
  EXPECT_EQ(std::string(dog.label), "[S:1]");
  EXPECT_EQ(std::string(dog.trace, dog.trace_size).substr(0, 12), "[S:1]\n======");
  EXPECT_EQ(lexon_result_sentence(result, 1).status, LEXON_FAILED);
  EXPECT_EQ(std::string(lexon_result_message(result, 1, 0).text), "SEM is Empty");
  lexon_result_free(result);
  lexon_generator_free(generator);
}

TEST(LibraryInC, NothingIsTakenForWhatItIsNot) {
  EXPECT_EQ(lexon_generator_new(nullptr), nullptr);
  EXPECT_EQ(lexon_generator_render(nullptr, "", 0, nullptr), nullptr);
  EXPECT_EQ(lexon_result_sentence(nullptr, 3).text, nullptr);
  EXPECT_EQ(lexon_grammar_message(nullptr, 0).text, nullptr);
  lexon_generator_stop(nullptr);
  lexon_grammar_free(nullptr);
  lexon_generator_free(nullptr);
  lexon_result_free(nullptr);
  lexon_grammar* grammar = lexon_grammar_load(nullptr, nullptr, nullptr);
  EXPECT_EQ(lexon_grammar_is_usable(grammar), 0);
  EXPECT_EQ(lexon_grammar_message_count(grammar), 2U);
  lexon_grammar_free(grammar);
}

}  // namespace
}  // namespace lexon::test
