// lexon-lab lsp: a language server over standard input and output.
//
// One thread reads messages and notes what is cancelled; one answers them in order; one looks at projects that have
// changed, once the keys rest, and publishes what it finds. Answers never wait for the third.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <thread>
#include <unordered_map>

#include "data/utf8.hpp"
#include "front/process.hpp"
#include "lab/commands.hpp"
#include "lab/lsp_frames.hpp"
#include "lab/lsp_json.hpp"
#include "lab/lsp_model.hpp"
#include "lab/lsp_outline.hpp"
#include "lab/lsp_watch.hpp"
#include "lab/options.hpp"
#include "lab/text_file.hpp"
#include "source/source_text.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

using Json = nlohmann::json;

// The codes of the protocol.
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kInternalError = -32603;
constexpr int kNotInitialized = -32002;
constexpr int kRequestCancelled = -32800;
constexpr int kRequestFailed = -32803;

// Thrown by what answers a request: the editor gets it in place of a result.
struct RequestError {
  int code;
  std::string text;
};

constexpr std::size_t kMostFindings = 1000;      // of one file; an editor shows no more anyway
constexpr std::size_t kMostCompletions = 500;    // the rest comes when more is typed
constexpr std::chrono::milliseconds kRest{200};  // of the keys, till findings are looked for

// ---- Between the project and the protocol

Json json_of(const TextPosition& position) {
  return {{"line", position.line}, {"character", position.character}};
}

Json range_of(const LinedText& text, std::size_t line, std::size_t begin, std::size_t end) {
  return {{"start", json_of(text.position(line, begin))}, {"end", json_of(text.position(line, end))}};
}

Json location_of(const NameUse& use) {
  return {{"uri", use.file->uri}, {"range", range_of(*use.text, use.line, use.part.begin, use.part.end)}};
}

TextPosition position_of(const Json& json) {
  return {json.at("line").get<std::int64_t>(), json.at("character").get<std::int64_t>()};
}

// The byte of a column in characters, which counts from 1.
std::size_t byte_of_column(std::string_view line, std::size_t column) {
  std::size_t at = 0;
  for (; column > 1 && at < line.size(); --column) at += std::max<std::size_t>(utf8_first(line.substr(at)).length, 1);
  return std::min(at, line.size());
}

// Bytes of a line that a finding is about.
struct Place {
  std::size_t line;  // from 0
  std::size_t begin;
  std::size_t end;  // behind the last
};

// The whole line if the finding has no column, the begin of the file if it has no line. `check` counts lines and columns
// from 1, columns in characters.
Place place_of(const Finding& finding, const LinedText& text) {
  if (finding.line < 1) return {0, 0, 0};
  const auto line = static_cast<std::size_t>(finding.line) - 1;
  const std::string_view shown = text.line(line);
  if (finding.column == 0) return {line, 0, shown.size()};
  const std::size_t begin = byte_of_column(shown, finding.column);
  return {line, begin, std::max(byte_of_column(shown, finding.end_column), begin)};
}

// Does the place of a finding still hold what its remedy is for?
bool fix_fits(const Finding& finding, const LinedText& text, const Place& place) {
  if (finding.fix.kind == Fix::Kind::none) return false;
  if (finding.fix.old.empty() || finding.fix.kind == Fix::Kind::new_entry) return true;
  return text.line(place.line).substr(place.begin, place.end - place.begin) == finding.fix.old;
}

// Markdown as plain text. What stands as code keeps its asterisks.
std::string without_marks(std::string_view markdown) {
  std::string plain;
  bool is_code = false;
  for (const char c : markdown) {
    if (c == '`') is_code = !is_code;
    if (c != '`' && (c != '*' || is_code)) plain += c;
  }
  return plain;
}

// ---- The server

// What an editor has open.
// Written by the thread that answers alone.
struct OpenDocument {
  std::string uri;
  std::string path;
  std::string language;      // as the editor calls it; most editors call all of our files the same
  std::int64_t version = 0;  // which a rename hands back, so that the editor knows a text that has changed meanwhile
};

class Server {
 public:
  Server(std::FILE* in, std::FILE* out) : in_(in), writer_(out) {}

  // Reads till the end; the status of the program.
  int run() {
    // Reading goes on while a request is answered, so that one can be cancelled.
    std::thread answering([this] { answer_all(); });
    std::string text;
    for (bool goes_on = true; goes_on;) {
      // A message of a wrong form is answered with an error, and the one behind it is read.
      switch (frame_read(in_, text)) {
        case Frame::end: goes_on = false; break;
        case Frame::bad: send_error(nullptr, kInvalidRequest, text); break;
        case Frame::message: goes_on = take(text); break;
      }
    }
    {
      const std::scoped_lock lock(mutex_);
      is_over_ = true;
    }
    wake_.notify_all();
    answering.join();
    watch_.reset();
    // The protocol wants "shutdown" in front of "exit"; anything else is a failure.
    return is_exited_ && is_shut_down_ ? kDone : kFailed;
  }

 private:
  // ---- Messages

