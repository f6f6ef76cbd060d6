#include "run/fallback.hpp"

#include <map>
#include <set>
#include <vector>

namespace lexon {
namespace {

// A relation, or a word of a word block, which leads from itself to itself.
struct Line {
  std::string scope;  // two characters, empty for the sentence itself
  std::string from;
  std::string to;
};

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

// Where `mark` stands outside quotes and parentheses, from `at` on; npos if nowhere.
std::size_t find_outside(std::string_view text, char mark, std::size_t at) {
  int depth = 0;
  bool quoted = false;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\\' && at + 1 < text.size()) {
      ++at;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && c == mark && depth == 0) {
      return at;
    } else if (!quoted && c == '(') {
      ++depth;
    } else if (!quoted && c == ')') {
      --depth;
    }
  }
  return std::string_view::npos;
}

// A node without its attributes: what tells it from others.
std::string_view node_of(std::string_view text) {
  const std::size_t attribute = text.find(".@");
  return trimmed(text.substr(0, attribute));
}

// The number behind the word, or at a label; empty if there is none.
std::string_view number_of(std::string_view text) {
  const std::size_t colon = find_outside(text, ':', 0);
  return colon == std::string_view::npos ? std::string_view{} : trimmed(text.substr(colon + 1)).substr(0, 2);
}

// The word as it is written.
std::string said(std::string_view node) {
  if (node.starts_with('"')) {
    std::string text;
    for (node = node.substr(1, node.rfind('"') - 1); !node.empty(); node.remove_prefix(1)) {
      if (node.starts_with("\\\"")) node.remove_prefix(1);
      text += node.front();
    }
    return text;
  }
  const std::size_t colon = find_outside(node, ':', 0);
  node = node.substr(0, colon);
  const std::size_t restriction = node.find('(');
  return std::string(node.substr(0, restriction == 0 ? node.size() : restriction));
}

// Reads the graph by rules of its own, looser than the reader's: what it stands in for may have failed in reading.
class Words {
 public:
  explicit Words(std::string_view graph) { read(graph); }

  // First what the entry leads to, then the rest: the sentence's own lines before those of scopes.
  std::string all() {
    for (const Line& line : lines_) from_[{line.scope, line.from}].push_back(&line);
    if (const auto entry = entries_.find(""); entry != entries_.end()) say("", entry->second);
    for (const Line& line : lines_) {
      if (line.scope.empty()) say("", line.from), say("", line.to);
    }
    for (const Line& line : lines_) say(line.scope, line.from), say(line.scope, line.to);
    return text_;
  }

 private:
  using Place = std::pair<std::string, std::string>;  // a scope and a node of it

  std::vector<Line> lines_;
  std::map<Place, std::vector<const Line*>> from_;  // the lines that lead on from a node, as they stand
  std::map<std::string, std::string> entries_;      // of each scope
  std::set<std::string> seen_;
  std::string text_;

  // The first entry word of a scope counts.
  void node_add(const std::string& scope, std::string_view written) {
    if (written.find(".@entry") != std::string_view::npos) entries_.emplace(scope, node_of(written));
  }

  void read(std::string_view graph) {
    bool in_words = false;
    while (!graph.empty()) {
      const std::size_t end = graph.find('\n');
      const std::string_view line = trimmed(graph.substr(0, end));
      graph.remove_prefix(end == std::string_view::npos ? graph.size() : end + 1);
      if (line.empty() || line.front() == ';' || line.front() == '{' || line.front() == '<') continue;
      if (line.front() == '[') {
        in_words = line.starts_with("[W");
        // What stands in front of the sentence is no part of it.
        if (line.starts_with("[S")) lines_.clear(), entries_.clear();
      } else if (in_words) {
        node_add("", line);
        lines_.push_back({"", std::string(node_of(line)), std::string(node_of(line))});
      } else {
        relation(line);
      }
    }
  }

  void relation(std::string_view line) {
    const std::size_t open = line.find('(');
    if (open == std::string_view::npos) return;
    const std::size_t comma = find_outside(line, ',', open + 1);
    if (comma == std::string_view::npos) return;
    const std::size_t close = find_outside(line, ')', comma + 1);
    if (close == std::string_view::npos) return;
    const std::string scope(number_of(line.substr(0, open)));
    const std::string_view from = trimmed(line.substr(open + 1, comma - open - 1));
    const std::string_view to = trimmed(line.substr(comma + 1, close - comma - 1));
    node_add(scope, from);
    node_add(scope, to);
    lines_.push_back({scope, std::string(node_of(from)), std::string(node_of(to))});
  }

  // A branch to its end. The list of what is still to be said stands in for recursion, which a long chain would
  // exhaust.
  void say(const std::string& scope, const std::string& node) {
    std::vector<Place> open{{scope, node}};
    while (!open.empty()) {
      const auto [place, name] = open.back();
      open.pop_back();
      if (!seen_.insert(name).second) continue;
      std::string inner = place;
      if (name.starts_with(':')) {
        inner = number_of(name);
        if (const auto entry = entries_.find(inner); entry != entries_.end()) open.emplace_back(inner, entry->second);
        continue;
      }
      // A scope has been said in its place; a word is written once, the first time that a road leads to it.
      if (!text_.empty()) text_ += ' ';
      text_ += said(name);
      const auto leading_on = from_.find({inner, name});
      if (leading_on == from_.end()) continue;
      for (auto line = leading_on->second.rbegin(); line != leading_on->second.rend(); ++line) {
        open.emplace_back(inner, (*line)->to);
      }
    }
  }
};

}  // namespace

std::string fallback_words(std::string_view graph) {
  return Words(graph).all();
}

}  // namespace lexon
