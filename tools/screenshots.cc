// Pictures of the window program for the README: the main window with the defect list, a
// defect window on its Detail tab with the reported-by pane and on its History tab, the
// Options dialog, and a user group's rights, made offscreen on the project named.
//
//   quillmark_screenshots PROJECT OUT-FOLDER
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <cstdio>

#include "defect_record_window.h"
#include "group_record_window.h"
#include "main_frame.h"
#include "options_dialog.h"
#include "platform/preference_file.h"
#include "qt_ui.h"
#include "record_list_window.h"
#include "support/temp_dir.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  if (argc != 3) {
    std::fprintf(stderr, "usage: quillmark_screenshots PROJECT OUT-FOLDER\n");
    return 64;
  }
  const QString out = QString::fromUtf8(argv[2]);
  qm::test::TempDir dir;
  qm::CAppPreferences preferences(dir.File("Quillmark.conf"));
  qm::app::QtUi ui;
  qm::app::CMainFrame frame(ui, preferences);
  ui.SetOwner(&frame, frame.statusBar());
  frame.resize(1100, 700);
  frame.show();
  if (!frame.OpenProject(argv[1], qm::ui::LoginEntry{"admin", ""})) return 1;
  QMdiSubWindow* listFrame = frame.findChild<QMdiArea*>()->subWindowList().front();
  listFrame->setGeometry(0, 0, 1080, 600);
  QApplication::processEvents();
  if (!frame.grab().save(out + "/main-window.png")) return 2;

  frame.defectList()->view()->selectRow(0);
  auto* editing = dynamic_cast<qm::app::DefectRecordWindow*>(frame.OpenSelection(true));
  editing->parentWidget()->setGeometry(60, 10, 900, 700);
  QApplication::processEvents();
  if (!editing->parentWidget()->grab().save(out + "/defect-reported-by.png")) return 5;
  editing->findChild<QPushButton*>("first")->click();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

  frame.defectList()->view()->selectRow(0);
  auto* window = dynamic_cast<qm::app::DefectRecordWindow*>(frame.OpenSelection(false));
  window->parentWidget()->setGeometry(60, 30, 900, 560);
  window->tabs()->setCurrentIndex(1);
  window->events()->selectRow(1);
  QApplication::processEvents();
  if (!frame.grab().save(out + "/defect-history.png")) return 3;

  qm::OptionsDialog options(preferences, frame.doc());
  qm::app::OptionsDialogWidget dialog(&frame, options, frame.doc());
  dialog.show();
  QApplication::processEvents();
  if (!dialog.grab().save(out + "/options.png")) return 4;
  dialog.close();

  qm::app::RecordListWindow* groups = frame.ShowList(qm::kListWindowKinds[2]);
  groups->view()->selectRow(1);
  auto* group = dynamic_cast<qm::app::GroupRecordWindow*>(frame.OpenSelection(true));
  if (group == nullptr) return 6;
  group->parentWidget()->setGeometry(60, 10, 560, 640);
  group->tabs()->setCurrentIndex(3);
  QApplication::processEvents();
  if (!group->parentWidget()->grab().save(out + "/user-group.png")) return 7;
  frame.CloseProject();
  return 0;
}
