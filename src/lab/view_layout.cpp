// Graphs laid out by Graphviz. Nothing of a graph's text goes to it, only sizes and numbers, so that no text can break
// what it reads or writes; the page draws the picture from the places that come back.

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

#include "data/platform.hpp"
#include "data/utf8.hpp"
#include "lab/child_process.hpp"
#include "lab/view.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using nlohmann::json;

constexpr double kPointsPerInch = 72;
// As web/view/view.js and view.css have them, so that texts fit into their boxes.
constexpr double kCharacterWidth = 7.2;   // points, of the page's type
constexpr std::size_t kLongestName = 40;  // characters; the page cuts what is longer
constexpr std::size_t kLongestAttrs = 34;
// Without a graph from Graphviz. It writes each as soon as it is laid out.
constexpr std::chrono::seconds kLongestWait{10};
constexpr std::chrono::milliseconds kWaitingTurn{2};
constexpr char kNotInstalled[] =
    "Graphviz (the program dot) is not installed, so the graph is drawn without it, plainly; with it the picture is "
    "clearer";

// In characters: of the name with its instance, or of the attributes below it.
std::size_t width_of(const json& node) {
  std::size_t attrs = 0;
  // One more for the sign between two blocks of attributes.
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

// The graph as Graphviz reads it: nodes n0, n1, ... of fixed size, a cluster for each scope but the whole, relations with
// a label as long as theirs. Lengths are in inches.
std::string dot_text(const json& graph) {
  std::ostringstream text;
  text << "digraph { graph [rankdir=TB, nodesep=0.35, ranksep=0.45]; node [shape=box, fixedsize=true, label=\"\"]; "
          "edge [fontname=\"Helvetica\", fontsize=11];\n";
  const json& nodes = graph["nodes"];
  for (std::size_t at = 0; at < nodes.size(); ++at) {
    const double width = (static_cast<double>(width_of(nodes[at])) * kCharacterWidth + 16) / kPointsPerInch;
    text << 'n' << at << " [width=" << width << ", height=" << (nodes[at]["attrs"].empty() ? 0.4 : 0.58) << "];\n";
  }
  std::map<int, std::set<int>> boxes;  // by scope, its nodes
  for (const auto& [node, scope] : scopes_of_nodes(graph)) {
    // The sentence itself has no box.
    if (scope != 0) boxes[scope].insert(node);
  }
  for (const auto& [scope, members] : boxes) {
    // Six signs leave room for the title that the page writes.
    text << "subgraph cluster_" << scope << " { margin=12; fontsize=10; label=\"xxxxxx\"; ";
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

// What came of a run of Graphviz.
struct DotRun {
  std::string made{};    // a JSON value for each graph, as far as it came
  std::string notice{};  // what kept it from more; else empty
  bool is_over_time = false;
};

// Waits for `process`. It is killed if the file that it writes has not grown for so long, or once it is not wanted.
int dot_wait(pid_t process, int made, const std::function<bool()>& wanted, bool& is_over_time) {
  off_t size = 0;
  auto grown = std::chrono::steady_clock::now();
  while (true) {
    int status = 0;
    // Not waited for: the program may never end.
    const pid_t ended = waitpid(process, &status, WNOHANG);
    if (ended == process) return status;
    struct stat now {};
    const bool has_grown = fstat(made, &now) == 0 && now.st_size > size;
    if (has_grown) {
      size = now.st_size;
      grown = std::chrono::steady_clock::now();
    }
    is_over_time = std::chrono::steady_clock::now() - grown > kLongestWait;
    // The next turn finds that it has ended.
    if (is_over_time || (wanted && !wanted())) kill(process, SIGKILL);
    std::this_thread::sleep_for(kWaitingTurn);
  }
}

DotRun dot_run(const std::string& text, const std::function<bool()>& wanted) {
  const File given = unnamed_file();
  const File made = unnamed_file();
  if (given == nullptr || made == nullptr || std::fwrite(text.data(), 1, text.size(), given.get()) != text.size() ||
      std::fflush(given.get()) != 0) {
    return {.notice = std::string("no temporary file for Graphviz: ") + std::strerror(errno)};
  }
  std::rewind(given.get());
  // Files rather than pipes: neither side can wait for the other.
  const pid_t process = process_start({"dot", "-Tjson0"}, fileno(given.get()), fileno(made.get()));
  if (process == -1 && errno == ENOENT) return {.notice = kNotInstalled};
  if (process == -1) return {.notice = std::string("Graphviz cannot be run: ") + std::strerror(errno)};
  DotRun run;
  const int status = dot_wait(process, fileno(made.get()), wanted, run.is_over_time);
  if (run.is_over_time) {
    run.notice = "Graphviz took too long to lay the graph out, so it is drawn without it, plainly";
    // What starting a program gives where the program is missing.
  } else if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    run.notice = kNotInstalled;
  } else if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    run.notice = "Graphviz could not lay the graph out, so it is drawn without it, plainly";
  }
  std::rewind(made.get());
  char piece[65536];
  while (const std::size_t size = std::fread(piece, 1, sizeof piece, made.get())) run.made.append(piece, size);
  return run;
}

// The numbers of "1,2 3,4", with or without what names the ends of a curve.
std::vector<double> numbers_of(std::string text) {
  // "e,x,y" and "s,x,y" name the ends of a curve; in a large number an "e" stands before its exponent.
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool names_end = (text[at] == 'e' || text[at] == 's') && text.substr(at + 1, 1) == ",";
    if (names_end || text[at] == ',') text[at] = ' ';
  }
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  std::vector<double> numbers;
  for (double number = 0; stream >> number;) numbers.push_back(number);
  return numbers;
}

