// Graphs laid out by Graphviz. Nothing of a graph's text goes to it, only sizes and numbers, so that no text can break
// what it reads or writes; the page draws the picture from the places that come back.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "data/platform.hpp"
#include "data/utf8.hpp"
#include "lab/view.hpp"

extern char** environ;

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using nlohmann::json;

constexpr double kPointsPerInch = 72;
constexpr double kCharacterWidth = 7.2;  // points, of the page's type
constexpr std::size_t kLongestName = 40;
constexpr std::size_t kLongestAttrs = 34;
constexpr char kNotInstalled[] =
    "Graphviz (the program dot) is not installed, so the graph is drawn without it, plainly; with it the picture is "
    "clearer";

std::size_t width_of(const json& node) {
  std::size_t attrs = 0;
  for (const json& block : node["attrs"]) attrs += utf8_count(block[1].get_ref<const std::string&>()) + 1;
  const std::size_t name = utf8_count(node["name"].get_ref<const std::string&>()) + 3;
  return std::max(std::min(name, kLongestName), std::min(attrs, kLongestAttrs));
}

// By node, the scope whose box it stands in: the first one that a relation says.
std::map<int, int> scopes_of_nodes(const json& graph) {
  std::map<int, int> scopes;
  for (const json& relation : graph["relations"]) {
    for (const char* end : {"from", "to"}) scopes.emplace(relation[end].get<int>(), relation["scope"].get<int>());
  }
  return scopes;
}

std::string dot_text(const json& graph) {
  std::ostringstream text;
  text << "digraph { graph [rankdir=TB, nodesep=0.35, ranksep=0.45]; node [shape=box, fixedsize=true, label=\"\"]; "
          "edge [fontname=\"Helvetica\", fontsize=11];\n";
  const json& nodes = graph["nodes"];
  for (std::size_t at = 0; at < nodes.size(); ++at) {
    const double width = (static_cast<double>(width_of(nodes[at])) * kCharacterWidth + 16) / kPointsPerInch;
    text << 'n' << at << " [width=" << width << ", height=" << (nodes[at]["attrs"].empty() ? 0.4 : 0.58) << "];\n";
  }
  std::map<int, std::set<int>> boxes;
  for (const auto& [node, scope] : scopes_of_nodes(graph)) {
    if (scope != 0) boxes[scope].insert(node);
  }
  for (const auto& [scope, members] : boxes) {
    text << "subgraph cluster_" << scope << " { margin=14; ";
    for (const int node : members) text << 'n' << node << "; ";
    text << "}\n";
  }
  const json& relations = graph["relations"];
  for (std::size_t at = 0; at < relations.size(); ++at) {
    const std::size_t length = utf8_count(relations[at]["label"].get_ref<const std::string&>()) + 1;
    text << 'n' << relations[at]["from"] << " -> n" << relations[at]["to"] << " [id=\"" << at << "\", label=\""
         << std::string(length, 'x') << "\"];\n";
  }
  // From the reference of a scope to its entry.
  for (std::size_t at = 0; at < nodes.size(); ++at) {
    for (const json& scope : graph["scopes"]) {
      if (nodes[at]["scope"] == scope["number"] && scope["entry"].get<int>() >= 0)
        text << 'n' << at << " -> n" << scope["entry"] << " [id=\"r" << at << "\"];\n";
    }
  }
  text << "}\n";
  return text.str();
}

// Runs `dot` over the text. What kept it from it; else empty.
std::string dot_run(const std::string& text, std::string& result) {
  const File given(std::tmpfile());
  const File made(std::tmpfile());
  if (given == nullptr || made == nullptr || std::fwrite(text.data(), 1, text.size(), given.get()) != text.size() ||
      std::fflush(given.get()) != 0) {
    return std::string("no temporary file for Graphviz: ") + std::strerror(errno);
  }
  std::rewind(given.get());
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, fileno(given.get()), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, fileno(made.get()), STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", 1, 0);
  char name[] = "dot";
  char form[] = "-Tjson0";
  char* words[] = {name, form, nullptr};
  pid_t process = 0;
  const int error = posix_spawnp(&process, name, &files, nullptr, words, environ);
  posix_spawn_file_actions_destroy(&files);
  if (error == ENOENT) return kNotInstalled;
  if (error != 0) return std::string("Graphviz cannot be run: ") + std::strerror(error);
  int status = 0;
  while (waitpid(process, &status, 0) == -1 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) return kNotInstalled;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return "Graphviz could not lay the graph out, so it is drawn without it, plainly";
  std::rewind(made.get());
  char piece[65536];
  while (const std::size_t size = std::fread(piece, 1, sizeof piece, made.get())) result.append(piece, size);
  return {};
}

