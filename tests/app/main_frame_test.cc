// The window program's main window on a real project, driven through its widgets: open and
// log in, add a defect in its record window, assign it from the History tab, and see the
// list and its title follow.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include "defect_record_window.h"
#include "defects/selection_commands.h"
#include "frame_test.h"
#include "options_dialog.h"
#include "person_record_window.h"
#include "record_list_window.h"
#include "task_record_window.h"

namespace qm::test {
namespace {

class MainFrameTest : public FrameTest {};

// Add a defect with two reports, where every key does one thing; assign it from its History
// tab, and copy it.
TEST_F(MainFrameTest, ADefectIsAddedWithItsReportsAssignedFromItsHistoryAndCopied) {
  Open();
  EXPECT_EQ(frame.windowTitle(), "Quillmark - Atlas.qmk");
  EXPECT_EQ(preferences.lastOpenFile, path) << "the last project, for the next start";
  app::RecordListWindow* list = frame.defectList();
  ASSERT_NE(list, nullptr);
  app::DefectRecordWindow* adding = frame.AddDefect();
  EXPECT_EQ(adding->windowTitle(), "Add Defect");
  QApplication::processEvents();
  EXPECT_EQ(adding->focusWidget(), adding->findChild<QLineEdit*>("summary"))
      << "typing goes into the summary";

  // Every key of the frame's menus and of the window's own buttons does one thing.
  std::map<QString, QString> keys;
  const auto take = [&keys](const QKeySequence& key, const QString& what) {
    if (key.isEmpty()) return;
    const auto [at, added] = keys.emplace(key.toString(), what);
    EXPECT_TRUE(added) << key.toString().toStdString() << ": " << at->second.toStdString()
                       << " and " << what.toStdString();
  };
  for (QAction* menu : frame.menuBar()->actions())
    take(QKeySequence::mnemonic(menu->text()), menu->text());
  for (QAction* action : frame.findChildren<QAction*>()) {
    // A child window's own menu acts on the active child alone.
    QObject* owner = action->parent();
    while (owner != nullptr && qobject_cast<QMdiSubWindow*>(owner) == nullptr)
      owner = owner->parent();
    if (owner != nullptr) continue;
    for (const QKeySequence& key : action->shortcuts()) take(key, action->text());
  }
  for (QPushButton* button : adding->findChildren<QPushButton*>()) {
    take(QKeySequence::mnemonic(button->text()), button->text());
  }

  // The first report is the new defect's; a second one is added and both are kept. The
  // pane's controls are found by the names a screen reader reads.
  QTest::keyClicks(adding->findChild<QLineEdit*>("summary"), "Crash on save");
  const auto field = [adding](const char* name) {
    for (QWidget* w : adding->reportPane()->findChildren<QWidget*>()) {
      if (w->accessibleName() == name) return w;
    }
    return static_cast<QWidget*>(nullptr);
  };
  auto* counter = static_cast<QLabel*>(field("Report shown"));
  EXPECT_EQ(counter->text(), "1 of 1");
  QTest::keyClicks(static_cast<QLineEdit*>(field("Found in Version")), "2.1");
  QTest::keyClicks(static_cast<QPlainTextEdit*>(field("Steps to Reproduce")), "Print twice");
  QTest::mouseClick(Named<QPushButton>(*adding, "&New Reported By"), Qt::LeftButton);
  EXPECT_EQ(counter->text(), "2 of 2");
  EXPECT_TRUE(static_cast<QLineEdit*>(field("Found in Version"))->text().isEmpty());
  auto* date = static_cast<QLineEdit*>(field("Date Found"));
  date->clear();
  QTest::keyClicks(date, "4/31/2024");
  static_cast<QSpinBox*>(field("Report number"))->setValue(1);
  EXPECT_EQ(counter->text(), "2 of 2") << "a date not read keeps the row shown";
  EXPECT_EQ(adding->focusWidget(), date);
  date->clear();
  QTest::keyClicks(date, "4/30/2024");
  static_cast<QSpinBox*>(field("Report number"))->setValue(1);
  EXPECT_EQ(static_cast<QLineEdit*>(field("Found in Version"))->text(), "2.1");
  QTest::mouseClick(adding->findChild<QPushButton*>("second"), Qt::LeftButton);
  const CDefect& added =
      *static_cast<CDefectTable&>(*frame.doc()->GetTable(kDefectTag)).DefectAt(1);
  ASSERT_EQ(added.ReportedByCount(), 2u);
  EXPECT_EQ(added.ReportedByAt(1)->steps, "Print twice");
  EXPECT_EQ(added.ReportedByAt(2)->dateFound, *ParseDate("4/30/2024"));
  EXPECT_TRUE(frame.recordWindows().empty()) << "Add && Close closes the window";
  EXPECT_EQ(list->Title(), "Defects - (1 item, 0 selected)");
  const QAbstractItemModel& rows = *list->view()->model();
  EXPECT_EQ(rows.data(rows.index(0, 1)).toString(), "1");
  EXPECT_EQ(rows.data(rows.index(0, 2)).toString(), "Crash on save");

  list->view()->selectRow(0);
  EXPECT_EQ(list->Title(), "Defects - (1 item, 1 selected)");
  auto* editing = dynamic_cast<app::DefectRecordWindow*>(frame.OpenSelection(true));
  ASSERT_NE(editing, nullptr);
  editing->tabs()->setCurrentIndex(1);
  EXPECT_FALSE(Named<QPushButton>(*editing, "Verify Fix")->isEnabled()) << "an open defect";
  QTest::mouseClick(Named<QPushButton>(*editing, "Assign Defect"), Qt::LeftButton);
  EXPECT_EQ(dialogs, std::vector<EventKind>{EventKind::kAssign});
  ASSERT_EQ(editing->events()->rowCount(), 2) << "the report, then the assignment";
  EXPECT_EQ(editing->events()->item(1, 2)->text(), "Project Admin");
  QTest::mouseClick(editing->findChild<QPushButton*>("second"), Qt::LeftButton);
  EXPECT_EQ(rows.data(rows.index(0, 5)).toString(), "Open, assigned to Project Admin");

  // Copy puts the selected defects on the clipboard under the program's own format.
  list->view()->selectRow(0);
  QAction* copy = Named<QAction>(frame, "&Copy");
  ASSERT_NE(copy, nullptr);
  copy->trigger();
  const QByteArray copied = QGuiApplication::clipboard()->mimeData()->data("CF_QUILLMARK");
  const std::vector<std::uint8_t> expected =
      ClipboardBlock({static_cast<CDefect*>(list->SelectedItems().at(0))});
  EXPECT_EQ(std::vector<std::uint8_t>(copied.begin(), copied.end()), expected);
  EXPECT_EQ(ui.shown.size(), 1u) << "the date alone was refused";
  frame.CloseProject();
  EXPECT_EQ(frame.windowTitle(), "Quillmark");
}

TEST_F(MainFrameTest, TheDefectListKeepsItsColumnsAndPlaceAcrossOpenings) {
  Open();
  app::RecordListWindow* list = frame.defectList();
  list->list().ColumnCommand(4, CRecordListView::kRemoveColumn);  // Type
  list->ShowColumns();
  list->view()->setColumnWidth(2, 300);
  list->parentWidget()->setGeometry(10, 20, 500, 300);
  frame.CloseProject();
  EXPECT_EQ(preferences.GetWindowBlock(), (std::vector<std::uint8_t>{1, 0, 141, 0, 0, 0}));
  ASSERT_TRUE(preferences.GetWindowValue("DefectListPos").has_value());

  Open();
  list = frame.defectList();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->list().columns()[3].title, "Priority") << "Type is gone";
  EXPECT_EQ(list->view()->columnWidth(2), 300);
  EXPECT_EQ(list->parentWidget()->geometry(), QRect(10, 20, 500, 300));

