/* Lexon for C programs: sentences from graphs of meaning, by a dictionary and a file of rules.
 *
 * Handles are opaque. What a function returns with "new" or "render" in its name, or as a grammar, belongs to the
 * caller, who gives it back once with the matching "free"; null may be given back too. Texts inside a result belong to
 * it. Texts are bytes, in the encoding of the dictionary, the rules and the graphs, and end with a zero byte that their
 * size does not count; they may hold further ones. A handle that is null, and an index that is too large, do nothing
 * and give 0, null or a record of zeros.
 *
 * Threads: a grammar may be used by any number of threads; a generator and a result by one at a time, but for
 * lexon_generator_stop. Bad input never ends the process; what is wrong comes back as messages.
 */
#ifndef LEXON_LEXON_H
#define LEXON_LEXON_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define LEXON_C_API __attribute__((visibility("default")))
#else
#define LEXON_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct lexon_grammar lexon_grammar;
typedef struct lexon_generator lexon_generator;
typedef struct lexon_result lexon_result;

typedef enum lexon_message_kind { LEXON_NOTE = 0, LEXON_WARNING = 1, LEXON_ERROR = 2 } lexon_message_kind;

typedef enum lexon_status {
  LEXON_DONE = 0,      /* there is a sentence */
  LEXON_FAILED = 1,    /* there is none; the messages say why */
  LEXON_OVER_TIME = 2, /* the time limit has ended it */
  LEXON_STOPPED = 3    /* lexon_generator_stop has ended it */
} lexon_status;

typedef struct lexon_message {
  lexon_message_kind kind;
  const char* file; /* "": about text from memory, or about no file */
  int64_t line;     /* from 1; 0: about no line */
  int64_t column;   /* byte of the line, from 1; 0: none */
  const char* text; /* one line */
} lexon_message;

typedef struct lexon_sentence {
  lexon_status status;
  int code;         /* of the engine, as the manual lists them: 0, or why it failed */
  const char* text; /* the sentence; "" unless done */
  size_t text_size;
  const char* label; /* the line that opened the sentence, such as "[S:1]" */
  const char* trace; /* all that the program `lexon` writes for the sentence at the level, down to the banner */
  size_t trace_size;
  size_t message_count;
  int64_t steps;        /* passes of the search */
  int64_t memory_bytes; /* that the sentence took */
  double seconds;
  int leaves_target; /* not 0: a forced way back did not reach its target; the next sentence goes on to look for it */
} lexon_sentence;

typedef struct lexon_settings {
  int trace_level;        /* 0 to 4 */
  int no_post_edit;       /* not 0: the post-edit rules are not run */
  double time_limit;      /* seconds for each sentence; 0: none */
  int begins_with_target; /* not 0: the sentence in front of the first one `leaves_target` */
} lexon_settings;

/* The version of the library in use, as "1.2.3"; valid for ever. */
LEXON_C_API const char* lexon_version(void);

/* Opens a dictionary (with its index beside it), compiles rules, in memory, and opens a co-occurrence dictionary (null:
 * none). Null only for want of memory: otherwise ask lexon_grammar_is_usable, and the messages for what is wrong. The
 * second takes the rules as text, of `size` bytes, that need not end with a zero and is not kept. */
LEXON_C_API lexon_grammar* lexon_grammar_load(const char* dictionary, const char* rules, const char* cooccurrence);
LEXON_C_API lexon_grammar* lexon_grammar_from_text(const char* dictionary, const char* rules, size_t size,
                                                   const char* cooccurrence);

/* What lexon_grammar_open takes; zeros for what is not wanted. */
typedef struct lexon_grammar_files {
  const char* dictionary;
  const char* rules; /* not looked at if there is `rules_text` */
  const char* cooccurrence;
  const char* rules_text; /* of `rules_size` bytes, that need not end with a zero; not kept */
  size_t rules_size;
  int blocks; /* memory for the rules and a sentence of each generator together, in blocks of 65535 bytes; 0: 200 */
} lexon_grammar_files;

/* The same as the two above, with all that there is to choose. */
LEXON_C_API lexon_grammar* lexon_grammar_open(const lexon_grammar_files* files);

/* Generators that use the grammar stay usable. */
LEXON_C_API void lexon_grammar_free(lexon_grammar* grammar);

/* Not 0: it can render. */
LEXON_C_API int lexon_grammar_is_usable(const lexon_grammar* grammar);
LEXON_C_API size_t lexon_grammar_rule_count(const lexon_grammar* grammar);

/* What is wrong with files and rules. The texts live as long as the grammar. */
LEXON_C_API size_t lexon_grammar_message_count(const lexon_grammar* grammar);
LEXON_C_API lexon_message lexon_grammar_message(const lexon_grammar* grammar, size_t index);

/* A generator of the grammar, for one thread. It renders on a thread of its own with a large
 * stack, so the stack of the caller does not matter. Null for want of memory or of a thread. */
LEXON_C_API lexon_generator* lexon_generator_new(const lexon_grammar* grammar);
LEXON_C_API void lexon_generator_free(lexon_generator* generator);

/* Renders every sentence of a graph text of `size` bytes, and waits for it. Null `settings`: zeros. Null for want of
 * memory; the generator stays usable. */
LEXON_C_API lexon_result* lexon_generator_render(lexon_generator* generator, const char* graphs, size_t size,
                                                 const lexon_settings* settings);
LEXON_C_API void lexon_result_free(lexon_result* result);

/* Ends a rendering that is under way, from any thread, while the generator lives; not from a signal handler. */
LEXON_C_API void lexon_generator_stop(lexon_generator* generator);

/* The sentences of a result, in order, and the messages of each. The texts live as long as the result. */
LEXON_C_API size_t lexon_result_count(const lexon_result* result);
LEXON_C_API lexon_sentence lexon_result_sentence(const lexon_result* result, size_t index);
/* What can stand in for a sentence that is not done: the words of its graph; "" if it is done. */
LEXON_C_API const char* lexon_result_fallback(const lexon_result* result, size_t index);
LEXON_C_API lexon_message lexon_result_message(const lexon_result* result, size_t sentence, size_t index);

#ifdef __cplusplus
}
#endif

#endif
