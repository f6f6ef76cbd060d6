#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include "data/bytes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "rules/compiled.hpp"
#include "rules/compiled_format.hpp"

namespace lexon {
namespace {

// What the nested readers give for a record whose lengths do not agree with each other.
constexpr Status kDamaged = Status::no_effect;

// Short texts are copied as one number: the eight bytes that end with them, less what stands in front of them.
constexpr std::size_t kShortText = std::endian::native == std::endian::little ? 7 : 0;

// The bytes of a text of 1 to `kShortText` that ends at `end`: the first is the lowest, and NULs follow the last. Eight can
// be read even of the first text of a file: type and lengths stand in front of it.
inline std::uint64_t short_text(const std::uint8_t* end, std::size_t size) {
  std::uint64_t bytes;
  std::memcpy(&bytes, end - sizeof bytes, sizeof bytes);
  return bytes >> (64 - 8 * size);
}

// Is there a NUL among the first `size` bytes?
inline bool has_nul(std::uint64_t bytes, std::size_t size) {
  constexpr std::uint64_t kLowBits = 0x0101010101010101U;
  // Taking 1 from each byte reaches the top bit of a NUL first; of the NULs behind the text it must reach none.
  return ((bytes - (kLowBits >> (64 - 8 * size))) & ~bytes & kLowBits << 7) != 0;
}

// A copy of any text, which is not empty. A NUL as its first byte makes it the empty text; no other byte may be one.
Status text_copy(Pool& pool, std::string_view all, char*& text) {
  const std::size_t size = all.front() == '\0' ? 0 : all.size();
  if (size != 0 && std::memchr(all.data(), '\0', size) != nullptr) return kDamaged;
  text = perm_text(pool, all.substr(0, size));
  return text == nullptr ? Status::memory : Status::ok;
}

// A length of 0 is a text that is not there; the empty text has a length of 1 and a NUL.
inline Status text_read(Pool& pool, ByteReader& in, char*& text) {
  if (in.next_are_empty()) return Status::ok;
  const ByteView bytes = in.bytes();
  return in.ok() ? text_copy(pool, as_text(bytes), text) : kDamaged;
}

// In front of an item's text: what it does, and the length.
constexpr std::ptrdiff_t kItemHeadSize = 3;

// The items from `at` on whose texts are short, as nearly all are, go into a row of cells: that of an item, that of its
// text, and so on. Gives the place of the first item that takes more care, or the end, and moves `link` there.
const std::uint8_t* short_items_read(Pool& pool, const std::uint8_t* at, const std::uint8_t* end, CondItem**& link) {
  constexpr auto kItemSize = static_cast<std::int64_t>(sizeof(CondItem));
  constexpr std::int64_t kTextSize = sizeof(std::uint64_t);
  constexpr std::int64_t kItemCell = Pool::cell_size(kItemSize);
  constexpr std::int64_t kBothCells = kItemCell + Pool::cell_size(kTextSize);
  const std::size_t most_items = static_cast<std::size_t>(end - at) / (kItemHeadSize + 1);
  char* const first = pool.row_begin(kItemSize, kTextSize, static_cast<std::int64_t>(most_items) * kBothCells);
  if (first == nullptr) return at;
  char* cell = first;
  while (end - at > kItemHeadSize) {
    const std::size_t length = load_u16(at + 1);
    const bool is_short = length - 1 < kShortText && length <= static_cast<std::size_t>(end - at - kItemHeadSize);
    if (!is_short) break;
    const std::uint8_t* const text_end = at + kItemHeadSize + length;
    const std::uint64_t bytes = short_text(text_end, length);
    if (has_nul(bytes, length)) break;
    char* const text = cell + kItemCell;
    std::memcpy(text, &bytes, sizeof bytes);
    auto* const item = new (cell) CondItem{at[0], text, nullptr};
    *link = item;
    link = &item->next;
    cell += kBothCells;
    at = text_end;
  }
  pool.row_take(kItemSize, cell);
  return at;
}

// Items are most of a file.
Status some_items_read(Pool& pool, ByteView block, CondItem*& items) {
  const std::uint8_t* const end = block.data() + block.size();
  CondItem** link = &items;
  for (const std::uint8_t* at = short_items_read(pool, block.data(), end, link); at != end; link = &(*link)->next) {
    void* const cell = pool.alloc(static_cast<std::int64_t>(sizeof(CondItem)));
    if (cell == nullptr) return Status::memory;
    if (end - at < kItemHeadSize) return kDamaged;
    auto* const item = *link = new (cell) CondItem{at[0], nullptr, nullptr};
    const std::size_t length = load_u16(at + 1);
    at += kItemHeadSize;
    if (length == 0 || length > static_cast<std::size_t>(end - at)) return kDamaged;
    const Status status = text_copy(pool, as_text({at, length}), item->text);
    if (status != Status::ok) return status;
    at += length;
  }
  return Status::ok;
}

// Most lists are empty. What reads a list that is not takes a view, so that a reader need not lie in memory.
inline Status items_read(Pool& pool, ByteReader& in, CondItem*& items) {
  if (in.next_are_empty()) return Status::ok;
  const ByteView block = in.bytes();
  return in.ok() ? some_items_read(pool, block, items) : kDamaged;
}

// What the block may leave out at its end.
inline Status more_items_read(Pool& pool, ByteReader& in, CondItem*& items) {
  return !in.more() ? Status::ok : items_read(pool, in, items);
}
Status more_text_read(Pool& pool, ByteReader& in, char*& text) {
  return !in.more() ? Status::ok : text_read(pool, in, text);
}

// The last group of a list may end behind its surface forms, or behind its concept words.
Status group_read(Pool& pool, ByteReader& in, ContextGroup& group) {
  group.star = in.u8();
  if (const Status status = items_read(pool, in, group.hw_conds); status != Status::ok) return status;
  if (const Status status = more_items_read(pool, in, group.cw_conds); status != Status::ok) return status;
  return more_items_read(pool, in, group.attr_conds);
}

Status some_groups_read(Pool& pool, ByteView bytes, ContextGroup*& groups) {
  ByteReader block(bytes);
  for (ContextGroup** link = &groups; block.more(); link = &(*link)->next) {
    *link = perm_new<ContextGroup>(pool);
    if (*link == nullptr) return Status::memory;
    if (const Status status = group_read(pool, block, **link); status != Status::ok) return status;
  }
  return block.ok() ? Status::ok : kDamaged;
}

inline Status groups_read(Pool& pool, ByteReader& in, ContextGroup*& groups) {
  if (in.next_are_empty()) return Status::ok;
  const ByteView block = in.bytes();
  return in.ok() ? some_groups_read(pool, block, groups) : kDamaged;
}

// Most patterns speak of attributes alone: what stands in front of these, and behind them, is empty. An empty block, a
// pattern that is missing, is damage as well: no rule can do without.
Status pattern_read(Pool& pool, ByteView block, NodePattern*& result) {
  result = perm_new<NodePattern>(pool);
  if (result == nullptr) return Status::memory;
  NodePattern& pattern = *result;
  ByteReader in(block);
  pattern.inserted = in.u8();
  if (!in.next_are_empty<4>()) {
    if (const Status status = items_read(pool, in, pattern.hw_conds); status != Status::ok) return status;
    if (const Status status = more_items_read(pool, in, pattern.cw_conds); status != Status::ok) return status;
    if (const Status status = more_text_read(pool, in, pattern.hw_action); status != Status::ok) return status;
    if (const Status status = more_text_read(pool, in, pattern.cw_action); status != Status::ok) return status;
  }
  if (const Status status = more_items_read(pool, in, pattern.attr_conds); status != Status::ok) return status;
  if (!in.next_are_empty<3>()) {
    for (CondItem** items : {&pattern.actions, &pattern.relations, &pattern.roles}) {
      if (const Status status = more_items_read(pool, in, *items); status != Status::ok) return status;
    }
  }
  // A block must end with its last field, neither within it nor behind.
  return in.ok() && !in.more() ? Status::ok : kDamaged;
}

// A mark in the place of the high byte of the length of PRE. The writer refuses a rule whose PRE is as long as that.
void subtype_read(ByteReader& in, Rule& rule) {
  if (!in.next_is(kSubtypeMark)) return;
  in.u8();
  rule.subtype = in.u8();
}

// Bytes behind the priority are passed over, since the next record begins where the length says.
Status rule_read(Pool& pool, ByteReader& in, Rule& rule) {
  rule.type = in.u8();
  subtype_read(in, rule);
  if (const Status status = groups_read(pool, in, rule.pre); status != Status::ok) return status;
  if (const Status status = pattern_read(pool, in.bytes(), rule.lnode); status != Status::ok) return status;
  if (const Status status = groups_read(pool, in, rule.mid); status != Status::ok) return status;
  if (const Status status = pattern_read(pool, in.bytes(), rule.rnode); status != Status::ok) return status;
  if (const Status status = groups_read(pool, in, rule.suf); status != Status::ok) return status;
  rule.priority = in.u8();
  return in.ok() ? Status::ok : kDamaged;
}

// The file through a buffer that always holds one record whole.
class RecordStream {
 public:
  RecordStream(std::FILE* stream, std::span<std::uint8_t> buffer) : stream_(stream), buffer_(buffer) {}

