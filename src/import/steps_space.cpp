// The step about where things are, as UMR draws it: frames of space (on-top-03), spaces and ways that have no name of their
// own, coordinates, and statements that are no more than a thing and its place.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "import/rewriter.hpp"
#include "import/steps.hpp"

namespace lexon {
namespace {

// A relation of space that is no verb: how it is said with what it refers to, and alone.
struct Relation {
  std::string_view name;
  std::string_view senses;
  const char* with_ground;
  const char* alone;
};

constexpr Relation kSpaceRelations[] = {
    {"on-top", "03", "on-top-of", "on-top"},
    {"front", "03", "in-front-of", "in-front"},
    {"next-to", "02", "next-to", "alongside"},
    {"side-by-side", "03", "alongside", "side-by-side"},
    {"above", "01", "above", "above"},
    {"under", "01", "under", "underneath"},
    {"below", "01", "below", "below"},
    {"beneath", "01", "beneath", "below"},
    {"between", "01", "between", "in-between"},
    {"behind", "02", "behind", "behind"},
    {"toward", "01", "toward", "toward"},
    {"along", "01", "along", "along"},
    {"around", "02", "around", "around"},
    {"across", "01", "across", "across"},
    {"inside", "01", "inside", "inside"},
    {"off", "06", "off", "off"},
    {"on", "06", "on", "on"},
    {"out", "08", "out-from", "out"},
    {"over", "04", "over", "over"},
    {"away", "01", "away-from", "away"},
    {"opposite", "03", "opposite", "opposite"},
    {"up", "03", "up", "up"},
    {"down", "03", "down", "down"},
    {"forward", "02", "forward-from", "forward"},
    {"inward", "02", "inward-from", "inward"},
    {"left", "20 24", "to-the-left-of", "on-the-left"},
    {"right", "04 10", "to-the-right-of", "on-the-right"},
};

// Parts of things, the first of two being the noun: "the top left corner". With their senses, as "base" and "end" are
// verbs, too.
struct Part {
  std::string_view name;
  std::string_view senses;
};

constexpr Part kSpaceParts[] = {{"corner", "02 03 04"}, {"end", "05 06"}, {"center", "03"}, {"middle", "01"},
                                {"base", "03"},         {"bottom", "03"}, {"top", "06"},    {"back", "12 13"}};
// What is no noun, and which of several parts is meant.
constexpr Part kSpaceSides[] = {{"left", "20 24"}, {"right", "04 10"}, {"upper", "12"}, {"diagonal", "02"}};
constexpr std::array kNoDeeds{"cartesian-framework", "space", "thing", "trajectory", "place", "point", "position"};

// The row of a table for a frame, null for none.
template <typename Row, std::size_t N>
const Row* row_of(Rewriter& graph, int at, const Row (&rows)[N]) {
  const Concept& word = graph.word(at);
  if (word.sense.empty()) return nullptr;
  for (const Row& one : rows) {
    if (is_same(word.name, one.name) && one.senses.find(word.sense) != one.senses.npos) return &one;
  }
  return nullptr;
}

const Relation* relation_of(Rewriter& graph, int at) {
  return row_of(graph, at, kSpaceRelations);
}

// A space or a way of which nothing but where it is has to be told.
bool is_nameless(Rewriter& graph, int at) {
  if (!graph.word(at).sense.empty() || !is_one_of(graph, at, kNoDeeds)) return false;
  for (const int led : graph.children(at)) {
    const Arc& one = graph.arc(led);
    if (!one.inverse && one.role != "quant" && one.role != "location") return false;
    if (one.inverse && !one.role.starts_with("ARG")) return false;
  }
  return true;
}

// From where one looks is no part of an English sentence: :ARG3 (c / cartesian-framework-91 :ARG1 (b / builder)).
void viewpoint_apply(Rewriter& graph) {
  for (std::size_t i = 0; i < graph.meaning().arcs.size(); ++i) {
    const int led = static_cast<int>(i);
    const Arc& one = graph.arc(led);
    if (one.gone) continue;
    const bool is_view = one.role == "FR" || one.role == "orientation" || one.role == "framework";
    const bool is_framework = graph.is(one.to, "cartesian-framework", "91");
    if (is_view || is_framework) graph.remove(led, Fate::left_out);
    if (!is_framework || graph.mentions(one.to) > 0) continue;
    graph.settle_concept(one.to, Fate::left_out);
    for (const int below : graph.children(one.to)) graph.remove(below, Fate::left_out);
  }
}

// (c / cartesian-coordinate-entity :x 2 :y 1 :z "-1") is the text (2, 1, -1); what is there is at it.
void coordinates_apply(Rewriter& graph, int at) {
  std::string text;
  for (const char* axis : {"x", "y", "z"}) {
    const int led = graph.child(at, axis);
    if (led < 0) continue;
    const int number = graph.arc(led).to;
    text += (text.empty() ? "(" : ", ") + (is_unknown(graph, number) ? std::string("?") : graph.word(number).name);
    graph.settle_concept(number, Fate::word);
    graph.remove(led, Fate::word);
  }
  if (text.empty()) return;
  graph.word(at).name = text + ")";
  graph.word(at).is_text = true;
  const int above = graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || graph.arc(above).role != "location") return;
  const int preposition = graph.add_concept("at");
  const int noun = graph.arc(above).from;
  graph.lead_to(above, preposition);
  graph.add(preposition, at, "op1");
  if (!graph.is(noun, "space") || graph.children(noun).size() != 1) return;
  graph.stand_in(noun, above, Fate::word);
  // Where something is taken from is no more than its place.
  const int held = graph.parent(preposition);
  if (held >= 0 && graph.arc(held).role == "ARG2") graph.arc(held).role = "location";
}

// The frame becomes a preposition in front of its ARG2, or an adverb.
void preposition_apply(Rewriter& graph, int frame, const Relation& relation) {
  int ground = graph.child(frame, "ARG2");
  // Of a way the other numbers are where it leads from and to.
  for (const char* role : {"ARG3", "ARG5"}) {
    if (ground < 0) ground = graph.child(frame, role);
  }
  // What is flat has no top of its own: "on the ground".
  constexpr std::array kFlat{"ground", "floor", "board", "grid", "surface", "plane", "line", "side", "level", "row"};
  const bool is_flat = ground >= 0 && is_one_of(graph, graph.arc(ground).to, kFlat);
  Concept& word = graph.word(frame);
  word.name = ground < 0 ? relation.alone : is_flat && word.name == "on-top" ? "on" : relation.with_ground;
  word.sense.clear();
  std::erase(word.attributes, "@v");
  if (ground >= 0) graph.arc(ground).role = "op1";
}

// What a frame of a part is part of belongs to the noun.
void part_apply(Rewriter& graph, int noun, int led, bool is_head) {
  const int frame = graph.arc(led).to;
  if (const int whole = graph.child(frame, "ARG2"); whole >= 0)
    graph.replace(whole, noun, graph.arc(whole).to, "part-of");
  if (is_head) {
    graph.word(noun).name = graph.word(frame).name;
    attribute_add(graph.word(noun), "@def");
    graph.settle_concept(frame, Fate::word);
    graph.remove(led, Fate::word);
    graph.move_children(frame, noun);
    return;
  }
  graph.word(frame).sense.clear();
  std::erase(graph.word(frame).attributes, "@v");
  graph.replace(led, noun, frame, "mod");
  attribute_add(graph.word(noun), "@def");
}

// (s / space :ARG1-of (c / corner-02 :ARG2 (b / box))): the corner of the box. (b / block :ARG1-of (t / top-06)): the top
// block. (s / space :ARG1-of (o / on-top-03 :ARG2 (b / box))): on top of the box.
void placed_apply(Rewriter& graph, int noun) {
  if (!graph.word(noun).sense.empty()) return;
  const bool nameless = is_nameless(graph, noun);
  std::vector<int> frames;
  for (const int led : graph.children(noun)) {
    const int frame = graph.arc(led).to;
    // "The box that has a corner" is no corner.
    const bool is_whole = graph.arc(led).role != "ARG1" && row_of(graph, frame, kSpaceParts) != nullptr;
    const bool is_below = graph.arc(led).inverse && graph.arc(led).role.starts_with("ARG") && !is_whole &&
                          !graph.word(frame).sense.empty() && graph.mentions(frame) == 1;
    if (is_below) frames.push_back(led);
  }
  int head = -1;
  for (const Part& part : kSpaceParts) {
    for (const int led : frames) {
      if (head < 0 && nameless && row_of(graph, graph.arc(led).to, kSpaceParts) == &part) head = led;
    }
  }
  // "The second from the left": a side of which nothing else is told.
  if (head < 0 && graph.is(noun, "thing") && frames.size() == 1 && nameless &&
      graph.child(graph.arc(frames[0]).to, "ARG2") < 0 &&
      row_of(graph, graph.arc(frames[0]).to, kSpaceSides) != nullptr)
    head = frames[0];
  bool has_place = head >= 0 || !nameless;
  for (const int led : frames) {
    const int frame = graph.arc(led).to;
    const Relation* relation = relation_of(graph, frame);
    const bool is_side = row_of(graph, frame, kSpaceSides) != nullptr && has_place && graph.child(frame, "ARG2") < 0 &&
                         graph.arc(led).role == "ARG1";
    if (row_of(graph, frame, kSpaceParts) != nullptr || is_side) {
      part_apply(graph, noun, led, led == head);
      continue;
    }
    // "The upper floor" is higher than others, and not up.
    const bool is_rank = !nameless && (graph.is(frame, "up", "03") || graph.is(frame, "down", "03"));
    if (relation == nullptr || is_rank || graph.child(frame, "ARG1") >= 0) continue;
    preposition_apply(graph, frame, *relation);
    if (has_place) {
      graph.replace(led, noun, frame, "location");
      continue;
    }
    graph.stand_in(noun, led, Fate::word);
    has_place = true;
    noun = frame;
  }
}

// (n / next-to-02 :ARG1 (b / ball) :ARG2 (b2 / box)) states that the ball is next to the box; how something is put it only
// tells where.
void stated_place_apply(Rewriter& graph, int at) {
  const Relation* relation = relation_of(graph, at);
  const int led = relation == nullptr ? -1 : graph.child(at, "ARG1");
  const int above = graph.parent(at);
  // "A higher floor".
  if (above >= 0 && graph.word(graph.arc(above).from).sense == "91") return;
  if (relation != nullptr && led < 0 && (above < 0 || !graph.arc(above).inverse))
    return preposition_apply(graph, at, *relation);
  if (led < 0 || graph.child(at, "ARG0") >= 0) return;
  const bool is_beside =
      above >= 0 && !graph.arc(above).inverse &&
      (graph.arc(above).role == "manner" || graph.arc(above).role == "direction" || graph.arc(above).role == "result");
  if (above >= 0 && graph.arc(above).inverse) return;
  if (is_beside) {
    if (graph.mentions(graph.arc(led).to) > 1) graph.remove(led, Fate::word);
    if (graph.arc(above).role == "manner") graph.arc(above).role = "location";
    preposition_apply(graph, at, *relation);
    return;
  }
  preposition_apply(graph, at, *relation);
  const int being = graph.add_concept("be-located-at");
  graph.word(being).sense = "91";
  graph.word(being).attributes = graph.word(at).attributes;
  graph.word(at).attributes.clear();
  attribute_add(graph.word(being), "@v");
  graph.redirect(at, being);
  graph.replace(led, being, graph.arc(led).to, "ARG1");
  graph.add(being, at, "ARG2");
}

// (s / square :size (d / dimension-entity :value 3) :size (d2 / dimension-entity :value 4)): a 3 x 4 square.
void size_apply(Rewriter& graph, int at) {
  std::string text;
  int first = -1;
  for (const int led : graph.children(at)) {
    const int size = graph.arc(led).to;
    const int value = graph.is(size, "dimension-entity") ? graph.child(size, "value") : -1;
    if (value < 0 || graph.arc(led).inverse || graph.arc(led).role != "size") continue;
    if (is_unknown(graph, graph.arc(value).to)) continue;
    text += (text.empty() ? "" : " x ") + graph.word(graph.arc(value).to).name;
    graph.settle_concept(graph.arc(value).to, Fate::word);
    graph.remove(value, Fate::word);
    if (first < 0) {
      first = led;
      continue;
    }
    graph.settle_concept(size, Fate::word);
    graph.remove(led, Fate::word);
  }
  if (first < 0) return;
  const int size = graph.arc(first).to;
  graph.word(size).name = text;
  graph.word(size).is_text = true;
  graph.arc(first).role = "mod";
}

// "The red one": a thing that is told from others by its color.
void one_apply(Rewriter& graph, int at) {
  if (!graph.is(at, "thing") || graph.child(at, "color") < 0 || graph.child(at, "configuration") >= 0) return;
  graph.word(at).name = "one";
  if (graph.child(at, "quant") < 0 && graph.child(at, "mod") < 0) attribute_add(graph.word(at), "@def");
}

// (p / place-01 :frequency (r / rate-entity-91 :ARG1 (b / block :quant 1) :ARG2 (s / side :quant 1))): one each, where both
// are among what the sentence has named.
void each_apply(Rewriter& graph, int at) {
  const int what = graph.is(at, "rate-entity", "91") ? graph.child(at, "ARG1") : -1;
  const int above = what < 0 ? -1 : graph.parent(at);
  if (above < 0 || graph.arc(above).inverse || graph.arc(above).role != "frequency") return;
  for (const char* role : {"ARG1", "ARG2"}) {
    const int led = graph.child(at, role);
    const int part = led < 0 ? -1 : graph.arc(led).to;
    const int number = part < 0 ? -1 : graph.child(part, "quant");
    const int among = part < 0 ? -1 : graph.child(part, "ARG1", true);
    if (number < 0 || among < 0 || !graph.is(graph.arc(number).to, "1")) return;
    if (!graph.is(graph.arc(among).to, "include", "91")) return;
  }
  graph.arc(above).role = "manner";
  graph.word(at).name = "one-each";
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
  for (const int led : graph.children(at)) graph.remove(led, Fate::left_out);
}

// (s / spatial-sequence-91 :ARG2 x :ARG3 y): x and y. The first of its numbers stands for the whole.
void sequence_apply(Rewriter& graph, int at) {
  if (!graph.is(at, "spatial-sequence", "91") || graph.child(at, "ARG2") < 0) return;
  graph.word(at).name = "and";
  graph.word(at).sense.clear();
  graph.word(at).attributes.clear();
  int number = 0;
  for (const int led : graph.numbered(at, {"ARG"})) {
    if (graph.arc(led).role == "ARG1") {
      graph.remove(led, Fate::left_out);
    } else {
      graph.arc(led).role = "op" + std::to_string(++number);
    }
  }
}

// (l / line :configuration-of (b / block)): a line of blocks. Blocks with the role are in it.
void shape_apply(Rewriter& graph, int at) {
  // (h / have-configuration-91 :ARG1 (b / block) :ARG2 (r / row)): the blocks are in a row.
  const int form = graph.is(at, "have-configuration", "91") ? graph.child(at, "ARG2") : -1;
  const int above = graph.parent(at);
  if (form >= 0 && above >= 0 && graph.arc(above).role == "manner" && !graph.arc(above).inverse) {
    graph.arc(above).role = "medium";
    const int what = graph.child(at, "ARG1");
    if (what >= 0 && graph.mentions(graph.arc(what).to) > 1) graph.remove(what, Fate::word);
    return graph.stand_in(at, form, Fate::relation);
  }
  if (form >= 0) graph.word(at).name = "be-located-at";
  for (const int led : graph.children(at)) {
    Arc& one = graph.arc(led);
    if (one.role != "configuration") continue;
    if (one.inverse) {
      one.role = "consist-of", one.inverse = false;
      attribute_add(graph.word(one.to), "@pl");
      continue;
    }
    // "An L": what is nothing but its form.
    const bool is_form = graph.is(one.to, "string-entity") && graph.is(at, "thing");
    if (is_form) {
      graph.stand_in(at, led, Fate::word);
      return;
    }
    one.role = "medium";
  }
}

// (h / have-goal-91 :ARG1 (b / block) :ARG2 (s / space ...)), uttered: the block and where it is to be.
void fragment_apply(Rewriter& graph, int at) {
  if (!graph.is(at, "have-goal", "91") && !graph.is(at, "be-destined-for", "91")) return;
  const int above = graph.parent(at);
  const bool is_joined = above >= 0 && !graph.arc(above).inverse && graph.arc(above).role.starts_with("op");
  const bool is_answer =
      above >= 0 && graph.arc(above).role == "ARG1" && graph.is(graph.arc(above).from, "confirm", "01");
  if (above >= 0 && !is_joined && !is_answer) return;
  const int what = graph.child(at, "ARG1");
  const int where = graph.child(at, "ARG2");
  if (what < 0 && where < 0) return;
  const int head = graph.arc(what >= 0 ? what : where).to;
  if (graph.mentions(head) > 1 || is_personal_pronoun(graph, head)) return;
  for (const std::string& attribute : graph.word(at).attributes) {
    if (attribute != "@v" && attribute != "@imp") attribute_add(graph.word(head), attribute);
  }
  if (what >= 0 && where >= 0) graph.arc(where).role = "location";
  graph.stand_in(at, what >= 0 ? what : where, Fate::relation);
}

}  // namespace

// Before all steps that look at nouns and frames, as what is left then is what an AMR has for the same.
void step_space(Meaning& meaning) {
  Rewriter graph(meaning, "space");
  viewpoint_apply(graph);
  for (int at = 0, end = graph.count(); at < end; ++at) {
    if (graph.is(at, "cartesian-coordinate-entity")) coordinates_apply(graph, at);
    size_apply(graph, at);
    one_apply(graph, at);
    each_apply(graph, at);
    sequence_apply(graph, at);
    shape_apply(graph, at);
  }
  for (int at = 0, end = graph.count(); at < end; ++at) placed_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) stated_place_apply(graph, at);
  for (int at = 0, end = graph.count(); at < end; ++at) fragment_apply(graph, at);
}

}  // namespace lexon
