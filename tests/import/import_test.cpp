// Sources of meaning banks and what they become: whole graphs as they are, each step of rewriting, dependency trees,
// mistakes, and the account of the triples.

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "import/importer.hpp"
#include "import/steps.hpp"

namespace lexon::test {
namespace {

struct Result {
  std::string relations;  // the lines of all sentences but tags and comments, with "; " between them
  std::string graphs;
  std::string messages;
  std::string left_out;
  std::string gold;
  ImportFigures figures;
};

Result imported(const std::string& source, const std::set<std::string>& steps, SourceFormat format = SourceFormat::penman, bool enhanced = false,
                const std::string& given = "") {
  Result result;
  ImportOptions options;
  options.format = format;
  options.enhanced = enhanced;
  for (const RewriteStep& step : rewrite_steps()) {
    if (!steps.contains(step.name) && !steps.contains("all")) options.left_steps.insert(step.name);
  }
  std::istringstream table(format == SourceFormat::penman ? kAmrRoles : kDependencyRoles);
  EXPECT_TRUE(options.table.read(table).empty());
  AttributeTable attributes;
  std::istringstream rows(given);
  EXPECT_TRUE(attributes.read(rows).empty());
  std::istringstream in(source);
  std::ostringstream graphs, gold, left_out, messages;
  import_stream(in, "bank.txt", options, attributes, {&graphs, &gold, &left_out, &messages}, result.figures);
  result.graphs = graphs.str();
  result.messages = messages.str();
  result.left_out = left_out.str();
  result.gold = gold.str();
  std::istringstream lines(result.graphs);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '[' || line[0] == ';') continue;
    result.relations += (result.relations.empty() ? "" : "; ") + line;
  }
  return result;
}

// Every triple is accounted for, once.
void expect_account(const ImportFigures& figures) {
  EXPECT_EQ(figures.triples, figures.relations + figures.words + figures.attributes + figures.left_out);
}

struct StepRow {
  const char* name;
  const char* steps;  // one step, "all" or "" for none
  const char* source;
  const char* relations;
};

