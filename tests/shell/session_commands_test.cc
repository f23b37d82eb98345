// The session commands on a real project: a password stored where it belongs and refused
// where it may not change.
#include "shell/session_commands.h"

#include <gtest/gtest.h>

#include "defects/defect.h"
#include "defects/task.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "shell/app_preferences.h"
#include "shell/project_item_kinds.h"
#include "shell/record_window.h"
#include "shell/task_window.h"
#include "support/made_project.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

using Strings = std::vector<std::string>;

class SessionCommandsTest : public ::testing::Test {
 protected:
  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
};

TEST_F(SessionCommandsTest, AUsersOwnPasswordIsStoredAndTheRememberedLoginFollows) {
  MakeProject(path);
  CAppPreferences preferences(dir.File("Quillmark.conf"));
  preferences.SetLastUser("ADMIN", "");
  {
    CDBDoc doc(ui, kinds, host);
    ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
    ASSERT_EQ(CurrentPassword(doc), "");

    // Refused while a window of this program edits the record, and nothing changes.
    EditMarks marks;
    CTaskWindow window(doc, static_cast<CTaskTable&>(*doc.GetTable(kTasksTag)), ui, marks);
    marks.Set(doc.currentUser(), &window);
    EXPECT_FALSE(StorePassword(doc, &marks, &preferences, "s3cret", ui));
    EXPECT_EQ(ui.Texts(), Strings{"Your user record is open in a window. Close it and try again."});
    EXPECT_EQ(CurrentPassword(doc), "");

    EXPECT_TRUE(StorePassword(doc, nullptr, &preferences, "s3cret", ui));
    doc.CloseProject();
  }
  std::string name, password;
  CAppPreferences reread(dir.File("Quillmark.conf"));
  reread.Load();
  reread.GetLastUser(name, password);
  EXPECT_EQ(password, "s3cret") << "the next start logs in by itself still";
  CDBDoc again(ui, kinds, host);
  EXPECT_EQ(again.OpenProject(path, ui::LoginEntry{"admin", "S3CRET"}), 1);

  // A group that denies "Set Own Password" leaves nothing to change.
  auto& group = static_cast<CUserGroup&>(*again.GetTable(kGroupTag)->ItemAt(1));
  group.SetCommandDisabled(37, true);
  ASSERT_EQ(again.GetTable(kGroupTag)->SaveItem(group), DBStatus::kOk);
  ASSERT_EQ(again.LogInUser(ui::LoginEntry{"tess", ""}), 0);
  EXPECT_EQ(CurrentPassword(again), std::nullopt);
  EXPECT_FALSE(StorePassword(again, nullptr, nullptr, "x", ui));
}

TEST_F(SessionCommandsTest, ASingleUserProjectsPasswordIsAskedForAtTheNextOpening) {
  MakeProject(path, false);
  {
    CDBDoc doc(ui, kinds, host);
    ASSERT_EQ(doc.OpenProject(path), 1);
    ASSERT_EQ(CurrentPassword(doc), "");
    EXPECT_TRUE(StorePassword(doc, nullptr, nullptr, "door", ui));
    doc.CloseProject();
  }
  CDBDoc doc(ui, kinds, host);
  ui.ScriptPassword("DOOR");
  ASSERT_EQ(doc.OpenProject(path), 1);
  EXPECT_EQ(ui.passwordTexts.size(), 1u);
  EXPECT_EQ(CurrentPassword(doc), "door");
}

}  // namespace
}  // namespace qm::test
