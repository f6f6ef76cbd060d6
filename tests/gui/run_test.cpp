// Whole runs, worked through the windows from the first to the last.
#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QUrl>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/gui/summary_dialog.hpp"
#include "gui/windows.hpp"
#include "support/capture.hpp"
#include "support/program.hpp"

namespace lexon::test {

namespace {

constexpr const char* kDog = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n";
constexpr const char* kCat = "[S:3]\n[W]\ncat.@entry\n[/W]\n[/S]\n";
// No word of the chain may end a sentence, and there are ten for each: the search tries them all.
constexpr const char* kEndless = "[S:2]\nnxt(a.@entry,b)\nnxt(b,c)\nnxt(c,d)\nnxt(d,e)\nnxt(e,f)\nnxt(f,g)\nnxt(g,h)\nnxt(h,i)\n[/S]\n";
constexpr const char* kRules = ":{N:::}\"N::nxt:\"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n";
constexpr const char* kDogOutput = "[S:1]\ndog\n;;Time ?\tSec\n;;Done!\n";
constexpr const char* kCatOutput = "[S:3]\ncat\n;;Time ?\tSec\n;;Done!\n";

std::string entries() {
  std::string text = "[dog]{} \"dog\" (OK);\n[cat]{} \"cat\" (OK);\n";
  for (char name = 'a'; name <= 'i'; ++name) {
    for (char word = '0'; word <= '9'; ++word) text += std::string("[") + name + word + "]{} \"" + name + "\" (N);\n";
  }
  return text;
}

}  // namespace

class RunTest : public QObject {
  Q_OBJECT

 private:
  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
  [[nodiscard]] std::string output() const { return mask_times(bytes_of(path("output.txt"))); }

  // The settings of a run over `input`, all sentences, sentences alone.
  [[nodiscard]] CommandLine line_for(const std::string& input) const {
    write_file(path("input.txt"), input);
    CommandLine line;
    line.settings.dictionary_file = path("words.dic");
    line.settings.rule_file = path("rules.txt");
    line.settings.input_file = path("input.txt");
    line.settings.output_file = path("output.txt");
    line.settings.sentence_count = 0;
    line.settings.trace_level = 0;
    return line;
  }

  // Presses "Render" for a run that comes to its end, and the button of its summary.
  static void render(
      QWidget& main, const QString& leave_by = "close", const std::function<void(QWidget&)>& look = [](QWidget&) {}) {
    when_shown("summary_dialog", [=](QWidget& summary) {
      look(summary);
      press(summary, leave_by);
    });
    press(main, "render");
  }

  std::string folder_;
  QList<QUrl> opened_;  // by the desktop

 public Q_SLOTS:
  void open(const QUrl& url) { opened_ << url; }

 private Q_SLOTS:
  void initTestCase() {
    folder_ = fresh_folder("gui-run");
    write_file(path("entries.txt"), entries());
    QCOMPARE(run_program("lexon-dict", {"build", path("entries.txt"), path("words.dic")}).exit_status, 0);
    write_file(path("rules.txt"), kRules);
    QDesktopServices::setUrlHandler("file", this, "open");
  }

  void cleanupTestCase() { QDesktopServices::unsetUrlHandler("file"); }

  void init() { write_file(path("output.txt"), ""); }

  void from_empty_settings_to_the_output_file() {
    write_file(path("input.txt"), std::string(kDog) + kCat);
    MainDialog main{CommandLine{}};
    when_shown("main_dialog", [this](QWidget& window) {
      when_shown("setting_dialog", [this](QWidget& setting) {
        type(setting, "dictionary_file", to_text(path("words.dic")));
        type(setting, "rule_file", to_text(path("rules.txt")));
        type(setting, "input_file", to_text(path("input.txt")));
        type(setting, "output_file", to_text(path("output.txt")));
        type(setting, "sentence_count", "2");
        type(setting, "trace_level", "0");
        press(setting, "ok");
      });
      press(window, "setting");
      render(window);
    });
    QCOMPARE(main.run(), 0);
    QVERIFY(!main.isVisible());
    QCOMPARE(output(), std::string(kDogOutput) + kCatOutput);
  }

  void a_cancel_in_the_middle_data() {
    QTest::addColumn<QString>("by");
    for (const char* by : {"button", "Escape", "close"}) QTest::newRow(by) << by;
  }