const StepRow kSteps[] = {
    {"as_it_is", "", "(w / want-01 :ARG0 (b / boy) :ARG1 (g / go-02 :ARG0 b))", "a0(want(>01).@entry.@v, boy); a1(want(>01), go(>02).@v); a0(go(>02), boy)"},
    {"inverse_turned", "", "(b / boy :ARG0-of (r / run-02))", "a0(run(>02).@v, boy.@entry)"},
    {"two_of_one_concept", "", "(s / see-01 :ARG0 (b / boy) :ARG1 (c / boy))", "a0(see(>01).@entry.@v, boy:01); a1(see(>01), boy:02)"},
    {"one_word", "", "(r / rain)", "rain.@entry"},
    {"attribute_roles", "", "(g / go-02 :polarity - :mode imperative)", "go(>02).@entry.@v.@neg.@imp"},
    {"constants", "", "(c / city :name (n / name :op1 \"New\") :quant 3)", "nam(city.@entry, name); o1(name, New); qty(city, 3)"},
    {"variable_used_before", "", "(a / and :op1 b :op2 (b / boy))", "o1(and.@entry, boy); o2(and, boy)"},
    {"unsafe_texts", "", "(s / say-01 :ARG1 \"a, (b) \\\"c\\\": d.@e\")", "a1(say(>01).@entry.@v, \"a, (b) \\\"c\\\": d. @e\")"},
    {"alignments", "", "(b / boy~e.1 :ARG0-of~e.2 (r / run-02~e.3) :op1 x/~user)", "a0(run(>02).@v, boy.@entry); o1(boy, x/~user)"},
    {"unknown_role", "", "(b / boy :Foobar (c / cat))", "foo(boy.@entry, cat)"},
    {"noun_of_an_object", "nouns", "(r / reject-01 :ARG0 (s / she) :ARG1 (p / propose-01 :ARG0 (h / he)))",
     "a0(reject(>01).@entry.@v, she); a1(reject(>01), propose(>01).@v.@nom.@whose); a0(propose(>01), he)"},
    {"noun_beside_a_light_verb", "nouns", "(g / give-01 :ARG0 (h / he) :ARG1 (p / promise-01 :ARG0 h :mod (n / new)))",
     "a0(give(>01).@entry.@v, he); a1(give(>01), promise(>01).@v.@nom.@whose.@indef); mod(promise(>01), new)"},
    {"noun_that_is_kept", "nouns", "(k / keep-01 :ARG0 (s / she) :ARG1 (p / promise-01))",
     "a0(keep(>01).@entry.@v, she); a1(keep(>01), promise(>01).@v.@nom.@whose)"},
    {"noun_that_a_clause_describes", "nouns", "(a / answer-01 :ARG1 (c / charge-05 :ARG1-of (b / bring-01 :ARG0 (s / she))))",
     "a1(answer(>01).@entry.@v, charge(>05).@v.@nom.@whose); a1(bring(>01).@v, charge(>05)); a0(bring(>01), she)"},
    {"no_patient_of_what_follows", "nouns", "(p / person :ARG1-of (e / employ-01 :ARG0-of (t / tire-01)))",
     "a1(employ(>01).@v, person.@entry); a0(tire(>01).@v, employ(>01))"},
    {"counted_event", "nouns", "(s / see-01 :ARG0 i :ARG1 (a / attack-01 :refer-number plural))",
     "a0(see(>01).@entry.@v, i); a1(see(>01), attack(>01).@v.@pl.@nom.@whose)"},
    {"lack_as_cause", "nouns", "(s / stop-01 :ARG1 (c / case) :cause (l / lack-01 :ARG1 (m / money)))",
     "a1(stop(>01).@entry.@v, case); cau(stop(>01), lack(>01).@v.@nom.@whose); a1(lack(>01), money)"},
    {"thanked_for", "nouns", "(t / thank-01 :ARG1 (y / you) :ARG2 (a / advise-01 :ARG0 y))",
     "a1(thank(>01).@entry.@v, you); a2(thank(>01), advise(>01).@v.@nom.@whose); a0(advise(>01), you)"},
    {"former_patient", "nouns", "(p / person :ARG1-of (e / employ-01 :ARG0 (c / company) :time (f / former)))",
     "org(employee.@entry, company); mod(employee, former)"},
    {"number_that_rises", "nouns", "(r / rise-01 :ARG1 (n / number :quant-of (v / victim)))", "a1(rise(>01).@entry.@v, number.@def); qty(victim, number)"},
    {"felt", "nouns", "(d / defeat-01 :ARG0-of (h / humiliate-01))", "a0(humiliate(>01).@v.@felt, defeat(>01).@entry.@v)"},
    {"patient", "nouns", "(p / person :ARG1-of (e / employ-01 :ARG0 (c / company)))", "org(employee.@entry, company)"},
    {"had_of_the_owner", "office", "(h / have-03 :ARG0 (s / she) :ARG1 (p / person :ARG0-of (r / have-rel-role-91 :ARG1 s :ARG2 (a / aunt))))",
     "a0(have(>03).@entry.@v, she); a1(have(>03), aunt)"},
    {"as_good_as_behind", "degree", "(c / cat :ARG1-of (h / have-degree-91 :ARG2 (b / big) :ARG3 (s / so) :ARG4 (d / dog)))",
     "a1(big.@equal.@v, cat.@entry); cmp(big, dog)"},
    {"manner_lacked", "predicates", "(l / leave-11 :manner (d / doubt :polarity -))", "mnr(leave(>11).@entry.@v, doubt.@neg.@noart)"},
    {"all_the_way", "pronouns", "(r / run-02 :path (w / way :mod (a / all)))", "pth(run(>02).@entry.@v, all-the-way)"},
    {"ordered_passive", "tense", "(o / order-01 :ARG0 (k / king) :ARG1 (b / burn-01 :ARG1 (l / letter)))",
     "a0(order(>01).@entry.@v, king); a1(order(>01), burn(>01).@v.@psv.@should); a1(burn(>01), letter)"},
    {"noun_of_a_feeling", "nouns", "(e / express-01 :ARG0 (s / she) :ARG1 (c / concern-01 :ARG0 (n / noise) :ARG1 s))",
     "a0(express(>01).@entry.@v, she); a1(express(>01), concern(>01).@v.@nom.@whose); prp(concern(>01), about); pos(concern(>01), she); o1(about, noise)"},
    {"all_of_us", "reified", "(p / please-01 :ARG0 (s / song) :ARG1 (w / we :mod (a / all)))",
     "a0(please(>01).@entry.@v, song); a1(please(>01), all.@pl); sup(all, we.@pl.@def)"},
    {"correlated", "reified", "(c / correlate-91 :ARG1 (r / rain-01) :ARG2 (m / more :ARG3-of (h / have-degree-91 :ARG1 g :ARG2 (g / green))))",
     "o1(as, rain(>01).@v); a3(have-degree(>91).@entry.@v, more); a1(have-degree(>91), green); a2(have-degree(>91), green); tim(have-degree(>91), as)"},
    {"each_of_his_sons", "office", "(s / see-01 :ARG1 (n / son :mod (e / each) :poss (h / he)))",
     "a1(see(>01).@entry.@v, each); sup(each, son.@pl); pos(son, he)"},
    {"tonight", "dates", "(s / see-01 :time (d / date-entity :dayperiod (n / night) :mod (t / today)))", "tim(see(>01).@entry.@v, tonight)"},
    {"this_morning", "dates", "(s / see-01 :time (d / date-entity :dayperiod (m / morning) :mod (t / today)))",
     "tim(see(>01).@entry.@v, morning.@date.@dayperiod); mod(morning, this)"},
    {"not_until", "predicates", "(s / see-01 :ARG0 (h / he) :time (u / until :polarity - :op1 (m / may)))",
     "a0(see(>01).@entry.@v.@neg, he); tim(see(>01), until); o1(until, may)"},
    {"neither_nor", "coordination", "(s / see-01 :polarity - :ARG0 (o / or :op1 (c / cat) :op2 (d / dog)))",
     "a0(see(>01).@entry.@v, cat.@neither); cnj(cat, dog.@nor)"},
    {"whose_husband", "office", "(w / woman :ARG1-of (h / have-rel-role-91 :ARG0 (p / person :ARG1-of (d / drown-01)) :ARG2 (h2 / husband)))",
     "pos(husband, woman.@entry); a1(drown(>01).@v, husband)"},
    {"wisest_of_several", "degree", "(h / have-degree-91 :ARG1 (o / owl) :ARG2 (w / wise) :ARG3 (m / most) :ARG5 (b / bird))",
     "dom(wise.@entry.@most, owl); spl(wise, bird.@pl.@def)"},
    {"two_qualities", "degree", "(h / have-degree-91 :ARG1 (s / she) :ARG2 (c / clever) :ARG3 (m / more) :ARG4 (p / pretty-01 :ARG1 s))",
     "dom(clever.@entry.@more, she); cmp(clever, pretty(>01).@v.@quality)"},
    {"how_much_of_a_deed", "degree", "(h / have-quant-91 :ARG1 (l / listen-01 :ARG0 (b / boy)) :ARG3 (m / less))",
     "a0(listen(>01).@entry.@v, boy); ext(listen(>01), less)"},
    {"disputed", "questions", "(a / argue-01 :ARG0 (t / they) :ARG1 (t2 / turn :poss (u / amr-unknown)))",
     "a0(argue(>01).@entry.@v, they); a1(argue(>01), turn.@wh); pos(turn, amr-unknown.@wh.@wh_poss)"},
    {"voice", "voice", "(s / surprise-01 :ARG0 (h / hear-01 :ARG0 i :ARG1 (t / that)) :ARG1 (i / i))",
     "a0(surprise(>01).@entry.@v.@psv.@moved, hear(>01).@v); a0(hear(>01), i); a1(hear(>01), that); a1(surprise(>01), i)"},
    {"voice_of_a_bare_noun", "voice", "(h / help-01 :ARG0 (d / decide-01) :ARG1 (w / we))", "a0(help(>01).@entry.@v, decide(>01).@v); a1(help(>01), we)"},
    {"before_now", "tense", "(l / leave-11 :time (b / before :op1 (n / now)))", "leave(>11).@entry.@v.@past"},
    {"ago", "tense", "(l / leave-11 :time (b / before :op1 (n / now) :quant (y / year)))", "tim(leave(>11).@entry.@v.@past, ago); qty(ago, year)"},
    {"perfect", "tense", "(s / see-01 :time (e / ever))", "tim(see(>01).@entry.@v.@perf, ever)"},
    {"one_owner", "reified", "(s / sheep :poss (y / you) :ARG1-of (h / have-03 :ARG0 (k / king)))",
     "pos(sheep.@entry, you); a1(have(>03).@v, sheep); a0(have(>03), king)"},
    {"including", "reified", "(t / team :ARG2-of (i / include-01 :ARG1 (c / captain)))", "sub(team.@entry, captain)"},
    {"having", "reified", "(f / flower :ARG0-of (h / have-03 :ARG1 (t / thorn)))", "psn(flower.@entry, thorn)"},
    {"pronoun_with_a_frame", "persons", "(t / that :ARG1-of (i / important-01))", "a1(important(>01).@entry.@v, that)"},
    {"restricted_unit", "quantities", "(w / wheat :quant (a / about :op1 (m / mass-quantity :quant 15000 :unit (t / ton))))",
     "qty(wheat.@entry, ton.@measure.@pl); o1(about, \"15,000\"); qty(ton, about)"},
    {"score_and_fraction", "quantities", "(w / win-01 :ARG1 (c / cake :quant 2/3) :quant (s / score-entity :op1 3 :op2 1))",
     "a1(win(>01).@entry.@v, cake); qty(cake, two thirds); ext(win(>01), 3-1)"},
    {"long_numbers", "quantities", "(s / star :quant 2000000000 :part (m / mile :quant 462511))",
     "qty(star.@entry.@pl, 2 billion); prt(star, mile.@pl); qty(mile, \"462,511\")"},
    {"what_is_ordered", "modality", "(o / order-01 :ARG1 (g / go-02 :modal-strength partial-affirmative))", "a1(order(>01).@entry.@v, go(>02).@v)"},
    {"modality_of_several", "modality", "(r / recommend-01 :ARG1 (a / and :op1 (s / stop-01) :op2 (l / look-01)))",
     "o1(and.@entry, stop(>01).@v.@should); o2(and, look(>01).@v.@should)"},
    {"possible_nouns_stay", "modality", "(p / possible-01 :ARG1 (a / and :op1 (w / war) :op2 (h / hunger)))",
     "a1(possible(>01).@entry.@v, and); o1(and, war); o2(and, hunger)"},
    {"mood_of_several", "modality", "(p / possible-01 :mode interrogative :ARG1 (a / or :op1 (s / sing-01) :op2 (d / dance-01)))",
     "o1(or.@entry.@int, sing(>01).@v.@can); o2(or, dance(>01).@v.@can)"},
    {"recommended_by_somebody", "modality", "(r / recommend-01 :ARG0 (s / she) :ARG1 (a / and :op1 (s2 / sing-01) :op2 (d / dance-01)))",
     "a0(recommend(>01).@entry.@v, she); a1(recommend(>01), and); o1(and, sing(>01).@v); o2(and, dance(>01).@v)"},
    {"obliged_to_several", "modality", "(o / obligate-01 :ARG1 (i / i) :ARG2 (a / and :op1 (s / sing-01 :ARG0 i) :op2 (d / dance-01)))",
     "o1(and.@entry, sing(>01).@v.@must); a0(sing(>01), i); o2(and, dance(>01).@v.@must); a0(dance(>01), i)"},
    {"need_none_of_several", "modality", "(o / obligate-01 :polarity - :ARG2 (a / or :op1 (s / sing-01) :op2 (b / and :op1 (d / dance-01))))",
     "o1(or.@entry, sing(>01).@v.@need.@neg); o2(or, and); o1(and, dance(>01).@v.@need.@neg)"},
    {"possible_for_two_clauses", "modality", "(a / and :op1 (c / clean-01 :ARG1-of (p / possible-01 :polarity -)) :op2 (s / sell-01 :ARG1-of p))",
     "o1(and.@entry, clean(>01).@v.@can.@neg); o2(and, sell(>01).@v.@can.@neg)"},
    {"former_office", "office", "(p / person :ARG0-of (h / have-org-role-91 :ARG2 (m / mayor :topic (c / culture)) :time (f / former)))",
     "mod(mayor.@entry, culture); mod(mayor, former)"},
    {"group_as_office", "office", "(h / have-org-role-92 :ARG1 (s / she) :ARG2 (p / party))", "dom(party.@entry, she)"},
    {"synonyms", "synonyms", "(g / go-02 :temporal (d / day) :place-of (s / song))", "tim(go(>02).@entry.@v, day); loc(song, go(>02))"},
    {"participants", "synonyms", "(m / move-01 :actor (s / she) :theme (b / boat))", "a0(move(>01).@entry.@v, she); a1(move(>01), boat)"},
    {"participant_beside_a_number", "synonyms", "(m / move-01 :ARG1 (s / she) :theme (b / boat))", "a1(move(>01).@entry.@v, she); a1(move(>01), boat)"},
    {"every_time", "turned", "(s / smile-01 :frequency (s2 / sing-01 :ARG0 i :mod (e / every)))",
     "tim(smile(>01).@entry.@v, whenever); a0(sing(>01).@v, i); o1(whenever, sing(>01))"},
    {"condition_of", "turned", "(b / bring-01 :condition-of (o / open-01))", "cnd(open(>01).@entry.@v, bring(>01).@v)"},
    {"condition_of_an_order", "turned", "(b / bring-01 :mode imperative :condition-of (o / open-01))",
     "cnj(bring(>01).@entry.@v.@imp, open(>01).@v.@and.@fut)"},
    {"concession_of", "turned", "(r / rain-01 :concession-of (p / play-01))", "cnj(rain(>01).@entry.@v, play(>01).@v.@but)"},
    {"condition_of_another", "turned", "(a / and :op1 (b / bring-01 :condition-of (o / open-01)) :op2 o)",
     "o1(and.@entry, bring(>01).@v); cnd(open(>01).@v, bring(>01)); o2(and, open(>01))"},
    {"place_unnamed", "turned", "(s / see-01 :ARG1 (h / have-place-91 :ARG1 (b / build-01)))", "a1(see(>01).@entry.@v, place); loc(build(>01).@v, place)"},
    {"place_named", "turned", "(s / see-01 :ARG1 (h / have-place-91 :ARG1 (b / build-01) :ARG2 (t / town)))",
     "a1(see(>01).@entry.@v, have-place(>91).@v); a1(have-place(>91), build(>01).@v); a2(have-place(>91), town)"},
    {"takes", "turned", "(t / take-10 :ARG1 (h / hour))", "a1(take(>10).@entry.@v, hour); a0(take(>10), it)"},
    {"quality_stated", "turned", "(h / have-mod-91 :polarity - :ARG1 (i / idea) :ARG2 (g / good))", "dom(good.@entry.@neg, idea)"},
    {"deed_stated", "turned", "(h / have-mod-91 :ARG1 (m / mill) :ARG2 (c / close-01))", "a1(close(>01).@entry.@v, mill)"},
    {"whenever", "all", "(s / sing-01 :frequency (r / rate-entity-91 :ARG4 (w / walk-01 :ARG0 (h / he))))",
     "tim(sing(>01).@entry.@v, whenever); a0(walk(>01).@v.@past.@cl, he); o1(whenever, walk(>01))"},
    {"wiki", "wiki", "(b / boy :wiki \"X\" :mod (o / old))", "mod(boy.@entry, old)"},
    {"point_of_view", "wiki", "(e / expect-01 :ARG1 (r / rise-01 :modal-predicate e))", "a1(expect(>01).@entry.@v, rise(>01).@v)"},
    {"names", "names", "(p / person :name (n / name :op1 \"Ada\" :op2 \"King\"))", "Ada King.@entry.@name.@person"},
    {"dates", "dates", "(b / begin-01 :time (d / date-entity :year 2001 :month 7 :day 5))",
     "tim(begin(>01).@entry.@v, month(>7).@date.@month); yr(month(>7), 2001); day(month(>7), 5)"},
    {"preposition", "prepositions", "(l / lie-07 :ARG1 (k / key) :prep-beneath (m / mat))",
     "a1(lie(>07).@entry.@v, key); prp(lie(>07), beneath); o1(beneath, mat)"},
    {"only_four", "quantities", "(b / bird :quant (o / only :op1 4))", "qty(bird.@entry.@pl, only); o1(only, 4)"},
    {"quantity", "quantities", "(w / wait-01 :duration (t / temporal-quantity :quant 6 :unit (m / month)))",
     "dur(wait(>01).@entry.@v, month.@measure.@pl); qty(month, 6)"},
    {"ordinal", "quantities", "(d / day :ord (o / ordinal-entity :value 2))", "ord(day.@entry, 2(>ord).@ord)"},
    {"ordinal_range", "quantities", "(d / day :ord (o / ordinal-entity :value 2 :range (y / year)))", "ord(day.@entry, 2(>ord).@ord); loc(day, year)"},
    {"great_number", "quantities", "(d / dollar :quant 1200000000)", "qty(dollar.@entry.@pl, 1.2 billion)"},
    {"reason_told", "reified", "(k / know-01 :ARG1 (t / thing :ARG0-of (c / cause-01 :ARG1 (s / sing-01 :ARG0 (b / bird)))))",
     "a1(know(>01).@entry.@v, sing(>01).@v.@asked); a0(sing(>01), bird); cau(sing(>01), amr-unknown)"},
    {"light_phrase", "reified", "(h / have-fun-00 :ARG0 (b / boy) :ARG1 (g / girl))",
     "a0(have(>03).@entry.@v, boy); prp(have(>03), with); a1(have(>03), fun.@indef.MASS); o1(with, girl)"},
    {"light_phrase_of_thing", "reified", "(m / make-sense-02 :ARG1 (p / plan))", "a0(make(>01).@entry.@v, plan); a1(make(>01), sense.@indef.MASS)"},
    {"no_sense", "reified", "(c / cook-XX :ARG0 (b / boy))", "a0(cook(>01).@entry.@v, boy)"},
    {"deed_counted", "nouns", "(r / remember-01 :ARG1 (a / attempt-01 :ord (o / ordinal-entity :value 3)))",
     "a1(remember(>01).@entry.@v, attempt(>01).@v.@nom.@whose); ord(attempt(>01), ordinal-entity); val(ordinal-entity, 3)"},
    {"every_day", "quantities", "(s / sing-01 :frequency (r / rate-entity-91 :ARG3 (t / temporal-quantity :quant 1 :unit (d / day))))",
     "fre(sing(>01).@entry.@v, day.@measure.@every)"},
    {"percent", "quantities", "(p / percentage-entity :value 20)", "qty(percent.@entry.@measure.@pl, 20)"},
    {"pronoun", "pronouns", "(g / go-02 :ARG0 (p / person :refer-person 3rd :refer-number plural))", "a0(go(>02).@entry.@v, they.@p3.@pl)"},
    {"someone", "pronouns", "(s / see-01 :ARG0 (p / person :mod (s2 / some)))", "a0(see(>01).@entry.@v, someone)"},
    {"cause_above", "reified", "(c / cause-01 :ARG0 (r / rain-01) :ARG1 (s / stay-01 :ARG0 (i / i)))",
     "cau(stay(>01).@entry.@v, rain(>01).@v); a0(stay(>01), i)"},
    {"cause_below", "reified", "(s / stay-01 :ARG1-of (c / cause-01 :ARG0 (r / rain-01)))", "cau(stay(>01).@entry.@v, rain(>01).@v)"},
    {"cause_alone_below", "reified", "(s / stay-01 :ARG1-of (c / cause-01))", "stay(>01).@entry.@v.@so_cause"},
    {"cause_alone", "reified", "(c / cause-01 :ARG1 (s / stay-01))", "stay(>01).@entry.@v.@so_cause"},
    {"cause_alone_of_a_thing", "reified", "(c / cause-01 :ARG1 (n / noise))", "a1(cause(>01).@entry.@v, noise); a0(cause(>01), that)"},
    {"result_below", "reified", "(s / stop-01 :ARG2-of (r / result-01 :ARG1 (b / break-01)))", "cau(stop(>01).@entry.@v, break(>01).@v)"},
    {"same_noun", "reified", "(d / day :ARG1-of (r / resemble-91 :ARG2 (d2 / day :mod (t / this))))", "lik(day.@entry.@indef, this)"},
    {"had_by_nobody", "reified", "(h / have-03 :ARG1 (p / party))", "a1(exist(>01).@entry.@v, party)"},
    {"term_in_a_place", "reified", "(s / sentence-01 :ARG1 (h / he) :ARG2 (j / jail) :ARG4 (y / year))",
     "a1(sentence(>01).@entry.@v, he); loc(year, jail); a2(sentence(>01), year)"},
    {"right_of_an_owner", "reified", "(b / belong-91 :ARG1 (s / she) :ARG2 (d / decide-01))",
     "a2(belong(>91).@entry.@v, she); a1(belong(>91), decide(>01).@v)"},
    {"identity_of_who_acts", "reified", "(l / laugh-01 :ARG0 (i / identity-91 :ARG1 (d / driver) :ARG2 (m / mayor)))",
     "a0(laugh(>01).@entry.@v, driver); app(driver, mayor)"},
    {"money_first", "reified", "(s / spend-01 :ARG0 (s2 / she) :ARG1 (b / boat) :ARG3 (c / coin))",
     "a0(spend(>01).@entry.@v, she); a2(spend(>01), boat); a1(spend(>01), coin)"},
    {"office", "office", "(p / person :ARG0-of (h / have-org-role-91 :ARG1 (c / club) :ARG2 (m / member)))", "org(member.@entry, club)"},
    {"office_stated", "office", "(h / have-rel-role-91 :ARG0 (s / she) :ARG1 (i / i) :ARG2 (f / friend))", "dom(friend.@entry, she); pos(friend, i)"},
    {"degree", "degree", "(h / have-degree-91 :ARG1 (t / tree) :ARG2 (b / tall) :ARG3 (m / more) :ARG4 (h2 / house))",
     "dom(tall.@entry.@more, tree); cmp(tall, house)"},
    {"degree_below", "degree", "(t / tree :ARG1-of (h / have-degree-91 :ARG2 (b / tall) :ARG3 (m / most)))", "mod(tree.@entry, tall.@most)"},
    {"degree_names_bearer", "degree",
     "(t / tree :ARG1-of (h / have-degree-91 :ARG2 (b / tall :domain t) :ARG3 (m / most) :ARG5 (t2 / tree :location (v / village))))",
     "mod(tree.@entry, tall.@most); loc(tree, village)"},
    {"degree_asked", "degree", "(h / have-degree-91 :mode interrogative :ARG1 (t / tree) :ARG2 (b / tall) :ARG3 (m / more))",
     "dom(tall.@entry.@int.@more, tree)"},
    {"twice_as", "degree", "(t / tall :domain (t2 / tree) :ARG2-of (h / have-degree-91 :ARG1 t2 :ARG3 (p / product-of :op1 2) :ARG4 (h2 / house)))",
     "dom(tall.@entry.@equal, tree); deg(tall, twice); cmp(tall, house)"},
    {"times_unknown", "degree", "(h / have-degree-91 :ARG1 (t / tree) :ARG2 (b / tall) :ARG3 (p / product-of :op1 2.5))",
     "dom(tall.@entry, tree); deg(tall, product-of); o1(product-of, 2.5)"},
    {"enough_for", "degree", "(h / have-03 :ARG1 (b / bread :ARG1-of (h2 / have-quant-91 :ARG3 (e / enough) :ARG6 (e2 / eat-01))))",
     "a1(have(>03).@entry.@v, bread); qty(bread, enough); pur(have(>03), eat(>01).@v)"},
    {"degree_of_predicate", "degree", "(h / have-degree-91 :polarity - :ARG1 (t / tree :domain (i / it)) :ARG2 (b / tall :domain t) :ARG3 (m / most))",
     "dom(tree.@entry.@neg, it); mod(tree, tall.@most)"},
    {"obliged_patient", "modality", "(o / obligate-01 :ARG1 (i / i) :ARG2 (c / come-01 :ARG1 i))", "a1(come(>01).@entry.@v.@must, i)"},
    {"possible", "modality", "(p / possible-01 :polarity - :ARG1 (g / go-02 :ARG0 (i / i)))", "a0(go(>02).@entry.@v.@can.@neg, i)"},
    {"obliged", "modality", "(o / obligate-01 :ARG1 (i / i) :ARG2 (g / go-02 :ARG0 i))", "a0(go(>02).@entry.@v.@must, i)"},
    {"possible_noun_stays", "modality", "(p / possible-01 :ARG1 (r / rain))", "a1(possible(>01).@entry.@v, rain)"},
    {"several_obliged", "modality", "(o / obligate-01 :ARG1 (w / we) :ARG2 (a / and :op1 (l / listen-01 :ARG0 w) :op2 (w2 / wait-01 :ARG1 w)))",
     "o1(and.@entry, listen(>01).@v.@must); a0(listen(>01), we); o2(and, wait(>01).@v.@must); a1(wait(>01), we)"},
    {"asked_yes_or_no", "polarity", "(g / go-02 :ARG0 (y / you) :polarity (a / amr-unknown))", "a0(go(>02).@entry.@v.@int, you)"},
    {"whether", "polarity", "(a / ask-01 :ARG1 (t / truth-value :polarity-of (g / go-02)))", "a1(ask(>01).@entry.@v, go(>02).@v.@whether)"},
    {"agent", "persons", "(p / person :ARG0-of (d / drive-01) :mod (o / old))", "mod(drive(>01).@entry.@v.@agent, old)"},
    {"agent_with_a_manner", "persons", "(p / person :ARG0-of (s / sing-01 :manner (g / good)) :domain (h / he))",
     "mod(sing(>01).@entry.@v.@indef.@agent, good); dom(sing(>01), he)"},
    {"agent_and_whom_he_serves", "persons", "(l / laugh-01 :ARG0 (p / person :ARG0-of (t / teach-01 :ARG2 (i / i))))",
     "a0(laugh(>01).@entry.@v, teach(>01).@v.@agent); pos(teach(>01), i)"},
    {"agent_of_a_known_kind", "persons", "(p / person :ARG0-of (s / sing-01) :mod (o / only) :domain (h / he))",
     "mod(sing(>01).@entry.@v.@agent, only); dom(sing(>01), he)"},
    {"denied_possession", "nouns", "(h / have-03 :ARG0 (s / she) :ARG1 (h2 / hope-01 :polarity - :ARG0 s))",
     "a0(have(>03).@entry.@v.@neg, she); a1(have(>03), hope(>01).@v.@nom.@whose.@indef)"},
    {"government", "persons", "(g / government-organization :ARG0-of (g2 / govern-01 :ARG1 (c / country)))", "org(government.@entry, country)"},
    {"how_many", "quantities", "(s / star :quant (m / many))", "qty(star.@entry.@pl, many)"},
    {"result", "persons", "(t / thing :ARG1-of (o / order-01) :mod (o2 / old))", "mod(order(>01).@entry.@v.@result, old)"},
    {"agent_with_more_stays", "persons", "(p / person :ARG0-of (d / drive-01 :location (h / here)))",
     "a0(drive(>01).@v, person.@entry); loc(drive(>01), here)"},
    {"identity", "reified", "(i / identity-91 :ARG1 (s / she) :ARG2 (m / mayor))", "dom(mayor.@entry, she)"},
    {"nobody_says", "speaker", "(s / say-01 :ARG0 (p / person) :ARG2 (p2 / person) :ARG1 (r / rain-01))", "rain(>01).@entry.@v"},
    {"speaker", "speaker", "(s / say-01 :ARG0 (p / person) :ARG1 (g / go-02 :ARG0 p :quote s))", "a0(go(>02).@entry.@v, i)"},
    {"called_by_name", "speaker", "(s / say-01 :ARG1 (c / come-01 :ARG1 p) :ARG2 (p / person))",
     "a1(say(>01).@entry.@v, come(>01).@v); a1(come(>01), person); a2(say(>01), person)"},
    {"called_is_you", "speaker", "(s / see-01 :ARG0 p :vocative (p / person))", "a0(see(>01).@entry.@v, you.@p2); voc(see(>01), person)"},
    {"likeness", "reified", "(h / house :ARG1-of (r / resemble-91 :ARG2 (c / church)))", "lik(house.@entry, church)"},
    {"cause_noun", "reified", "(t / thing :ARG0-of (c / cause-01 :ARG1 (f / fire)))", "org(cause.@entry, fire)"},
    {"reason_asked", "reified", "(e / explain-01 :ARG1 (t / thing :ARG0-of (c / cause-01 :ARG1 (l / leave-11 :ARG0 (s / she)))))",
     "a1(explain(>01).@entry.@v, leave(>11).@v.@asked); a0(leave(>11), she); cau(leave(>11), amr-unknown)"},
    {"per", "quantities", "(r / rate-entity-91 :ARG1 (e / egg) :ARG2 (c / child))", "rat(egg.@entry, child)"},
    {"passive_shared", "coordination", "(a / and :op1 (f / find-01 :ARG1 (b / box)) :op2 (o / open-01 :ARG1 b))",
     "a1(find(>01).@entry.@v, box); cnj(find(>01), open(>01).@v.@and.@shr1); shr(open(>01), box)"},
    {"operand_without_number", "names", "(c / city :name (n / name :op.1 \"A\" :op2 \"B\"))", "B.@entry.@name.@city"},
    {"unknown_polarity", "modality", "(g / go-02 :ARG1-of (h / have-polarity-91 :ARG2 half))",
     "a1(have-polarity(>91).@v, go(>02).@entry.@v); a2(have-polarity(>91), half)"},
    {"asked_by_frame", "modality", "(g / go-02 :ARG1-of (h / have-polarity-91 :ARG2 (a / amr-unknown)))", "go(>02).@entry.@v.@int"},
    {"below_itself", "", "(b / boy :mod b :ARG1 (c / cat))", "a1(boy.@entry, cat)"},
    {"quote_of_what_only_it_leads_to", "speaker", "(b / bring-01 :ARG0 (k / king :quote (s / song :topic k)))",
     "a0(bring(>01).@entry.@v, king); quo(king, song); top(song, king)"},
    {"quote_of_a_text", "speaker", "(g / go-02 :quote Kim)", "quo(go(>02).@entry.@v, Kim)"},
    {"negated_by_frame", "modality", "(g / go-02 :ARG1-of (h / have-polarity-91 :ARG2 -))", "go(>02).@entry.@v.@neg"},
    {"but", "contrast", "(c / contrast-01 :ARG1 (g / go-02) :ARG2 (s / stay-01))", "cnj(go(>02).@entry.@v, stay(>01).@v.@but)"},
    {"but_begins", "contrast", "(c / contrast-01 :ARG2 (s / stay-01))", "stay(>01).@entry.@v.@lead_but"},
    {"and_three", "coordination", "(a / and :op1 (c / cat) :op2 (d / dog) :op3 (e / eel))", "cnj(cat.@entry, dog.@and); cnj(dog, eel.@and)"},
    {"shared_subject", "coordination", "(a / and :op1 (g / go-02 :ARG0 (i / i)) :op2 (s / see-01 :ARG0 i))",
     "a0(go(>02).@entry.@v, i); cnj(go(>02), see(>01).@v.@and); shr(see(>01), i)"},
    {"quoted", "quotation", "(s / say-01 :ARG0 (h / he) :ARG1 (g / go-02 :ARG0 (i / i)))",
     "a0(say(>01).@entry.@v, he); quo(say(>01), go(>02).@v.@quote); a0(go(>02), i)"},
    {"said_out_of_reach", "all", "(r / run-02 :ARG0 (b / boy :wiki (s / say-01 :ARG0 (k / king) :ARG1 (o / oh))))", "a0(run(>02).@entry.@v.@cl, boy)"},
    {"quoted_fragment", "quotation", "(s / say-01 :ARG0 (h / he) :ARG1 (m / morning))", "a0(say(>01).@entry.@v, he); quo(say(>01), morning.@quote)"},
    {"said_the_king", "quotation", "(s / say-01 :ARG0 (k / king) :ARG1 (o / oh))", "spk(say(>01).@entry.@v, king); quo(say(>01), oh.@quote)"},
    {"reported", "quotation", "(s / say-01 :ARG0 (h / he) :ARG1 (g / go-02 :ARG0 (s2 / she)))",
     "a0(say(>01).@entry.@v, he); a1(say(>01), go(>02).@v); a0(go(>02), she)"},
    {"order_reported_inside", "quotation", "(l / laugh-01 :time (s / say-01 :ARG0 (k / king) :ARG1 (g / go-02 :mode imperative :ARG0 (y / you))))",
     "tim(laugh(>01).@entry.@v, say(>01).@v); a0(say(>01), king); a1(say(>01), go(>02).@v.@should); a0(go(>02), you)"},
    {"nothing_said", "quotation", "(s / say-01 :polarity - :ARG0 (h / he) :ARG1 (g / go-02 :ARG0 (i / i)))",
     "a0(say(>01).@entry.@v.@neg, he); a1(say(>01), go(>02).@v); a0(go(>02), i)"},
    {"wh_lifted", "questions", "(w / want-01 :ARG0 (y / you) :ARG1 (g / go-02 :ARG4 (a / amr-unknown)))",
     "a0(want(>01).@entry.@v.@ask, you); a1(want(>01), go(>02).@v); wh(want(>01), amr-unknown.@wh.@wh_ARG4)"},
    {"wh_subject", "questions", "(g / go-02 :ARG0 (a / amr-unknown))", "a0(go(>02).@entry.@v.@asksub, amr-unknown.@wh.@wh_who)"},
    {"wh_receiver", "questions", "(g / give-01 :ARG0 (y / you) :ARG2 (a / amr-unknown))",
     "a0(give(>01).@entry.@v.@ask.@stto, you); wh(give(>01), amr-unknown.@wh.@wh_who)"},
    {"wh_left_behind", "all", "(a / afraid-01 :ARG0 (y / you) :prep-about (u / amr-unknown))",
     "a0(afraid(>01).@entry.@v.@ask.@pres.@now.@cl.@aux, you); prl(afraid(>01), about); wh(afraid(>01), amr-unknown.@wh.@wh_prep)"},
    {"wh_agents", "all", "(s / see-01 :ARG0 (y / you) :ARG1 (p / person :quant (a / amr-unknown) :ARG0-of (d / dance-01)))",
     "a0(see(>01).@entry.@v.@ask.@st1.@pres.@cl.@aux, you); wh(see(>01), dance(>01).@v.@agent.@pl.@wh.@wh_ARG1); qty(dance(>01), amr-unknown.@wh.@wh_quant)"},
    {"wh_causer", "questions", "(f / frighten-01 :ARG0 (a / amr-unknown))", "a0(frighten(>01).@entry.@v.@asksub, amr-unknown.@wh.@wh_ARG0)"},
    {"wh_receiver", "questions", "(g / give-01 :ARG0 (s / she) :ARG1 (k / key) :ARG2 (a / amr-unknown))",
     "a0(give(>01).@entry.@v.@ask.@stto, she); a1(give(>01), key); wh(give(>01), amr-unknown.@wh.@wh_who)"},
    {"wh_looked_at", "questions", "(l / look-01 :ARG0 (s / she) :ARG1 (a / amr-unknown))",
     "a0(look(>01).@entry.@v.@ask.@st1, she); wh(look(>01), amr-unknown.@wh.@wh_ARG1)"},
    {"wh_reported", "questions", "(k / know-01 :ARG0 (i / i) :ARG1 (g / go-02 :time (a / amr-unknown)))",
     "a0(know(>01).@entry.@v, i); a1(know(>01), go(>02).@v.@asked); wh(go(>02), amr-unknown.@wh.@wh_time)"},
    {"control", "control", "(w / want-01 :ARG0 (b / boy) :ARG1 (g / go-02 :ARG0 b))",
     "a0(want(>01).@entry.@v, boy); a1(want(>01), go(>02).@v); ctl(go(>02), boy)"},
    {"no_control_by_hearers", "control", "(s / suggest-01 :ARG0 (b / boy) :ARG1 (g / go-01 :ARG0 (t / teacher)) :ARG2 t)",
     "a0(suggest(>01).@entry.@v, boy); a1(suggest(>01), go(>01).@v); a0(go(>01), teacher); a2(suggest(>01), teacher)"},
    {"required_of", "control", "(r / require-01 :ARG1 (g / go-01 :ARG0 (t / teacher)) :ARG2 t)",
     "a1(require(>01).@entry.@v, go(>01).@v); a0(go(>01), teacher)"},
    {"cost_whom", "control", "(c / cost-01 :ARG2 (y / year) :ARG3 (t / teacher))", "a2(cost(>01).@entry.@v, teacher); a3(cost(>01), year)"},
    {"raised_in_a_relative", "control", "(b / boy :ARG0-of (b2 / begin-01 :ARG1 (s / sing-01 :ARG0 b)))",
     "a0(begin(>01).@v, boy.@entry); a1(begin(>01), sing(>01).@v); ctl(sing(>01), boy)"},
    {"raising", "control", "(s / seem-01 :ARG1 (g / go-02 :ARG0 (b / boy)))", "a1(seem(>01).@entry.@v, go(>02).@v); ctl(go(>02), boy); a0(seem(>01), boy)"},
    {"control_over_a_noun", "control", "(h / have-03 :ARG0 (b / boy) :ARG1 (t / time :purpose (p / play-01 :ARG0 b)))",
     "a0(have(>03).@entry.@v, boy); a1(have(>03), time); pur(time, play(>01).@v); ctl(play(>01), boy)"},
    {"mentions", "mentions", "(l / lose-02 :ARG0 (b / boy) :ARG1 (k / key :poss b))",
     "a0(lose(>02).@entry.@v, boy:01); a1(lose(>02), key); pos(key, boy:02.@ref)"},
    {"hoped", "tense", "(h / hope-01 :ARG0 (b / boy) :ARG1 (s / sing-01 :ARG0 (g / girl)))",
     "a0(hope(>01).@entry.@v, boy); a1(hope(>01), sing(>01).@v.@fut); a0(sing(>01), girl)"},
    {"promised", "tense", "(p / predict-01 :ARG0 (b / boy) :ARG1 (s / sing-01 :ARG0 (g / girl)))",
     "a0(predict(>01).@entry.@v, boy); a1(predict(>01), sing(>01).@v.@would); a0(sing(>01), girl)"},
    {"wondering", "tense", "(w / wonder-01 :ARG1 (s / sing-01 :ARG0 (g / girl)))", "a1(wonder(>01).@entry.@v, sing(>01).@v.@whether); a0(sing(>01), girl)"},
    {"lasting_beside_a_deed", "tense", "(k / know-01 :ARG0 (i / i) :time (s / sing-01 :ARG0 (b / boy)))",
     "a0(know(>01).@entry.@v.@past, i); tim(know(>01), sing(>01).@v.@past); a0(sing(>01), boy)"},
    {"denied_beside_a_deed", "tense", "(s / sing-01 :ARG0 (b / boy) :cause (c / come-01 :polarity - :ARG1 (i / i)))",
     "a0(sing(>01).@entry.@v, boy); cau(sing(>01), come(>01).@v.@neg.@past); a1(come(>01), i)"},
    {"being_beside_a_deed", "tense", "(s / sing-01 :ARG0 (b / boy) :time (s2 / sad-02 :ARG1 (i / i)))",
     "a0(sing(>01).@entry.@v, boy); tim(sing(>01), sad(>02).@v.@past); a1(sad(>02), i)"},
    {"tense_of_you", "tense", "(s / sing-01 :ARG0 (y / you))", "a0(sing(>01).@entry.@v.@pres, you)"},
    {"reflexive", "mentions", "(h / hide-01 :ARG0 (b / boy) :ARG1 b)", "a0(hide(>01).@entry.@v, boy:01); a1(hide(>01), boy:02.@ref.@self)"},
    {"never", "polarity", "(s / sing-01 :polarity - :time (e / ever))", "tim(sing(>01).@entry.@v, never)"},
    {"chapter", "quantities", "(c / chapter :mod 2)", "num(chapter.@entry, 2)"},
    {"forms", "forms", "(g / go-02 :polarity - :ARG0 (i / i))", "a0(go(>02).@entry.@v.@neg.@cl.@aux, i)"},
    {"there", "forms", "(b / be-located-at-91 :ARG1 (c / cup :quant 1))", "a1(be-located-at(>91).@entry.@v.@cl.@there, cup); qty(cup, 1)"},
    {"wanted_deed", "persons", "(h / house :ARG1-of (b / build-01 :ARG0 (s / she) :ARG1-of (w / want-01 :ARG0 s)))",
     "a1(want(>01).@v, house.@entry); a0(build(>01).@v, she); a1(want(>01), build(>01)); a0(want(>01), she)"},
    {"condition_above", "turned", "(r / rain-01 :mode interrogative :condition-of (s / stay-01 :ARG0 (w / we)))",
     "cnd(stay(>01).@entry.@v.@int, rain(>01).@v); a0(stay(>01), we)"},
    {"role_denied", "reified", "(l / letter :ARG1-of (h / have-source-91 :ARG2 (k / king) :polarity -))", "sou(letter.@entry, king.@notp)"},
    {"place_of_the_past", "tense", "(s / sing-01 :ARG0 (b / boy) :time (b2 / be-located-at-91 :ARG1 (i / i) :ARG2 (h / here)))",
     "a0(sing(>01).@entry.@v, boy); tim(sing(>01), be-located-at(>91).@v.@past); a1(be-located-at(>91), i); a2(be-located-at(>91), here)"},
    {"open_condition", "reified", "(r / rain-01 :condition-of (t / it))", "rain(>01).@entry.@v.@as_condition"},
    {"particle_argument", "reified", "(b / bring-01 :ARG1 (c / cat) :ARG3 (d / down))", "a1(bring(>01).@entry.@v, cat); prl(bring(>01), down)"},
    {"near_particle", "all", "(b / bring-01 :ARG0 (h / he) :ARG1 (c / cat :mod (o / old) :poss (k / king)) :direction (b2 / back))",
     "a0(bring(>01).@entry.@v.@past.@gives.@cl, he); a1(bring(>01), cat); mod(cat, old); pos(cat, king); pnr(bring(>01), back)"},
    {"later", "tense", "(s / sing-01 :time (a / after :quant (l / little)))", "tim(sing(>01).@entry.@v, later); qty(later, little)"},
    {"had_it_done", "control", "(h / have-04 :ARG0 (b / boy) :ARG1 (p / paint-02 :ARG1 (w / wall)))",
     "a0(have(>04).@entry.@v, boy); a1(have(>04), paint(>02).@v.@gotten); a1(paint(>02), wall)"},
    {"came_running", "control", "(c / come-01 :ARG1 (b / boy) :manner (r / run-02 :ARG0 b))",
     "a1(come(>01).@entry.@v, boy); mnr(come(>01), run(>02).@v.@along); ctl(run(>02), boy)"},
    {"how_to_write", "control", "(t / teach-01 :ARG0 (k / king) :ARG1 (t2 / thing :manner-of (w / write-01 :ARG0 b)) :ARG2 (b / boy))",
     "a0(teach(>01).@entry.@v, king); a1(teach(>01), thing); mnr(write(>01).@v.@toinf, thing); ctl(write(>01), boy); a2(teach(>01), boy)"},
    {"let_oneself", "control", "(l / let-01 :ARG0 (b / boy) :ARG1 (f / fall-01 :ARG1 b))",
     "a0(let(>01).@entry.@v, boy:01); a1(let(>01), fall(>01).@v); a1(fall(>01), boy:02.@ref.@self)"},
    {"asked_finite", "all", "(a / ask-01 :ARG0 (k / king) :ARG1 (c / call-01 :ARG1 (b / boy) :ARG2 (u / amr-unknown)) :ARG2 b)",
     "a0(ask(>01).@entry.@v.@content.@cl, king); a1(ask(>01), call(>01).@v.@asked.@st2.@cl.@query); a1(call(>01), boy:02.@ref); wh(call(>01), "
     "amr-unknown.@wh.@wh_ARG2); a2(ask(>01), boy:01)"},
    {"dared", "reified", "(d / dare-01 :ARG1 (b / boy) :ARG2 (s / sing-01 :ARG0 b))",
     "a0(dare(>01).@entry.@v, boy); a2(dare(>01), sing(>01).@v); a0(sing(>01), boy)"},
    {"moved", "voice", "(s / shock-01 :ARG0 (s2 / see-01 :ARG0 i) :ARG1 (i / i))",
     "a0(shock(>01).@entry.@v.@psv.@moved, see(>01).@v); a0(see(>01), i); a1(shock(>01), i)"},
    {"no_attendant_of_hearers", "persons", "(t / tell-01 :ARG0 (k / king) :ARG1 (w / word) :ARG2 (h / he :ARG0-of (s2 / sing-01)))",
     "a0(tell(>01).@entry.@v, king); a1(tell(>01), word); a2(tell(>01), he); a0(sing(>01).@v, he)"},
    {"among_several", "pronouns", "(a / among :op1 (h / horse))", "o1(among.@entry, horse.@pl)"},
    {"among_group", "pronouns", "(a / among :op1 (g / group))", "o1(among.@entry, group)"},
    {"into_pieces", "pronouns", "(b / break-01 :ARG1 (c / cup) :ARG3 (p / piece))", "a1(break(>01).@entry.@v, cup); a3(break(>01), piece.@pl)"},
    {"their_hands", "pronouns", "(w / wash-01 :ARG0 (t / they) :ARG1 (h / hand :part-of t))",
     "a0(wash(>01).@entry.@v, they); a1(wash(>01), hand.@pl); prt(they, hand)"},
    {"another_again", "quantities", "(h / horse :mod (a / another :mod (y / yet)))", "mod(horse.@entry, yet-another)"},
    {"answer", "pronouns", "(s / say-01 :ARG1 (e / exact))", "a1(say(>01).@entry.@v, exact.@answer)"},
    {"other_events", "quantities", "(d / differ-02 :ARG2 (s / step-01 :mod (o / other :mod (a / all))))",
     "a2(differ(>02).@entry.@v, step(>01).@v.@pl); mod(step(>01), other); mod(step(>01), all)"},
    {"became_one", "predicates", "(b / become-01 :ARG1 (s / she) :ARG2 (d / doctor))", "a1(become(>01).@entry.@v, she); a2(become(>01), doctor.@res.@indef)"},
    {"became_several", "predicates", "(b / become-01 :ARG1 (t / they) :ARG2 (d / doctor))",
     "a1(become(>01).@entry.@v, they); a2(become(>01), doctor.@res.@pl)"},
    {"judged", "predicates", "(u / useful-05 :ARG0 (k / king) :ARG1 (t / tool))", "prp(useful(>05).@entry.@v, to); a1(useful(>05), tool); o1(to, king)"},
    {"behaving", "predicates", "(c / cruel-01 :ARG0 (k / king) :ARG1 (s / sell-01 :ARG0 k))",
     "prp(cruel(>01).@entry.@v.@xinf, of); a1(cruel(>01), sell(>01).@v); o1(of, king)"},
    {"feeling_of", "predicates", "(p / proud-02 :ARG0 (k / king) :ARG1 (t / tool))", "a0(proud(>02).@entry.@v, king); prp(proud(>02), of); o1(of, tool)"},
    {"who_came", "persons", "(k / know-01 :ARG1 (p / person :ARG1-of (c / come-01)))",
     "a1(know(>01).@entry.@v, come(>01).@v.@asked); a1(come(>01), amr-unknown.@wh_who)"},
    {"what_it_is", "persons", "(t / tell-01 :ARG1 (u / thing :domain (i / it)))", "a1(tell(>01).@entry.@v, amr-unknown.@asked); dom(amr-unknown, it)"},
    {"this_man", "persons", "(s / say-01 :ARG0 (m / man :domain (t / this)) :ARG1 (w / word))",
     "a0(say(>01).@entry.@v, man); mod(man, this); a1(say(>01), word)"},
    {"news_that", "persons", "(f / fall-01 :ARG1 (n / news :topic (s / sing-01 :ARG0 (b / bird))))",
     "a1(fall(>01).@entry.@v, news.@fact.@def); a1(news, sing(>01).@v); a0(sing(>01), bird)"},
    {"size_of", "persons", "(f / fall-01 :ARG1 (n / idea :topic (s / size-01 :ARG1 (b / bird))))",
     "a1(fall(>01).@entry.@v, idea); top(idea, size(>01).@v); a1(size(>01), bird)"},
    {"thank_you", "contrast", "(t / thank-01 :ARG0 (i / i) :ARG1 (y / you))", "a1(thank(>01).@entry.@v.@imp, you)"},
    {"thanked_then", "contrast", "(t / thank-01 :ARG0 (i / i) :ARG1 (y / you) :time (t2 / then))",
     "a0(thank(>01).@entry.@v, i); a1(thank(>01), you); tim(thank(>01), then)"},
    {"oh", "contrast", "(s / sing-01 :ARG0 (b / bird) :mod (o / oh))", "a0(sing(>01).@v, bird); o1(and.@entry, oh); o2(and, sing(>01))"},
    {"heard_itself", "forms", "(h / hear-01 :ARG0 (i / i) :ARG1 (s / sing-01 :ARG0 (b / bird)))",
     "a0(hear(>01).@entry.@v.@content.@cl, i); a1(hear(>01), sing(>01).@v.@perceived.@cl); a0(sing(>01), bird)"},
    {"heard_of", "forms", "(h / hear-01 :ARG0 (i / i) :ARG1 (w / win-01 :ARG0 (b / boy)))",
     "a0(hear(>01).@entry.@v.@content.@cl, i); a1(hear(>01), win(>01).@v.@cl); a0(win(>01), boy)"},
    {"receiver_first", "control", "(g / give-01 :ARG0 (s / she) :ARG1 (t / toy :purpose (p / play-01 :ARG0 b)) :ARG2 (b / boy))",
     "a0(give(>01).@entry.@v, she); a1(give(>01), toy); pur(toy, play(>01).@v); ctl(play(>01), boy); a2(give(>01), boy)"},
    {"given_to", "forms", "(g / give-01 :ARG1 (k / key) :ARG2 (b / boy))", "a1(give(>01).@entry.@v.@given.@pro1.@cl, key); a2(give(>01), boy)"},
    {"never_doing", "forms", "(s / surprise-01 :ARG0 (e / eat-01 :ARG0 (b / boy) :time (n / never)))",
     "a0(surprise(>01).@entry.@v.@cl, eat(>01).@v.@cl.@ger); a0(eat(>01), boy); tim(eat(>01), never)"},
    {"long_quality", "forms", "(g / good-02 :ARG1 (c / curious-01 :ARG1 (f / fox) :degree (v / very)))",
     "a1(good(>02).@entry.@v.@content.@cl.@xadj, curious(>01).@v.@graded.@cl); a1(curious(>01), fox); deg(curious(>01), very)"},
    {"must_wait", "forms", "(n / necessary-01 :ARG1 (w / wait-01 :ARG1 (w2 / we)))",
     "a1(necessary(>01).@entry.@v.@content.@cl.@xtra, wait(>01).@v.@pres.@cl); a1(wait(>01), we)"},
    {"many_others", "quantities", "(h / horse :mod (o / other :mod (m / many)))", "mod(horse.@entry.@pl, other); qty(horse, many)"},
    {"hundred_percent", "quantities", "(s / share :mod (p / percentage-entity :value 100))", "mod(share.@entry, percent.@measure); qty(percent, 100(>num))"},
    {"more_of_them", "quantities", "(s / see-01 :ARG1 (h / horse :quant (m / more)) :ARG2 (w / water :quant (m2 / more)))",
     "a1(see(>01).@entry.@v, horse.@pl); qty(horse, more:01); a2(see(>01), water); qty(water, more:02)"},
    {"side_to_go", "quantities", "(g / go-02 :direction (n / north))", "dir(go(>02).@entry.@v, north)"},
    {"side_and_day", "quantities", "(s / sing-01 :location (n / north) :time (d / day))",
     "loc(sing(>01).@entry.@v, in); tim(sing(>01), during); o1(in, north.@def); o1(during, day.@def)"},
    {"left_for", "predicates", "(l / leave-11 :destination (t / town))", "ben(leave(>11).@entry.@v, town)"},
    {"order_of_qualities", "predicates", "(h / hat :mod (r / red) :mod (f / fine) :mod (o / old) :mod (b / big))",
     "mod(hat.@entry, big); mod(hat, fine); mod(hat, old); mod(hat, red)"},
    {"degree_of_manner", "predicates", "(w / work-01 :manner (h / hard) :degree (v / very))", "mnr(work(>01).@entry.@v, hard); deg(hard, very)"},
    {"relatives", "relatives", "(b / boy :ARG0-of (r / run-02))", "r0(boy.@entry, run(>02).@v)"},
    {"phrase_asked", "all", "(a / ask-01 :ARG0 (k / king) :ARG1 (s / star :quant (u / amr-unknown)))",
     "spk(ask(>01).@entry.@v.@cl, king); quo(ask(>01), star.@pl.@quote.@ask); qty(star, amr-unknown.@wh.@wh_quant)"},
    {"told_of_me", "all", "(s / suggest-01 :ARG0 (t / teacher :poss (i / i)) :ARG1 (r / read-01 :ARG0 i))",
     "a0(suggest(>01).@entry.@v.@content.@cl, teacher); pos(teacher, i:01); a1(suggest(>01), read(>01).@v.@cl); a0(read(>01), i:02.@ref)"},
    {"phrase_asked_last", "all", "(a / and :op1 (c / come-01 :ARG1 (i / i)) :op2 (d / day :mod (u / amr-unknown)))",
     "a1(come(>01).@entry.@v.@ends_int.@cl, i); cnj(come(>01), day.@ask.@snt); mod(day, amr-unknown.@wh.@wh_mod)"},
    {"predicate_asked_last", "all", "(c / contrast-01 :ARG1 (c2 / come-01 :ARG1 (i / i)) :ARG2 (u / amr-unknown :domain (p / purpose)))",
     "a1(come(>01).@entry.@v.@ends_int.@cl, i); cnj(come(>01), purpose.@but.@asksub.@cl); dom(purpose, amr-unknown.@wh.@wh_domain)"},
    {"visit_short", "all", "(s / short :domain (v / visit-01 :ARG0 (w / we) :ARG1 (m / museum)))",
     "dom(short.@entry.@cl, visit(>01).@v.@nom.@whose); a0(visit(>01), we); a1(visit(>01), museum)"},
    {"decision_bare", "all", "(c / criticize-01 :ARG0 (m / mayor) :ARG1 (d / decide-01 :ARG1 (l / leave-11)))",
     "a0(criticize(>01).@entry.@v.@content.@cl, mayor); a1(criticize(>01), decide(>01).@v.@nom.@whose); a1(decide(>01), leave(>11).@v.@nom.@bareinf)"},
    {"possibility", "all", "(d / discuss-01 :ARG0 (w / we) :ARG1 (p / possible-01 :ARG1 (r / war)))",
     "a0(discuss(>01).@entry.@v.@cl, we); a1(discuss(>01), possibility); org(possibility, war)"},
    {"name_of", "all", "(k / know-01 :ARG0 (i / i) :ARG1 (t / thing :ARG2-of (n / name-01 :ARG1 (d / dog))))",
     "a0(know(>01).@entry.@v.@cl, i); a1(know(>01), name); pos(name, dog)"},
    {"time_stated", "all", "(h / have-temporal-91 :ARG1 (w / wedding) :ARG2 (d / date-entity :month 5))",
     "a1(be-located-at(>91).@entry.@v.@cl, wedding); tim(be-located-at(>91), month(>5).@date.@month)"},
    {"extent", "all", "(c / change-01 :ARG1 (t / town) :degree (e / extent :mod (g / great)))",
     "a1(change(>01).@entry.@v.@cl, town); ext(change(>01), to); mod(extent.@indef, great); o1(to, extent)"},
    {"outcome", "all", "(r / result-01 :ARG2 (l / loss))", "dom(loss.@entry.@cl, result.@def)"},
    {"former", "all", "(s / see-01 :ARG0 (i / i) :ARG1 (g / general :time (f / former)))",
     "a0(see(>01).@entry.@v.@cl, i); a1(see(>01), general); mod(general, former)"},
    {"two_about_one", "all", "(m / man :ARG1-of (h / hurt-01 :location (s / storm)) :ARG1-of (k / know-01 :ARG0 (s2 / she)))",
     "r1(man.@entry, hurt(>01).@v.@whole); loc(hurt(>01), storm); r1(man, know(>01).@v.@past.@cl); a0(know(>01), she)"},
    {"spent_on", "turned", "(s / spend-01 :ARG0 (b / boy) :ARG1 (t / toy) :ARG3 (m / money))",
     "a0(spend(>02).@entry.@v, boy); a2(spend(>02), toy); a1(spend(>02), money)"},
    {"noun_with_a_time", "all", "(c / cause-01 :ARG0 (l / lend-01 :time (c2 / current)) :ARG1 (f / fall-01 :ARG1 (p / price)))",
     "cau(fall(>01).@entry.@v.@cl, lend(>01).@v); mod(lend(>01), current); a1(fall(>01), price)"},
    {"two_of_them", "all", "(l / leave-11 :ARG0 (t / they :quant 2))", "a0(leave(>11).@entry.@v.@cl, 2); sup(2, they.@pl.@def)"},
    {"there_is_one", "predicates", "(e / exist-91 :ARG1 (l / limit))", "a1(exist(>91).@entry.@v.@there, limit.@indef)"},
    {"broken_into", "all", "(b / break-01 :ARG1 (c / cup) :ARG2 (p / piece))", "a1(break(>01).@entry.@v.@cl, cup); a2(break(>01), piece.@pl)"},
    {"all_the_time", "all", "(s / sing-01 :ARG0 (b / bird) :time (t / time :mod (a / all)))",
     "a0(sing(>01).@entry.@v.@cl, bird); tim(sing(>01), all-the-time)"},
    {"thanks", "all", "(t / thank-01 :ARG0 (i / i))", "thanks.@entry"},
    {"no_thanks", "reified", "(t / thank-01 :polarity - :ARG0 (i / i))", "a0(thank(>01).@entry.@v.@neg, i)"},
    {"decided_that", "all", "(d / decide-01 :ARG0 (j / jury) :ARG1 (g / guilty-01 :ARG1 (w / woman)))",
     "a0(decide(>01).@entry.@v.@content.@cl, jury); a1(decide(>01), guilty(>01).@v.@cl); a1(guilty(>01), woman)"},
    {"already_known", "all", "(k / know-01 :ARG0 (i / i) :ARG1 (t / this) :time (a / already))",
     "a0(know(>01).@entry.@v.@pres.@cl, i); a1(know(>01), this); tim(know(>01), already)"},
    {"shame", "all", "(s / shame-02 :ARG1 (l / leave-11 :ARG0 (s2 / she)))", "dom(shame.@entry.@cl.@xdom, leave(>11).@v.@past.@cl); a0(leave(>11), she)"},
    {"fun", "all", "(h / have-fun-00 :ARG0 (w / we))", "a0(have(>03).@entry.@v.@cl, we); a1(have(>03), fun.@indef.MASS)"},
    {"part_in", "all", "(t / take-part-01 :ARG0 (s / she) :ARG1 (g / game))",
     "a0(take(>01).@entry.@v.@past.@cl, she); prp(take(>01), in); a1(take(>01), part.@indef.MASS); o1(in, game)"},
    {"kinds", "all", "(s / see-01 :ARG0 (i / i) :ARG1 (b / bird :mod (k / kind :mod (a / all))))",
     "a0(see(>01).@entry.@v.@cl, i); a1(see(>01), kind.@pl.@bare); whl(kind, bird.@pl); mod(kind, all)"},
    {"rest", "all", "(l / leave-11 :ARG0 (w / woman :mod (r / rest)))", "a0(leave(>11).@entry.@v.@cl, rest.@several); whl(rest, woman.@pl.@def)"},
    {"question_in_a_circle", "questions", "(f / far :degree (g / amr-unknown :degree (e / tall :degree f)))",
     "deg(far.@entry.@wh, amr-unknown.@wh.@wh_degree); deg(amr-unknown, tall.@wh); deg(tall, far)"},
    {"circumstances", "all", "(g / go-02 :ARG0 (i / i) :cause (r / rain-01 :ARG1 (d / drop)) :cause-of (f / fog))",
     "a0(go(>02).@entry.@v.@cl, i); adv(go(>02), rain(>01).@v.@past.@cl.@s_because); a1(rain(>01), drop); csf(go(>02), fog)"},
    {"time_of_a_question", "all", "(w / wonder-01 :ARG0 (i / i) :ARG1 (g / go-02 :ARG0 (s / she) :time (r / ring-01 :ARG0 (b / bell))))",
     "a0(wonder(>01).@entry.@v.@content.@cl, i); a1(wonder(>01), go(>02).@v.@whether.@past.@cl.@query); a0(go(>02), she); adv(go(>02), "
     "ring(>01).@v.@past.@cl.@s_when); a0(ring(>01), bell)"},
    {"time_and_condition", "all", "(g / go-02 :ARG0 (i / i) :time (r / ring-01 :ARG0 (b / bell)) :condition (w / want-01 :ARG0 (y / you)))",
     "a0(go(>02).@entry.@v.@cl.@conditional, i); adv(go(>02), ring(>01).@v.@pres.@cl.@s_when); a0(ring(>01), bell); adv(go(>02), "
     "want(>01).@v.@pres.@cl.@ahead.@s_if); a0(want(>01), you)"},
    {"help_because", "all", "(c / come-01 :ARG1 (s / she) :purpose (h / help-01 :ARG0 s) :cause (f / free-04 :ARG1 s))",
     "a1(come(>01).@entry.@v.@past.@cl, she:01); pur(come(>01), help(>01).@v.@past.@cl); ctl(help(>01), she:02.@ref); adv(come(>01), "
     "free(>04).@v.@past.@cl.@s_because); a1(free(>04), she:03.@ref)"},
    {"merging", "merging", "(s / see-01 :instrument (g / glass) :example (b / bird))", "cir(see(>01).@entry.@v, glass.@p_with); lik(see(>01), bird)"},
    {"circle", "all", "(s / see-01 :ARG0 (b / boy :ARG0-of s))", "a0(see(>01).@entry.@v.@cl, boy:01); a0(see(>01), boy:02.@ref)"},
};

