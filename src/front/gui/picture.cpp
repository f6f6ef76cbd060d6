#include "front/gui/picture.hpp"

#include <QPainter>
#include <QSvgRenderer>

namespace lexon {

Picture::Picture(const QString& resource, int lines, QWidget* parent)
    : QWidget(parent), drawing_(new QSvgRenderer(resource, this)), lines_(lines) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

// The height is given by the font, the width by the drawing.
QSize Picture::sizeHint() const {
  const int height = lines_ * fontMetrics().height();
  return drawing_->defaultSize().scaled(QWIDGETSIZE_MAX, height, Qt::KeepAspectRatio);
}

void Picture::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  drawing_->render(&painter, rect());
}

}  // namespace lexon
