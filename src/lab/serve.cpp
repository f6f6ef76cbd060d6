// lexon-lab serve: a page to work in, on this machine alone.
//
// Other programs of the machine, other users and pages of other sites can reach the port too. So: an address with a
// secret word; no answer under a name that is not this machine's (a foreign site can let its name point here), nor to
// what other pages have asked for; one request for a connection, of bounded size; and no file outside of the folder.

#include <signal.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <httplib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "front/process.hpp"
#include "lab/child_process.hpp"
#include "lab/commands.hpp"
#include "lab/options.hpp"
#include "lab/project_files.hpp"
#include "lab/serve_folder.hpp"
#include "lab/serve_pages.hpp"
#include "lab/serve_work.hpp"
#include "lab/temporary_folder.hpp"
#include "lab/text_file.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr std::size_t kMostRequestBytes = std::size_t{40} << 20;
constexpr std::size_t kLongestAddress = 256;
constexpr std::size_t kLongestName = 64;  // of a page or a request
constexpr std::size_t kMostFiles = 1024;  // of one request
constexpr std::size_t kMostLanes = 256;   // those used longest ago are forgotten: what they had asked for goes on
constexpr std::size_t kThreads = 24;      // so that connections that say nothing leave some for the page
constexpr int kDepthOfRequests = 4;       // of objects and lists within each other
constexpr time_t kSecondsForRequest = 5;  // to send it, not to answer it

// The command line. What it leaves empty is guessed from the names of the files, see `project_files_of`.
struct Arguments {
  std::string folder = ".";
  std::string rules;
  std::string dictionary;
  std::vector<std::string> entries;
  std::string cooccurrence;
  std::vector<std::string> graphs;
  std::string gold;
  RenderOptions limits;
  int blocks = 0;
  int port = 0;
  bool opens = false;
};

// ---- What is asked of the project

// Is it a dictionary, and no text? A text has no zero byte.
bool is_built(const std::string& path) {
  return text_file_read(path).substr(0, 4096).find('\0') != std::string::npos;
}

std::string first_that_is_there(const std::string& folder, std::initializer_list<const char*> names) {
  std::error_code error;
  for (const char* name : names) {
    if (fs::is_regular_file(folder + name, error)) return folder + name;
  }
  return {};
}

// The folder that the page may see: the one that was named, or the one above if the graphs lie there.
std::string folder_of_page(const ProjectFiles& found, const std::string& named) {
  std::error_code error;
  const fs::path folder = fs::canonical(named, error);
  if (error) throw Fault(named + ": the folder cannot be opened: " + error.message());
  for (const std::string& graphs : found.graphs) {
    const fs::path inside = fs::weakly_canonical(graphs, error).lexically_relative(folder);
    if (!inside.empty() && *inside.begin() == "..") return folder.parent_path().string();
  }
  return folder.string();
}

// Throws Fault for a part that is missing, and for a file that lies outside of the folder.
ServeFiles files_of(const Arguments& arguments, const ProjectFiles& found, const Folder& folder) {
  ServeFiles files;
  files.silenced = found.silenced;
  files.blocks = arguments.blocks != 0 ? arguments.blocks : found.blocks;
  const std::string rules = arguments.rules.empty() ? found.rules : arguments.rules;
  if (rules.empty()) {
    throw Fault(
        arguments.folder +
        ": there are no rules in this folder (rules.lxr, rules.txt): name them with -r, or name another folder");
  }
  files.rules = folder.relative(rules);
  std::vector<std::string> entries = arguments.entries;
  if (entries.empty() && arguments.dictionary.empty()) entries = found.words;
  files.dictionary = arguments.dictionary;
  // Who names a built dictionary as entries means it; of several files each has to be text.
  if (entries.size() == 1 && is_built(entries.front())) files.dictionary = std::exchange(entries, {}).front();
  for (const std::string& path : entries) files.entries.push_back(folder.relative(path));
  if (files.entries.empty() && files.dictionary.empty()) {
    throw Fault(arguments.folder +
                ": there are no words in this folder (entries.txt): name them with -e, or a dictionary with -d");
  }
  // Built or text; only texts can be edited on the page, and have to lie in its folder.
  // The command line counts before the settings of the folder.
  const std::string pairs = arguments.cooccurrence.empty() ? found.cooccurrence : arguments.cooccurrence;
  if (!pairs.empty() && is_built(pairs)) {
    files.built_cooccurrence = pairs;
  } else if (!pairs.empty()) {
    files.cooccurrence = folder.relative(pairs);
  }
  for (const std::string& path : arguments.graphs.empty() ? found.graphs : arguments.graphs) {
    files.graphs.push_back(folder.relative(path));
  }
  if (files.graphs.empty()) {
    throw Fault(arguments.folder +
                ": there are no graphs in this folder (input.txt, graphs.txt; of another format lexon-import makes "
                "some): name them with -i");
  }
  const std::string gold =
      arguments.gold.empty() ? first_that_is_there(found.folder, {"expected.txt", "gold.txt"}) : arguments.gold;
  if (!gold.empty()) files.gold = folder.relative(gold);
  return files;
}