  // Is the file read to its end, and without a fault?
  [[nodiscard]] bool at_end() { return !available(1) && std::ferror(stream_) == 0; }

  // Where the next record begins in the file.
  [[nodiscard]] std::size_t place() const { return taken_; }

  // The next record without its length field; none if the file ends before it does, or if it is too long.
  [[nodiscard]] bool next(ByteView& record) {
    constexpr std::size_t kLengthSize = 2;
    if (!available(kLengthSize)) return false;
    const std::size_t length = ByteReader(valid()).u16();
    if (!available(kLengthSize + length)) return false;
    record = valid().subspan(kLengthSize, length);
    begin_ += kLengthSize + length;
    taken_ += kLengthSize + length;
    return true;
  }

 private:
  [[nodiscard]] ByteView valid() const { return buffer_.subspan(begin_, end_ - begin_); }

  // Sees to it that `count` bytes are in the buffer: moves the rest to its start and fills up behind it.
  bool available(std::size_t count) {
    if (end_ - begin_ >= count) return true;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= std::exchange(begin_, 0);
    end_ += std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, stream_);
    return end_ >= count;
  }

  // Not owned, neither of them.
  std::FILE* stream_;
  std::span<std::uint8_t> buffer_;
  // Of what has been read and not been taken, in the buffer; then the bytes taken so far, in the file.
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t taken_ = 0;
};

// A rule that fails half way stays with what it has: the whole list is given up.
Status next_rule_read(Pool& pool, RecordStream& file, Rule*& rule) {
  ByteView record;
  if (!file.next(record)) return kDamaged;
  rule = perm_new<Rule>(pool);
  if (rule == nullptr) return Status::memory;
  ByteReader in(record);
  return rule_read(pool, in, *rule);
}

// Front ends take the text as a note of their own; for others it is a line of the output.
void fault_tell(Session& session, int number, std::size_t place, std::string* fault) {
  const std::string text =
      "the compiled rule file is damaged at rule no. " + std::to_string(number) + ", offset " + std::to_string(place);
  if (fault == nullptr) return out_print(session, ";;%s\n", text.c_str());
  *fault = text;
}

// In the order of the file, which is that of falling priority: what the file says is not sorted again.
Status rules_read(Session& session, Pool& pool, RecordStream& file, Rule*& rules, std::string* fault) {
  int number = 0;
  for (Rule** link = &rules; !file.at_end(); link = &(*link)->next) {
    if (const Status leave = must_leave(session, pool); leave != Status::ok) return leave;
    ++number;
    const std::size_t place = file.place();
    const Status status = next_rule_read(pool, file, *link);
    if (status == kDamaged) fault_tell(session, number, place, fault);
    if (status != Status::ok) return status;
  }
  return Status::ok;
}

}  // namespace

Status rule_list_read(Session& session, Pool& pool, Rule*& rules, std::FILE* stream, std::string* fault) {
  rules = nullptr;
  void* const buffer = temp_alloc(session, kRecordBufferSize);
  if (buffer == nullptr) return Status::memory;
  std::rewind(stream);
  RecordStream file(stream, {static_cast<std::uint8_t*>(buffer), kRecordBufferSize});
  const Status status = rules_read(session, pool, file, rules, fault);
  temp_free(session, buffer, kRecordBufferSize);
  // Half a rule base would say other things than the linguist wrote. Its records are lost for the run.
  if (status != Status::ok) rules = nullptr;
  return status;
}

}  // namespace lexon