  // A record window comes back where the last one of its kind was closed.
  app::RecordWindowWidget* adding = frame.AddItem();
  adding->parentWidget()->setGeometry(30, 40, 600, 450);
  QTest::mouseClick(adding->findChild<QPushButton*>("first"), Qt::LeftButton);
  EXPECT_EQ(frame.AddItem()->parentWidget()->geometry(), QRect(30, 40, 600, 450));
}

// Another program on the same file, quillmark-cli as another user, assigns a defect to the
// user of this window; the next check brings it to the list, marked, with the alert.
TEST_F(MainFrameTest, AnAssignmentInAnotherProgramReachesTheListWithTheAlert) {
  Cli("defect " + path + " add --summary Slow");
  Open();
  Cli("defects " + path + " act assign --numbers 1 --to admin", "tess");

  const QAbstractItemModel& rows = *frame.defectList()->view()->model();
  EXPECT_EQ(rows.data(rows.index(0, 5)).toString(), "Open, not assigned") << "not before the check";
  frame.doc()->ApplySchedule();  // the check is due at the next tick
  ui.Script({ui::Answer::kNo});
  frame.Tick();
  EXPECT_EQ(rows.data(rows.index(0, 5)).toString(), "Open, assigned to Project Admin");
  EXPECT_EQ(rows.data(rows.index(0, 0)).toString(), "*") << "marked as assigned to the user";
  // Offscreen, no window of the program is ever in front, so the whole alert runs.
  ASSERT_NE(QApplication::applicationState(), Qt::ApplicationActive);
  EXPECT_TRUE(frame.alertShown());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"One or more defects have been assigned to "
                                                 "you. Do you want to activate Quillmark?"});
  frame.defectList()->view()->selectRow(0);
  frame.OpenSelection(false);
  EXPECT_EQ(rows.data(rows.index(0, 0)).toString(), "");

  // The workbook's list takes the user's own task beside it, and the defect's task opens it.
  app::RecordListWindow* tasks = frame.ShowList(kListWindowKinds[5]);
  ASSERT_NE(tasks, nullptr);
  app::RecordWindowWidget* adding = frame.AddItem();
  QTest::keyClicks(adding->findChild<QLineEdit*>("to do"), "Call the customer");
  QTest::mouseClick(adding->findChild<QPushButton*>("second"), Qt::LeftButton);
  EXPECT_EQ(tasks->Title(), "Workbook - (2 items, 0 selected)");
  const QAbstractItemModel& taskRows = *tasks->view()->model();
  for (int r = 0; r < taskRows.rowCount(); ++r) {
    if (taskRows.data(taskRows.index(r, 2)).toString() == "#1 - Slow") tasks->view()->selectRow(r);
  }
  auto* opened = dynamic_cast<app::DefectRecordWindow*>(frame.OpenSelection(true));
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->windowTitle(), "Edit Defect #1");
}

