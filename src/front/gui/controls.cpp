#include "front/gui/controls.hpp"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLibraryInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTranslator>
#include <QUrl>

// The macro declares a function outside of all namespaces.
static void resources_init() {
  Q_INIT_RESOURCE(lexon_gui);
}

namespace lexon {

// Texts hold names of files, which may look like markup.
QLabel* make_label(const char* role, const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(role);
  label->setTextFormat(Qt::PlainText);
  return label;
}

// Belongs to `parent`, as every control does.
QPushButton* make_button(const char* role, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(role);
  return button;
}

// A library's resources are not there by themselves.
void resources_load() {
  resources_init();
}

// Ours lie where the program was installed, or in the folder that it was built in.
void translations_load() {
  const QString here = QCoreApplication::applicationDirPath();
  const std::pair<const char*, QString> places[] = {
      {"qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath)},
      {"lexon-gui", here + "/../translations"},
      {"lexon-gui", here + "/../share/lexon/translations"},
  };
  for (const auto& [name, folder] : places) {
    // A language without a file stays English. The translator belongs to the application, used or not.
    auto* translator = new QTranslator(qApp);
    if (translator->load(QLocale(), name, "_", folder)) QCoreApplication::installTranslator(translator);
  }
}

// A dialog that looks for its own place when it is first shown forgets on the way that it is minimised: it gets its
// place beforehand.
void show_minimised(QDialog& dialog) {
  if (!dialog.testAttribute(Qt::WA_Moved)) {
    dialog.adjustSize();
    QRect place = dialog.rect();
    place.moveCenter(dialog.screen()->availableGeometry().center());
    dialog.move(place.topLeft());
  }
  dialog.showMinimized();
}

// The desktop starts the program and does not wait for it.
void open_for_user(const QUrl& url, QWidget* parent) {
  if (QDesktopServices::openUrl(url)) return;
  const QString place = url.isLocalFile() ? url.toLocalFile() : url.toString();
  QMessageBox box(
      QMessageBox::Warning, "Lexon",
      QCoreApplication::translate("lexon", "%1 cannot be opened: the desktop has no program for it.").arg(place),
      QMessageBox::Ok, parent);
  box.setObjectName("cannot_open");
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

// An address wants the whole path.
void open_file(const QString& path, QWidget* parent) {
  open_for_user(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()), parent);
}

// Beside the program as it is installed, or in the folder that it was built in.
void open_manual(QWidget* parent) {
  const QString here = QCoreApplication::applicationDirPath();
  for (const char* place : {"/../share/doc/lexon/html/dialogs.html", "/../share/doc/lexon/manual/dialogs.md",
                            "/../../docs/dialogs.html", "/../../../docs/dialogs.md"}) {
    const QFileInfo page(here + place);
    if (page.isFile()) return open_file(page.canonicalFilePath(), parent);
  }
  QMessageBox box(
      QMessageBox::Information, "Lexon",
      QCoreApplication::translate("lexon", "The manual is not installed. On Debian it is in the package lexon-doc."),
      QMessageBox::Ok, parent);
  box.setObjectName("cannot_open");
  box.exec();
}

QIcon program_icon() {
  return QIcon(":/lexon/lexon.svg");
}

// Bytes that are no characters of the user's locale do not survive the way there and back; see `read_controls`.
QString to_text(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

std::string to_path(const QString& text) {
  return QFile::encodeName(text).toStdString();
}

}  // namespace lexon
