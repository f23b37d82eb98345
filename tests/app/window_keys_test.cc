// The windows by keyboard and by screen reader: Esc and Enter in record windows and lists,
// the File menu's keys, and a name for every control of every window.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include "defect_record_window.h"
#include "event_dialog.h"
#include "frame_test.h"
#include "options_dialog.h"
#include "record_list_window.h"

namespace qm::test {
namespace {

// The controls under `node` a screen reader finds with nothing to read: no words in the
// name, or for a combo (read by its value) no label.
void Unnamed(QAccessibleInterface* node, QStringList& found) {
  const QAccessible::Role role = node->role();
  const bool named = role == QAccessible::ComboBox
                         ? !node->relations(QAccessible::Label).isEmpty()
                         : node->text(QAccessible::Name).contains(QRegularExpression("[A-Za-z]"));
  for (const QAccessible::Role control :
       {QAccessible::PushButton, QAccessible::CheckBox, QAccessible::RadioButton,
        QAccessible::ComboBox, QAccessible::EditableText, QAccessible::Table, QAccessible::List,
        QAccessible::PageTabList, QAccessible::PageTab}) {
    if (role == control && !named) found << node->object()->metaObject()->className();
  }
  // A combo's popup, a table's cells and a list's rows are read by their contents.
  if (role == QAccessible::ComboBox || role == QAccessible::Table || role == QAccessible::List) {
    return;
  }
  for (int i = 0; i < node->childCount(); ++i) Unnamed(node->child(i), found);
}

std::string Unnamed(QWidget* window) {
  QStringList found;
  Unnamed(QAccessible::queryAccessibleInterface(window), found);
  return found.join(", ").toStdString();
}

// Presses `key` where `widget` has the focus.
void Press(QWidget* widget, Qt::Key key) {
  widget->setFocus();
  QTest::keyClick(widget, key);
}

class WindowKeysTest : public FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    frame.show();
    Open();
  }
};

TEST_F(WindowKeysTest, EscAndEnterAnswerForTheButtonsOfRecordWindowsAndLists) {
  app::RecordListWindow* list = frame.defectList();
  app::DefectRecordWindow* adding = frame.AddDefect();
  auto* summary = adding->findChild<QLineEdit*>("summary");
  QTest::keyClicks(summary, "Crash on save");
  Press(adding->findChild<QPlainTextEdit*>(), Qt::Key_Return);
  EXPECT_EQ(adding->findChild<QPlainTextEdit*>()->toPlainText(), "\n") << "a new line, no add";
  Press(summary, Qt::Key_Return);
  ASSERT_EQ(list->Title(), "Defects - (1 item, 0 selected)");

  list->view()->selectRow(0);
  Press(list->view(), Qt::Key_Return);
  ASSERT_EQ(frame.recordWindows().size(), 1u);
  QWidget* editing = frame.recordWindows()[0];
  QTest::keyClicks(editing->findChild<QLineEdit*>("summary"), " twice");
  Press(editing->findChild<QLineEdit*>("summary"), Qt::Key_Escape);
  EXPECT_TRUE(frame.recordWindows().empty());
  EXPECT_EQ(list->view()->model()->index(0, 2).data().toString(), "Crash on save");
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

TEST_F(WindowKeysTest, EveryControlOfEveryWindowHasAName) {
  std::vector<QWidget*> windows{&frame, frame.AddDefect()};
  for (const ListWindowKind* kind : {&kListWindowKinds[1], &kListWindowKinds[7],
                                     &kListWindowKinds[5]}) {  // users, customers, tasks
    frame.ShowList(*kind);
    windows.push_back(frame.AddItem());
  }
  OptionsDialog options(preferences, frame.doc());
  windows.push_back(new app::OptionsDialogWidget(&frame, options, frame.doc()));
  for (QWidget* window : windows) {
    EXPECT_EQ(Unnamed(window), "") << window->windowTitle().toStdString();
  }
  // An event dialog of many fields, looked at while it waits for an answer.
  QTimer::singleShot(0, [] {
    EXPECT_EQ(Unnamed(QApplication::activeModalWidget()), "");
    QApplication::activeModalWidget()->close();
  });
  CFixEvent fix;
  app::RunEventDialog(&frame, *frame.doc(), fix, EventDialogMode::kEdit);
}

}  // namespace
}  // namespace qm::test