TEST_F(MainFrameTest, PeopleAreAddedCheckedAndTransferredBetweenTheirLists) {
  Open();
  app::RecordListWindow* users = frame.ShowList(kListWindowKinds[1]);
  ASSERT_NE(users, nullptr);

  auto* adding = dynamic_cast<app::PersonRecordWindow*>(frame.AddItem());
  ASSERT_NE(adding, nullptr);
  EXPECT_EQ(adding->windowTitle(), "Add User");
  QTest::keyClicks(adding->findChild<QLineEdit*>("last name"), "Berg");
  QTest::keyClicks(adding->findChild<QLineEdit*>("login"), "ola");
  adding->model().person().SetGroupId(1);
  QTest::mouseClick(adding->findChild<QPushButton*>("second"), Qt::LeftButton);
  EXPECT_EQ(users->Title(), "Users - (3 items, 0 selected)");

  // Transfer Berg to the customers, after the question about the login.
  const QAbstractItemModel& rows = *users->view()->model();
  int berg = -1;
  for (int r = 0; r < rows.rowCount(); ++r) {
    if (rows.data(rows.index(r, 0)).toString() == "Berg") berg = r;
  }
  ASSERT_GE(berg, 0);
  users->view()->selectRow(berg);
  ui.Script({ui::Answer::kYes});
  frame.TransferSelection();
  EXPECT_EQ(ui.shown.size(), 1u);
  EXPECT_EQ(users->Title(), "Users - (2 items, 0 selected)");
  app::RecordListWindow* customers = frame.ShowList(kListWindowKinds[7]);
  EXPECT_EQ(customers->Title(), "Customers - (1 item, 0 selected)");
  customers->view()->selectRow(0);
  auto* viewing = dynamic_cast<app::PersonRecordWindow*>(frame.OpenSelection(false));
  ASSERT_NE(viewing, nullptr);
  EXPECT_EQ(viewing->windowTitle(), "View Customer - Berg");
  viewing->tabs()->setCurrentIndex(1);
  EXPECT_NE(viewing->findChild<QLabel*>(), nullptr) << "the statistics are shown";

  // Edit > Delete Item deletes the customer after the question, and the window on it goes.
  QAction* remove = Named<QAction>(frame, "D&elete Item");
  ASSERT_NE(remove, nullptr);
  frame.ShowList(kListWindowKinds[7]);
  customers->view()->selectRow(0);
  ui.Script({ui::Answer::kOk});
  remove->trigger();
  EXPECT_EQ(ui.shown.size(), 2u);
  EXPECT_EQ(customers->Title(), "Customers - (0 items, 0 selected)");
  const QPointer<QWidget> window(viewing);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(window.isNull());
}

