// Looks at projects behind the back of the keys.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "lab/lsp_model.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// A thread that looks at one project after the other and publishes what it finds. Projects are known by a name.
class Watch {
 public:
  // Called from its thread, with nothing locked here.
  using Publish = std::function<void(const ProjectFiles&, const Overlay&, const std::shared_ptr<const Analysis>&)>;
  explicit Watch(Publish publish) : publish_(std::move(publish)), thread_([this] { run(); }) {}
  // Waits for the look that is under way.
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // Asks for a look at the project once nothing has been asked for `rest`. What was asked for before is forgotten.
  void ask(const std::string& name, ProjectFiles files, const Overlay& unsaved, std::chrono::milliseconds rest);
  // Nobody wants to know of the project any longer. A look that is under way is published all the same.
  void forget(const std::string& name);

 private:
  // A project as it was when it was asked for.
  struct Job {
    ProjectFiles files;
    Overlay unsaved;
  };
  void run();

  Publish publish_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::map<std::string, Job> wanted_;          // by name; one that is being looked at is not among them
  std::vector<std::string> forgotten_;         // whose analysts can go
  std::map<std::string, Analyst> analysts_;    // of its thread alone
  std::chrono::steady_clock::time_point due_;  // when the keys have rested, for all that is wanted
  bool is_over_ = false;
  std::thread thread_;  // the last member: it uses the others
};

}  // namespace lab
}  // namespace v1
}  // namespace lexon