  // Names of files need not be UTF-8, which JSON is.
  // Such bytes are shown as a sign of their own.
  static std::string text_of(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }
  void send(const Json& message) { writer_.write(text_of(message)); }
  void send_error(const Json& id, int code, const std::string& text) {
    send({{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", text}}}});
  }
  void notify(const char* method, Json params) {
    send({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
  }

  // Of the thread that reads: puts a message behind those that wait to be answered. False behind "exit".
  bool take(const std::string& text) {
    Json message = Json::parse(text, nullptr, false);
    if (message.is_discarded()) {
      send_error(nullptr, -32700, "the message is no JSON");
      return true;
    }
    // To what the server has asked, which it does not wait for.
    const bool is_answer =
        message.is_object() && !message.contains("method") && (message.contains("result") || message.contains("error"));
    if (is_answer) return true;
    const auto method = message.is_object() ? message.find("method") : message.end();
    if (!message.is_object() || method == message.end() || !method->is_string()) {
      send_error(message.is_object() ? message.value("id", Json()) : Json(), kInvalidRequest,
                 "a message is an object with a \"method\"");
      return true;
    }
    const std::string name = method->get<std::string>();
    const auto id = message.find("id");
    if (id != message.end() && !id->is_string() && !id->is_number_integer()) {
      send_error(nullptr, kInvalidRequest, "\"id\" is a number or a string");
      return true;
    }
    const std::scoped_lock lock(mutex_);
    if (name == "$/cancelRequest") {
      const auto params = message.find("params");
      if (params == message.end() || !params->is_object()) return true;
      // Of a request that was answered already there is nothing to be kept.
      const std::string cancelled = params->value("id", Json()).dump();
      if (pending_.contains(cancelled)) cancelled_.insert(cancelled);
      return true;
    }
    // Ids are kept as JSON: the number 1 and the text "1" are two.
    if (id != message.end()) pending_.insert(id->dump());
    queue_.push_back(std::move(message));
    wake_.notify_all();
    return name != "exit";
  }

  // Of the thread that answers: one message after the other, to the end of the input.
  void answer_all() {
    while (true) {
      Json message;
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return is_over_ || !queue_.empty(); });
        // What came before the end is still answered.
        if (queue_.empty()) return;
        message = std::move(queue_.front());
        queue_.pop_front();
      }
      answer(message);
      if (is_exited_) return;
    }
  }

  // Throws if the request that is being answered was cancelled.
  void refuse_if_cancelled() {
    const std::scoped_lock lock(mutex_);
    if (cancelled_.contains(current_)) throw RequestError{kRequestCancelled, "the request was cancelled"};
  }

  // In the midst of what may be much.
  void refuse_now_and_then(std::size_t count) {
    constexpr std::size_t kNowAndThen = 1000;
    if (count % kNowAndThen == 0) refuse_if_cancelled();
  }

  // Whatever is wrong with a message, a request gets an answer and the server goes on; of a notification standard error
  // tells.
  void answer(const Json& message) {
    const std::string method = message.at("method").get<std::string>();
    const bool is_request = message.contains("id");
    const Json id = is_request ? message.at("id") : Json();
    // By this the answer finds out that its request was cancelled.
    current_ = is_request ? id.dump() : std::string();
    const auto refuse = [&](int code, const std::string& text) {
      if (is_request) {
        send_error(id, code, text);
      } else {
        tell_line("lexon-lab lsp: " + method + ": " + text);
      }
    };
    try {
      if (is_request) refuse_if_cancelled();
      // Some requests may leave their parameters out.
      static const Json kNoParams = Json::object();
      const auto params = message.find("params");
      const Json& given = params == message.end() || params->is_null() ? kNoParams : *params;
      if (is_request) {
        const std::string result = request(method, given);
        // Put together as text, since long answers come as text.
        writer_.write(R"({"jsonrpc":"2.0","id":)" + id.dump() + R"(,"result":)" + result + '}');
      } else {
        notified(method, given);
      }
    } catch (const RequestError& error) {
      refuse(error.code, error.text);
    } catch (const Json::exception& error) {
      refuse(kInvalidParams, std::string("the parameters are not those of this request: ") + error.what());
    } catch (const std::exception& error) {
      refuse(kInternalError, error.what());
    }
    if (!is_request) return;
    const std::scoped_lock lock(mutex_);
    pending_.erase(current_);
    cancelled_.erase(current_);
  }

  // The result as text. Throws what `answer` makes an error of.
  std::string request(const std::string& method, const Json& params) {
    // One function for each method, by its name in the protocol.
    using Answer = Json (Server::*)(const Json&);
    static const std::unordered_map<std::string, Answer> kAnswers = {
        {"textDocument/hover", &Server::hover},
        {"textDocument/definition", &Server::definition},
        {"textDocument/prepareRename", &Server::prepare_rename},
        {"textDocument/completion", &Server::completion},
        {"textDocument/codeAction", &Server::code_action},
        {"textDocument/foldingRange", &Server::folding_range},
    };
    // These write their text themselves.
    using LongAnswer = std::string (Server::*)(const Json&);
    static const std::unordered_map<std::string, LongAnswer> kLongAnswers = {
        {"textDocument/references", &Server::references},
        {"textDocument/rename", &Server::rename},
        {"textDocument/documentSymbol", &Server::document_symbol},
    };
    // The order of these questions is that of the protocol's errors.
    if (is_shut_down_) throw RequestError{kInvalidRequest, "the server is shut down"};
    if (method == "initialize") {
      if (is_initialized_) throw RequestError{kInvalidRequest, "the server is initialized already"};
      return text_of(initialize(params));
    }
    if (!is_initialized_) throw RequestError{kNotInitialized, "the first request is \"initialize\""};
    if (method == "shutdown") {
      is_shut_down_ = true;
      // Waits for the look that is under way: nothing is published behind the answer.
      watch_.reset();
      return "null";
    }
    if (const auto found = kLongAnswers.find(method); found != kLongAnswers.end())
      return (this->*found->second)(params);
    const auto found = kAnswers.find(method);
    if (found == kAnswers.end()) throw RequestError{kMethodNotFound, "there is no method " + method};
    return text_of((this->*found->second)(params));
  }

  // Others than these are nothing that a server has to know.
  void notified(const std::string& method, const Json& params) {
    using Note = void (Server::*)(const Json&);
    static const std::unordered_map<std::string, Note> kNotes = {
        {"initialized", &Server::register_watchers},
        {"textDocument/didOpen", &Server::did_open},
        {"textDocument/didChange", &Server::did_change},
        {"textDocument/didClose", &Server::did_close},
        {"textDocument/didSave", &Server::did_change_files},
        {"workspace/didChangeWatchedFiles", &Server::did_change_files},
        {"workspace/didChangeConfiguration", &Server::did_change_settings},
        {"workspace/didChangeWorkspaceFolders", &Server::did_change_folders},
    };
    if (method == "exit") {
      is_exited_ = true;
      return;
    }
    // The protocol has such notifications dropped.
    if (!is_initialized_ || is_shut_down_) return;
    if (const auto found = kNotes.find(method); found != kNotes.end()) (this->*found->second)(params);
  }

  // ---- Beginning

  // A folder that the editor has opened: no project lies above it. Others than those of files are passed over.
  void add_folder(const Json& uri) {
    if (!uri.is_string()) return;
    if (const auto path = path_of_uri(uri.get<std::string>())) folders_.push_back(file_key(*path));
  }

  Json initialize(const Json& params) {
    // A second try begins anew.
    folders_.clear();
    if (const auto list = params.find("workspaceFolders"); list != params.end() && list->is_array()) {
      for (const Json& folder : *list) add_folder(folder.at("uri"));
    }
    // Older editors name one folder, still older ones its path.
    if (folders_.empty() && params.contains("rootUri")) add_folder(params.at("rootUri"));
    if (folders_.empty() && params.contains("rootPath") && params.at("rootPath").is_string())
      folders_.push_back(file_key(params.at("rootPath").get<std::string>()));
    if (params.contains("initializationOptions")) read_settings(params.at("initializationOptions"));
    const Json capabilities = params.value("capabilities", Json::object());
    // A capability that the editor does not name it does not have.
    const auto can = [&capabilities](const char* pointer) {
      const Json::json_pointer at(pointer);
      return capabilities.contains(at) && capabilities.at(at).is_boolean() && capabilities.at(at).get<bool>();
    };
    // What the editor can take decides about the form of answers.
    has_trees_ = can("/textDocument/documentSymbol/hierarchicalDocumentSymbolSupport");
    has_versions_ = can("/workspace/workspaceEdit/documentChanges");
    watches_files_ = can("/workspace/didChangeWatchedFiles/dynamicRegistration");
    const Json::json_pointer formats("/textDocument/hover/contentFormat");
    is_markdown_ = capabilities.contains(formats) && capabilities.at(formats).is_array() &&
                   std::ranges::find(capabilities.at(formats), Json("markdown")) != capabilities.at(formats).end();
    // From here on another thread looks at projects, and publishes what it finds.
    watch_ = std::make_unique<Watch>(
        [this](const ProjectFiles& files, const Overlay& unsaved, const std::shared_ptr<const Analysis>& analysis) {
          publish(files, unsaved, analysis);
        });
    // Parameters of another form have thrown: the editor may try again.
    is_initialized_ = true;
    return {{"serverInfo", {{"name", "lexon-lab lsp"}, {"version", LEXON_VERSION}}},
            {"capabilities",
             {{"positionEncoding", "utf-16"},
              {"textDocumentSync", {{"openClose", true}, {"change", 2}, {"save", {{"includeText", false}}}}},
              {"hoverProvider", true},
              {"definitionProvider", true},
              {"referencesProvider", true},
              {"renameProvider", {{"prepareProvider", true}}},
              {"completionProvider",
               {{"triggerCharacters", {",", ":", "^", "+", "-", "@", "<", ">", "{", "\"", "[", "(", ".", "%"}}}},
              {"codeActionProvider", {{"codeActionKinds", Json::array({"quickfix"})}}},
              {"documentSymbolProvider", true},
              {"foldingRangeProvider", true},
              {"workspace", {{"workspaceFolders", {{"supported", true}, {"changeNotifications", true}}}}}}}};
  }

  // Asks the editor to tell of files that others change. One that cannot is believed once it saves something.
  void register_watchers(const Json& /*params*/) {
    if (!watches_files_) return;
    // Names as projects have them by custom; what lexon.json calls otherwise is seen when it is saved here.
    Json watchers = Json::array();
    for (const char* pattern : {"**/*.txt", "**/*.lxr", "**/*.rules", "**/*.tsv", "**/*.entries", "**/*.graphs",
                                "**/lexon.json", "**/coverage.json"}) {
      watchers.push_back(Json::object({{"globPattern", pattern}}));
    }
    send({{"jsonrpc", "2.0"},
          {"id", "watch"},
          {"method", "client/registerCapability"},
          {"params",
           {{"registrations", Json::array({{{"id", "watch"},
                                            {"method", "workspace/didChangeWatchedFiles"},
                                            {"registerOptions", {{"watchers", watchers}}}}})}}}});
  }

  // {"project": as lexon.json, "delay": milliseconds}; what is missing or of another form stays as it was.
  void read_settings(const Json& settings) {
    if (!settings.is_object()) return;
    if (const auto project = settings.find("project"); project != settings.end())
      settings_ = project->is_object() && !project->empty() ? project->dump() : std::string();
    if (const auto rest = settings.find("delay"); rest != settings.end() && rest->is_number_integer()) {
      constexpr std::int64_t kLongest = 60000;
      // How long a text has to rest before it is looked at.
      rest_ = std::chrono::milliseconds(std::clamp<std::int64_t>(rest->get<std::int64_t>(), 0, kLongest));
    }
  }

  // ---- Documents and their projects

  void did_open(const Json& params) {
    const Json& given = params.at("textDocument");
    // Opened again under the same path it takes the place of the one before.
    OpenDocument document;
    document.uri = given.at("uri").get<std::string>();
    const auto path = path_of_uri(document.uri);
    if (!path) return;  // not in a file: it belongs to no project
    document.path = *path;
    document.language = given.value("languageId", "");
    document.version = given.value("version", std::int64_t{0});
    store_.open(*path, document.uri, given.at("text").get<std::string>());
    {
      const std::scoped_lock lock(documents_mutex_);
      documents_[file_key(*path)] = document;
    }
    find_projects();
  }

  void did_change(const Json& params) {
    const Json& given = params.at("textDocument");
    const std::string& uri = given.at("uri").get_ref<const std::string&>();
    const auto path = path_of_uri(uri);
    // A change of a text that was never opened has nothing that it could change.
    if (!path || !store_.is_open(*path)) return;
    // A change without a range is the whole text; those in front of it are of no interest any more.
    std::shared_ptr<const LinedText> before = store_.text(*path);
    std::optional<TextEdit> edit;
    for (const Json& change : params.at("contentChanges")) {
      const std::string& text = change.at("text").get_ref<const std::string&>();
      if (const auto range = change.find("range"); range != change.end()) {
        // The places of each change count in the text that the one before has left.
        if (!edit) edit.emplace(*before);
        edit->replace(position_of(range->at("start")), position_of(range->at("end")), text);
      } else {
        edit.reset();
        before = std::make_shared<const LinedText>(std::make_shared<const std::string>(text));
      }
    }
    store_.open(*path, uri, edit ? edit->text() : before->text());
    {
      const std::scoped_lock lock(documents_mutex_);
      documents_[file_key(*path)].version = given.value("version", std::int64_t{0});
    }
    // Of lexon.json it is not only the findings that may change, but which files belong together.
    // Then all projects are found anew.
    const bool is_settings = std::filesystem::path(*path).filename() == kProjectFile;
    if (is_settings) return find_projects();
    const std::string key = file_key(*path);
    for (const auto& [name, files] : projects_) {
      // A file may belong to several projects.
      if (has_file(name, files, key)) watch_->ask(name, files, store_.unsaved(), rest_);
    }
  }

  void did_close(const Json& params) {
    const auto path = path_of_uri(params.at("textDocument").at("uri").get<std::string>());
    if (!path) return;
    store_.close(*path);
    {
      const std::scoped_lock lock(documents_mutex_);
      documents_.erase(file_key(*path));
    }
    find_projects();
  }

  // Whatever has changed on the disk, and where: marks of files tell what has to be read again.
  void did_change_files(const Json& /*params*/) { find_projects(); }

  void did_change_settings(const Json& params) {
    // Some editors send the section by its name, some what is in it.
    const Json& settings = params.contains("settings") ? params.at("settings") : params;
    read_settings(settings.is_object() && settings.contains("lexon") ? settings.at("lexon") : settings);
    find_projects();
  }

  void did_change_folders(const Json& params) {
    const Json& event = params.at("event");
    for (const Json& folder : event.at("removed")) {
      if (const auto path = path_of_uri(folder.at("uri").get<std::string>())) std::erase(folders_, file_key(*path));
    }
    for (const Json& folder : event.at("added")) add_folder(folder.at("uri"));
    find_projects();
  }

  // Does the project read this file? Sources tell what they include once they were looked at.
  bool has_file(const std::string& name, const ProjectFiles& files, const std::string& key) {
    const std::vector<std::string> keys = files.keys();
    if (std::ranges::find(keys, key) != keys.end()) return true;
    // None before the first look has ended.
    const auto analysis = analysis_of(name);
    return analysis != nullptr && std::ranges::any_of(analysis->sources, [&key](const std::string& source) {
             return file_key(source) == key;
           });
  }

  std::shared_ptr<const Analysis> analysis_of(const std::string& name) {
    const std::scoped_lock lock(documents_mutex_);
    const auto found = analyses_.find(name);
    return found == analyses_.end() ? nullptr : found->second;
  }

  // Projects are told apart by their rules, so that two files of rules in a folder are two projects.
  static std::string name_of(const ProjectFiles& files) {
    return files.rules.empty() ? files.folder : file_key(files.rules);
  }

  // The projects of all open documents, found anew, and looked at.
  void find_projects() {
    // The settings of a project are open like its texts, and belong to all that lies below them.
    std::map<std::string, ProjectFiles> found;
    // By document, the name of its project.
    std::map<std::string, std::string> owners;
    for (const auto& [key, document] : documents_) {
      if (std::filesystem::path(key).filename() == kProjectFile) continue;
      // The files on the disk are looked at each time: others may have come.
      ProjectFiles files = files_for(document, key);
      const std::string name = name_of(files);
      owners[key] = name;
      found.try_emplace(name, std::move(files));
    }
    {
      const std::scoped_lock lock(documents_mutex_);
      projects_.swap(found);
    }
    for (const auto& [name, files] : found) {
      // `found` holds the projects of before by now.
      if (!projects_.contains(name)) drop_project(name);
    }
    owners_ = std::move(owners);
    for (const auto& [name, files] : projects_) {
      if (!files.fault.empty()) notify("window/showMessage", {{"type", 1}, {"message", files.fault}});
      watch_->ask(name, files, store_.unsaved(), std::chrono::milliseconds(0));
    }
  }

  // The project of a document: that of the settings if it names it, else that of its folder or one above, up to the
  // folder that the editor has opened.
  ProjectFiles files_for(const OpenDocument& document, const std::string& key) {
    std::string top;
    for (const std::string& folder : folders_) {
      // The innermost of the opened folders counts.
      if ((key + '/').starts_with(folder + '/') && folder.size() > top.size()) top = folder;
    }
    // The editor's settings hold for the folder that it has opened, and for the files that they name.
    ProjectFiles files;
    if (!settings_.empty() && !top.empty()) {
      files = project_files_from(top, settings_, "the settings", &store_.unsaved());
      const std::vector<std::string> keys = files.keys();
      if (std::ranges::find(keys, key) != keys.end()) return files;
    }
    files = project_files_of(project_folder_of(key, top), &store_.unsaved());
    // The folder's own project names the file.
    if (has_file(name_of(files), files, key)) return files;
    if (is_included(files, key)) return files;
    // A file that nobody names joins the others of its folder.
    switch (kind_of(document)) {
      case TextKind::graphs: files.graphs.push_back(document.path); break;
      case TextKind::entries: files.words.push_back(document.path); break;
      case TextKind::cooccurrence: files.cooccurrence = document.path; break;
      default: files.rules = document.path; break;
    }
    return files;
  }

  // Does the source include this file? Asked only of files that no look has shown yet.
  bool is_included(const ProjectFiles& files, const std::string& key) {
    if (!files.rules.ends_with(kSourceExtension)) return false;
    // A whole expansion for one question, which is asked once a file.
    const Expansion expansion = expand_source(files.rules, store_.unsaved().lookup());
    return std::ranges::any_of(expansion.map.files,
                               [&key](const MappedFile& file) { return file_key(file.path) == key; });
  }

  // Of a file that no project names: by the editor's language, else by its name.
  static TextKind kind_of(const OpenDocument& document) {
    const std::string name = std::filesystem::path(document.path).filename().string();
    if (document.language == "lexon-graph") return TextKind::graphs;
    if (document.language == "lexon-dictionary")
      return name.find("cr.") != std::string::npos ? TextKind::cooccurrence : TextKind::entries;
    if (document.language == "lexon-rules" || name.ends_with(kSourceExtension)) return TextKind::rules;
    if (name.find("rules") != std::string::npos) return TextKind::rules;
    if (name == "cr.txt" || name.ends_with("-cr.txt")) return TextKind::cooccurrence;
    if (name.find("entries") != std::string::npos) return TextKind::entries;
    const bool is_graph =
        name.find("graph") != std::string::npos || name.starts_with("input") || name.ends_with(".sem");
    return is_graph ? TextKind::graphs : TextKind::rules;
  }

  // Takes back what was told of a project that has no open document any more.
  void drop_project(const std::string& name) {
    watch_->forget(name);
    const std::scoped_lock lock(documents_mutex_);
    // The lock is held over both, so that `publish` sees all of a project or none of it.
    analyses_.erase(name);
    std::erase_if(published_, [&](const auto& each) {
      if (each.second.project != name) return false;
      // An empty list takes away what the editor shows.
      notify("textDocument/publishDiagnostics", {{"uri", each.second.uri}, {"diagnostics", Json::array()}});
      return true;
    });
  }

  // ---- Findings

  Json diagnostic_of(const Finding& finding, const LinedText& text) {
    const Place place = place_of(finding, text);
    // The numbers of the protocol: error, warning, information.
    const int severity = finding.level == Level::error ? 1 : finding.level == Level::warning ? 2 : 3;
    std::string message = finding.text;
    if (!finding.remedy.empty()) message += "\nfix: " + finding.remedy;
    return {{"range", range_of(text, place.line, place.begin, place.end)},
            {"severity", severity},
            {"code", finding.code},
            {"source", "lexon"},
            {"message", message}};
  }

  // In the thread of the watch. Files without findings are told too: they may have had some.
  void publish(const ProjectFiles& files, const Overlay& unsaved, const std::shared_ptr<const Analysis>& analysis) {
    const std::string name = name_of(files);
    // By key, since findings call files as the project does.
    std::map<std::string, std::vector<const Finding*>> by_file;
    // Each file gets a list, empty or not.
    for (const std::string& key : files.keys()) by_file[key];
    for (const std::string& source : analysis->sources) by_file[file_key(source)];
    for (const Finding& finding : analysis->findings) by_file[file_key(finding.file)].push_back(&finding);
    {
      const std::scoped_lock lock(documents_mutex_);
      if (!projects_.contains(name)) return;
      analyses_[name] = analysis;
    }
    for (auto& [key, findings] : by_file) {
      // The text that was looked at: what the editor has now may be another one already.
      std::shared_ptr<const std::string> shown = unsaved.find(key);
      if (shown == nullptr) {
        try {
          shown = std::make_shared<const std::string>(text_file_read(key));
        } catch (const Fault&) {
          shown = std::make_shared<const std::string>();
        }
      }
      const LinedText text(shown);
      // Of too many the errors are kept.
      if (findings.size() > kMostFindings)
        std::ranges::stable_sort(findings, {}, [](const Finding* finding) { return finding->level; });
      Json diagnostics = Json::array();
      for (const Finding* finding : findings) {
        if (diagnostics.size() == kMostFindings) break;
        diagnostics.push_back(diagnostic_of(*finding, text));
      }
      if (findings.size() > kMostFindings) {
        diagnostics.push_back({{"range", range_of(text, 0, 0, 0)},
                               {"severity", 3},
                               {"source", "lexon"},
                               {"message", "and " + std::to_string(findings.size() - kMostFindings) +
                                               " more findings: lexon-lab check shows all"}});
      }
      Json params{{"uri", uri_of_path(key)}, {"diagnostics", std::move(diagnostics)}};
      // Told while the lock is held: else what was found could come behind the news that its project is closed, and stay.
      const std::scoped_lock lock(documents_mutex_);
      if (!projects_.contains(name)) return;
      Published& before = published_[key];
      // Of a document that was closed the editor knows the name that it gave it.
      if (const auto document = documents_.find(key); document != documents_.end()) {
        params["uri"] = document->second.uri;
      } else if (!before.uri.empty()) {
        params["uri"] = before.uri;
      }
      // A file of several projects shows what the first of them finds.
      const bool is_other = !before.project.empty() && before.project != name && analyses_.contains(before.project);
      // The rules are what a project is told apart by, so they show their own findings.
      if (is_other && key != file_key(files.rules)) continue;
      // Most looks find what the one before has found, and an editor draws anew what it is told.
      const std::size_t hash = std::hash<std::string>()(params.dump(-1, ' ', false, Json::error_handler_t::replace));
      const bool is_same = before.hash == hash && before.project == name;
      const bool is_renamed = !before.uri.empty() && before.uri != params["uri"];
      if (is_renamed) notify("textDocument/publishDiagnostics", {{"uri", before.uri}, {"diagnostics", Json::array()}});
      before = {name, params["uri"], hash, analysis, text.shared()};
      if (!is_same) notify("textDocument/publishDiagnostics", std::move(params));
    }
  }

  // ---- Requests about a place

  // The document of a request, and the project that it belongs to.
  struct Asked {
    std::unique_ptr<Model> model;
    const TextFile* file = nullptr;  // of the model; null: the document is no text of a project
    std::shared_ptr<const LinedText> text;
    std::string key;  // by `file_key`
    std::string uri;
  };

  Asked asked(const Json& params) {
    Asked result;
    result.uri = params.at("textDocument").at("uri").get<std::string>();
    const auto path = path_of_uri(result.uri);
    if (!path) return result;
    result.key = file_key(*path);
    // Without an owner the document is open, and belongs to nothing that can be asked about.
    const auto owner = owners_.find(result.key);
    if (owner == owners_.end()) return result;
    const auto project = projects_.find(owner->second);
    if (project == projects_.end()) return result;
    // Made for each question from what is known; the texts and the analysis are shared.
    result.model = std::make_unique<Model>(store_, project->second, analysis_of(owner->second));
    result.file = result.model->text_file(result.key);
    result.text = store_.text(result.key);
    return result;
  }

  // The name that the place of a request stands in or behind.
  struct AskedName : Asked {
    TextPosition position;
    TokenPart part;  // of the line: what of it is the name; empty if there is none
    Symbol symbol;
  };

  AskedName asked_name(const Json& params) {
    AskedName at{asked(params), position_of(params.at("position")), {}, {}};
    if (at.file != nullptr) at.symbol = at.model->symbol_at(*at.file, at.position, at.part);
    return at;
  }

  Json hover(const Json& params) {
    const AskedName at = asked_name(params);
    if (at.file == nullptr) return nullptr;
    std::string text = at.model->name_text(at.symbol);
    // A line of a source can be a rule, or come to many.
    const bool may_be_rule = at.file->kind == TextKind::rules || at.file->kind == TextKind::source;
    const auto line = static_cast<std::size_t>(std::max<std::int64_t>(at.position.line, 0));
    // Of the rule that stands in the line, below what is known of the name.
    if (may_be_rule && line < at.text->line_count()) {
      if (const std::string rule = at.model->rule_text(*at.file, line); !rule.empty())
        text += (text.empty() ? "" : "\n\n---\n") + rule;
    }
    // The protocol wants null where there is nothing to show.
    if (text.empty()) return nullptr;
    Json result{
        {"contents",
         {{"kind", is_markdown_ ? "markdown" : "plaintext"}, {"value", is_markdown_ ? text : without_marks(text)}}}};
    if (at.part.begin != at.part.end) result["range"] = range_of(*at.text, line, at.part.begin, at.part.end);
    return result;
  }

  Json definition(const Json& params) {
    const AskedName at = asked_name(params);
    if (at.file == nullptr) return nullptr;
    Json locations = Json::array();
    for (const NameUse& use : at.model->definitions(at.symbol)) locations.push_back(location_of(use));
    return locations;
  }

  std::string references(const Json& params) {
    const AskedName at = asked_name(params);
    if (at.file == nullptr) return "null";
    // Where it is given counts as its declaration.
    const bool with_declaration = !params.contains("context") || params.at("context").value("includeDeclaration", true);
    std::string locations = "[";
    std::size_t count = 0;
    at.model->for_each_use(at.symbol, [&](const NameUse& use) {
      // What gives a name is its declaration.
      if (with_declaration || use.token.use != TokenUse::gives) {
        if (locations.size() > 1) locations += ',';
        // Written by hand: a tree of 7,200 places would take longer than finding them.
        append_text(locations += R"({"uri":)", use.file->uri);
        append_range(locations += ',', use);
        locations += '}';
      }
      refuse_now_and_then(++count);
      return true;
    });
    return locations + ']';
  }

  Json prepare_rename(const Json& params) {
    const AskedName at = asked_name(params);
    if (at.file == nullptr) return nullptr;
    if (at.symbol.kind == Symbol::Kind::none) return nullptr;
    if (const std::string fault = at.model->rename_fault(at.symbol, nullptr); !fault.empty())
      throw RequestError{kRequestFailed, fault};
    return {{"range", range_of(*at.text, static_cast<std::size_t>(at.position.line), at.part.begin, at.part.end)},
            {"placeholder", at.symbol.name}};
  }

  std::string rename(const Json& params) {
    const AskedName at = asked_name(params);
    const std::string to = params.at("newName").get<std::string>();
    if (at.file == nullptr) throw RequestError{kRequestFailed, "this text belongs to no project"};
    const Symbol& symbol = at.symbol;
    if (symbol.kind == Symbol::Kind::none) throw RequestError{kRequestFailed, "there is no name at this place"};
    // The sign of a mark may be typed along.
    const bool has_sign =
        symbol.kind == Symbol::Kind::label && to.size() > 1 && (to.front() == '>' || to.front() == '<');
    const std::string name = has_sign ? to.substr(1) : to;
    if (const std::string fault = at.model->rename_fault(symbol, &name); !fault.empty())
      throw RequestError{kRequestFailed, fault};
    std::map<std::string, std::string> by_file;  // by URI
    const std::string new_text = R"(,"newText":)" + in_json(name) + '}';
    std::size_t count = 0;
    at.model->for_each_use(symbol, [&](const NameUse& use) {
      std::string& edits = by_file[use.file->uri];
      append_range(edits += edits.empty() ? "{" : ",{", use);
      edits += new_text;
      refuse_now_and_then(++count);
      return true;
    });
    return workspace_edit(by_file);
  }

  // Of the edits by the URI of their file, each as JSON, with commas between.
  std::string workspace_edit(const std::map<std::string, std::string>& by_file) {
    std::string changes;
    for (const auto& [uri, edits] : by_file) {
      const auto document =
          std::ranges::find_if(documents_, [&uri](const auto& each) { return each.second.uri == uri; });
      if (!changes.empty()) changes += ',';
      if (has_versions_) {
        const std::string version = document != documents_.end() ? std::to_string(document->second.version) : "null";
        changes += R"({"textDocument":{"uri":)" + in_json(uri) + R"(,"version":)" + version + R"(},"edits":[)";
        (changes += edits) += "]}";
      } else {
        ((changes += in_json(uri) + ":[") += edits) += ']';
      }
    }
    return has_versions_ ? R"({"documentChanges":[)" + changes + "]}" : R"({"changes":{)" + changes + "}}";
  }

  // ---- Completion

  // What is offered at a place.
  struct Offers {
    std::string prefix;  // what stands there of a name already
    Json range;          // of it, which the name replaces
    Json items = Json::array();
    bool is_cut = false;

    // `kind` is the protocol's number.
    void add(const std::string& label, int kind, const std::string& detail) {
      // What stands there whole need not be offered.
      if (!label.starts_with(prefix) || label == prefix) return;
      if (items.size() >= kMostCompletions) {
        is_cut = true;
        return;
      }
      Json item{{"label", label},
                {"kind", kind},
                {"filterText", label},
                {"textEdit", {{"range", range}, {"newText", label}}}};
      if (!detail.empty()) item["detail"] = detail;
      items.push_back(std::move(item));
    }

    // The names that are used most come first.
    void add_names(const Model& model, Symbol::Kind of, int kind) {
      std::vector<std::pair<std::int64_t, std::string>> sorted;
      for (const auto& [name, count] : model.names(of)) {
        if (name.starts_with(prefix)) sorted.emplace_back(-count, name);
      }
      std::ranges::sort(sorted);
      for (const auto& [count, name] : sorted)
        add(name, kind, std::to_string(-count) + (count == -1 ? " use" : " uses"));
    }
  };

  Json completion(const Json& params) {
    const Asked at = asked(params);
    const TextPosition position = position_of(params.at("position"));
    if (at.file == nullptr || position.line < 0 || static_cast<std::size_t>(position.line) >= at.text->line_count())
      return nullptr;
    const auto line = static_cast<std::size_t>(position.line);
    // Texts whose lines go on are scanned from the begin, as far as a line matters to those behind it.
    LineScanner scanner(at.file->kind);
    std::vector<Token> tokens;
    for (std::size_t each = LineScanner::is_line_by_line(at.file->kind) ? line : 0; each < line; ++each) {
      if (scanner.needs(at.text->line(each))) scanner.scan(at.text->line(each), tokens);
    }
    const std::size_t byte = at.text->byte_in_line(position);
    const std::string_view shown = at.text->line(line);
    // What stands behind the place is still to be written.
    // The scanner notes what it would read next there.
    scanner.scan(shown.substr(0, byte), tokens, byte);
    // What stands between here and the place is replaced by the name that is chosen.
    const std::size_t begin = std::min(scanner.wanted_begin(), byte);
    Offers offers{std::string(shown.substr(begin, byte - begin)), range_of(*at.text, line, begin, byte)};
    // How the protocol numbers kinds of completions.
    constexpr int kText = 1;
    constexpr int kProperty = 10;
    constexpr int kKeyword = 14;
    constexpr int kReference = 18;
    constexpr int kConstant = 21;
    switch (scanner.wanted()) {
      case Wanted::attribute:
        offers.add_names(*at.model, Symbol::Kind::attribute, kProperty);
        // Entries cannot have what the engine gives.
        if (at.file->kind != TextKind::entries) {
          for (const char* name : {"SHEAD", "STAIL", "CHEAD", "CTAIL", "SCOPE", "@entry", "TEMP", "NUM", "ANUM"})
            offers.add(name, kConstant, "given by Lexon");
        }
        break;
      case Wanted::action: offers.add_names(*at.model, Symbol::Kind::attribute, kProperty); break;
      case Wanted::label:
      case Wanted::role: offers.add_names(*at.model, Symbol::Kind::label, kReference); break;
      case Wanted::mark: offers.add_names(*at.model, Symbol::Kind::mark, kConstant); break;
      case Wanted::directive:
        for (const std::string_view name : directive_names()) offers.add(std::string(name), kKeyword, "");
        break;
      case Wanted::form:
      case Wanted::concept_word:
      case Wanted::graph_word: {
        const bool are_concepts = scanner.wanted() != Wanted::form;
        for (const std::string& word : at.model->words_like(offers.prefix, are_concepts, kMostCompletions))
          offers.add(word, kText, "");
        // The words come cut already.
        offers.is_cut = offers.items.size() >= kMostCompletions;
        break;
      }
      case Wanted::nothing: break;
    }
    return {{"isIncomplete", offers.is_cut}, {"items", std::move(offers.items)}};
  }

  // ---- Remedies

  Json code_action(const Json& params) {
    const Asked at = asked(params);
    Json actions = Json::array();
    if (at.file == nullptr) return actions;
    // All of them are quick fixes; the empty kind stands for every kind.
    if (const auto& context = params.at("context"); context.contains("only") && context.at("only").is_array()) {
      const auto fits = [](const Json& kind) {
        return kind.is_string() && (kind == "quickfix" || kind.get<std::string>().empty());
      };
      if (std::ranges::none_of(context.at("only"), fits)) return actions;
    }
    // The editor asks for a stretch of lines; whatever is found in one of them counts.
    const std::int64_t first = params.at("range").at("start").at("line").get<std::int64_t>();
    const std::int64_t last = params.at("range").at("end").at("line").get<std::int64_t>();
    std::shared_ptr<const Analysis> analysis;
    {
      const std::scoped_lock lock(documents_mutex_);
      const auto found = published_.find(at.key);
      // What was found in a text that has changed since may mean another place.
      if (found != published_.end() && found->second.text != nullptr && *found->second.text == at.text->text())
        analysis = found->second.analysis;
    }
    // The next look will tell.
    if (analysis == nullptr) return actions;
    for (const Finding& finding : analysis->findings) {
      if (finding.fix.kind == Fix::Kind::none || finding.line - 1 < first || finding.line - 1 > last) continue;
      // One look finds what is wrong in all files of the project.
      if (file_key(finding.file) != at.key) continue;
      const Place place = place_of(finding, *at.text);
      // A second look at the letters: the change must never hit something else.
      if (!fix_fits(finding, *at.text, place)) continue;
      add_action(at, finding, place, actions);
    }
    return actions;
  }

  // The change of a text that the finding's remedy is, as one of the actions. `text_end` and `new_entry` change another
  // place than that of the finding, the latter another file.
  void add_action(const Asked& at, const Finding& finding, const Place& place, Json& actions) {
    const LinedText& text = *at.text;
    std::string title;
    std::string uri = at.uri;
    Json edit;
    switch (finding.fix.kind) {
      case Fix::Kind::replace:
        title = "Replace by " + finding.fix.text;
        edit = {{"range", range_of(text, place.line, place.begin, place.end)}, {"newText", finding.fix.text}};
        break;
      case Fix::Kind::strike_item: {
        const std::string_view line = text.line(place.line);
        Place whole = place;
        // A comma goes along, the one in front rather.
        std::size_t before = whole.begin;
        while (before > 0 && line[before - 1] == ' ') --before;
        if (before > 0 && line[before - 1] == ',') {
          whole.begin = before - 1;
        } else {
          while (whole.end < line.size() && (line[whole.end] == ',' || line[whole.end] == ' ')) ++whole.end;
        }
        title = "Strike out " + finding.fix.old;
        edit = {{"range", range_of(text, whole.line, whole.begin, whole.end)}, {"newText", ""}};
        break;
      }
      case Fix::Kind::strike_line:
        // With its end.
        title = "Strike out this line";
        edit = {{"range",
                 {{"start", {{"line", place.line}, {"character", 0}}},
                  {"end", {{"line", place.line + 1}, {"character", 0}}}}},
                {"newText", ""}};
        break;
      case Fix::Kind::line_before:
        title = "Write " + finding.fix.text.substr(0, finding.fix.text.find('\n')) + " in front of this line";
        edit = {{"range", range_of(text, place.line, 0, 0)}, {"newText", finding.fix.text}};
        break;
      case Fix::Kind::text_end:
        title = finding.fix.text == "\n"
                    ? "End the text with an empty line"
                    : "Write " + finding.fix.text.substr(0, finding.fix.text.find('\n')) + " at the end of the text";
        edit = end_edit(text, finding.fix.text);
        break;
      case Fix::Kind::new_entry: {
        // Into the first file of entries that is a text.
        const auto is_text = [](const TextFile& file) { return file.kind == TextKind::entries; };
        const auto& texts = at.model->texts();
        const auto found = std::ranges::find_if(texts, is_text);
        // A built dictionary takes no new line.
        if (found == texts.end()) return;
        uri = found->uri;
        title = "Add an entry to " + std::filesystem::path(found->path).filename().string();
        edit = end_edit(*store_.text(found->path), finding.fix.text + '\n');
        break;
      }
      case Fix::Kind::none: return;
    }
    Json action{{"title", title},
                {"kind", "quickfix"},
                {"diagnostics", Json::array({diagnostic_of(finding, text)})},
                {"edit", Json::parse(workspace_edit({{uri, text_of(edit)}}))}};
    // An editor offers such a one under a key of its own.
    if (finding.fix.kind == Fix::Kind::replace) action["isPreferred"] = true;
    actions.push_back(std::move(action));
  }

  // What is added at the end of a text begins a line.
  static Json end_edit(const LinedText& text, const std::string& added) {
    const std::size_t last = text.line_count() - 1;
    // An empty last line means that the text ends with a line end.
    const std::size_t size = text.line(last).size();
    return {{"range", range_of(text, last, size, size)}, {"newText", (size == 0 ? "" : "\n") + added}};
  }

  // ---- Outline

  std::string document_symbol(const Json& params) {
    const Asked at = asked(params);
    if (at.file == nullptr) return "[]";
    const std::vector<OutlineItem> items = outline_of(*at.text, at.file->kind);
    return has_trees_ ? outline_tree(items, *at.text) : outline_list(items, *at.text, at.uri);
  }

  Json folding_range(const Json& params) {
    const Asked at = asked(params);
    Json all = Json::array();
    if (at.file == nullptr) return all;
    for (const Fold& fold : folds_of(*at.text, at.file->kind)) {
      all.push_back(
          {{"startLine", fold.begin}, {"endLine", fold.end}, {"kind", fold.is_comment ? "comment" : "region"}});
    }
    return all;
  }

  // What was last told of a file.
  struct Published {
    std::string project;   // by name
    std::string uri;       // that it was told under
    std::size_t hash = 0;  // of the message: the same is not told twice
    std::shared_ptr<const Analysis> analysis;
    std::shared_ptr<const std::string> text;  // in which it was found
  };

  std::FILE* in_;
  FrameWriter writer_;

  // Between the reader and the one that answers.
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Json> queue_;
  // Guarded by `mutex_`, as the queue and the flag are.
  std::set<std::string> pending_;    // ids of requests without an answer
  std::set<std::string> cancelled_;  // of these
  bool is_over_ = false;

  // Of the one that answers.
  std::string current_;
  bool is_initialized_ = false;
  bool is_shut_down_ = false;
  bool is_exited_ = false;
  bool has_trees_ = false;
  bool has_versions_ = false;
  bool watches_files_ = false;
  bool is_markdown_ = false;
  std::vector<std::string> folders_;  // by `file_key`
  std::string settings_;              // of the project, as JSON; empty: none
  std::chrono::milliseconds rest_ = kRest;
  TextStore store_;
  std::map<std::string, std::string> owners_;  // projects of documents

  // Between the one that answers and the watch. Documents and projects are written by the first alone, which reads them
  // without the lock.
  std::mutex documents_mutex_;
  std::map<std::string, ProjectFiles> projects_;   // by name
  std::map<std::string, OpenDocument> documents_;  // by `file_key`
  std::map<std::string, std::shared_ptr<const Analysis>> analyses_;
  std::map<std::string, Published> published_;

  std::unique_ptr<Watch> watch_;
};

}  // namespace

Command add_lsp(CLI::App& app) {
  CLI::App& command =
      add_command(app, "lsp", "Serve editors over standard input and output (Language Server Protocol)");
  const auto is_stdio = std::make_shared<bool>(false);
  add_flag(command, "--stdio", *is_stdio, "Taken and not needed: there is no other way");
  return {&command, [is_stdio] { return Server(stdin, stdout).run(); }};
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