TEST_F(MainFrameTest, TheOptionsDialogShowsThePagesOfWhatIsOpen) {
  Open();
  OptionsDialog options(preferences, frame.doc());
  app::OptionsDialogWidget dialog(&frame, options, frame.doc());
  auto* tabs = dialog.findChild<QTabWidget*>();
  ASSERT_EQ(tabs->count(), 3);
  for (QRadioButton* choice : dialog.findChildren<QRadioButton*>()) {
    if (choice->text() == "Keep its current assignment") choice->setChecked(true);
    if (choice->text() == "Opens view dialog box") choice->setChecked(true);
  }
  dialog.Store();
  EXPECT_EQ(options.assign.afterWork, 1u);
  EXPECT_TRUE(options.viewOnDoubleClick);
}

// A record window closed by its frame goes the way of its own buttons: the frame forgets
// it before it is destroyed, so the next tick finds nothing gone. A close of the window, of
// the project or of the program asks first about an edit not yet saved; Cancel stops it.
TEST_F(MainFrameTest, ClosingAsksAboutUnsavedEditsAndLeavesNoWindowBehind) {
  Open();
  const auto sub = [](QWidget* w) { return qobject_cast<QMdiSubWindow*>(w->parentWidget()); };
  ASSERT_TRUE(sub(frame.AddDefect())->close());
  EXPECT_TRUE(frame.recordWindows().empty());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  frame.Tick();
  EXPECT_TRUE(ui.shown.empty()) << "nothing typed, nothing asked";

  struct Case {
    const char* close;  // "window", "project" or "program"
    ui::Answer answer;
    bool stays;
    std::uint32_t defects;  // stored once it is over
  };
  const Case cases[] = {
      {"window", ui::Answer::kCancel, true, 0}, {"window", ui::Answer::kNo, false, 0},
      {"window", ui::Answer::kYes, false, 1},   {"project", ui::Answer::kCancel, true, 1},
      {"project", ui::Answer::kYes, false, 2},  {"program", ui::Answer::kCancel, true, 2},
      {"program", ui::Answer::kNo, false, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.close) + " " + std::to_string(static_cast<int>(c.answer)));
    if (frame.doc() == nullptr) Open();
    app::DefectRecordWindow* adding = frame.AddDefect();
    QTest::keyClicks(adding->findChild<QLineEdit*>("summary"), "Typed, not yet added");
    ui.shown.clear();
    ui.Script({c.answer});
    const std::string how = c.close;
    if (how == "window") {
      EXPECT_EQ(sub(adding)->close(), !c.stays);
    } else if (how == "project") {
      EXPECT_EQ(frame.CloseProject(), !c.stays);
    } else {
      EXPECT_EQ(frame.close(), !c.stays);
    }
    EXPECT_EQ(ui.Texts(), std::vector<std::string>{"The window \"Add Defect\" has changes that "
                                                   "are not saved. Do you want to save them?"});
    EXPECT_EQ(frame.recordWindows().size(), c.stays ? 1u : 0u);
    EXPECT_EQ(frame.doc() != nullptr, c.stays || how == "window");
    if (c.stays) {
      ui.Script({ui::Answer::kNo});
      ASSERT_TRUE(frame.CloseProject());
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    frame.Tick();
    if (frame.doc() == nullptr) Open();
    EXPECT_EQ(frame.doc()->GetTable(kDefectTag)->count(), c.defects);
  }
}

TEST_F(MainFrameTest, TheProgramEndsWithItsWindowsOpen) {
  {
    app::CMainFrame ending(ui, preferences);
    ending.show();
    ASSERT_TRUE(ending.OpenProject(path, ui::LoginEntry{"admin", ""}));
    ending.ShowList(kListWindowKinds[1]);
    ASSERT_NE(ending.AddItem(), nullptr);
  }  // the frame and every window in it go here, with nothing left to answer their signals
}

}  // namespace
}  // namespace qm::test
