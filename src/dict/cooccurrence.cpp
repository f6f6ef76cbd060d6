// A pair that stands in the dictionary has its own value. One that does not is asked again with each member of the
// relation's "sup" list in place of the relation, to any depth, until one gives a value that is not 0. A relation
// without such a list falls back to its default.
#include "dict/cooccurrence.hpp"

#include <cstring>

#include "data/output.hpp"
#include "data/scratch.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/layout.hpp"
#include "dict/word_lookup.hpp"
#include "rules/print.hpp"

namespace lexon {

namespace {

constexpr int kFailed = -1;

// A key that does not fit a block stands in no dictionary.
using Key = Scratch<kDictBlockSize>;

// ---- The value of one pair.

// What is asked, whatever the relation.
struct Pair {
  const char* first;
  const char* second;
  WordEntry* spent = nullptr;  // chains and members that are done with; released at the end of the check
};

void spend(Pair& pair, WordEntry* list) {
  WordEntry** link = &list;
  while (*link != nullptr) link = &(*link)->next;
  *link = pair.spent;
  pair.spent = list;
}

// The relations that led to the one being asked.
struct Path {
  const char* relation;
  const Path* before;  // null: the first one
};

// Apart, so that the message does not weigh on the stack of the recursion.
[[gnu::noinline]] int circle_refuse(Session& session, const char* relation) {
  Scratch<kLineSize> message;
  message.append("the \"sup\" chain of \"").append(relation).append("\" runs in a circle");
  (void)rule_base_failure(session, message.c_str());
  return kFailed;
}

// wanted: a default above 127 reads as a negative number, and so as a failed lookup
int relation_value(Session& session, const char* relation) {
  WordEntry* words = nullptr;
  if (words_by_key(session, session.sentence.cr_dictionary, kKeyHw, relation, words) != Status::ok) return kFailed;
  const int value = words == nullptr ? 0 : static_cast<std::int8_t>(words->priority);
  entry_list_free(session, words);
  return value;
}

// The value of the pair as it stands, or of the relation; or 1 and the relation's members in `chain`. Apart, so that
// the key does not weigh on the stack of the recursion.
[[gnu::noinline]] int value_as_it_stands(Session& session, const Pair& pair, const char* relation, WordEntry*& chain) {
  Key key;
  key.append(pair.first).append(relation).append(pair.second);
  WordEntry* words = nullptr;
  if (key.fits() && words_by_key(session, session.sentence.cr_dictionary, kKeyHw, key.c_str(), words) != Status::ok)
    return kFailed;
  if (words == nullptr) {
    chain = sup_members(session, relation);
    return chain != nullptr ? 1 : relation_value(session, relation);
  }
  entry_list_sort(words);
  const int value = words->priority;
  entry_list_free(session, words);
  return value;
}

int cooccurrence_value(Session& session, Pair& pair, const char* relation, WordEntry*& chain, const Path* path) {
  if (must_leave(session) != Status::ok || stack_nearly_used(session)) return kFailed;
  for (const Path* before = path; before != nullptr; before = before->before) {
    if (std::strcmp(before->relation, relation) == 0) return circle_refuse(session, relation);
  }
  // A chain that is handed in was left by an earlier check: the relation has not been asked on this path.
  const Path here{relation, path};
  const Path* inner_path = chain == nullptr ? &here : path;
  int value = chain == nullptr ? value_as_it_stands(session, pair, relation, chain) : 1;
  while (chain != nullptr) {
    WordEntry* inner = nullptr;
    value = cooccurrence_value(session, pair, text_or_empty(chain->id), inner, inner_path);
    spend(pair, inner);
    if (value != 0) break;
    WordEntry* failed = chain;
    chain = chain->next;
    failed->next = nullptr;
    spend(pair, failed);
  }
  return value;
}

// ---- The check.

struct Check {
  const Rule& rule;
  const Side side;
  WordEntry*& chosen;
  WordEntry* left;  // the words under test; the one of `side` moves on
  WordEntry* right;
  WordEntry* chain = nullptr;
  Pair pair{nullptr, nullptr};
  int best_score = 0;
  WordEntry* best = nullptr;  // null: no word has scored above 0
};

const char* word_text(const WordEntry* word) {
  if (word == nullptr) return "";
  const char* id = text_or_empty(word->id);
  return *id != '\0' ? id : text_or_empty(word->hw);
}

const char* role_of(const Rule& rule) {
  return rule.lnode->roles != nullptr ? rule.lnode->roles->text : rule.rnode->roles->text;
}

// The second text is that of the side whose pattern carries the ROLE; of the left one if both do.
void set_texts(Check& check) {
  const bool left_has_role = check.rule.lnode->roles != nullptr;
  check.pair.first = word_text(left_has_role ? check.right : check.left);
  check.pair.second = word_text(left_has_role ? check.left : check.right);
}

const char* label_of(const Check& check) {
  if (check.chosen != nullptr) return text_or_empty(check.chosen->id);
  return check.chain != nullptr ? text_or_empty(check.chain->id) : role_of(check.rule);
}

void trace_checked(Session& session, const Check& check, int score) {
  if (session.state.trace_level < 3) return;
  trace_line(session, ";;CR checked: ", label_of(check), "(", check.pair.first, ",", check.pair.second,
             ")=", Decimal(score));
}

// Asks the present pair, from the chain that the caller has left.
int score_pair(Session& session, Check& check) {
  if (check.chosen == nullptr) spend(check.pair, check.chain);
  check.chain = check.chosen;
  set_texts(check);
  const int score = cooccurrence_value(session, check.pair, role_of(check.rule), check.chain, nullptr);
  if (score >= 0) trace_checked(session, check, score);
  return score;
}

// A retry asks one pair, a first check all of them. A tie keeps the first. False: a lookup failed.
bool score_words(Session& session, Check& check) {
  WordEntry*& word = of_side(check.side, check.left, check.right);
  while (check.left != nullptr && check.right != nullptr) {
    const int score = score_pair(session, check);
    if (score < 0) return false;
    if (score > check.best_score) {
      check.best_score = score;
      check.best = word;
    }
    word = word->next;
    if (check.chosen != nullptr) break;
  }
  return true;
}

// A retry that failed keeps what it has not tried.
int finish(Session& session, Check& check, int result) {
  const bool keeps_chain = result >= 0 || check.chosen != nullptr;
  if (keeps_chain) {
    check.chosen = check.chain;
  } else {
    spend(check.pair, check.chain);
  }
  entry_list_free(session, check.pair.spent);
  return result;
}

}  // namespace

WordEntry* sup_members(Session& session, const char* text) {
  if (text == nullptr || *text == '\0') return nullptr;
  Key key;
  key.append("sup").append(text);
  WordEntry* members = nullptr;
  if (!key.fits() || words_by_key(session, session.sentence.cr_dictionary, kKeyCw, key.c_str(), members) != Status::ok)
    return nullptr;
  entry_list_sort(members);
  return members;
}

int cooccurrence_check(Session& session, WordEntry*& left, WordEntry*& right, const Rule& rule, WordEntry*& chosen,
                       Side side) {
  const bool inserts = rule.lnode->inserted != 0 || rule.rnode->inserted != 0;
  const bool has_role = rule.lnode->roles != nullptr || rule.rnode->roles != nullptr;
  if (session.sentence.cr_dictionary.dictionary == nullptr || !inserts || !has_role) return 1;
  Check check{rule, side, chosen, left, right};
  if (session.state.trace_level >= 2) {
    out_print(session, "%s;;checking CR for rule:\n", session.state.trace_indent);
    rule_print(session, &rule, true);
  }
  if (!score_words(session, check)) return finish(session, check, kFailed);
  WordEntry*& words = of_side(side, left, right);
  const bool all_were_asked = of_side(side, check.left, check.right) == nullptr;
  if (all_were_asked && check.best != nullptr) {
    // The best word goes to the front; the others keep their order.
    WordEntry** link = &words;
    while (*link != check.best) link = &(*link)->next;
    *link = check.best->next;
    check.best->next = words;
    words = check.best;
  }
  check.left = left;
  check.right = right;
  if (check.best != nullptr) of_side(side, check.left, check.right) = check.best;
  set_texts(check);
  if (session.state.trace_level >= 2) {
    out_print(session, "%s;;CR selected: %s(%s,%s)=%d;\n", session.state.trace_indent, label_of(check),
              check.pair.first, check.pair.second, check.best_score);
  }
  return finish(session, check, check.best_score);
}

}  // namespace lexon
