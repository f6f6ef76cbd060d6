// Windows as a user meets them: waited for, found by their role, worked by mouse and keys.
#pragma once

#include <QTest>
#include <QWidget>

#include <functional>

namespace lexon::test {

// Calls `action` once, with the window of that role, as soon as it is up and `ready`. To be called before what brings
// the window up. The run stands still while the action lasts: what it is to wait for belongs into `ready`. A window
// that never comes ends the program as a failure.
void when_shown(
    const QString& role, std::function<void(QWidget&)> action, std::function<bool(QWidget&)> ready = [](QWidget&) { return true; });

// The control of that role. It must be there.
template <typename Control>
Control& control(QWidget& window, const QString& role) {
  auto* found = window.findChild<Control*>(role);
  if (found == nullptr) qFatal("no control %s", qPrintable(role));
  return *found;
}

// Presses the button of that role with the mouse.
void press(QWidget& window, const QString& role);

// Puts `text` in the place of what stands in the field, by keys.
void type(QWidget& window, const QString& role, const QString& text);

// What stands in the field or label of that role.
[[nodiscard]] QString text_of(QWidget& window, const QString& role);

}  // namespace lexon::test
