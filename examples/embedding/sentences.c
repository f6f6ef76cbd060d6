/* sentences DICTIONARY RULES GRAPHS: renders the graphs, a text of its own argument. */
#include <lexon/lexon.h>
#include <stdio.h>
#include <string.h>

int main(int count, char** words) {
  if (count != 4) return 2;
  lexon_grammar* grammar = lexon_grammar_load(words[1], words[2], NULL);
  for (size_t i = 0; i < lexon_grammar_message_count(grammar); ++i) {
    const lexon_message message = lexon_grammar_message(grammar, i);
    fprintf(stderr, "%s:%ld: %s\n", message.file, (long)message.line, message.text);
  }
  lexon_generator* generator = lexon_grammar_is_usable(grammar) ? lexon_generator_new(grammar) : NULL;
  lexon_result* result = lexon_generator_render(generator, words[3], strlen(words[3]), NULL);
  for (size_t i = 0; i < lexon_result_count(result); ++i) {
    const lexon_sentence sentence = lexon_result_sentence(result, i);
    printf("%s\t%s\t%s\n", sentence.label, sentence.status == LEXON_DONE ? "done" : "lost", sentence.text);
  }
  const int status = result == NULL ? 1 : 0;
  lexon_result_free(result);
  lexon_generator_free(generator);
  lexon_grammar_free(grammar);
  return status;
}
