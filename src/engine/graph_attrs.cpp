// What stands behind ",;" in a graph text is what a reference has brought into the scope: it goes first, the node's
// own attributes behind a separator of its own.
#include "engine/graph_attrs.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "data/nodes.hpp"
#include "data/output.hpp"
#include "data/session.hpp"
#include "data/words.hpp"

namespace lexon {

namespace {

constexpr std::string_view kScopeMark = ",;";

}  // namespace

Status graph_attrs_into_word(Session& session, Node& node, const NodePattern& pattern) {
  if (!is_untouched(node) || node.candidates == nullptr) return Status::ok;
  // wanted: the kind comes from the word before the graph's attributes are in it.
  if (node.kind < kKindBoundary) node_kind_recompute(node);
  const std::string_view text = text_or_empty(head_text(node));
  if (text.empty()) return Status::ok;
  WordEntry& word = *node.candidates;
  // A node that was there has them from an earlier match; for one that is brought in they count once more.
  const std::string_view old = text_or_empty(word.attrs);
  if (pattern.inserted == 0 && old.find(text) != std::string_view::npos) return Status::ok;
  // The new length is computed, not measured: it can exceed that of the string.
  const std::int64_t wanted_length = std::int64_t{word.attr_len} + static_cast<std::int64_t>(text.size()) + 1;
  const auto total = static_cast<std::int32_t>(std::min<std::int64_t>(wanted_length, kAttrLimit - 1));
  // The graph's part of the new attributes, in at most `room` characters.
  const auto room = static_cast<std::size_t>(std::max(0, total - word.attr_len - 1));
  std::string_view part = text.substr(0, room);
  std::string_view separator;
  std::string_view own;
  const std::size_t mark = text.find(kScopeMark);
  if (mark != std::string_view::npos && mark + kScopeMark.size() != text.size()) {
    const std::string_view brought = text.substr(mark + kScopeMark.size() + 1);
    const std::size_t needed = brought.size() + kScopeMark.size();
    part = needed > room ? brought.substr(0, room) : brought;
    if (needed <= room) separator = kScopeMark;
    // The node's own attributes come in whole or not at all.
    const bool has_room = needed + 1 + mark <= room;
    if (has_room) separator = ",;,";
    if (has_room) own = text.substr(0, mark);
  }
  // The graph's part, and behind it a comma and the old ones, if there are any.
  const std::string_view comma = word.attrs == nullptr ? "" : ",";
  const std::size_t size = part.size() + separator.size() + own.size() + comma.size() + old.size();
  auto* attrs = static_cast<char*>(temp_alloc(session, static_cast<std::int64_t>(size) + 1));
  if (attrs == nullptr) return Status::memory;
  *texts_copy(attrs, part, separator, own, comma, old) = '\0';
  temp_free_string(session, word.attrs);
  word.attrs = attrs;
  const std::int32_t growth = total - word.attr_len;
  word.attr_block_size += growth;
  word.total_size += growth;
  word.attr_len = total;
  return Status::ok;
}

}  // namespace lexon
