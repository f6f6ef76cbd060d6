// New lines of the kinds that inputs are made of, from a small vocabulary, so that rules, graphs and words meet.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace lexon::fuzz {

class LineMaker {
 public:
  explicit LineMaker(std::minstd_rand& random) : random_(random) {}

  // A line of the kind of `line`: a rule, a relation or an entry.
  [[nodiscard]] std::string like(std::string_view line) {
    if (line.starts_with("[/") || line.starts_with("[S")) return one_of({"[S]\n", "[/S]\n", "[W]\n", "[/W]\n"});
    if (line.starts_with('[')) return entry();
    return line.find('{') != std::string_view::npos || line.find('"') != std::string_view::npos ? rule() : relation();
  }

 private:
  [[nodiscard]] bool sometimes(unsigned of) { return random_() % of == 0; }

  [[nodiscard]] std::string one_of(std::initializer_list<const char*> texts) {
    return *(texts.begin() + random_() % texts.size());
  }
  [[nodiscard]] std::string word() { return one_of({"dog", "see", "cat", "big", "the", "of"}); }
  [[nodiscard]] std::string attribute() {
    return one_of({"N",    "V",  "A",      "B",     "ADJ",  "ART",  "SHEAD", "STAIL", "CHEAD", "CTAIL", "SCOPE",
                   "TEMP", "@9", "@entry", "@past", ">agn", "<agn", ">pat",  "<pat",  ">att",  "<cnd"});
  }
  [[nodiscard]] std::string label() { return one_of({"agn", "pat", "att", "cnd", "and"}); }

  [[nodiscard]] std::string condition() {
    const std::string sign = one_of({"", "", "", "^", "-", "+"});
    if (sometimes(6)) return sign + "[" + word() + "]";
    return sometimes(8) ? sign + "[[" + word() + "]]" : sign + attribute();
  }
  [[nodiscard]] std::string action() {
    if (sometimes(6)) return "[" + word() + "]";
    return sometimes(8) ? "[[" + word() + "]]" : one_of({"+", "-", ""}) + attribute();
  }
  [[nodiscard]] std::string group() { return "(" + condition() + (sometimes(3) ? ")*" : ")"); }

  [[nodiscard]] std::string pattern(bool quoted) {
    std::string text(1, quoted ? '"' : '{');
    if (!sometimes(5)) text += condition();
    if (sometimes(2)) text += "," + condition();
    text += ':';
    if (sometimes(2)) text += action();
    if (sometimes(4)) text += "," + action();
    text += ':';
    if (sometimes(quoted ? 2 : 4)) text += label();
    text += ':';
    if (sometimes(6)) text += one_of({"<", ">", ""}) + label();
    return text + (quoted ? '"' : '}');
  }

  [[nodiscard]] std::string rule() {
    const std::string type =
        one_of({":",  ":", ":", "R", "R", "R",  "L",  "L",  "X",   "C",   "CR",  "DL",  "DR", "?", "?L",
                "?R", "+", "-", "<", ">", "PL", "PR", "P:", "P<<", "P>>", "PSL", "PSR", "1",  "2"});
    const bool inserts = type == ":" || type == "P:";
    const bool left_quoted = type == "P<<" || (inserts && sometimes(3));
    const bool right_quoted = type == "P>>" || (inserts && !left_quoted && !sometimes(4));
    std::string text = type;
    if (sometimes(6)) text += group();
    text += pattern(left_quoted);
    if (inserts && sometimes(3)) text += group();
    text += pattern(right_quoted);
    if (sometimes(6)) text += group();
    return text + "P" + one_of({"1", "5", "6", "7", "9", "20", "255"}) + ";\n";
  }

  [[nodiscard]] std::string place() {
    if (sometimes(5)) return one_of({":01", ":02", ":03"});
    return word() + one_of({"", "", ".@entry", ".@past", ":01", ":02.@entry"});
  }
  [[nodiscard]] std::string relation() {
    return label() + one_of({"", "", "", ":01", ":02"}) + "(" + place() + ", " + place() + ")\n";
  }

  [[nodiscard]] std::string entry() {
    const std::string text = "[" + word() + "]{} \"" + one_of({"dog", "see", "cat", "big", "sup", ""}) + "\" (";
    return text + attribute() + "," + attribute() + ") <E,0," + one_of({"0", "1", "2", "200"}) + ">;\n";
  }

  std::minstd_rand& random_;
};

}  // namespace lexon::fuzz
