// The windows by keyboard and by screen reader: Esc and Enter in record windows and lists,
// the list header's sort arrow and tips, who is logged in, record windows kept within the
// main window, and a name for every control of every window.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include "defect_record_window.h"
#include "defects/defect_event.h"
#include "event_dialog.h"
#include "main_frame.h"
#include "options_dialog.h"
#include "record_list_window.h"
#include "shell/project_item_kinds.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

// The controls under `node` that a screen reader would find with no words to read.
void Unnamed(QAccessibleInterface* node, QStringList& found) {
  static const QRegularExpression kWords("[A-Za-z]");
  const QAccessible::Role role = node->role();
  for (const QAccessible::Role control :
       {QAccessible::PushButton, QAccessible::CheckBox, QAccessible::RadioButton,
        QAccessible::ComboBox, QAccessible::EditableText, QAccessible::Table, QAccessible::List,
        QAccessible::PageTabList, QAccessible::PageTab}) {
    // A combo is read by its value, and needs a label (a buddy, a group box's title).
    const bool named = role == QAccessible::ComboBox
                           ? !node->relations(QAccessible::Label).isEmpty()
                           : node->text(QAccessible::Name).contains(kWords);
    if (role == control && !named) {
      found << QString("%1 %2 in %3")
                   .arg(role)
                   .arg(node->object()->metaObject()->className())
                   .arg(node->object()->parent()->metaObject()->className());
    }
  }
  // A combo's popup, a table's cells and a list's rows are named by their contents.
  if (role == QAccessible::ComboBox || role == QAccessible::Table || role == QAccessible::List) {
    return;
  }
  for (int i = 0; i < node->childCount(); ++i) Unnamed(node->child(i), found);
}

std::string Unnamed(QWidget* window) {
  QStringList found;
  Unnamed(QAccessible::queryAccessibleInterface(window), found);
  return found.join("; ").toStdString();
}

class WindowKeysTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ScriptedUi makeUi;
    QuietHost host;
    ProjectItemKinds kinds;
    CDBDoc made(makeUi, kinds, host);
    ASSERT_EQ(made.NewProject(path, true), 1);
    made.CloseProject();
    frame.resize(1000, 760);
    frame.show();
    ASSERT_TRUE(frame.OpenProject(path, ui::LoginEntry{"admin", ""}));
  }

  // Presses `key` where `widget` has the focus.
  static void Press(QWidget* widget, Qt::Key key) {
    widget->setFocus();
    QTest::keyClick(widget, key);
  }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  CAppPreferences preferences{dir.File("Quillmark.conf")};
  std::vector<EventKind> dialogs;
  app::CMainFrame frame{ui, preferences, [this](CDefectEvent& event, EventDialogMode) {
                          dialogs.push_back(event.kind());
                          return std::optional<EventDialogResult>();
                        }};
};

TEST_F(WindowKeysTest, EscAndEnterAnswerForTheButtonsOfRecordWindowsAndLists) {
  app::RecordListWindow* list = frame.defectList();
  // Enter in a line adds; in the description it is a new line.
  app::DefectRecordWindow* adding = frame.AddDefect();
  QTest::keyClicks(adding->findChild<QLineEdit*>("summary"), "Crash on save");
  auto* description = adding->findChild<QPlainTextEdit*>();
  Press(description, Qt::Key_Return);
  EXPECT_EQ(description->toPlainText(), "\n");
  EXPECT_EQ(frame.recordWindows().size(), 1u) << "Enter in a text of lines stays there";
  Press(adding->findChild<QLineEdit*>("summary"), Qt::Key_Return);
  EXPECT_TRUE(frame.recordWindows().empty());
  ASSERT_EQ(list->Title(), "Defects - (1 item, 0 selected)");

  // Enter on a row opens it; Enter on a focused button presses that button, not OK.
  list->view()->selectRow(0);
  Press(list->view(), Qt::Key_Return);
  ASSERT_EQ(frame.recordWindows().size(), 1u);
  auto* editing = dynamic_cast<app::DefectRecordWindow*>(frame.recordWindows()[0]);
  editing->tabs()->setCurrentIndex(1);
  for (QPushButton* b : editing->findChildren<QPushButton*>()) {
    if (b->text() == "Add Comments") Press(b, Qt::Key_Return);
  }
  EXPECT_EQ(dialogs, std::vector<EventKind>{EventKind::kComment});
  EXPECT_EQ(frame.recordWindows().size(), 1u);

  // Esc gives up an edit; in a view, where there is no Cancel, it is the OK that closes.
  editing->tabs()->setCurrentIndex(0);
  QTest::keyClicks(editing->findChild<QLineEdit*>("summary"), " twice");
  Press(editing->findChild<QLineEdit*>("summary"), Qt::Key_Escape);
  EXPECT_TRUE(frame.recordWindows().empty());
  const QAbstractItemModel& rows = *list->view()->model();
  EXPECT_EQ(rows.data(rows.index(0, 2)).toString(), "Crash on save");
  list->view()->selectRow(0);
  Press(frame.OpenSelection(false), Qt::Key_Escape);
  EXPECT_TRUE(frame.recordWindows().empty());
}

