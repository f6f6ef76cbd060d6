#include "front/gui/number_edit.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace lexon {

// The toolkit's own range holds for typed numbers: it is that of the field.
NumberEdit::NumberEdit(int first, int last, QWidget* parent) : QSpinBox(parent), first_(first), last_(last) {
  setRange(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
  setLocale(QLocale::c());
}

// From outside of the range the first step leads to its nearest end.
void NumberEdit::stepBy(int steps) {
  const std::int64_t wanted = std::int64_t{value()} + steps;
  setValue(static_cast<int>(std::clamp<std::int64_t>(wanted, first_, last_)));
  selectAll();
}

NumberEdit::StepEnabled NumberEdit::stepEnabled() const {
  StepEnabled enabled = StepNone;
  if (value() < last_) enabled |= StepUpEnabled;
  if (value() > first_) enabled |= StepDownEnabled;
  return enabled;
}

}  // namespace lexon