// ---- Who may ask

// 192 bits, as hexadecimal digits.
std::string secret_word() {
  std::array<unsigned char, 24> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    throw Fault(std::string("no random numbers are to be had: ") + std::strerror(errno));
  std::string word;
  for (const unsigned char byte : bytes) {
    word += "0123456789abcdef"[byte >> 4];
    word += "0123456789abcdef"[byte & 15];
  }
  return word;
}

// Takes the same time wherever they differ.
bool is_same_word(std::string_view a, std::string_view b) {
  // The length of the word is no secret.
  if (a.size() != b.size()) return false;
  unsigned char difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

// Work of one page and kind: what was asked for last is wanted, and nothing before it.
class Lanes {
 public:
  // `turn` is the number that the page gave the request, since requests can overtake each other; 0: it gave none.
  [[nodiscard]] Wanted begin(const std::string& name, std::uint64_t turn, const std::atomic<bool>& is_ending) {
    const std::lock_guard lock(mutex_);
    auto lane = std::ranges::find(lanes_, name, &Lane::name);
    if (lane == lanes_.end()) {
      lanes_.push_front({name, std::make_shared<std::atomic<std::uint64_t>>(0)});
      // What works in it keeps its counter.
      if (lanes_.size() > kMostLanes) lanes_.pop_back();
    } else {
      lanes_.splice(lanes_.begin(), lanes_, lane);
    }
    const auto last = lanes_.front().last;
    const std::uint64_t mine = turn == 0 ? *last + 1 : turn;
    // A request that was overtaken finds that it is not wanted from the start.
    if (mine > *last) *last = mine;
    return [last, mine, &is_ending] { return *last == mine && !is_ending; };
  }

 private:
  struct Lane {
    std::string name;
    std::shared_ptr<std::atomic<std::uint64_t>> last;
  };
  std::mutex mutex_;
  std::list<Lane> lanes_;  // the last used first
};

// Why a request is not answered.
struct Refusal {
  int status;  // of HTTP
  std::string text;
};

// The server. Its handlers run on threads of the library, several at once.
class Site {
 public:
  Site(const Arguments& arguments, Folder& folder, ServeFiles files)
      : folder_(folder), place_(folder, std::move(files), arguments.limits), token_(secret_word()) {}

  // The port that it listens on. Throws Fault.
  int bind(int port);
  [[nodiscard]] std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + '/' + token_ + '/'; }
  // Until `stop`.
  void listen() {
    server_.listen_after_bind();
    is_over_ = true;
  }
  // The library passes over a stop that comes before it listens.
  void stop() {
    is_ending_ = true;
    while (!server_.is_running() && !is_over_) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    server_.stop();
  }

 private:
  using Request = httplib::Request;
  using Response = httplib::Response;

  // None: the request may be answered.
  [[nodiscard]] std::optional<Refusal> refusal_of(const Request& request) const;
  void get(const Request& request, Response& response) const;
  void post(const Request& request, Response& response);
  // These answer with a status of 200 unless they set another one. Null: what was asked for is not wanted any longer.
  [[nodiscard]] Json answer(const std::string& name, const Json& asked, int& status);
  [[nodiscard]] Json read(const std::string& path, int& status) const;
  [[nodiscard]] Json save(const Json& asked, int& status);
  [[nodiscard]] Json stamps(const Json& asked) const;
  // What stands in the address behind the secret word: empty, or from the slash on.
  [[nodiscard]] std::string rest_of(const std::string& path) const { return path.substr(token_.size() + 1); }

  Folder& folder_;
  Workplace place_;
  const std::string token_;
  httplib::Server server_;
  Lanes lanes_;
  std::mutex saving_;                   // between the look at what stands on the disk and the new file
  std::atomic<bool> is_ending_{false};  // work that is under way is not wanted any longer
  std::atomic<bool> is_over_{false};    // it listens no longer
  int port_ = 0;
};