// To a tenth of a point, which is more than a screen shows.
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
// Graphviz counts from below, a page from above. Null: it has drawn no curve.
json curve_of(const json& edge, double height) {
  const std::string& text = edge.at("pos").get_ref<const std::string&>();
  std::vector<double> at = numbers_of(text);
  const std::size_t first = text.starts_with("e,") ? 2 : 0;
  // A start and one piece of three points are the least.
  if (at.size() < first + 8) return nullptr;
  std::string path = "M" + coordinates(at[first], height - at[first + 1]) + " C";
  for (std::size_t i = first + 2; i + 1 < at.size(); i += 2) path += ' ' + coordinates(at[i], height - at[i + 1]);
  json curve = {{"path", path}};
  // The arrow goes from the end of the curve to the tip.
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

// The `layout` of view.hpp. Null, or an exception of the library, if the answer has not the form that is known.
json layout_of(const json& graph, const json& laid_out) {
  const std::vector<double> box = numbers_of(laid_out.at("bb"));
  if (box.size() != 4) return nullptr;
  const double height = box[3];
  json layout = {{"width", rounded(box[2])},   {"height", rounded(height)},   {"nodes", json::array()},
                 {"relations", json::array()}, {"references", json::array()}, {"scopes", json::array()}};
  // A node that is not answered for stays null, and the page draws the graph plainly then.
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
    // Places in points, but sizes in inches.
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

std::string view_lay_out(std::span<nlohmann::json> sentences, const std::function<bool()>& wanted) {
  std::string told;
  while (true) {
    std::string text;
    for (const json& data : sentences) {
      if (data.contains("graph")) text += dot_text(data["graph"]);
    }
    if (text.empty()) return told;
    const DotRun run = dot_run(text, wanted);
    if (wanted && !wanted()) return told;
    std::istringstream stream(run.made);
    std::size_t next = 0;
    for (bool goes_on = true; goes_on && next < sentences.size(); ++next) {
      json& data = sentences[next];
      if (!data.contains("graph")) continue;
      // One value of JSON for each graph, in their order.
      std::string notice = run.notice;
      const bool may_be_there = notice.empty() || run.is_over_time;
      try {
        json laid_out;
        if (may_be_there) {
          stream >> laid_out;
          data["graph"]["layout"] = layout_of(data["graph"], laid_out);
          notice.clear();
        }
      } catch (const std::exception&) {
        if (notice.empty())
          notice = "Graphviz has answered in a form that is not known, so the graph is drawn without it, plainly";
      }
      data["graph"]["notice"] = notice;
      if (!notice.empty()) told = notice;
      // This graph took too long: those behind it get a run of their own.
      goes_on = notice.empty() || !run.is_over_time;
    }
    // At least the one that took too long is behind us, so this comes to an end.
    sentences = sentences.subspan(next);
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
