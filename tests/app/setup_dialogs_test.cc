// The set-up and session dialogs of the window program over a real project, driven through
// their widgets: the value lists, defect numbering, passwords, logging in as another user,
// and the recent files of the File menu.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <cstdio>

#include "defects/project_defects.h"
#include "frame_test.h"
#include "numbering_dialog.h"
#include "password_dialog.h"
#include "session/value_item.h"
#include "value_setup_dialog.h"

namespace qm::test {
namespace {

using Strings = std::vector<std::string>;

Strings Rows(const QListWidget& list) {
  Strings rows;
  for (int r = 0; r < list.count(); ++r) rows.push_back(list.item(r)->text().toStdString());
  return rows;
}

class SetupDialogsTest : public FrameTest {};

TEST_F(SetupDialogsTest, AValueListIsSetUpThroughItsDialog) {
  Cli("defect " + path + " add --summary Slow --type 'Cosmetic'");
  QAction* types = Named<QAction>(frame, "&Type...");
  ASSERT_NE(types, nullptr);
  EXPECT_FALSE(types->isEnabled()) << "no project";
  Open();
  EXPECT_TRUE(types->isEnabled());

  auto& table = static_cast<CValueTable&>(*frame.doc()->GetTable(MakeTag("type")));
  DefectValueAccess access(static_cast<CDefectTable&>(*frame.doc()->GetTable(kDefectTag)));
  ValueSetup setup(table, kValueLists[0], &access, ui, frame.doc()->currentUserId());
  app::ValueSetupDialog dialog(&frame, setup, ui);
  QListWidget& names = *dialog.names();
  const Strings before = Rows(names);
  ASSERT_GE(before.size(), 3u);
  EXPECT_EQ(names.currentRow(), 0);
  EXPECT_FALSE(dialog.button(app::ValueSetupDialog::kUp)->isEnabled()) << "the first name";

  // Down: the name and the selection go one place on, and the stored order follows.
  QTest::mouseClick(dialog.button(app::ValueSetupDialog::kDown), Qt::LeftButton);
  EXPECT_EQ(names.currentRow(), 1);
  EXPECT_EQ(Rows(names)[1], before[0]);
  EXPECT_EQ(table.ValueAt(2)->name, before[0]);

  // Add: the name dialog's answer joins the end, selected; Edit starts from that name.
  std::vector<QString> asked;
  QString answer = "Regression";
  dialog.askName = [&](const QString& title, const QString&, const QString& start) {
    asked.push_back(title + "|" + start);
    return std::optional(answer);
  };
  QTest::mouseClick(dialog.button(app::ValueSetupDialog::kAdd), Qt::LeftButton);
  EXPECT_EQ(names.currentRow(), names.count() - 1);
  EXPECT_FALSE(dialog.button(app::ValueSetupDialog::kDown)->isEnabled()) << "the last name";
  answer = "Regressions";
  QTest::mouseClick(dialog.button(app::ValueSetupDialog::kEdit), Qt::LeftButton);
  EXPECT_EQ(asked, (std::vector<QString>{"Add Defect Type|", "Edit Defect Type|Regression"}));
  EXPECT_EQ(Rows(names).back(), "Regressions");

  // Delete a name a defect uses: Cancel in the popup of replacing names keeps it, a
  // choice moves the defect to that name.
  const QList<QListWidgetItem*> cosmetic = names.findItems("Cosmetic", Qt::MatchExactly);
  ASSERT_EQ(cosmetic.size(), 1);
  names.setCurrentItem(cosmetic[0]);
  std::vector<Strings> offered;
  std::optional<std::uint32_t> choice;
  dialog.askReplacement = [&](const ReplacementQuestion& question) {
    offered.push_back(question.names);
    return choice;
  };
  for (const std::optional<std::uint32_t> chosen : {std::optional<std::uint32_t>(), {1u}}) {
    choice = chosen;
    ui.Script({ui::Answer::kOk});
    QTest::mouseClick(dialog.button(app::ValueSetupDialog::kDelete), Qt::LeftButton);
  }
  ASSERT_EQ(offered.size(), 2u) << "Cancel kept the name to be deleted again";
  EXPECT_EQ(offered[0].size(), before.size()) << "the other names, Regressions among them";
  EXPECT_EQ(Rows(names).size(), before.size());
  const auto& defect = static_cast<const CDefect&>(*frame.doc()->GetTable(kDefectTag)->ItemAt(1));
  EXPECT_EQ(table.ItemById(defect.typeId)->GetName(), offered[1][0]);

  // The dialog ends by keyboard: Enter closes it, as Esc does.
  dialog.show();
  QTest::keyClick(&names, Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(SetupDialogsTest, TheNumberingDialogRefusesANumberInUseAndTakesAHigherOne) {
  for (const char* summary : {"Slow", "Crash"}) Cli("defect " + path + " add --summary " + summary);
  Open();
  CDBDoc& doc = *frame.doc();
  const auto& defects = static_cast<const CDefectTable&>(*doc.GetTable(kDefectTag));
  DefectTableNumbers numbers(defects);
  NumberingSetup setup(*doc.store(), doc.options(), doc, numbers, ui);
  setup.Open();
  app::NumberingDialog dialog(&frame, setup, ui);
  EXPECT_EQ(dialog.nextNumber()->text(), "3");
  EXPECT_TRUE(dialog.mail()->isChecked());

  dialog.show();
  dialog.mail()->setChecked(false);
  QTest::keyClick(dialog.nextNumber(), Qt::Key_Escape);
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  EXPECT_TRUE(doc.options().numberOnMailImport);

  // Enter with a number in use: refused, and the dialog stays with the number selected.
  dialog.show();
  dialog.mail()->setChecked(false);
  dialog.nextNumber()->setText("2");
  QTest::keyClick(dialog.nextNumber(), Qt::Key_Return);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.nextNumber()->selectedText(), "2");
  EXPECT_EQ(ui.Texts(), Strings{"You must enter a defect number that is higher than the highest "
                                "defect number."});
  dialog.nextNumber()->setText("10");
  QTest::keyClick(dialog.nextNumber(), Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_FALSE(doc.options().numberOnMailImport);
  std::uint32_t counter = 0;
  ASSERT_EQ(ReadDefectCounter(*doc.store(), counter), DBStatus::kOk);
  EXPECT_EQ(counter, 10u) << "raising the number: the next defect gets one more";
  EXPECT_EQ(numbers.HighestNumber(), 2u);
}

// The stages and their texts are the password change's own; here the dialog follows them.
TEST_F(SetupDialogsTest, APasswordIsTypedTwiceAndAMismatchStartsTheNewOneAgain) {
  app::PasswordDialog dialog(&frame, "Change Password", "", ui);
  dialog.show();
  const auto type = [&](const char* text) {
    QTest::keyClicks(dialog.field(), text);
    QTest::keyClick(dialog.field(), Qt::Key_Return);
  };
  type("abc");
  EXPECT_EQ(dialog.prompt()->text(), "Retype the new password to verify.");
  EXPECT_EQ(dialog.field()->text(), "") << "each stage starts empty";
  type("abd");
  EXPECT_EQ(ui.shown.size(), 1u) << "the mismatch is said";
  type("abc");
  type("abc");
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.password(), "abc");
}

TEST_F(SetupDialogsTest, LoggingInAsAnotherUserClosesTheRecordWindows) {
  QAction* logIn = Named<QAction>(frame, "&Log In User...");
  ASSERT_NE(logIn, nullptr);
  EXPECT_FALSE(logIn->isEnabled());
  Open();
  EXPECT_TRUE(logIn->isEnabled());
  ASSERT_NE(frame.AddDefect(), nullptr);

  ui.ScriptLogin(std::nullopt);
  logIn->trigger();
  EXPECT_EQ(frame.recordWindows().size(), 1u) << "Cancel: the former user goes on";
  EXPECT_EQ(frame.doc()->currentUser()->GetName(), "Project Admin");

  ui.ScriptLogin(ui::LoginEntry{"tess", ""});
  logIn->trigger();
  EXPECT_TRUE(frame.recordWindows().empty());
  EXPECT_EQ(frame.doc()->currentUser()->GetName(), "Tess");
  EXPECT_NE(frame.defectList(), nullptr) << "Tess may see the defects";
}

TEST_F(SetupDialogsTest, TheRecentFilesOpenAndAMissingOneLeavesTheList) {
  const std::string other = dir.File("Other.qmk");
  MakeProject(other, false);
  ASSERT_TRUE(frame.OpenProject(other));
  Open();
  EXPECT_EQ(frame.recentFiles().paths(), (Strings{path, other}));
  QAction* first = Named<QAction>(frame, "&1 " + QString::fromStdString(path));
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(first->isVisible());

  frame.OpenRecentFile(1);
  EXPECT_EQ(frame.doc()->path(), other);
  EXPECT_EQ(frame.recentFiles().paths(), (Strings{other, path}));

  // A file gone: said once, off the list, and the open project stays.
  std::remove(path.c_str());
  frame.OpenRecentFile(1);
  ASSERT_EQ(ui.Texts().size(), 1u);
  EXPECT_EQ(ui.Texts()[0].rfind("Cannot find the file " + path, 0), 0u) << ui.Texts()[0];
  EXPECT_EQ(frame.recentFiles().paths(), Strings{other});
  EXPECT_EQ(frame.doc()->path(), other);

  // The next start finds the list as it was left.
  app::CMainFrame next(ui, preferences);
  EXPECT_EQ(next.recentFiles().paths(), Strings{other});
}

}  // namespace
}  // namespace qm::test