void answer_json(httplib::Response& response, int status, const Json& json) {
  response.status = status;
  // Files need not be UTF-8, which JSON is.
  // Told with its charset the server does not pack it, which takes longer than the way.
  response.set_content(json.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json; charset=utf-8");
}

void answer_text(httplib::Response& response, int status, const std::string& text) {
  response.status = status;
  response.set_content(text + '\n', "text/plain; charset=utf-8");
}

int Site::bind(int port) {
  // Other programs must not be able to listen beside this one.
  server_.set_socket_options([](socket_t sock) {
    const int yes = 1;
    setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  // A request for a connection, and seconds to send it: nobody can keep the threads by saying nothing.
  server_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
  // A connection that is kept would hold its thread.
  server_.set_keep_alive_max_count(1);
  server_.set_read_timeout(kSecondsForRequest);
  server_.set_write_timeout(kSecondsForRequest);
  server_.set_payload_max_length(kMostRequestBytes);
  server_.set_default_headers({
      {"Cache-Control", "no-store"},
      {"Content-Security-Policy",
       // The editor brings styles of its own in the page, and nothing else that is not a file of the server.
       "default-src 'none'; script-src 'self'; style-src 'self' 'unsafe-inline'; img-src 'self' data:; "
       "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
      {"Cross-Origin-Opener-Policy", "same-origin"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
      {"Referrer-Policy", "no-referrer"},
      {"X-Content-Type-Options", "nosniff"},
  });
  // Before a byte of a request's body is read it is known whether it may be answered.
  server_.set_pre_routing_handler([this](const Request& request, Response& response) {
    const std::optional<Refusal> refusal = refusal_of(request);
    if (refusal) answer_text(response, refusal->status, refusal->text);
    if (!refusal && request.method == "GET") get(request, response);
    const bool is_answered = refusal || request.method == "GET";
    return is_answered ? httplib::Server::HandlerResponse::Handled : httplib::Server::HandlerResponse::Unhandled;
  });
  server_.Post(".*", [this](const Request& request, Response& response) { post(request, response); });
  server_.set_exception_handler([](const Request&, Response& response, std::exception_ptr thrown) {
    try {
      std::rethrow_exception(std::move(thrown));
    } catch (const std::bad_alloc&) {
      answer_json(response, 500, {{"error", "memory is exhausted"}});
    } catch (const std::exception& fault) {
      answer_json(response, 500, {{"error", std::string("this request failed: ") + fault.what()}});
    }
  });
  const char* const host = "127.0.0.1";
  port_ = port == 0 ? server_.bind_to_any_port(host) : server_.bind_to_port(host, port) ? port : -1;
  if (port_ <= 0) {
    throw Fault("port " + std::to_string(port) +
                " cannot be had: another program listens there; name another one, or none, with --port");
  }
  return port_;
}

std::optional<Refusal> Site::refusal_of(const Request& request) const {
  // A name of another site may lead here, with the browser none the wiser: the page would be one of that site.
  const std::string port = ':' + std::to_string(port_);
  const std::string host = request.get_header_value("Host");
  const bool is_mine =
      request.get_header_value_count("Host") == 1 && (host == "127.0.0.1" + port || host == "localhost" + port);
  if (!is_mine) return Refusal{421, "This is not the host of that name."};
  if (request.path.size() > kLongestAddress) return Refusal{414, "The address is too long."};
  const std::string_view path = request.path;
  const std::string_view word = path.substr(std::min<std::size_t>(1, path.size()));
  if (!is_same_word(word.substr(0, word.find('/')), token_)) {
    return Refusal{403, "The address lacks its secret word: open the one that lexon-lab serve has printed."};
  }
  // Browsers say which page asks; other programs need not.
  if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + host)
    return Refusal{403, "Other pages may not ask."};
  if (request.method == "GET") return std::nullopt;
  if (request.method != "POST") return Refusal{405, "Only GET and POST are understood."};
  const std::string site = request.get_header_value("Sec-Fetch-Site");
  if (!site.empty() && site != "same-origin") return Refusal{403, "Other pages may not ask."};
  // A form of another page cannot be sent as JSON.
  if (!request.get_header_value("Content-Type").starts_with("application/json"))
    return Refusal{415, "Requests are JSON."};
  // A length that is not known beforehand has no limit, nor has what is packed.
  if (!request.has_header("Content-Length") || request.has_header("Transfer-Encoding"))
    return Refusal{411, "Requests tell their length."};
  if (request.has_header("Content-Encoding")) return Refusal{415, "Requests are not compressed."};
  return std::nullopt;
}

void Site::get(const Request& request, Response& response) const {
  const std::string rest = rest_of(request.path);
  if (rest.empty()) return response.set_redirect('/' + token_ + '/');
  const std::string_view name = rest == "/" ? "index.html" : std::string_view(rest).substr(1);
  // The files are in the program; nothing of the disk is served.
  for (const PageFile& file : page_files()) {
    if (file.name != name) continue;
    response.status = 200;
    return response.set_content(file.content.data(), file.content.size(), std::string(file.type));
  }
  answer_text(response, 404, "There is no such page.");
}

void Site::post(const Request& request, Response& response) {
  const std::string rest = rest_of(request.path);
  if (!rest.starts_with("/api/")) return answer_text(response, 404, "There is no such page.");
  int status = 200;
  try {
    // Asked at each object and list, before it is built.
    const auto bounded = [](int depth, Json::parse_event_t, Json&) {
      if (depth > kDepthOfRequests) throw Fault("the request is nested too deep");
      return true;
    };
    const Json asked = Json::parse(request.body, bounded);
    const Json result = answer(rest.substr(5), asked, status);
    answer_json(response, status, result.is_null() ? Json{{"superseded", true}} : result);
  } catch (const Json::exception& fault) {
    answer_json(response, 400, {{"error", std::string("the request is not understood: ") + fault.what()}});
  } catch (const Fault& fault) {
    answer_json(response, 422, {{"error", fault.what()}});
  }
}

Json Site::answer(const std::string& name, const Json& asked, int& status) {
  // Files are the same for every page; the rest is work that a page gives up by asking anew.
  if (name == "read") return read(asked.at("path"), status);
  if (name == "save") return save(asked, status);
  if (name == "stamps") return stamps(asked);
  const std::string client = asked.at("client");
  // They are kept as the name of a lane.
  if (client.size() > kLongestName || name.size() > kLongestName) throw Fault("the name of the page is too long");
  // The page has no memory here: each request brings what it has not saved.
  Unsaved unsaved;
  if (asked.contains("texts")) {
    if (asked["texts"].size() > kMostFiles) throw Fault("too many texts at once");
    for (const auto& [path, text] : asked["texts"].items()) {
      if (!is_path_inside(path))
        throw Fault("\"" + path.substr(0, 200) + "\" is no path of a file in the project folder");
      // Throws for what is no text.
      unsaved[path] = text;
    }
  }
  const Wanted wanted = lanes_.begin(client + '/' + name, asked.value("turn", std::uint64_t{0}), is_ending_);
  const auto line = [&asked] { return asked.at("line").get<std::int64_t>(); };
  if (name == "files") {
    Json files = place_.files(unsaved, wanted);
    if (files.is_null()) return files;
    files["folder"] = folder_.path();
    files["editor"] = std::ranges::any_of(page_files(), [](const PageFile& file) { return file.name == "editor.js"; });
    return files;
  }
  if (name == "render") return place_.render(unsaved, asked.at("graphs"), line(), wanted);
  if (name == "view") return place_.view(unsaved, asked.at("graphs"), line(), wanted);
  if (name == "check") return place_.check(unsaved, wanted);
  if (name == "run") return place_.run(unsaved, asked.at("from"), wanted);
  status = 404;
  return {{"error", "there is nothing of this name"}};
}

Json Site::read(const std::string& path, int& status) const {
  FolderFault fault;
  const std::optional<FolderText> read = folder_.read(path, fault);
  if (!read) {
    status = fault.is_missing ? 404 : 403;
    return {{"error", fault.text}};
  }
  // JSON would put other bytes in the place of such, and a save would write these.
  if (const std::int64_t line = line_that_is_no_text(read->text); line != 0) {
    status = 415;
    return {{"error", path + ':' + std::to_string(line) +
                          ": here stands what is no UTF-8, so that a page would damage it: the file is used as it is, "
                          "and can be edited once it is UTF-8 (iconv -f latin1 -t utf8)"}};
  }
  return {{"path", path}, {"text", read->text}, {"stamp", read->stamp}};
}

Json Site::save(const Json& asked, int& status) {
  const std::string path = asked.at("path");
  const std::string text = asked.at("text");
  if (text.size() > Folder::kMostBytes) throw Fault(path + ": is too large to be saved from a page");
  if (line_that_is_no_text(text) != 0) throw Fault(path + ": what is to be saved is no text");
  const std::lock_guard lock(saving_);
  FolderFault fault;
  // What a page cannot show it cannot have changed.
  const std::optional<FolderText> now = folder_.read(path, fault);
  // The page refused to open it, so this is another program's request.
  if (now && line_that_is_no_text(now->text) != 0) throw Fault(path + ": is no UTF-8 on the disk, and stays as it is");
  bool is_changed = false;
  const std::optional<std::string> stamp = folder_.save(path, text, asked.at("stamp"), fault, is_changed);
  // By this the page knows the file from now on.
  if (stamp) return {{"stamp", *stamp}};
  status = is_changed ? 409 : 403;
  Json result{{"error", fault.text}};
  if (is_changed) result["stamp"] = now ? now->stamp : std::string();
  return result;
}

Json Site::stamps(const Json& asked) const {
  if (asked.at("paths").size() > kMostFiles) throw Fault("too many paths at once");
  // Of a file that is not there, or cannot be read, the stamp is empty.
  Json stamps = Json::object();
  for (const std::string path : asked.at("paths")) {
    FolderFault fault;
    const std::optional<FolderText> read = folder_.read(path, fault);
    stamps[path] = read ? read->stamp : std::string();
  }
  return {{"stamps", stamps}};
}

// ---- Begin and end

// Other users can see the words of a command, so those that open the browser name a file that only this user can read,
// which leads to the address.
std::string write_way(const TemporaryFolder& folder, const std::string& address) {
  std::string path = folder.path() + "/lexon.html";
  text_file_write(path,
                  "<!doctype html><meta charset=\"utf-8\"><title>Lexon</title>"
                  "<meta http-equiv=\"refresh\" content=\"0;url=" +
                      address + "\"><a href=\"" + address + "\">Lexon</a>\n");
  return path;
}

int run_serve(const Arguments& arguments) {
  ProjectFiles found = project_files_of(arguments.folder);
  if (!found.fault.empty()) throw Fault(found.fault);
  if (!arguments.graphs.empty()) found.graphs.clear();
  Folder folder(folder_of_page(found, arguments.folder));
  Site site(arguments, folder, files_of(arguments, found, folder));

  // Every thread leaves these to the wait below.
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGINT, SIGTERM}) sigaddset(&ending, signal);
  // Under nohup the program outlives its terminal.
  struct sigaction hangup {};
  if (sigaction(SIGHUP, nullptr, &hangup) == 0 && hangup.sa_handler != SIG_IGN) sigaddset(&ending, SIGHUP);
  // In front of the first thread: threads take over the mask of the one that starts them.
  pthread_sigmask(SIG_BLOCK, &ending, nullptr);

  site.bind(arguments.port);
  std::cout << site.address() << std::endl;
  tell_line("The page sees the folder " + folder.path() +
            " alone. Who has the address can change its files. Ctrl-C ends it.");
  // The browser comes last: the address has to be answered by then.
  std::thread listening([&site] { site.listen(); });
  std::optional<TemporaryFolder> way;
  if (arguments.opens) browser_show(write_way(way.emplace(), site.address()), "open the address above yourself");
  int signal = 0;
  // Here the program is, as long as it serves.
  sigwait(&ending, &signal);
  // A second one ends the program at once.
  pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
  site.stop();
  listening.join();
  tell_line("ended");
  return kDone;
}

}  // namespace

Command add_serve(CLI::App& app) {
  CLI::App& command =
      add_command(app, "serve", "Open a page to work in: graphs, rules and words, and what comes of them");
  const auto arguments = std::make_shared<Arguments>();
  arguments->limits.seconds = 5;
  add_option(command, "FOLDER", arguments->folder, "The project: files named as in the examples, or by its lexon.json",
             {.shows_default = true});
  add_option(command, "-r,--rules", arguments->rules, "The rules, as text or as a source (.lxr)");
  add_option(command, "-e,--entries", arguments->entries, "Entry text; may be repeated, and counts as one",
             {.one_value = true});
  add_option(command, "-d,--dict", arguments->dictionary, "A dictionary that is built, in place of entries");
  add_option(command, "-c,--cr", arguments->cooccurrence, "The co-occurrence dictionary, text or built");
  add_option(command, "-i,--input", arguments->graphs, "Graphs; may be repeated", {.one_value = true});
  add_option(command, "-g,--gold", arguments->gold, "What is expected, as for lexon-lab test");
  add_option(command, "-T,--time", arguments->limits.seconds, "Seconds for each sentence",
             {.shows_default = true, .range = {{1, 600}}});
  add_option(command, "--steps", arguments->limits.steps, "Steps of the search for each sentence; 0: no limit",
             {.not_negative = true});
  add_option(command, "--blocks", arguments->blocks, "The memory that runs will have, as for lexon",
             {.range = {{1, 65535}}});
  add_option(command, "--port", arguments->port, "The port to listen on; 0: any that is free",
             {.shows_default = true, .range = {{0, 65535}}});
  add_flag(command, "--open", arguments->opens, "Open the page in the browser");
  return {&command, [arguments] { return run_serve(*arguments); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