TEST_F(WindowKeysTest, EachKeyOfTheFileMenuAndTheAreaDoesOneThing) {
  // A key that two commands share does neither.
  ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
  QTest::keySequence(&frame, QKeySequence("Ctrl+N"));
  ASSERT_EQ(frame.recordWindows().size(), 1u) << "Ctrl+N adds a defect";
  QTest::keyClick(frame.recordWindows()[0], Qt::Key_Escape);
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  frame.ShowList(kDefectListWindow);
  QTest::keySequence(&frame, QKeySequence("Ctrl+W"));
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(frame.defectList(), nullptr) << "Ctrl+W closes the window in front";
  QTest::keySequence(&frame, QKeySequence("Ctrl+Shift+W"));
  EXPECT_EQ(frame.doc(), nullptr) << "Ctrl+Shift+W closes the project";
}

TEST_F(WindowKeysTest, TheHeaderShowsTheSortAndTheMarksAndTheStatusBarTheUser) {
  const auto* user = frame.statusBar()->findChild<QLabel*>();
  ASSERT_NE(user, nullptr);
  EXPECT_EQ(user->text(), "User: Project Admin");
  QHeaderView* header = frame.defectList()->view()->horizontalHeader();
  const QAbstractItemModel& model = *header->model();
  EXPECT_TRUE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).toString().contains("+ new"));
  // Clicks on "No." then "Summary": the arrow follows the first key and its direction.
  // They are plain clicks: no Shift is left held from keys pressed before.
  QTest::keyClick(header, Qt::Key_Escape);
  struct Click {
    int section;
    Qt::SortOrder order;
  };
  for (const Click& c : {Click{1, Qt::DescendingOrder}, Click{2, Qt::DescendingOrder},
                         Click{2, Qt::AscendingOrder}}) {
    Q_EMIT header->sectionClicked(c.section);
    EXPECT_EQ(header->sortIndicatorSection(), c.section);
    EXPECT_EQ(header->sortIndicatorOrder(), c.order) << c.section;
  }
  EXPECT_TRUE(
      model.headerData(2, Qt::Horizontal, Qt::ToolTipRole).toString().contains("ascending"));
}

TEST_F(WindowKeysTest, ARecordWindowRememberedOutOfReachOpensWithinTheArea) {
  preferences.SetWindowValue("DefectViewPos", EncodePlacement({true, 0, {3000, 2000, 3760, 2560}}));
  QWidget* area = static_cast<QMdiArea*>(frame.centralWidget())->viewport();
  const QRect placed = frame.AddDefect()->parentWidget()->geometry();
  EXPECT_TRUE(area->rect().contains(placed)) << placed.x() << "," << placed.y();
}

TEST_F(WindowKeysTest, EveryControlOfEveryWindowHasAName) {
  app::DefectRecordWindow* defect = frame.AddDefect();
  EXPECT_EQ(Unnamed(&frame), "");
  frame.ShowList(kListWindowKinds[1]);
  app::RecordWindowWidget* person = frame.AddItem();
  frame.ShowList(kListWindowKinds[7]);
  app::RecordWindowWidget* customer = frame.AddItem();
  frame.ShowList(kListWindowKinds[5]);
  app::RecordWindowWidget* task = frame.AddItem();
  for (QWidget* window : std::initializer_list<QWidget*>{defect, person, customer, task}) {
    EXPECT_EQ(Unnamed(window), "") << window->windowTitle().toStdString();
  }
  OptionsDialog options(preferences, frame.doc());
  app::OptionsDialogWidget dialog(&frame, options, frame.doc());
  EXPECT_EQ(Unnamed(&dialog), "");
  // The event dialogs, looked at while they wait for an answer.
  CFixEvent fix;
  CVerifyEvent verify;
  for (CDefectEvent* event : std::initializer_list<CDefectEvent*>{&fix, &verify}) {
    QTimer::singleShot(0, [] {
      QWidget* shown = QApplication::activeModalWidget();
      EXPECT_EQ(Unnamed(shown), "");
      shown->close();
    });
    app::RunEventDialog(&frame, *frame.doc(), *event, EventDialogMode::kEdit);
  }
}

}  // namespace
}  // namespace qm::test
