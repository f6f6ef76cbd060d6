#include "data/bytes.hpp"
#include "data/chain.hpp"
#include "data/output.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "rules/compiled.hpp"
#include "rules/compiled_format.hpp"

namespace lexon {
namespace {

// Every writer puts a length in front, which is filled in when the block is closed.
void text_write(ByteWriter& out, const char* text) {
  const std::string_view kept = text == nullptr ? std::string_view() : std::string_view(text);
  // A length of 0 says that there is no text, so the empty one needs a byte.
  const bool is_empty_text = text != nullptr && kept.empty();
  const std::size_t length = out.length_open();
  if (is_empty_text) out.u8(0);
  out.put(kept);
  out.length_close(length);
}

// A list is its items one behind the other; its length tells where it ends, as no count stands in front.
void items_write(ByteWriter& out, const CondItem* items) {
  const std::size_t length = out.length_open();
  for (const CondItem& item : chain<&CondItem::next>(items)) {
    // An item without a text could not be read back.
    if (item.text == nullptr) continue;
    out.u8(item.op);
    text_write(out, item.text);
  }
  out.length_close(length);
}

// In the order in which the groups are stored, which for PRE is not that of the text.
void groups_write(ByteWriter& out, const ContextGroup* groups) {
  const std::size_t length = out.length_open();
  for (const ContextGroup& group : chain<&ContextGroup::next>(groups)) {
    out.u8(group.star);
    items_write(out, group.hw_conds);
    items_write(out, group.cw_conds);
    items_write(out, group.attr_conds);
  }
  out.length_close(length);
}

// All fields of a pattern are written, the empty ones as a length of 0; a reader takes fewer of them, too.
void pattern_write(ByteWriter& out, const NodePattern& pattern) {
  const std::size_t length = out.length_open();
  out.u8(pattern.inserted);
  items_write(out, pattern.hw_conds);
  items_write(out, pattern.cw_conds);
  text_write(out, pattern.hw_action);
  text_write(out, pattern.cw_action);
  items_write(out, pattern.attr_conds);
  items_write(out, pattern.actions);
  items_write(out, pattern.relations);
  items_write(out, pattern.roles);
  out.length_close(length);
}

// What does not fit the buffer fails `out`, and the record is not used.
void record_write(ByteWriter& out, const Rule& rule) {
  const std::size_t length = out.length_open();
  out.u8(rule.type);
  // No rule from a text has one. A mark tells of it, since no field has room for its absence.
  if (rule.subtype != 0) {
    out.u8(kSubtypeMark);
    out.u8(rule.subtype);
  }
  groups_write(out, rule.pre);
  pattern_write(out, *rule.lnode);
  groups_write(out, rule.mid);
  pattern_write(out, *rule.rnode);
  groups_write(out, rule.suf);
  out.u8(rule.priority);
  out.length_close(length);
}

// A record of a rule without subtype whose PRE has a length that begins like a subtype would be read as one.
bool is_readable(const Rule& rule, ByteView record) {
  constexpr std::size_t kBehindType = 3;
  return rule.subtype != 0 || record[kBehindType] != static_cast<std::uint8_t>(kSubtypeMark);
}

// The bytes of a rule's record, or none if the file cannot carry it.
// Valid until `buffer` is used again.
ByteView record_of(const Rule& rule, std::span<std::uint8_t> buffer) {
  ByteWriter out(buffer);
  record_write(out, rule);
  if (!out.ok() || !is_readable(rule, out.written())) return {};
  return out.written();
}

// Looks at all records first: a file that holds some of the rules would be taken for whole by the next run.
Status records_check(Session& session, const Rule* rules, std::span<std::uint8_t> buffer) {
  int number = 0;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status leave = must_leave(session); leave != Status::ok) return leave;
    ++number;
    if (!record_of(rule, buffer).empty()) continue;
    out_print(session, ";;rule no. %d cannot be written into the compiled rule file\n", number);
    return Status::no_effect;
  }
  return Status::ok;
}

// Every record is made twice, in the check and here: to keep them all would take as much memory as the rules.
Status records_write(Session& session, const Rule* rules, std::span<std::uint8_t> buffer, std::FILE* stream) {
  if (const Status status = records_check(session, rules, buffer); status != Status::ok) return status;
  for (const Rule& rule : chain<&Rule::next>(rules)) {
    if (const Status leave = must_leave(session); leave != Status::ok) return leave;
    const auto record = record_of(rule, buffer);
    std::fwrite(record.data(), 1, record.size(), stream);
  }
  // The rules in memory are whole, so this run can go on.
  if (!is_written(stream)) out_print(session, ";;the compiled rule file could not be written\n");
  return Status::ok;
}

}  // namespace

Status rule_list_write(Session& session, const Rule* rules, std::FILE* stream) {
  void* const buffer = temp_alloc(session, kRecordBufferSize);
  if (buffer == nullptr) return Status::memory;
  const Status status = records_write(session, rules, {static_cast<std::uint8_t*>(buffer), kRecordBufferSize}, stream);
  temp_free(session, buffer, kRecordBufferSize);
  return status;
}

}  // namespace lexon
