// The dialogs, each by itself.
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/gui/number_edit.hpp"
#include "front/gui/path_edit.hpp"
#include "front/gui/progress_dialog.hpp"
#include "front/gui/setting_dialog.hpp"
#include "gui/windows.hpp"
#include "support/program.hpp"

namespace lexon::test {

namespace {

// All that the Setting dialog shows, one behind the other.
QString controls_of(QWidget& setting) {
  QStringList texts;
  for (const char* role : {"dictionary_file", "cr_dictionary_file", "kb_dictionary_file", "rule_file", "input_file", "output_file", "start_sentence",
                           "sentence_count", "max_time_per_sentence", "trace_level"}) {
    texts << text_of(setting, role);
  }
  return texts.join(' ') + (control<QAbstractButton>(setting, "rules_conversion_only").isChecked() ? " R" : "");
}

QString fields_of(const RunSettings& s) {
  const QStringList paths{to_text(s.dictionary_file), to_text(s.cr_dictionary_file), to_text(s.kb_dictionary_file),
                          to_text(s.rule_file),       to_text(s.input_file),         to_text(s.output_file)};
  QString text = paths.join(' ');
  for (const int number : {s.start_sentence, s.sentence_count, s.max_time_per_sentence, s.trace_level}) {
    text += ' ' + QString::number(number);
  }
  return text + (s.rules_conversion_only ? " R" : "");
}

RunSettings some_settings() {
  RunSettings settings;
  settings.dictionary_file = "w.dic";
  settings.cr_dictionary_file = "cr.dic";
  settings.rule_file = "r.txt";
  settings.input_file = "i.txt";
  settings.output_file = "o.txt";
  settings.start_sentence = 250;
  settings.sentence_count = 0;
  settings.max_time_per_sentence = 7;
  settings.trace_level = 4;
  return settings;
}

constexpr const char* kSomeText = "w.dic cr.dic  r.txt i.txt o.txt 250 0 7 4";

}  // namespace

class DialogTest : public QObject {
  Q_OBJECT

 private:
  QTemporaryDir folder_;