  void a_cancel_in_the_middle() {
    QFETCH(QString, by);
    MainDialog main(line_for(std::string(kDog) + kEndless + kCat));
    when_shown("main_dialog", [by](QWidget& window) {
      const auto in_the_middle = [](QWidget& progress) { return text_of(progress, "number") == "2" && text_of(progress, "elapsed").toDouble() > 0.15; };
      const auto leave = [by](QWidget& progress) {
        QVERIFY(progress.isModal());
        QCOMPARE(progress.windowTitle(), "Rendering");
        QCOMPARE(text_of(progress, "caption"), "sentence no.");
        QCOMPARE(text_of(progress, "limit"), "0");
        QCOMPARE(text_of(progress, "sentences"), "1 of 3 sentences, 0 failed");
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) QTest::keyClick(progress.focusWidget(), key);  // without effect
        if (by == "button") press(progress, "cancel");
        if (by == "Escape") QTest::keyClick(&progress, Qt::Key_Escape);
        if (by == "close") progress.close();
      };
      when_shown("progress_dialog", leave, in_the_middle);
      render(window);
    });
    QCOMPARE(main.run(), 130);
    QCOMPARE(output(), std::string(kDogOutput) + "[S:2]\n;;Cancelled!\n");
  }

  void a_sentence_over_its_time_gives_way_to_the_next() {
    CommandLine line = line_for(std::string(kDog) + kEndless + kCat);
    line.settings.max_time_per_sentence = 1;
    MainDialog main(line);
    when_shown("main_dialog", [](QWidget& window) { render(window); });
    QCOMPARE(main.run(), 3);
    QCOMPARE(output(), std::string(kDogOutput) + "[S:2]\n;;Time Over!\n" + kCatOutput);
  }

  void a_summary_tells_what_was_lost_and_starts_again() {
    CommandLine line = line_for(std::string(kDog) + "[S:7]\n[W]\nemu.@entry\n[/W]\n[/S]\n[S:8]\n[W]\ncat.@entry\n[/W]\n");
    line.settings.start_sentence = 2;
    MainDialog main(line);
    when_shown("main_dialog", [this](QWidget& window) {
      render(window, "again", [this](QWidget& summary) {
        QCOMPARE(text_of(summary, "counts").section(';', 0, 0), "1 done, 1 failed, 1 unclosed, in line 11");
        QCOMPARE(text_of(summary, "output"), to_text(path("output.txt")));
        const auto& lost = control<QTreeWidget>(summary, "failures");
        QCOMPARE(lost.topLevelItemCount(), 1);
        const QTreeWidgetItem& row = *lost.topLevelItem(0);
        QCOMPARE(row.text(0) + row.text(1) + row.text(2), "2[S:7]failed");
        QVERIFY2(text_of(summary, "detail").contains("Not in the dictionary: emu."), qPrintable(text_of(summary, "detail")));
        const auto& dialog = dynamic_cast<const SummaryDialog&>(summary);
        QVERIFY(dialog.page_words(0, "p.html").join(' ').contains("-o p.html -s #2 "));
        press(summary, "open_output");
      });
    });
    QCOMPARE(main.run(), 3);
    QCOMPARE(opened_, {QUrl::fromLocalFile(to_text(path("output.txt")))});
    QCOMPARE(main.words_for_again().front(), path("words.dic"));
  }

