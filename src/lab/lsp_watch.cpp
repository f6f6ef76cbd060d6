#include "lab/lsp_watch.hpp"

#include <exception>
#include <utility>

#include "front/process.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

using Clock = std::chrono::steady_clock;

Watch::~Watch() {
  {
    const std::scoped_lock lock(mutex_);
    is_over_ = true;
  }
  wake_.notify_all();
  thread_.join();
}

void Watch::ask(const std::string& name, ProjectFiles files, const Overlay& unsaved, std::chrono::milliseconds rest) {
  {
    const std::scoped_lock lock(mutex_);
    // The last state of a project takes the place of one that was not looked at yet.
    wanted_[name] = {std::move(files), unsaved};
    due_ = Clock::now() + rest;
  }
  wake_.notify_all();
}

void Watch::forget(const std::string& name) {
  const std::scoped_lock lock(mutex_);
  // A look that is under way goes on, and finds nobody to tell.
  wanted_.erase(name);
  forgotten_.push_back(name);
}

void Watch::run() {
  std::unique_lock lock(mutex_);
  while (!is_over_) {
    if (wanted_.empty()) {
      wake_.wait(lock);
      continue;
    }
    if (Clock::now() < due_) {
      wake_.wait_until(lock, due_);
      continue;
    }
    // The look itself takes long, and goes without the lock: who asks meanwhile is heard.
    const std::string name = wanted_.begin()->first;
    const Job job = std::move(wanted_.begin()->second);
    wanted_.erase(wanted_.begin());
    for (const std::string& gone : std::exchange(forgotten_, {})) {
      // One that was forgotten and opened again keeps what it knows.
      if (gone != name) analysts_.erase(gone);
    }
    lock.unlock();
    // A look that fails is told and the server goes on; the next change asks for another one.
    try {
      publish_(job.files, job.unsaved, analysts_[name].look_at(job.files, job.unsaved));
    } catch (const std::exception& fault) {
      tell_line(std::string("lexon-lab lsp: ") + fault.what());
    }
    lock.lock();
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
