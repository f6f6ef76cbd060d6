// Attribute strings: attribute names with single commas between. Runs of commas are legal while a rule works on one.
#pragma once

namespace lexon {

// A pointer into `text` to the attribute `attr`, or null. Null arguments find nothing.
// wanted: as a last element it is found only if the first ",attr" of the text is that last element.
[[nodiscard]] char* attr_find(char* text, const char* attr);
[[nodiscard]] const char* attr_find(const char* text, const char* attr);

// Does the comma-separated `attrs` hold exactly `attr`? False for null arguments.
[[nodiscard]] bool attr_in(const char* attrs, const char* attr);

struct WordEntry;
// `attr_in` on the word's attributes. `entry` may be null.
[[nodiscard]] bool attr_has(const WordEntry* entry, const char* attr);

// Removes every element that equals `attr`, in place. A last element leaves the comma on its left.
void attr_erase(char* text, const char* attr);

}  // namespace lexon
