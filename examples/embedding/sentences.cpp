// sentences DICTIONARY RULES: renders the graphs on standard input.
#include <iostream>
#include <iterator>
#include <lexon/lexon.hpp>

int main(int count, char** words) {
  if (count != 3) return 2;
  const lexon::Grammar grammar = lexon::Grammar::load({.dictionary = words[1], .rules = words[2]});
  for (const lexon::Message& message : grammar.messages()) std::cerr << to_string(message) << '\n';
  if (!grammar) return 1;

  const std::string graphs{std::istreambuf_iterator<char>(std::cin), {}};
  lexon::Generator generator(grammar);
  bool all_done = true;
  for (const lexon::Sentence& sentence : generator.render(graphs, {.time_limit = 10})) {
    for (const lexon::Message& message : sentence.messages) std::cerr << to_string(message) << '\n';
    std::cout << sentence.label << '\t' << to_string(sentence.status) << '\t' << sentence.text << '\n';
    all_done = all_done && sentence.status == lexon::Status::done;
  }
  return all_done ? 0 : 3;
}
