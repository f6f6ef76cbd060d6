// A field for the path of a file.
#pragma once

#include <QLineEdit>

class QAction;

namespace lexon {

enum class PathUse { read, write };

// Shows a long path elided in the middle while it is not edited, with the whole path as tool tip; takes a file that is
// dropped on it; marks a path that cannot be right, and takes it all the same.
class PathEdit : public QLineEdit {
  Q_OBJECT

 public:
  // `role` is the object name; the mark is the action `role`_mark. `help` says what the file is.
  PathEdit(const QString& role, PathUse use, const QString& help, QWidget* parent);

  // What is wrong with the path as it stands; empty if nothing is, or no path stands there.
  [[nodiscard]] QString fault() const;

  // What is wrong with it beside the other fields; empty if nothing is. Comes behind what is wrong with it alone.
  void set_conflict(const QString& conflict);

  // What is shown of a path while the field is not edited.
  [[nodiscard]] QString shown_text() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  void look_again();
  [[nodiscard]] QRect text_place() const;

  PathUse use_;
  QString help_;
  QString conflict_;
  QAction* mark_;
};

}  // namespace lexon