  void a_page_shows_how_sentences_came_about() {
    opened_.clear();
    MainDialog main(line_for(std::string(kDog) + kCat));
    when_shown("main_dialog", [this](QWidget& window) {
      const auto look = [this](QWidget& summary) {
        press(summary, "open_page");
        // The workbench makes it in a process of its own.
        QTRY_COMPARE_WITH_TIMEOUT(opened_.size(), 1, 60'000);
        press(summary, "close");
      };
      when_shown("summary_dialog", look, [](QWidget& summary) { return control<QPushButton>(summary, "open_page").isEnabled(); });
      press(window, "render");
    });
    QCOMPARE(main.run(), 0);
    QCOMPARE(opened_.size(), 1);
    const std::string page = bytes_of(opened_.front().toLocalFile().toStdString());
    for (const char* shown : {"<html", "[S:3]"}) QVERIFY2(page.find(shown) != std::string::npos, shown);
  }

  void a_missing_dictionary_is_told_and_mended() {
    CommandLine line = line_for(kDog);
    line.settings.dictionary_file = path("<b>none.dic");
    MainDialog main(line);
    when_shown("main_dialog", [this, &main](QWidget& window) {
      when_shown("report_stop", [this](QWidget& box) {
        auto& message = dynamic_cast<QMessageBox&>(box);
        QVERIFY(message.text().startsWith(to_text("Can't Open Dictionary File : " + path("<b>none.dic") + "!")));
        QCOMPARE(message.icon(), QMessageBox::Critical);
        QTest::keyClick(&box, Qt::Key_Return);
      });
      press(window, "render");
      QVERIFY(main.isVisible());
      QCOMPARE(main.focusWidget(), &control<QPushButton>(window, "setting"));
      when_shown("setting_dialog", [this](QWidget& setting) {
        type(setting, "dictionary_file", to_text(path("words.dic")));
        press(setting, "ok");
      });
      press(window, "setting");
      render(window);
    });
    QCOMPARE(main.run(), 0);
    QCOMPARE(output(), kDogOutput);
  }

  void a_missing_co_occurrence_dictionary_is_asked_about() {
    CommandLine line = line_for(kDog);
    line.settings.cr_dictionary_file = path("none.dic");
    MainDialog main(line);
    when_shown("main_dialog", [this, &main](QWidget& window) {
      const auto answer = [](QMessageBox::StandardButton button) {
        when_shown("ask_yes_no", [button](QWidget& box) { dynamic_cast<QMessageBox&>(box).button(button)->click(); });
      };
      answer(QMessageBox::No);
      press(window, "render");
      QVERIFY(main.isVisible());
      QCOMPARE(output(), "");
      answer(QMessageBox::Yes);
      render(window);
    });
    QCOMPARE(main.run(), 0);
    QCOMPARE(output(), kDogOutput);
  }

  void go_with_nobody_there() {
    static_cast<void>(line_for(std::string(kDog) + kCat));
    const ProgramResult result = run_program("lexon-gui", {path("words.dic"), path("rules.txt"), path("input.txt"), path("output.txt"), "-Go", "-L0", "-N0"});
    QCOMPARE(result.exit_status, 0);
    QCOMPARE(output(), std::string(kDogOutput) + kCatOutput);
  }

  void go_that_cannot_start_ends_behind_its_message() {
    CommandLine line = line_for(kDog);
    line.settings.run_at_once = true;
    line.settings.rule_file.clear();
    MainDialog main(line);
    when_shown("report_stop", [](QWidget& box) { box.close(); });
    QCOMPARE(main.run(), 1);
  }

  // A step must not last as long as a tick, and a cancel must come through between short steps.
  void short_sentences_follow_each_other_without_a_pause() {
    std::string input;
    for (int i = 0; i < 2000; ++i) input += kDog;
    MainDialog main(line_for(input));
    when_shown("main_dialog", [](QWidget& window) { render(window); });
    QElapsedTimer time;
    time.start();
    QCOMPARE(main.run(), 0);
    QCOMPARE(QByteArray::fromStdString(output()).count("\ndog\n"), 2000);
    QVERIFY2(time.elapsed() < 50'000, qPrintable(QString::number(time.elapsed())));
  }

  void a_cancel_between_short_sentences() {
    std::string input;
    for (int i = 0; i < 200'000; ++i) input += kDog;
    MainDialog main(line_for(input));
    when_shown("main_dialog", [](QWidget& window) {
      when_shown("progress_dialog", [](QWidget& progress) { press(progress, "cancel"); });
      render(window);
    });
    QCOMPARE(main.run(), 130);
    QVERIFY(output().ends_with(";;Cancelled!\n"));
  }

  void the_program_without_windows() {
    struct Row {
      const char* word;
      int status;
      const char* said;
    };
    const Row rows[] = {{"--help", 0, "usage: lexon-gui"}, {"--version", 0, "lexon-gui "}, {"word", 2, "lexon-gui: not a switch: word\nusage: lexon-gui"}};
    for (const Row& row : rows) {
      const ProgramResult result = run_program("lexon-gui", {"a", "b", "c", "d", row.word});
      QCOMPARE(result.exit_status, row.status);
      QVERIFY2((result.out + result.error).starts_with(row.said), (result.out + result.error).c_str());
    }
  }
};

}  // namespace lexon::test

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  lexon::resources_load();
  lexon::test::RunTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "run_test.moc"
