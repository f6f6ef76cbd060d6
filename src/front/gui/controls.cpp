#include "front/gui/controls.hpp"

#include <QFile>
#include <QLabel>
#include <QPushButton>

// The macro declares a function outside of all namespaces.
static void resources_init() {
  Q_INIT_RESOURCE(lexon_gui);
}

namespace lexon {

QLabel* make_label(const char* role, const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(role);
  label->setTextFormat(Qt::PlainText);
  return label;
}

QPushButton* make_button(const char* role, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(role);
  return button;
}

void resources_load() {
  resources_init();
}

QIcon program_icon() {
  return QIcon(":/lexon/lexon.svg");
}

QString to_text(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

std::string to_path(const QString& text) {
  return QFile::encodeName(text).toStdString();
}

}  // namespace lexon