TEST(Import, Steps) {
  for (const StepRow& row : kSteps) {
    SCOPED_TRACE(row.name);
    const Result result = imported(std::string(row.source) + "\n", {row.steps});
    EXPECT_EQ(result.relations, row.relations);
    EXPECT_EQ(result.messages, "");
    expect_account(result.figures);
  }
}

struct MistakeRow {
  const char* name;
  const char* source;
  const char* messages;
  std::size_t graphs;
};

const MistakeRow kMistakes[] = {
    {"not_closed", "(a / b\n  :ARG0 (c / d)\n\n# ::id next\n(e / f)\n",
     "bank.txt:3:1: error: the graph has 1 parentheses that are not closed; it is read as far as it goes\n", 2},
    {"not_closed_at_the_end", "(a / b :ARG0 (c / d", "bank.txt:1:1: error: the graph has 2 parentheses that are not closed; it is read as far as it goes\n", 1},
    {"role_without_target", "(a / b :ARG0 :ARG1 (c / d))\n", "bank.txt:1:8: error: the role :ARG0 has no target; it is left out\n", 1},
    {"defined_twice", "(a / b :ARG0 (a / c))\n", "bank.txt:1:15: error: the variable a is defined twice; the second one is read as another concept\n", 1},
    {"no_concept", "(a :ARG0 (c / d))\n", "bank.txt:1:2: error: the variable a has no concept; write \"(a / concept\"\n", 1},
    {"loose_word", "(a / b c)\n", "bank.txt:1:8: error: a role or \")\" is missing in front of \"c\"\n", 1},
    {"behind_the_graph", "(a / b)) (c / d)\n",
     "bank.txt:1:8: error: the graph ends in front of \") (c / d)\", which is left out; a graph begins on a line of its own\n", 1},
    {"text_not_closed", "(a / b :op1 \"c)\n  :op2 (d / e))\n", "bank.txt:1:13: error: the text is not closed; it ends with its line\n", 1},
    {"behind_a_text", "(a / b :op1 \"c\\\\\"~e.1 :op2 \"d\"e)\n", "bank.txt:1:31: error: a role or \")\" is missing in front of \"e\"\n", 1},
    {"byte_order_mark", "\xEF\xBB\xBF(a / b))\n",
     "bank.txt:1:8: error: the graph ends in front of \")\", which is left out; a graph begins on a line of its own\n", 1},
    {"loose_line", "hello\n(a / b)\n", "bank.txt:1:1: error: neither a comment nor a graph: \"hello\"\n", 1},
    {"empty", "", "", 0},
    {"only_a_parenthesis", "(",
     "bank.txt:1:1: error: a variable is missing behind \"(\"\nbank.txt:1:1: error: the variable _0 has no concept; write \"(_0 / concept\"\nbank.txt:1:1: "
     "error: the graph has 1 parentheses that are not closed; it is read as far as it goes\n",
     1},
};

