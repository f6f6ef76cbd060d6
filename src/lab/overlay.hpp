// Texts that an editor or a page shows and has not saved. They stand for their files wherever the workbench reads rules,
// sources, entries and graphs: give the overlay to `Project`, `for_each_sentence`, `text_file_read`, `CheckInput`,
// `BuiltWords`. What was read of other files is kept where that saves time: see `CheckCache` and `BuiltWords`.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "source/expand.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

// The name under which a file is known whatever leads to it: absolute, without "." and "..", links followed as far as
// there is something.
[[nodiscard]] std::string file_key(const std::string& path);

// Copies share the texts: a thread can work with a copy while another changes the original.
class Overlay {
 public:
  void put(const std::string& path, std::string text);
  // The file itself is meant again.
  void drop(const std::string& path);

  // Null: the file itself is meant.
  [[nodiscard]] std::shared_ptr<const std::string> find(const std::string& path) const;
  // For `expand_source` and the like; the overlay has to outlive it, unchanged.
  [[nodiscard]] TextLookup lookup() const;
  [[nodiscard]] bool is_empty() const { return texts_.empty(); }

 private:
  std::map<std::string, std::shared_ptr<const std::string>> texts_;  // by `file_key`
};

// What a text was when it was read: two marks are alike if nothing has changed, or a file without its time and size.
struct TextMark {
  std::shared_ptr<const std::string> unsaved;  // kept, so that its address stays its own
  std::int64_t size = -1;
  std::int64_t time = 0;
  std::uint64_t number = 0;  // of the file in its file system

  bool operator==(const TextMark&) const = default;
};
[[nodiscard]] TextMark text_mark(const std::string& path, const Overlay* unsaved);

}  // namespace lab
}  // namespace v1
}  // namespace lexon
