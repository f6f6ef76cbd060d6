#include "front/gui/about_dialog.hpp"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "front/gui/controls.hpp"
#include "front/gui/picture.hpp"

namespace lexon {

namespace {
constexpr int kIconLines = 4;
}  // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
  setObjectName("about_dialog");
  setWindowTitle(tr("About Lexon"));
  // Drawn, not an icon of fixed sizes: it grows with the font.
  auto* icon = new Picture(":/lexon/lexon.svg", kIconLines, this);
  icon->setObjectName("icon");
  auto* box = new QDialogButtonBox(this);
  QPushButton* ok = make_button("ok", tr("OK"), box);
  box->addButton(ok, QDialogButtonBox::AcceptRole);
  connect(box, &QDialogButtonBox::accepted, this, &AboutDialog::accept);

  auto* grid = new QGridLayout(this);
  const int gap = fontMetrics().height();
  grid->setContentsMargins(gap, gap, gap, gap);
  grid->setHorizontalSpacing(gap);
  grid->addWidget(icon, 0, 0, 2, 1);
  grid->addWidget(make_label("name", "Lexon " LEXON_VERSION, this), 0, 1, Qt::AlignBottom);
  grid->addWidget(make_label("purpose", tr("A rule-driven natural-language generator"), this), 1, 1, Qt::AlignTop);
  grid->setRowMinimumHeight(2, gap / 2);
  grid->addWidget(box, 3, 0, 1, 2);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  ok->setDefault(true);
}

}  // namespace lexon