TEST(Import, MistakesAreToldAndTheRestGoesOn) {
  for (const MistakeRow& row : kMistakes) {
    SCOPED_TRACE(row.name);
    const Result result = imported(row.source, {"all"});
    EXPECT_EQ(result.messages, row.messages);
    EXPECT_EQ(result.figures.graphs, row.graphs);
    expect_account(result.figures);
  }
}

TEST(Import, LabelsReferencesAndAttributes) {
  const Result result = imported("# ::id x.1 ::date 2012\n# ::snt Dogs ran .\n(r / run-02 :ARG0 (d / dog))\n\n(c / cat)\n", {}, SourceFormat::penman, false,
                                 "x.1 d @pl @def\nx.1 zz @pl\n");
  EXPECT_EQ(result.graphs, "[S:x.1]\n; Dogs ran .\na0(run(>02).@entry.@v, dog.@pl.@def)\n[/S]\n\n[S:bank.2]\n[W]\ncat.@entry\n[/W]\n[/S]\n\n");
  EXPECT_EQ(result.gold, "[S:x.1]\nDogs ran .\n\n");
  EXPECT_EQ(result.messages, "bank.txt:3:1: error: the table of attributes names the node zz (line 2), which x.1 lacks\n");
}

TEST(Import, UmrFileWithTimes) {
  const Result result = imported(
      "# :: snt7\nIndex: 1\nWords: It ran .\n\n# sentence level graph:\n(s7r / run-02 :aspect performance\n  :theme (s7i / it))\n\n"
      "# alignment:\ns7r: 1-1\n\n# document level annotation:\n(s7s0 / sentence\n  :temporal ((document-creation-time :before s7r)))\n",
      {});
  EXPECT_EQ(result.graphs, "[S:bank.snt7]\n; It ran .\na1(run(>02).@entry.@v.@past.@done, it)\n[/S]\n\n");
  EXPECT_EQ(result.messages, "");
}

