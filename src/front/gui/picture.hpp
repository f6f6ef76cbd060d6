// A drawing that scales with the font and with the density of the screen.
#pragma once

#include <QWidget>

class QSvgRenderer;

namespace lexon {

class Picture : public QWidget {
  Q_OBJECT

 public:
  // `lines`: its height, in lines of text.
  Picture(const QString& resource, int lines, QWidget* parent);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QSvgRenderer* drawing_;
  int lines_;
};

}  // namespace lexon
