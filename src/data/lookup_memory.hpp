// What lookups in the dictionaries of a sentence have read, kept for those to come: blocks of the files, and the words
// of whole answers. Files that have changed are forgotten when the next sentence begins. Bounded to some 30 MB, of which
// a page is touched when it is needed; without memory nothing is kept. Not thread-safe.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "data/bytes.hpp"
#include "data/platform.hpp"
#include "data/records.hpp"

namespace lexon {

class LookupMemory {
 public:
  static constexpr std::size_t kFiles = 4;
  // The open files from which lookups read; null stands for none.
  using Files = std::array<std::FILE*, kFiles>;

  // One lookup: the dictionary that is asked, the field and the key.
  struct Question {
    const std::FILE* dictionary;
    int key_field;
    std::string_view key;
  };

  // What a block holds. Each kind is kept apart, so that the many blocks of words do not drive out the few of keys.
  enum class Kind : std::uint8_t { index, keys, words };

  // Where the entries of a block of keys begin, once somebody has looked; of use if they stand in order. A search halves the
  // heads, which lie close together, and looks at the keys themselves only where heads are alike.
  struct KeyPlaces {
    enum class State : std::uint8_t { unknown, in_order, other };
    static constexpr std::size_t kMost = 1024;  // an entry takes 4 bytes at least
    State state;
    std::uint16_t count;
    std::uint16_t shared;                 // so many bytes begin all keys
    std::array<std::uint16_t, kMost> at;  // offsets in the block
    std::array<std::uint32_t, kMost>
        heads;  // the next four bytes of each key, high byte first, with zeros behind its end
  };

  // A block that was read. Valid until the next one is.
  struct Block {
    const std::uint8_t* bytes;  // null: it cannot be read
    KeyPlaces* places;          // null: it is not kept, or no block of keys
  };

  // A word of an answer, as it stands in the dictionary. Nobody changes it; its texts serve the copies of it as well,
  // as `holds` tells.
  struct Kept {
    WordEntry word;        // the answer's words are linked in the order of their finding
    Kept* next;            // so are these
    std::uint16_t block;   // where its record stands
    std::uint16_t offset;  // in the block
    bool opens_group;      // the first one of a chain
  };

  // A sentence begins: what is read of these files from now on is kept, and of no others. If one is another than before,
  // or was written to since, everything is forgotten. Only here is anything forgotten, so that words and texts of answers
  // stand as long as the sentence.
  void attend(const Files& files);

  // The block of a file at `offset`, as long as `room`, into which it is read if it is not kept.
  [[nodiscard]] Block block(std::FILE* stream, std::int64_t offset, std::span<std::uint8_t> room, Kind kind);

  // The words of the answer to a question, null for none; nothing if the answer is not remembered.
  [[nodiscard]] std::optional<const Kept*> answer(const Question& question) const;

  // Remembers an answer word by word: begin, add each, end. An answer that is not ended is not remembered. The question's
  // key must stand until then.
  void answer_begin(const Question& question);
  // Room for a word with so many bytes of texts behind it; null if the answer is not to be remembered, or not further.
  // The caller fills it.
  [[nodiscard]] Kept* answer_add(std::size_t text_bytes);
  // The words of the answer if it is remembered from now on; null for none, too.
  const Kept* answer_end();

  // Does this text belong to an answer? Then it is nobody's to change or to give back.
  [[nodiscard]] bool holds(const char* text) const {
    return reinterpret_cast<std::uintptr_t>(text) - answers_begin_ < answers_size_;
  }

 private:
  static constexpr std::size_t kLargestKey = 4096;
  static constexpr std::size_t kBlocks = 1024;                                   // of each kind
  static constexpr std::array<std::size_t, 3> kBlockSizes = {1024, 4096, 4096};  // by kind
  static constexpr std::size_t kAnswerBytes = std::size_t{8} << 20;
  static constexpr std::size_t kLeastRoom = kAnswerBytes / 8;  // a sentence with less begins by forgetting all answers
  static constexpr std::size_t kAnswers = std::size_t{1} << 15;  // slots; about half of them are used
  static constexpr std::size_t kNone = kFiles;

  struct File {
    std::FILE* stream = nullptr;
    std::optional<FileState> state;
  };
  // The blocks of one kind, each at a place that its number tells. Memory that no block has been read into is not touched.
  struct Shelf {
    struct Label {
      std::FILE* stream = nullptr;  // null: nothing is kept
      std::int64_t offset = 0;
    };
    std::unique_ptr<Label[]> labels;
    std::unique_ptr<std::uint8_t[]> bytes;
    std::unique_ptr<KeyPlaces[]> places;
  };
  // Where an answer stands in `answers_`. The table of slots begins as zeros that nobody has written, so that a run of few
  // words touches few of its pages.
  struct Slot {
    const Kept* words;  // null: an answer of no words
    const char* key;
    std::uint64_t hash;
    std::uint16_t key_size;
    std::uint8_t file;
    std::uint8_t field;
    std::uint32_t epoch;  // the slot is free unless this is the memory's own
  };
  // The answer in the making.
  struct Draft {
    Question question;
    std::uint64_t hash;
    std::uint8_t file;
    Kept* words;
    Kept* last;  // null without words
  };

  [[nodiscard]] static bool has_room(Shelf& shelf, Kind kind);
  [[nodiscard]] std::size_t file_of(const std::FILE* stream) const;
  // The slot that holds the answer, or the free one where it belongs.
  [[nodiscard]] Slot& slot_of(std::size_t file, const Question& question, std::uint64_t hash) const;
  [[nodiscard]] bool has_room_for_answers();
  // The next `size` bytes for an answer, on the boundary of a record; null if they do not fit.
  [[nodiscard]] std::uint8_t* take(std::size_t size);
  void answers_forget();
  void forget();

  std::array<File, kFiles> files_{};
  std::array<Shelf, kBlockSizes.size()> shelves_;  // by kind
  std::unique_ptr<std::uint8_t[]> answers_;        // keys, and words with their texts behind them
  std::uintptr_t answers_begin_ = 0;               // of `answers_`, and how long it is
  std::size_t answers_size_ = 0;
  std::unique_ptr<Slot[], decltype(&std::free)> slots_{nullptr, &std::free};
  std::uint32_t epoch_ = 1;  // grows when all answers are forgotten; never 0
  std::size_t used_ = 0;     // of `answers_`
  std::size_t count_ = 0;    // of answers that stand
  std::optional<Draft> draft_;
};

}  // namespace lexon
