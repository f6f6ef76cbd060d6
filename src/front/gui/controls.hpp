// What all dialogs share: controls that carry their role, the program's icon, and texts of both worlds.
//
// The object name of a control is its role; whoever looks a control up (tests, style sheets) does it by that name:
//
//   main_dialog      render, setting, cancel; picture, title, notice; the actions about, help
//   setting_dialog   dictionary_file, cr_dictionary_file, kb_dictionary_file, rule_file, input_file, output_file, each
//                    with <field>_browse, its <field>_dialog while that is up, and <field>_mark, the sign of a path
//                    that is not there; start_sentence, sentence_count, max_time_per_sentence, trace_level,
//                    rules_conversion_only; projects, help, ok, cancel. A label is <field>_label.
//   progress_dialog  caption, number, elapsed_label, elapsed, limit_label, limit, limit_note; bar, sentences, time;
//                    cancel, step_end (hidden)
//   summary_dialog   headline, counts, output_label, output, notes, failures, detail; open_output, open_page, again, close
//   about_dialog     icon, name, purpose; ok
//   message boxes    report_stop, ask_yes_no, ask_overwrite, cannot_open
#pragma once

#include <QIcon>
#include <QString>

#include <string>

class QDialog;
class QLabel;
class QPushButton;
class QUrl;
class QWidget;

namespace lexon {

// A plain text without function. The parent owns what these functions make.
[[nodiscard]] QLabel* make_label(const char* role, const QString& text, QWidget* parent);
[[nodiscard]] QPushButton* make_button(const char* role, const QString& text, QWidget* parent);

// The drawings of the program; they must be there before a window is made.
void resources_load();
[[nodiscard]] QIcon program_icon();

// The texts of the user's language, ours and the toolkit's, for all windows that are made behind this. Without any the
// texts are English.
void translations_load();

// Brings a dialog up minimised, also one that has never been shown.
void show_minimised(QDialog& dialog);

// Has the desktop open it with what the user has chosen for that; a box says when that cannot be done.
void open_for_user(const QUrl& url, QWidget* parent);
void open_file(const QString& path, QWidget* parent);
// A page of the manual where it is installed.
void open_manual(QWidget* parent);

// Paths are bytes to the run and characters to the toolkit.
[[nodiscard]] QString to_text(const std::string& path);
[[nodiscard]] std::string to_path(const QString& text);

}  // namespace lexon
