// Data of sentences for the pages that show them.

#include <algorithm>

#include "data/utf8.hpp"
#include "lab/derivation.hpp"
#include "lab/show.hpp"
#include "lab/view.hpp"
#include "lab/view_record.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostNamed = 20;  // of relations and debts of a sentence that failed

// Valid UTF-8: a byte that begins no character becomes "\xE9".
void make_valid(std::string& text) {
  const auto is_valid = [](std::string_view rest) {
    while (!rest.empty()) {
      const Utf8Character character = utf8_first(rest);
      // Most texts are valid, and are only looked at.
      if (!character.is_valid) return false;
      rest.remove_prefix(character.length);
    }
    return true;
  };
  if (is_valid(text)) return;
  std::string valid;
  for (std::string_view rest = text; !rest.empty();) {
    const Utf8Character character = utf8_first(rest);
    std::array<char, 5> code;
    std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(rest.front()) & 0xFFU);
    valid += character.is_valid ? rest.substr(0, character.length) : std::string_view(code.data());
    rest.remove_prefix(character.length);
  }
  text.swap(valid);
}

void make_valid(nlohmann::json& data) {
  if (data.is_string()) return make_valid(data.get_ref<std::string&>());
  // Numbers and the like have no text.
  if (!data.is_structured()) return;
  for (nlohmann::json& each : data) make_valid(each);
}

// The five of these that took back the most steps, each as a line; `name` gives a key's text.
template <typename Map, typename Name>
std::vector<std::string> most_taken_back(const Map& map, Name name) {
  std::vector<std::pair<std::string, Derivation::TakenBack>> most;
  for (const auto& [key, taken] : map) {
    // A test that took nothing back has cost nothing.
    if (taken.steps > 0) most.emplace_back(name(key), taken);
  }
  std::stable_sort(most.begin(), most.end(),
                   [](const auto& a, const auto& b) { return a.second.steps > b.second.steps; });
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < std::min<std::size_t>(most.size(), 5); ++at) {
    const Derivation::TakenBack& taken = most[at].second;
    lines.push_back(most[at].first + ": " + count_text(taken.asked, "time") + ", " + count_text(taken.steps, "step") +
                    "; first in " + taken.where);
  }
  return lines;
}

// Some of the lines, and how many more there are.
std::vector<std::string> first_ones(const std::vector<std::string>& lines) {
  std::vector<std::string> some(lines.begin(), lines.begin() + std::min<std::ptrdiff_t>(std::ssize(lines), kMostNamed));
  if (lines.size() > some.size()) some.push_back("and " + std::to_string(lines.size() - some.size()) + " more");
  return some;
}

// Why the sentence came to nothing, see `trouble` in view.hpp.
nlohmann::json trouble_data(const Project& project, const Derivation& derivation) {
  const Deepest& deepest = derivation.deepest();
  return {{"steps", deepest.steps},
          {"list", deepest.list},
          {"unfollowed", first_ones(deepest.unfollowed)},
          {"debts", first_ones(deepest.debts)},
          {"tests", most_taken_back(derivation.taken_back(),
                                    [&project](const Rule* rule) {
                                      return project.place_of(*rule) + "  " + project.text_of(*rule);
                                    })},
          {"windows", most_taken_back(derivation.dead_ends(), [](const std::string& window) { return window; })}};
}

std::string trimmed(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
  return text;
}

}  // namespace

struct Viewer::Inner {
  const Project& project;
  Bench& bench;
  ViewRecord record;      // all that happens
  Derivation derivation;  // what of it explains a failure
};

Viewer::Viewer(const Project& project, Bench& bench, std::size_t steps_kept)
    : inner_(
          new Inner{project, bench, ViewRecord(project, std::max<std::size_t>(steps_kept, 10)), Derivation(project)}) {
  bench.watchers().add(inner_->record);
  bench.watchers().add(inner_->derivation);
}

Viewer::~Viewer() {
  inner_->bench.watchers().remove(inner_->record);
  inner_->bench.watchers().remove(inner_->derivation);
}

void Viewer::keep(std::size_t steps) {
  inner_->record.keep(std::max<std::size_t>(steps, 10));
}

std::vector<nlohmann::json> Viewer::data(const GraphText& graph, const RenderOptions& limits) {
  // The sentences of the call before have been moved out.
  inner_->record.clear();
  const std::vector<Rendered> results = inner_->bench.render(graph.text, limits);
  // A sentence that was refused before its search began is in the results alone.
  std::vector<nlohmann::json> sentences = std::move(inner_->record.sentences());
  // It has data without steps.
  sentences.resize(results.size());
  for (std::size_t at = 0; at < results.size(); ++at) {
    const Sentence& sentence = results[at].sentence;
    nlohmann::json& data = sentences[at];
    data["label"] = trimmed(sentence.label);
    data["file"] = graph.file;
    data["line"] = graph.line;
    data["number"] = graph.number;
    data["status"] = results[at].status();
    data["text"] = sentence.text;
    data["seconds"] = sentence.seconds;
    data["passes"] = sentence.steps;
    data["taken_back"] = inner_->derivation.undone();
    data["messages"] = nlohmann::json::array();
    for (const Message& message : sentence.messages) data["messages"].push_back(to_string(message));
    if (data.contains("graph")) data["graph"]["source"] = graph.text;
    // The derivation knows of the last sentence only.
    const bool has_search = data.contains("steps") && at + 1 == results.size();
    data["trouble"] = results[at].is_done() || !has_search ? nlohmann::json(nullptr)
                                                           : trouble_data(inner_->project, inner_->derivation);
    make_valid(data);
  }
  return sentences;
}

std::string view_json_text(const nlohmann::json& data) {
  // Names of files can be no UTF-8.
  const std::string text = data.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string safe;
  safe.reserve(text.size());
  // "<" stands within strings alone.
  for (const char c : text) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return safe;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