TEST(Import, WhatIsTooMuchForASentenceIsListed) {
  // A mention in parentheses names its concept on the list, too.
  EXPECT_EQ(imported("(a / b :wiki (a))\n", {}).left_out, "bank.1\tbank.txt:1:8\ta :wiki a\tsource: a word stands below itself\n");
  // A graph that is given up for its size is told of once.
  std::string deep;
  for (int i = 0; i < 600; ++i) deep += "(x" + std::to_string(i) + " / b :ARG0 ";
  EXPECT_EQ(imported(deep, {}).figures.errors, 1U);
  std::string source = "(a / and";
  for (int i = 1; i <= 130; ++i) source += " :op" + std::to_string(i) + " (x" + std::to_string(i) + " / n" + std::to_string(i) + ")";
  const Result result = imported(source + ")\n", {});
  EXPECT_EQ(result.figures.relations, 128U);
  EXPECT_EQ(result.figures.left_out, 4U);  // two relations, and the two words that they lead to
  // What a step has put into a word is lost with the word.
  EXPECT_EQ(imported("(a / b :wiki (c / and :op1 (d / dog)))\n", {"wiki", "coordination"}).figures.left_out, 4U);
  EXPECT_NE(result.left_out.find("a :op130 x130\tlimits: a sentence has at most 128 relations\n"), std::string::npos);
  expect_account(result.figures);
}

