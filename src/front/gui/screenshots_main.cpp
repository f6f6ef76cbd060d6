// Makes the pictures of the manual: every dialog, with the settings of an example, in a plain frame.
//
//   lexon-screenshots FOLDER [LOCALE [dark]]
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyleFactory>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "front/gui/about_dialog.hpp"
#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/gui/progress_dialog.hpp"
#include "front/gui/setting_dialog.hpp"
#include "front/gui/summary_dialog.hpp"

namespace {

// All in units of the screen, of which `kDensity` pixels make one.
constexpr int kBar = 30;    // the title bar
constexpr int kMargin = 1;  // of the frame
constexpr int kCorner = 8;
constexpr double kDensity = 2.0;

const QColor kBarColour(0x24, 0x40, 0x5f);
const QColor kEdgeColour(0x8a, 0x97, 0xa6);

// The platform that draws here has no window manager, and so no frames.
QPixmap with_frame(QWidget& window) {
  const QPixmap inside = window.grab();
  const QSizeF size = inside.deviceIndependentSize();
  QPixmap whole(QSizeF(size.width() + 2 * kMargin, size.height() + kBar + kMargin).toSize() * kDensity);
  whole.setDevicePixelRatio(kDensity);
  whole.fill(Qt::transparent);
  const QRectF frame(0.5, 0.5, whole.deviceIndependentSize().width() - 1, whole.deviceIndependentSize().height() - 1);
  QPainterPath outline;
  outline.addRoundedRect(frame, kCorner, kCorner);
  QPainter painter(&whole);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setClipPath(outline);
  painter.fillRect(frame, kBarColour);
  painter.drawPixmap(kMargin, kBar, inside);
  painter.setPen(Qt::white);
  QFont font = window.font();
  font.setBold(true);
  painter.setFont(font);
  painter.drawText(QRectF(0, 0, frame.width(), kBar), Qt::AlignCenter, window.windowTitle());
  painter.setClipping(false);
  painter.setPen(kEdgeColour);
  painter.drawPath(outline);
  return whole;
}

// The image in its 256 most frequent colours: a third of the size, and nobody sees the difference.
QImage with_palette(const QImage& image) {
  QHash<QRgb, int> count;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) ++count[image.pixel(x, y)];
  }
  QList<QRgb> colours = count.keys();
  // A tie is decided by the colour itself, so that the same window gives the same bytes.
  std::ranges::sort(colours, [&count](QRgb a, QRgb b) { return std::pair(count[a], a) > std::pair(count[b], b); });
  colours.resize(std::min<qsizetype>(colours.size(), 256));
  return image.convertToFormat(QImage::Format_Indexed8, colours);
}

// The window must have been shown once: before, it has neither size nor style.
bool save(QWidget& window, const QDir& folder, const QString& name) {
  window.show();
  QApplication::processEvents();
  const QString path = folder.filePath(name);
  const bool done = with_palette(with_frame(window).toImage()).save(path, "PNG", 0);
  std::printf("%s%s\n", qPrintable(path), done ? "" : ": cannot be written");
  window.hide();
  return done;
}

// The files are made in the current folder: the dialog would mark them otherwise.
lexon::CommandLine example_line() {
  QDir().mkdir("english");
  for (const char* name : {"words.dic", "cr.dic", "rules.txt", "input.txt", "sentences.txt"}) {
    static_cast<void>(QFile(QString("english/") + name).open(QIODevice::WriteOnly));
  }
  lexon::CommandLine line;
  line.settings.dictionary_file = "english/words.dic";
  line.settings.cr_dictionary_file = "english/cr.dic";
  line.settings.rule_file = "english/rules.txt";
  line.settings.input_file = "english/input.txt";
  line.settings.output_file = "english/sentences.txt";
  line.settings.sentence_count = 0;
  line.settings.max_time_per_sentence = 10;
  return line;
}

// Made up, as is the progress below: no run takes place.
lexon::SentenceReport example_failure() {
  lexon::SentenceReport report;
  report.label = "[S:17]";
  report.status = "failed";
  report.milliseconds = 3.2;
  report.steps = 214;
  report.steps_back = 203;
  report.unknown_words = {"emu(>animal)"};
  report.unused_relations = {"mod(emu(>animal), tall)"};
  return report;
}

// The style works the other colours out from these.
QPalette dark_palette() {
  QPalette palette(QColor(0x30, 0x32, 0x36), QColor(0x2a, 0x2c, 0x30));
  palette.setColor(QPalette::Base, QColor(0x1d, 0x1f, 0x22));
  palette.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xc2));
  return palette;
}

// Stops at the first picture that cannot be written.
bool save_all(const QDir& folder) {
  lexon::MainDialog main(example_line());
  lexon::SettingDialog setting(main.settings(), nullptr);
  lexon::ProgressDialog progress(main.settings(), nullptr);
  progress.show_step("sentence no.", 17);
  progress.show_elapsed(0.4);
  progress.show_progress({.closed = 16, .all = 64, .lost = 1, .seconds = 12.5});
  lexon::RunSummary run;
  run.settings = main.settings();
  run.outcome.done = 63;
  run.outcome.failed = 1;
  run.seconds = 0.4;
  run.lost = {{.number = 17, .report = example_failure()}};
  lexon::SummaryDialog summary(run, nullptr);
  // The button is there only where the workbench is; a picture shows it always.
  auto* page = summary.findChild<QPushButton*>("open_page");
  page->setEnabled(true);
  page->show();
  lexon::AboutDialog about(nullptr);
  return save(main, folder, "main.png") && save(setting, folder, "setting.png") &&
         save(progress, folder, "progress.png") && save(summary, folder, "summary.png") &&
         save(about, folder, "about.png");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 4) {
    std::fprintf(stderr, "usage: lexon-screenshots FOLDER [LOCALE [dark]]\n");
    return 2;
  }
  // Before the application is made: it reads them once.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kDensity));
  const QApplication application(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (argc > 3) QApplication::setPalette(dark_palette());
  // Without a locale the numbers are those of the programs' own output.
  QLocale::setDefault(QLocale(argc > 2 ? argv[2] : "C"));
  lexon::resources_load();
  lexon::translations_load();
  const QDir folder(QFileInfo(argv[1]).absoluteFilePath());
  const QTemporaryDir example;
  if (!QDir().mkpath(folder.path()) || !QDir::setCurrent(example.path())) return 1;
  return save_all(folder) ? 0 : 1;
}
