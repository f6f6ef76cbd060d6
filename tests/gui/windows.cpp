#include "gui/windows.hpp"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>

namespace lexon::test {

namespace {

constexpr int kLookInterval = 5;   // milliseconds
constexpr int kPatience = 60'000;  // milliseconds; sanitizers and a loaded machine are slow

QWidget* visible_window(const QString& role) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->objectName() == role && window->isVisible()) return window;
  }
  return nullptr;
}

}  // namespace

void when_shown(const QString& role, std::function<void(QWidget&)> action, std::function<bool(QWidget&)> ready) {
  auto* timer = new QTimer(qApp);
  QElapsedTimer waiting;
  waiting.start();
  QObject::connect(timer, &QTimer::timeout, timer, [=] {
    QWidget* window = visible_window(role);
    const bool is_due = window != nullptr && ready(*window);
    if (!is_due && waiting.elapsed() > kPatience) qFatal("no window %s", qPrintable(role));
    if (!is_due) return;
    timer->stop();
    timer->deleteLater();
    action(*window);
    // A failed comparison has left the action early: nothing may wait for the rest of it.
    if (QTest::currentTestFailed()) QApplication::closeAllWindows();
  });
  timer->start(kLookInterval);
}

void press(QWidget& window, const QString& role) {
  QTest::mouseClick(&control<QPushButton>(window, role), Qt::LeftButton);
}

void type(QWidget& window, const QString& role, const QString& text) {
  auto& field = control<QWidget>(window, role);
  field.setFocus();
  QTest::keySequence(&field, QKeySequence::SelectAll);
  QTest::keyClick(&field, Qt::Key_Delete);
  QTest::keyClicks(&field, text);
}

QString text_of(QWidget& window, const QString& role) {
  const auto& field = control<QWidget>(window, role);
  for (const char* property : {"text", "currentText"}) {
    if (const QVariant value = field.property(property); value.isValid()) return value.toString();
  }
  qFatal("no text in %s", qPrintable(role));
}

}  // namespace lexon::test
