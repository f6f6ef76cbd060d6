// About Lexon.
#pragma once

#include <QDialog>

namespace lexon {

class AboutDialog : public QDialog {
  Q_OBJECT

 public:
  explicit AboutDialog(QWidget* parent);
};

}  // namespace lexon
