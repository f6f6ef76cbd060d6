// The rule records of the compiled rule file, one behind the other. Lengths are u16 and count what follows them.
//
//   record      length, type u8, [':' subtype u8], pre, lnode, mid, rnode, suf, priority u8
//   pre mid suf length, groups: star u8, hw items, cw items, attribute items
//   lnode rnode length, inserted u8, hw items, cw items, hw action, cw action, attribute items, action items,
//               relation items, role items
//   items       length, items: op u8, text
//   text        length, characters; null is length 0, the empty text is length 1 and a NUL
#pragma once

#include <cstddef>

namespace lexon {

// What the reader holds at a time; a record has to fit with its length field.
inline constexpr std::size_t kRecordBufferSize = 32767;

// Stands in front of a subtype, where else the high byte of the length of PRE stands.
inline constexpr char kSubtypeMark = ':';

}  // namespace lexon
