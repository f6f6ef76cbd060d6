// What lookups in the dictionaries of a sentence have read, kept for those to come: blocks of the files, and the
// records of whole answers. Files that have changed are forgotten when the next sentence begins. Bounded to some
// 16 MB; without memory nothing is kept. Not thread-safe.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "data/bytes.hpp"
#include "data/platform.hpp"

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

  // Where the entries of a block of keys begin, once somebody has looked; of use if they stand in order.
  struct KeyPlaces {
    enum class State : std::uint8_t { unknown, in_order, other };
    State state;
    std::uint16_t count;
    std::array<std::uint16_t, 1024> at;  // an entry takes 4 bytes at least
  };

  // A block that was read. Valid until the next one is.
  struct Block {
    const std::uint8_t* bytes;  // null: it cannot be read
    KeyPlaces* places;          // null: it is not kept, or no block of keys
  };

  // A record of an answer.
  struct Record {
    std::uint16_t block;   // where it stands
    std::uint16_t offset;  // in the block
    bool opens_group;      // the first one of a chain
    ByteView bytes;
  };

  // Walks through the records of an answer.
  class Answer {
   public:
    explicit Answer(ByteView stored) : reader_(stored) {}
    // The next record; false behind the last one. What it gives is valid as long as nothing else is remembered.
    [[nodiscard]] bool next(Record& record);

   private:
    ByteReader reader_;
  };

  // From now on what is read of these files is kept, and of no others. If one is another than before, or was written
  // to since, everything is forgotten.
  void attend(const Files& files);

  // The block of a file at `offset`, as long as `room`, into which it is read if it is not kept.
  [[nodiscard]] Block block(std::FILE* stream, std::int64_t offset, std::span<std::uint8_t> room, Kind kind);

  // The answer to a question, if it is remembered.
  [[nodiscard]] std::optional<Answer> answer(const Question& question);

  // Remembers an answer record by record: begin, add each, end. An answer that is not ended is not remembered.
  void answer_begin(const Question& question);
  void answer_add(const Record& record);
  void answer_end();

 private:
  static constexpr std::size_t kLargestKey = 4096;
  static constexpr std::size_t kBlocks = 1024;                                   // of each kind
  static constexpr std::array<std::size_t, 3> kBlockSizes = {1024, 4096, 4096};  // by kind
  static constexpr std::size_t kAnswerBytes = std::size_t{4} << 20;
  static constexpr std::size_t kAnswers = std::size_t{1} << 15;  // slots; half of them are used
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
  // In front of each answer in `texts_`: its key, then its records.
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t begin = 0;
    std::uint32_t size = 0;  // of key and records
    std::uint16_t key_size = 0;
    std::uint8_t file = 0;
    std::uint8_t field = 0;
    bool taken = false;
  };

  [[nodiscard]] static bool has_room(Shelf& shelf, Kind kind);
  [[nodiscard]] std::size_t file_of(const std::FILE* stream) const;
  // The slot that holds the answer, or the free one where it belongs.
  [[nodiscard]] Slot& slot_of(std::size_t file, const Question& question, std::uint64_t hash);
  [[nodiscard]] bool has_room_for_answers();
  void answers_forget();
  void forget();

  std::array<File, kFiles> files_{};
  std::array<Shelf, kBlockSizes.size()> shelves_;  // by kind
  std::unique_ptr<std::uint8_t[]> texts_;
  std::unique_ptr<Slot[]> slots_;
  std::size_t used_ = 0;     // of `texts_`, by answers that stand
  std::size_t answers_ = 0;  // that stand
  std::optional<Slot> draft_;
};

}  // namespace lexon
