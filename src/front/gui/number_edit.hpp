// A number with arrows beside it.
#pragma once

#include <QSpinBox>

namespace lexon {

// The arrows move the number within their range; a typed number is taken as it is.
class NumberEdit : public QSpinBox {
  Q_OBJECT

 public:
  NumberEdit(int first, int last, QWidget* parent);

  void stepBy(int steps) override;

 protected:
  [[nodiscard]] StepEnabled stepEnabled() const override;

 private:
  int first_;
  int last_;
};

}  // namespace lexon