std::vector<double> numbers_of(std::string text) {
  for (char& c : text) {
    if (c == ',' || c == 'e' || c == 's') c = ' ';
  }
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  std::vector<double> numbers;
  for (double number = 0; stream >> number;) numbers.push_back(number);
  return numbers;
}

double rounded(double number) {
  return static_cast<double>(static_cast<std::int64_t>(number * 10 + (number < 0 ? -0.5 : 0.5))) / 10;
}

std::string coordinates(double x, double y) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << rounded(x) << ',' << rounded(y);
  return text.str();
}

// "e,x,y" for the tip of an arrow, then a start and three points for each piece of a Bezier curve.
json curve_of(const json& edge, double height) {
  const std::string& text = edge.at("pos").get_ref<const std::string&>();
  std::vector<double> at = numbers_of(text);
  const std::size_t first = text.starts_with("e,") ? 2 : 0;
  if (at.size() < first + 8) return nullptr;
  std::string path = "M" + coordinates(at[first], height - at[first + 1]) + " C";
  for (std::size_t i = first + 2; i + 1 < at.size(); i += 2) path += ' ' + coordinates(at[i], height - at[i + 1]);
  json curve = {{"path", path}};
  const std::size_t last = at.size() - 2;
  if (first == 2)
    curve["tip"] = {rounded(at[last]), rounded(height - at[last + 1]), rounded(at[0]), rounded(height - at[1])};
  const std::vector<double> label = numbers_of(edge.value("lp", ""));
  if (label.size() == 2) {
    curve["x"] = rounded(label[0]);
    curve["y"] = rounded(height - label[1]);
  }
  return curve;
}

json layout_of(const json& graph, const json& laid_out) {
  const std::vector<double> box = numbers_of(laid_out.at("bb"));
  if (box.size() != 4) return nullptr;
  const double height = box[3];
  json layout = {{"width", rounded(box[2])},   {"height", rounded(height)},   {"nodes", json::array()},
                 {"relations", json::array()}, {"references", json::array()}, {"scopes", json::array()}};
  layout["nodes"].get_ref<json::array_t&>().resize(graph["nodes"].size());
  layout["relations"].get_ref<json::array_t&>().resize(graph["relations"].size());
  for (const json& object : laid_out.value("objects", json::array())) {
    const std::string name = object.at("name");
    if (name.starts_with("cluster_")) {
      const std::vector<double> at = numbers_of(object.at("bb"));
      if (at.size() != 4) continue;
      layout["scopes"].push_back({{"number", std::stoi(name.substr(8))},
                                  {"x", rounded(at[0])},
                                  {"y", rounded(height - at[3])},
                                  {"width", rounded(at[2] - at[0])},
                                  {"height", rounded(at[3] - at[1])}});
      continue;
    }
    const std::vector<double> at = numbers_of(object.at("pos"));
    const double width = std::stod(object.at("width").get<std::string>()) * kPointsPerInch;
    const double tall = std::stod(object.at("height").get<std::string>()) * kPointsPerInch;
    if (at.size() == 2)
      layout["nodes"].at(std::stoul(name.substr(1))) = {rounded(at[0]), rounded(height - at[1]), rounded(width),
                                                        rounded(tall)};
  }
  for (const json& edge : laid_out.value("edges", json::array())) {
    const std::string id = edge.at("id");
    if (id.starts_with('r')) {
      layout["references"].push_back(curve_of(edge, height));
    } else {
      layout["relations"].at(std::stoul(id)) = curve_of(edge, height);
    }
  }
  return layout;
}

}  // namespace

std::string view_lay_out(std::span<nlohmann::json> sentences) {
  std::string text;
  for (const json& data : sentences) {
    if (data.contains("graph")) text += dot_text(data["graph"]);
  }
  if (text.empty()) return {};
  std::string made;
  std::string notice = dot_run(text, made);
  std::istringstream stream(made);
  for (json& data : sentences) {
    if (!data.contains("graph")) continue;
    try {
      json laid_out;
      if (notice.empty()) {
        stream >> laid_out;
        data["graph"]["layout"] = layout_of(data["graph"], laid_out);
      }
    } catch (const std::exception&) {
      notice = "Graphviz has answered in a form that is not known, so the graph is drawn without it, plainly";
    }
    data["graph"]["notice"] = notice;
  }
  return notice;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
