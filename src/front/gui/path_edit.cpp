#include "front/gui/path_edit.hpp"

#include <QAction>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QStyleOptionFrame>
#include <QStylePainter>
#include <QToolButton>
#include <QUrl>

namespace lexon {

namespace {

// What the toolkit leaves free on each side of the text.
constexpr int kTextMargin = 2;

// The first file of what is dragged; empty if there is none on this machine.
QString dragged_file(const QMimeData& dragged) {
  for (const QUrl& url : dragged.urls()) {
    if (url.isLocalFile()) return url.toLocalFile();
  }
  return {};
}

// A path may look like markup.
QString plain_tip(const QString& text) {
  return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal) : text;
}

}  // namespace

// The mark stands in the field itself, and takes no room as long as nothing is wrong.
PathEdit::PathEdit(const QString& role, PathUse use, const QString& help, QWidget* parent)
    : QLineEdit(parent), use_(use), help_(help) {
  setObjectName(role);
  mark_ = addAction(style()->standardIcon(QStyle::SP_MessageBoxWarning), QLineEdit::TrailingPosition);
  mark_->setObjectName(role + "_mark");
  mark_->setText(tr("Something is wrong with this path"));  // for who does not see it
  mark_->setVisible(false);
  connect(this, &QLineEdit::textChanged, this, &PathEdit::look_again);
  setWhatsThis(help_);
  look_again();
}

// What is wrong with the path alone goes first. An output that is not there is all right, as long as its folder is.
QString PathEdit::fault() const {
  if (text().isEmpty()) return {};
  const QFileInfo file(text());
  if (file.isDir()) return tr("This is a folder.");
  if (use_ == PathUse::read && !file.exists()) return tr("There is no such file.");
  if (use_ == PathUse::write && !QFileInfo(file.path()).isDir()) return tr("There is no such folder.");
  return conflict_;
}

// What is wrong with the path beside the other paths of the run; empty if nothing is.
void PathEdit::set_conflict(const QString& conflict) {
  if (conflict == conflict_) return;
  conflict_ = conflict;
  look_again();
}

// The tip shows the whole path, which the field may cut, then what is wrong, then what the field is for.
void PathEdit::look_again() {
  const QString found = fault();
  mark_->setVisible(!found.isEmpty());
  mark_->setToolTip(found);
  QStringList lines{text(), found, help_};
  lines.removeAll(QString());
  setToolTip(plain_tip(lines.join('\n')));
  setAccessibleDescription(found.isEmpty() ? help_ : found);
}

// Beside the mark.
QRect PathEdit::text_place() const {
  QStyleOptionFrame frame;
  initStyleOption(&frame);
  QRect place = style()->subElementRect(QStyle::SE_LineEditContents, &frame, this);
  place = place.marginsRemoved(textMargins()).adjusted(kTextMargin, 0, -kTextMargin, 0);
  for (const QToolButton* button : findChildren<QToolButton*>()) {
    if (button->isVisible()) place.setRight(std::min(place.right(), button->x() - 1));
  }
  return place;
}

// Cut in the middle: both the folder and the name tell a path.
QString PathEdit::shown_text() const {
  return fontMetrics().elidedText(text(), Qt::ElideMiddle, text_place().width());
}

// Only a path that does not fit, while nobody edits it, is drawn here.
void PathEdit::paintEvent(QPaintEvent* event) {
  const QString shown = shown_text();
  if (hasFocus() || shown == text()) return QLineEdit::paintEvent(event);
  QStylePainter painter(this);
  QStyleOptionFrame frame;
  initStyleOption(&frame);
  painter.drawPrimitive(QStyle::PE_PanelLineEdit, frame);
  painter.drawItemText(text_place(), Qt::AlignVCenter, palette(), isEnabled(), shown, QPalette::Text);
}

// Files are taken over as paths; text is dropped as in any field.
void PathEdit::dragEnterEvent(QDragEnterEvent* event) {
  if (dragged_file(*event->mimeData()).isEmpty()) return QLineEdit::dragEnterEvent(event);
  event->acceptProposedAction();
}

void PathEdit::dragMoveEvent(QDragMoveEvent* event) {
  if (dragged_file(*event->mimeData()).isEmpty()) return QLineEdit::dragMoveEvent(event);
  event->acceptProposedAction();
}

void PathEdit::dropEvent(QDropEvent* event) {
  const QString file = dragged_file(*event->mimeData());
  if (file.isEmpty()) return QLineEdit::dropEvent(event);
  setText(file);
  event->acceptProposedAction();
}

// The file may have come or gone while the user was elsewhere.
void PathEdit::focusInEvent(QFocusEvent* event) {
  look_again();
  QLineEdit::focusInEvent(event);
}

}  // namespace lexon
