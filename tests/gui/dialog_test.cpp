// The dialogs, each by itself.
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>

#include "front/gui/controls.hpp"
#include "front/gui/main_dialog.hpp"
#include "front/gui/number_edit.hpp"
#include "front/gui/opening.hpp"
#include "front/gui/path_edit.hpp"
#include "front/gui/progress_dialog.hpp"
#include "front/gui/recent.hpp"
#include "front/gui/setting_dialog.hpp"
#include "front/gui/summary_dialog.hpp"
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

  QList<QUrl> opened_;  // by the desktop

  [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

 public Q_SLOTS:
  void open(const QUrl& url) { opened_ << url; }

 private Q_SLOTS:
  void initTestCase() {
    QDesktopServices::setUrlHandler("file", this, "open");
    QLocale::setDefault(QLocale::c());
    forget_projects();
    QVERIFY(QDir::setCurrent(folder_.path()));
    for (const char* name : {"w.dic", "cr.dic", "r.txt", "i.txt", "o.txt", "no-extension"}) write_file(name, "");
  }

  void cleanupTestCase() { QDesktopServices::unsetUrlHandler("file"); }

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

  void the_arrows_stay_in_their_range() {
    struct Row {
      const char* name;
      const char* role;
      int from;
      Qt::Key key;
      int to;
    };
    const Row rows[] = {{"up", "start_sentence", 1, Qt::Key_Up, 2},
                        {"first", "start_sentence", 1, Qt::Key_Down, 1},
                        {"first of the counts", "sentence_count", 1, Qt::Key_Down, 0},
                        {"last", "max_time_per_sentence", 100, Qt::Key_Up, 100},
                        {"back into the range", "start_sentence", 250, Qt::Key_Down, 100},
                        {"not further out", "start_sentence", 250, Qt::Key_Up, 250}};
    for (const Row& row : rows) {
      SettingDialog dialog({}, nullptr);
      auto& number = control<NumberEdit>(dialog, row.role);
      number.setValue(row.from);
      QTest::keyClick(&number, row.key);
      QVERIFY2(number.value() == row.to, row.name);
    }
  }

  void a_browse_button_data() {
    const QString words = "Dictionary Files (*.dic)|All Files (*.*)";
    QTest::addColumn<QString>("filters");
    QTest::newRow("dictionary_file") << words;
    QTest::newRow("cr_dictionary_file") << words;
    QTest::newRow("rule_file") << "Rule Files (*.rul;*.txt)|All Files (*.*)|Grammar Sources (*.lxr)";
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
      QTest::keyClick(&control<QWidget>(dialog, role + "_browse"), Qt::Key_Return);
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
      QVERIFY(files.nameFilters()[1].endsWith("(*)"));  // whatever has no extension too
      // The toolkit reads the folder beside the run; until it has, it may clear what is typed.
      for (int tries = 0; tries < 1000 && files.isVisible(); ++tries) {
        type(files, "fileNameEdit", name);
        static_cast<QDialog&>(files).accept();
        if (files.isVisible()) QTest::qWait(20);
      }
      QVERIFY(!files.isVisible());
    });
    QCOMPARE(chosen, path(saves ? name + ".txt" : name));
    QCOMPARE(last_folder(), QFileInfo(chosen).path());
  }

  void kb_is_disabled() {
    SettingDialog dialog({}, nullptr);
    for (const char* role : {"kb_dictionary_file", "kb_dictionary_file_browse"}) {
      QVERIFY(!control<QWidget>(dialog, role).isEnabled());
    }
  }

  void a_path_that_cannot_be_right_is_marked() {
    struct Row {
      QString role;
      QString text;
      QString fault;
    };
    const Row rows[] = {{"input_file", "i.txt", ""},
                        {"input_file", "", ""},
                        {"output_file", "new.txt", ""},
                        {"input_file", "none.txt", "There is no such file."},
                        {"rule_file", "..", "This is a folder."},
                        {"output_file", "none/new.txt", "There is no such folder."}};
    for (const auto& [role, text, fault] : rows) {
      SettingDialog dialog({}, nullptr);
      type(dialog, role, text);
      const auto& field = control<QWidget>(dialog, role);
      QCOMPARE(control<QAction>(dialog, role + "_mark").isVisible(), !fault.isEmpty());
      QVERIFY(field.accessibleDescription() == (fault.isEmpty() ? field.whatsThis() : fault));
      QVERIFY(field.toolTip().startsWith(fault.isEmpty() ? text : text + "\n" + fault));
    }
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
          dynamic_cast<QMessageBox&>(box).button(*row.answer == 'Y' ? QMessageBox::Yes : QMessageBox::No)->click();
        });
      }
      dialog.accept();
      QCOMPARE(dialog.result(), row.result);
      QCOMPARE(was_asked, row.answer != nullptr);
    }
  }

  void a_long_path_is_elided_in_the_middle_until_it_is_edited() {
    const QString text = "/home/" + QString("very-long-folder/").repeated(20) + "words.dic";
    PathEdit field("long", PathUse::read, {}, nullptr);
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

  void about_and_the_manual_come_by_context_menu_and_by_key() {
    MainDialog main{CommandLine{}};
    main.show();
    main.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&main));
    QCOMPARE(main.contextMenuPolicy(), Qt::ActionsContextMenu);
    bool was_shown = false;
    when_shown("about_dialog", [&was_shown](QWidget& about) {
      was_shown = about.windowTitle() == "About Lexon";
      QTest::keyClick(&about, Qt::Key_Return);
    });
    QCOMPARE(main.actions().constFirst()->text(), "&About Lexon...");
    main.actions().constFirst()->trigger();
    QVERIFY(was_shown);
    main.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&main));
    QTest::keyClick(&main, Qt::Key_F1);
    SettingDialog setting({}, nullptr);
    press(setting, "help");
    QTRY_COMPARE(opened_.size(), 2);
    for (const QUrl& url : opened_) QVERIFY2(url.fileName().startsWith("dialogs."), qPrintable(url.toString()));
  }

  void the_first_start_leads_to_the_empty_field() {
    CommandLine line;
    MainDialog first(line);
    QCOMPARE(first.focusWidget()->objectName(), "setting");
    QVERIFY(text_of(first, "notice").endsWith("Not named yet: W Dictionary, Rules, Input File, Output File"));
    line.settings = some_settings();
    line.settings.input_file.clear();
    MainDialog second(line);
    QVERIFY(text_of(second, "notice").endsWith("Not named yet: Input File"));
    QCOMPARE(SettingDialog(line.settings, nullptr).focusWidget()->objectName(), "input_file");
    line.settings = some_settings();
    QCOMPARE(MainDialog(line).focusWidget()->objectName(), "render");
  }

  void a_recent_project_is_taken_by_its_entry_alone() {
    RunSettings project = some_settings();
    project.input_file = "caf\xe9.txt";
    remember_project(project);
    project.rule_file = "other.txt";
    for (int i = 0; i < 2; ++i) remember_project(project);
    QCOMPARE(recent_projects().size(), 2);
    QCOMPARE(fields_of(MainDialog(CommandLine{}).settings()), fields_of({}));
    SettingDialog dialog({}, nullptr);
    QMenu* menu = control<QPushButton>(dialog, "projects").menu();
    menu->actions().constFirst()->trigger();
    QCOMPARE(dialog.fields().input_file, QDir::currentPath().toStdString() + "/caf\xe9.txt");
    QVERIFY(text_of(dialog, "rule_file").endsWith("/other.txt"));
    QCOMPARE(text_of(dialog, "start_sentence"), "250");
    menu->actions().constLast()->trigger();
    QVERIFY(recent_projects().isEmpty());
  }

  void files_are_taken_by_their_kind() {
    struct Row {
      const char* name;
      const char* text;
      QString kind;  // W, CR, R, I, O; what a note says
    };
    const Row rows[] = {{"words.dic", "", "W"},
                        {"en-cr.dic", "", "CR"},
                        {"grammar.rul", "", "R"},
                        {"grammar.lxr", "", "R"},
                        {"a.txt", "; P1;\nR{:::}{^STAIL:::}P5;\n", "R"},
                        {"b.txt", ":{N:::}\"N::nxt:\"(a) P9; old\n", "R"},
                        {"c.txt", "; of dogs\n[S:1]\nagn(sleep(>rest).@entry, dog)\n[/S]\n", "I"},
                        {"d.txt", "[W]\ndog.@entry\n[/W]\n", "I"},
                        {"e.txt", "[S:1]\ndog\n;;Time 0.0\tSec\n;;Done!\n", "O"},
                        {"f.txt", "[dog]{} \"dog\" (OK);\n", "lexon-dict build"},
                        {"g.txt", "Dear reader,\n", "no dictionary, no rules"},
                        {"none.txt", nullptr, "no such file"}};
    for (const Row& row : rows) {
      if (row.text != nullptr) write_file(row.name, row.text);
      const CommandLine line = line_of_files(std::array{row.name});
      const RunSettings& s = line.settings;
      const std::pair<const char*, const std::string*> fields[] = {
          {"W", &s.dictionary_file}, {"CR", &s.cr_dictionary_file}, {"R", &s.rule_file}, {"I", &s.input_file}, {"O", &s.output_file}};
      QString kind = line.notes.empty() ? QString() : to_text(line.notes.front());
      for (const auto& [name, field] : fields)
        if (!field->empty()) kind += name;
      QVERIFY2(line.notes.empty() ? kind == row.kind : kind.contains(row.kind), row.name);
    }
    write_file("more.dic", "");
    const CommandLine line = line_of_files(std::array{"words.dic", "more.dic", "a.txt", "b.txt"});
    QCOMPARE(to_text(line.settings.cr_dictionary_file), path("more.dic"));
    QCOMPARE(line.notes.size(), 1);
  }

  void a_new_start_has_the_same_settings() {
    RunSettings settings = some_settings();
    settings.dictionary_file = path("two words.dic").toStdString();
    settings.max_time_per_sentence = -1;
    settings.jobs = 3;
    settings.post_edit = false;
    settings.strict = settings.in_memory = settings.rules_conversion_only = true;
    const std::vector<std::string> words = words_of(settings, true);
    std::vector<const char*> given;
    for (const std::string& word : words) given.push_back(word.c_str());
    CommandLine line = command_line_read(given);
    QCOMPARE(to_text(line.error), "");
    QVERIFY(line.yes && !line.settings.run_at_once);
    line.settings.jobs = line.jobs.value_or(0);
    QVERIFY(words_of(line.settings, true) == words);
    for (const std::string RunSettings::*field :
         {&RunSettings::rule_file, &RunSettings::input_file, &RunSettings::output_file, &RunSettings::cr_dictionary_file}) {
      QCOMPARE(to_text(line.settings.*field), path(to_text(settings.*field)));
    }
    QCOMPARE(line.settings.max_time_per_sentence, -1);
    QVERIFY(line.settings.strict && line.settings.in_memory && line.settings.rules_conversion_only && !line.settings.post_edit);
  }

  void progress_in_words() {
    struct Row {
      RunProgress progress;
      const char* sentences;
      const char* time;
    };
    const Row rows[] = {{{0, 0, 0, 0.0}, "0 sentences, 0 failed", "– a second, 0:00 gone"},
                        {{5, 10, 1, 0.5}, "5 of 10 sentences, 1 failed", "– a second, – left"},
                        {{30, 120, 2, 20.0}, "30 of 120 sentences, 2 failed", "1.5 a second, 1:00 left"},
                        {{100, 1'000'000, 0, 10.0}, "100 of 1000000 sentences, 0 failed", "10 a second, 27:46:30 left"},
                        {{12, 10, 0, 2.0}, "12 of 10 sentences, 0 failed", "6.0 a second, 0:00 left"}};
    ProgressDialog dialog({}, nullptr);
    for (const Row& row : rows) {
      dialog.show_progress(row.progress);
      QCOMPARE(text_of(dialog, "sentences"), row.sentences);
      QCOMPARE(text_of(dialog, "time"), row.time);
    }
  }

  void every_control_can_be_reached_and_named_data() {
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("English") << QLocale(QLocale::C);
    QTest::newRow("German") << QLocale(QLocale::German);
  }

  void every_control_can_be_reached_and_named() {
    QFETCH(QLocale, locale);
    QLocale::setDefault(locale);
    translations_load();
    QCOMPARE(SettingDialog::tr("Cancel"), locale.language() == QLocale::German ? "Abbrechen" : "Cancel");
    RunSummary run;
    run.lost.resize(1);
    MainDialog main{CommandLine{}};
    SettingDialog setting({}, nullptr);
    ProgressDialog progress({}, nullptr);
    SummaryDialog summary(run, nullptr);
    for (QWidget* window : QList<QWidget*>{&main, &setting, &progress, &summary}) {
      QStringList mnemonics;
      const auto add = [&mnemonics](const QString& text) { mnemonics << text.mid(text.indexOf('&') + 1, 1).toUpper(); };
      for (QWidget* child : window->findChildren<QWidget*>()) {
        const QString role = child->objectName();
        const auto* label = qobject_cast<QLabel*>(child);
        if (label != nullptr && label->buddy() != nullptr) add(label->text());
        if (child->focusPolicy() == Qt::NoFocus || role.isEmpty() || role.startsWith("qt_")) continue;
        const auto* button = qobject_cast<QAbstractButton*>(child);
        if (button != nullptr && button->text().contains('&') && (!role.endsWith("_browse") || role.startsWith("dict"))) add(button->text());
        QAccessibleInterface* face = QAccessible::queryAccessibleInterface(child);
        QVERIFY2(!face->text(QAccessible::Name).isEmpty(), qPrintable(role));
        QVERIFY2(window != &setting || button != nullptr || !face->text(QAccessible::Description).isEmpty(), qPrintable(role));
      }
      QVERIFY2(mnemonics.removeDuplicates() == 0, qPrintable(window->objectName() + mnemonics.join("")));
    }
  }

  void tab_goes_in_reading_order() {
    CommandLine line;
    line.settings = some_settings();
    remember_project(line.settings);
    MainDialog main(line);
    SettingDialog setting({}, nullptr);
    const std::pair<QWidget*, QString> rows[] = {{&main, "render setting cancel"},
                                                 {&setting,
                                                  "dictionary_file dictionary_file_browse cr_dictionary_file cr_dictionary_file_browse rule_file "
                                                  "rule_file_browse input_file input_file_browse output_file output_file_browse start_sentence "
                                                  "sentence_count max_time_per_sentence trace_level rules_conversion_only projects help ok cancel"}};
    for (const auto& [window, wanted] : rows) {
      window->show();
      window->activateWindow();
      QVERIFY(QTest::qWaitForWindowActive(window));
      control<QWidget>(*window, wanted.section(' ', 0, 0)).setFocus();
      QStringList order;
      do {
        order << window->focusWidget()->objectName();
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
      } while (order.size() < 30 && window->focusWidget()->objectName() != order.constFirst());
      QCOMPARE(order.join(' '), wanted);
    }
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