  [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

 private Q_SLOTS:
  void initTestCase() {
    QVERIFY(QDir::setCurrent(folder_.path()));
    for (const char* name : {"w.dic", "cr.dic", "r.txt", "i.txt", "o.txt", "no-extension"}) write_file(name, "");
  }

  void setting_takes_over_what_was_typed() {
    SettingDialog dialog(some_settings(), nullptr);
    dialog.show();
    QCOMPARE(controls_of(dialog), kSomeText);
    type(dialog, "dictionary_file", "new.dic");
    type(dialog, "start_sentence", "1234");  // beyond the range of the arrows
    type(dialog, "sentence_count", "101");
    type(dialog, "max_time_per_sentence", "-1");
    type(dialog, "trace_level", "5");  // beyond the list
    QTest::keyClick(&control<QWidget>(dialog, "rules_conversion_only"), Qt::Key_Space);
    QTest::keyClick(&control<QWidget>(dialog, "trace_level"), Qt::Key_Return);
    QCOMPARE(dialog.result(), QDialog::Accepted);
    QCOMPARE(fields_of(dialog.fields()), "new.dic cr.dic  r.txt i.txt o.txt 1234 101 -1 5 R");
    QVERIFY(dialog.fields().post_edit);
  }

  void a_trace_level_that_is_no_number_changes_nothing() {
    SettingDialog dialog(some_settings(), nullptr);
    type(dialog, "trace_level", "x");
    dialog.accept();
    QCOMPARE(fields_of(dialog.fields()), kSomeText);
  }

  void cancel_in_setting_leaves_all_as_it_was() {
    CommandLine line;
    line.settings = some_settings();
    MainDialog main(line);
    const auto change_and_leave_by = [&main](const char* way) {
      when_shown("setting_dialog", [way](QWidget& setting) {
        type(setting, "rule_file", "other.txt");
        type(setting, "start_sentence", "9");
        press(setting, way);
      });
      main.open_setting();
      return fields_of(main.settings());
    };
    QCOMPARE(change_and_leave_by("cancel"), kSomeText);
    QCOMPARE(change_and_leave_by("ok"), "w.dic cr.dic  other.txt i.txt o.txt 9 0 7 4");
  }

  // A path of other bytes than characters must not be lost by a look at it.
  void a_path_keeps_its_bytes() {
    RunSettings settings;
    settings.input_file = "caf\xe9.txt";
    SettingDialog dialog(settings, nullptr);
    dialog.accept();
    QCOMPARE(dialog.fields().input_file, settings.input_file);
  }

  void the_arrows_stay_in_their_range_data() {
    QTest::addColumn<QString>("role");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("to");
    QTest::newRow("up") << "start_sentence" << 1 << int(Qt::Key_Up) << "2";
    QTest::newRow("first") << "start_sentence" << 1 << int(Qt::Key_Down) << "1";
    QTest::newRow("first of the counts") << "sentence_count" << 1 << int(Qt::Key_Down) << "0";
    QTest::newRow("last") << "max_time_per_sentence" << 100 << int(Qt::Key_Up) << "100";
    QTest::newRow("back into the range") << "start_sentence" << 250 << int(Qt::Key_Down) << "100";
    QTest::newRow("not further out") << "start_sentence" << 250 << int(Qt::Key_Up) << "250";
  }

  void the_arrows_stay_in_their_range() {
    QFETCH(QString, role);
    QFETCH(int, from);
    QFETCH(int, key);
    SettingDialog dialog({}, nullptr);
    auto& number = control<NumberEdit>(dialog, role);
    number.setValue(from);
    QTest::keyClick(&number, static_cast<Qt::Key>(key));
    QTEST(number.text(), "to");
  }

  void a_browse_button_data() {
    const QString words = "Dictionary Files (*.dic)|All Files (*.*)";
    QTest::addColumn<QString>("filters");
    QTest::newRow("dictionary_file") << words;
    QTest::newRow("cr_dictionary_file") << words;
    QTest::newRow("rule_file") << "Rule Files (*.rul;*.txt)|All Files (*.*)";
    QTest::newRow("input_file") << "Text Files (*.txt)|All Files (*.*)";
    QTest::newRow("output_file") << "Text Files (*.txt; *.trc)|All Files (*.*)";
  }

  void a_browse_button() {
    const QString role = QTest::currentDataTag();
    const bool saves = role == "output_file";
    const QString name = saves ? "new" : "no-extension";
    SettingDialog dialog(some_settings(), nullptr);
    dialog.show();
    const auto browse = [&dialog, &role](const std::function<void(QFileDialog&)>& work) {
      when_shown(role + "_dialog", [&work](QWidget& window) {
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        work(dynamic_cast<QFileDialog&>(window));
      });
      press(dialog, role + "_browse");
      return text_of(dialog, role);
    };
    const QString before = text_of(dialog, role);
    const QString behind_cancel = browse([&](QFileDialog& files) {
      QStringList filters;
      const auto& types = control<QComboBox>(files, "fileTypeCombo");
      for (int i = 0; i < types.count(); ++i) filters << types.itemText(i);
      QTEST(filters.join('|'), "filters");
      QCOMPARE(files.fileMode(), saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
      QCOMPARE(files.acceptMode(), saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
      QVERIFY(!files.testOption(QFileDialog::DontConfirmOverwrite));
      QCOMPARE(text_of(files, "fileNameEdit"), before);
      control<QLineEdit>(files, "fileNameEdit").setText("no-extension");
      files.reject();
    });
    QCOMPARE(behind_cancel, before);
    QCOMPARE(fields_of(dialog.fields()), kSomeText);
    const QString chosen = browse([name](QFileDialog& files) {
      QVERIFY(files.nameFilters().constLast().endsWith("(*)"));  // whatever has no extension too
      // The toolkit reads the folder beside the run; until it has, it may clear what is typed.
      for (int tries = 0; tries < 100 && files.isVisible(); ++tries) {
        type(files, "fileNameEdit", name);
        static_cast<QDialog&>(files).accept();
        if (files.isVisible()) QTest::qWait(20);
      }
      QVERIFY(!files.isVisible());
    });
    QCOMPARE(chosen, path(name));
  }

  void kb_is_disabled() {
    SettingDialog dialog({}, nullptr);
    for (const char* role : {"kb_dictionary_file", "kb_dictionary_file_browse"}) {
      QVERIFY(!control<QWidget>(dialog, role).isEnabled());
    }
  }

  void a_path_that_cannot_be_right_is_marked_data() {
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("role");
    QTest::addColumn<QString>("text");
    QTest::newRow("there") << ""
                           << "input_file"
                           << "i.txt";
    QTest::newRow("empty") << ""
                           << "input_file"
                           << "";
    QTest::newRow("missing") << "There is no such file."
                             << "input_file"
                             << "none.txt";
    QTest::newRow("a folder") << "This is a folder."
                              << "rule_file"
                              << "..";
    QTest::newRow("output, new") << ""
                                 << "output_file"
                                 << "new.txt";
    QTest::newRow("output, nowhere") << "There is no such folder."
                                     << "output_file"
                                     << "none/new.txt";
  }

  void a_path_that_cannot_be_right_is_marked() {
    QFETCH(QString, fault);
    QFETCH(QString, role);
    QFETCH(QString, text);
    SettingDialog dialog({}, nullptr);
    type(dialog, role, text);
    QCOMPARE(control<QAction>(dialog, role + "_mark").isVisible(), !fault.isEmpty());
    QCOMPARE(control<QWidget>(dialog, role).accessibleDescription(), fault);
    QCOMPARE(control<QWidget>(dialog, role).toolTip(), fault.isEmpty() ? text : text + "\n" + fault);
  }

  void an_output_that_is_an_input_is_marked() {
    SettingDialog dialog({}, nullptr);
    type(dialog, "input_file", "i.txt");
    type(dialog, "output_file", "../" + QDir::current().dirName() + "/i.txt");
    QVERIFY(control<QAction>(dialog, "output_file_mark").isVisible());
    QVERIFY(control<QWidget>(dialog, "output_file").accessibleDescription().contains("same file as the input"));
    type(dialog, "input_file", "none.txt");
    QVERIFY(!control<QAction>(dialog, "output_file_mark").isVisible());
  }

  void ok_asks_before_it_takes_an_output_that_holds_something() {
    write_file("full.txt", "something");
    write_file("bare.txt", "");
    struct Row {
      const char* output;
      const char* own;
      const char* answer;  // null: nothing asks
      int result;
    };
    const Row rows[] = {{"full.txt", "", "Yes", QDialog::Accepted},
                        {"full.txt", "", "No", QDialog::Rejected},
                        {"full.txt", "full.txt", nullptr, QDialog::Accepted},
                        {"bare.txt", "", nullptr, QDialog::Accepted}};
    for (const Row& row : rows) {
      RunSettings settings;
      settings.output_file = row.output;
      SettingDialog dialog(settings, nullptr);
      dialog.may_overwrite(row.own);
      bool was_asked = false;
      if (row.answer != nullptr) {
        when_shown("ask_overwrite", [&](QWidget& box) {
          was_asked = true;
          QTest::keyClick(&box, *row.answer == 'Y' ? Qt::Key_Y : Qt::Key_N, Qt::AltModifier);
        });
      }
      dialog.accept();
      QCOMPARE(dialog.result(), row.result);
      QCOMPARE(was_asked, row.answer != nullptr);
    }
  }

  void a_long_path_is_elided_in_the_middle_until_it_is_edited() {
    const QString text = "/home/" + QString("very-long-folder/").repeated(20) + "words.dic";
    PathEdit field("long", PathUse::read, nullptr);
    field.setText(text);
    field.resize(200, field.sizeHint().height());
    field.show();
    const QString shown = field.shown_text();
    QVERIFY2(shown.startsWith("/home/") && shown.endsWith("words.dic") && shown.contains(u'…'), qPrintable(shown));
    QVERIFY(field.fontMetrics().horizontalAdvance(shown) < 200);
    field.clearFocus();
    const QImage elided = field.grab().toImage();
    field.activateWindow();
    field.setFocus();
    QTRY_VERIFY(field.hasFocus());
    field.setCursorPosition(0);
    QVERIFY(field.grab().toImage() != elided);
    QVERIFY(field.toolTip().startsWith(text));
  }

  void a_file_can_be_dropped_on_a_path() {
    SettingDialog dialog({}, nullptr);
    auto& field = control<PathEdit>(dialog, "rule_file");
    QMimeData dragged;
    dragged.setUrls({QUrl("http://example.org/"), QUrl::fromLocalFile(path("r.txt"))});
    QDragEnterEvent enter({1, 1}, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&field, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop({1, 1}, Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&field, &drop);
    dialog.accept();
    QCOMPARE(to_text(dialog.fields().rule_file), path("r.txt"));
  }

  void about_comes_by_key_and_by_context_menu() {
    MainDialog main{CommandLine{}};
    main.show();
    main.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&main));
    int shown = 0;
    const auto count_about = [&shown] {
      when_shown("about_dialog", [&shown](QWidget& about) {
        ++shown;
        QCOMPARE(about.windowTitle(), "About Lexon");
        QTest::keyClick(&about, Qt::Key_Return);
      });
    };
    count_about();
    QTest::keyClick(&main, Qt::Key_F1);
    QTRY_COMPARE(shown, 1);
    QCOMPARE(main.contextMenuPolicy(), Qt::ActionsContextMenu);
    QCOMPARE(main.actions().constFirst()->text(), "&About Lexon...");
    count_about();
    main.actions().constFirst()->trigger();
    QCOMPARE(shown, 2);
  }

  void every_control_can_be_reached_and_named() {
    MainDialog main{CommandLine{}};
    SettingDialog setting({}, nullptr);
    ProgressDialog progress(0, false, nullptr);
    QStringList mnemonics;
    for (QWidget* window : QList<QWidget*>{&main, &setting, &progress}) {
      for (const QWidget* child : window->findChildren<QWidget*>()) {
        const bool is_ours = !child->objectName().isEmpty() && !child->objectName().startsWith("qt_");
        if (child->focusPolicy() == Qt::NoFocus || !is_ours) continue;
        QAccessibleInterface* face = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(child));
        QVERIFY2(!face->text(QAccessible::Name).isEmpty(), qPrintable(child->objectName()));
      }
    }
    for (const QLabel* label : setting.findChildren<QLabel*>()) {
      if (label->buddy() == nullptr) continue;
      const qsizetype sign = label->text().indexOf('&');
      QVERIFY2(sign >= 0, qPrintable(label->text()));
      mnemonics << label->text().mid(sign + 1, 1).toUpper();
    }
    QCOMPARE(mnemonics.size(), 10);
    QCOMPARE(mnemonics.removeDuplicates(), 0);
  }

  void tab_goes_from_top_to_bottom() {
    SettingDialog setting({}, nullptr);
    setting.show();
    setting.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&setting));
    control<QWidget>(setting, "dictionary_file").setFocus();
    QStringList order;
    do {
      order << setting.focusWidget()->objectName();
      QTest::keyClick(setting.focusWidget(), Qt::Key_Tab);
    } while (order.size() < 30 && setting.focusWidget()->objectName() != order.constFirst());
    QCOMPARE(order.join(' '),
             "dictionary_file dictionary_file_browse cr_dictionary_file cr_dictionary_file_browse rule_file "
             "rule_file_browse input_file input_file_browse output_file output_file_browse start_sentence "
             "sentence_count max_time_per_sentence trace_level rules_conversion_only ok cancel");
  }
};

}  // namespace lexon::test

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  lexon::resources_load();
  lexon::test::DialogTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "dialog_test.moc"