struct TreeRow {
  const char* name;
  bool enhanced;
  const char* source;
  const char* relations;
  const char* messages;
};

const TreeRow kTrees[] = {
    {"basic", false, "1\tDogs\tdog\tNOUN\t_\tNumber=Plur\t2\tnsubj\t_\t_\n2\trun\trun\tVERB\t_\tTense=Pres|Foo=Bar\t0\troot\t_\t_\n",
     "agn(run.@entry.@verb.@pres, dog.@noun.@pl)", ""},
    {"subtype_cut", false, "1\ta\ta\t_\t_\t_\t2\tobl:in\t_\t_\n2\tb\tb\t_\t_\t_\t0\troot\t_\t_\n", "obl(b.@entry, a)", ""},
    {"enhanced", true,
     "1\tHe\the\t_\t_\t_\t2\tnsubj\t2:nsubj|3:nsubj\t_\n2\tcame\tcome\t_\t_\t_\t0\troot\t0:root\t_\n3\tsaw\tsee\t_\t_\t_\t2\tconj\t2:conj:and\t_\n",
     "agn(come.@entry, he); agn(see, he); cnj(come, see)", ""},
    {"columns", false, "1 Dogs dog\n2\trun\trun\t_\t_\t_\t0\troot\t_\t_\n", "run.@entry",
     "bank.txt:1:1: error: a word has 10 columns with tabs between them, this line has 1; it is left out\n"},
    {"no_dependencies", true, "1\ta\ta\t_\t_\t_\t_\t_\t1:obj|2\t_\n2\tb\tb\t_\t_\t_\t_\t_\t0:root\t_\n", "b.@entry",
     "bank.txt:1:1: error: a is its own head; this dependency is left out\n"
     "bank.txt:1:1: error: an enhanced dependency is a head, a colon and a relation; \"2\" is left out\n"},
    {"no_head", false, "1\ta\ta\t_\t_\t_\t7\tobj\t_\t_\n", "a.@entry",
     "bank.txt:1:1: error: the head 7 of a is no word of the sentence\nbank.txt:1:1: error: no word has the head 0; the first one begins the sentence\n"},
};

TEST(Import, DependencyTrees) {
  for (const TreeRow& row : kTrees) {
    SCOPED_TRACE(row.name);
    const Result result = imported(row.source, {}, SourceFormat::conllu, row.enhanced);
    EXPECT_EQ(result.relations, row.relations);
    EXPECT_EQ(result.messages, row.messages);
    expect_account(result.figures);
  }
}

TEST(Import, TablesOfRoles) {
  RoleTable table;
  std::istringstream lines("# a comment\n:ARG0\tagn\nno tab\n:x\ttoolong\n:y\t\n:z\ta.b\n:ARG0\tact\n");
  std::string faults;
  for (const SourceError& error : table.read(lines)) faults += std::to_string(error.place.line) + " ";
  EXPECT_EQ(faults, "3 4 5 6 ");
  EXPECT_EQ(*table.find(":ARG0"), "act");
}

}  // namespace
}  // namespace lexon::test
