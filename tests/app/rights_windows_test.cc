// The user group and test configuration windows through their widgets: a group made with
// its rights, its member and a custom-value box, which reach the member at the next login;
// a configuration added, and a second of the same name refused.
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include "config_record_window.h"
#include "frame_test.h"
#include "group_record_window.h"
#include "people/user.h"
#include "people/user_group.h"
#include "record_list_window.h"

namespace qm::test {
namespace {

class RightsWindows : public FrameTest {
 protected:
  // The row of `list` that reads `text`, or null.
  static QListWidgetItem* Row(const QListWidget& list, const QString& text) {
    const QList<QListWidgetItem*> found = list.findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.front();
  }
  void LogIn(const char* login) {
    ui.ScriptLogin(ui::LoginEntry{login, ""});
    Named<QAction>(frame, "&Log In User...")->trigger();
  }
  const CUserGroup* Group(const std::string& name) {
    const ItemTable& groups = *frame.doc()->GetTable(kGroupTag);
    for (std::uint32_t p = 1; p <= groups.count(); ++p) {
      if (groups.ItemAt(p)->GetName() == name) return static_cast<CUserGroup*>(groups.ItemAt(p));
    }
    return nullptr;
  }
};

TEST_F(RightsWindows, AGroupMadeInItsWindowLimitsItsMemberFromTheNextLogin) {
  Open();
  ASSERT_NE(frame.ShowList(kListWindowKinds[2]), nullptr);
  auto* adding = dynamic_cast<app::GroupRecordWindow*>(frame.AddItem());
  ASSERT_NE(adding, nullptr);
  QTest::keyClicks(adding->findChild<QLineEdit*>("name"), "Testers");
  QListWidgetItem* deleteDefects = Row(*adding->rights(), "Delete Defects");
  ASSERT_NE(deleteDefects, nullptr);
  deleteDefects->setCheckState(Qt::Unchecked);
  QListWidgetItem* tess = Row(*adding->users(), "Tess");
  ASSERT_NE(tess, nullptr);
  tess->setCheckState(Qt::Checked);
  Named<QCheckBox>(*adding, "User can enter custom severities")->setChecked(true);
  QTest::mouseClick(adding->findChild<QPushButton*>("second"), Qt::LeftButton);
  ASSERT_TRUE(frame.recordWindows().empty()) << "the group passed its checks";

  const CUserGroup* testers = Group("Testers");
  ASSERT_NE(testers, nullptr);
  EXPECT_EQ(testers->disabledCommands(), std::vector<std::uint32_t>{4});
  EXPECT_EQ(testers->customFlags, 1u << 1);
  const auto& member = static_cast<const CUser&>(*frame.doc()->GetTable(kUserTag)->ItemAt(2));
  ASSERT_EQ(member.GetLogin(), "tess");
  EXPECT_EQ(testers->userIds(), std::vector<std::uint32_t>{member.GetId()});
  EXPECT_EQ(member.GetGroupId(), testers->GetId());
  EXPECT_FALSE(Group("Administration")->HasUser(member.GetId())) << "one group for each user";

  EXPECT_TRUE(frame.doc()->HasRight(Right::kDeleteDefects)) << "the administrator keeps it";
  // The marks of what arrived were the administrator's; the status bar ends where it began.
  frame.doc()->GetTable(kUserTag)->ItemAt(1)->isNew = true;
  LogIn("tess");
  EXPECT_FALSE(frame.doc()->HasRight(Right::kDeleteDefects));
  EXPECT_TRUE(frame.doc()->HasRight(Right::kAddDefects));
  EXPECT_FALSE(frame.doc()->GetTable(kUserTag)->ItemAt(1)->isNew);
  EXPECT_EQ(ui.statusTexts.back(), "");
}

// Each list's five item commands follow their rights: a member of a group without the right
// finds the command off (without the view right, the list refused with its reason), and
// with it back, on.
TEST_F(RightsWindows, EachItemCommandOfEachListFollowsItsRight) {
  Cli("group " + path + " add Testers");
  Cli("group " + path + " Testers members add tess");
  Open();
  auto& testers = static_cast<CUserGroup&>(*frame.doc()->GetTable(kGroupTag)->ItemAt(2));
  ASSERT_EQ(testers.name.str(), "Testers");
  const std::pair<Right ItemRights::*, const char*> commands[] = {
      {&ItemRights::add, "&Add Item..."},
      {&ItemRights::edit, "&Edit Item..."},
      {&ItemRights::view, "&View Item"},
      {&ItemRights::remove, "D&elete Item"},
      {&ItemRights::duplicate, "D&uplicate Item"}};
  for (const std::size_t k : {0, 1, 2, 3, 5, 7}) {
    const ListWindowKind& kind = kListWindowKinds[k];
    for (const auto& [right, text] : commands) {
      if (kind.rights.*right == Right::kNone) continue;
      SCOPED_TRACE(std::string(kind.valueName) + " " + text);
      for (const bool denied : {true, false}) {
        testers.SetCommandDisabled(RightNumber(kind.rights.*right), denied);
        ASSERT_EQ(frame.doc()->GetTable(kGroupTag)->SaveItem(testers), DBStatus::kOk);
        LogIn("tess");
        app::RecordListWindow* list = frame.ShowList(kind);
        if (right == &ItemRights::view && denied) {
          EXPECT_EQ(list, nullptr);
          EXPECT_EQ(ui.Texts().back(), RightRefusal(kind.rights.view));
        } else {
          ASSERT_NE(list, nullptr);
          QApplication::processEvents();
          EXPECT_EQ(Named<QAction>(frame, text)->isEnabled(), !denied);
          // A double-click of one who may not change the items opens them to view.
          if (right == &ItemRights::edit && list->view()->model()->rowCount() > 0) {
            list->view()->selectRow(0);
            app::RecordWindowWidget* opened = frame.OpenSelection(true);
            ASSERT_NE(opened, nullptr);
            EXPECT_EQ(opened->logic().mode(), denied ? CRecordWindow::kView : CRecordWindow::kEdit);
          }
        }
        LogIn("admin");
      }
    }
  }
}

TEST_F(RightsWindows, ATestConfigurationIsAddedAndASecondOfItsNameRefused) {
  Open();
  ASSERT_NE(frame.ShowList(kListWindowKinds[3]), nullptr);
  for (const int round : {1, 2}) {
    auto* adding = dynamic_cast<app::ConfigRecordWindow*>(frame.AddItem());
    ASSERT_NE(adding, nullptr);
    QTest::keyClicks(adding->findChild<QLineEdit*>("name"), "Build box");
    QTest::mouseClick(adding->findChild<QPushButton*>("second"), Qt::LeftButton);
    EXPECT_EQ(frame.recordWindows().empty(), round == 1);
  }
  EXPECT_EQ(frame.doc()->GetTable(kConfigTag)->count(), 1u);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"A test configuration with this name already "
                                                 "exists, please enter a unique name."});
}

}  // namespace
}  // namespace qm::test
