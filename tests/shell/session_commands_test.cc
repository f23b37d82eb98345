// The session commands on a real project: a password stored where it belongs and refused
// where it may not change.
#include "shell/session_commands.h"

#include <gtest/gtest.h>

#include "people/user_group.h"
#include "shell/app_preferences.h"
#include "shell/task_window.h"
#include "shell_project.h"

namespace qm::test {
namespace {

using Strings = std::vector<std::string>;

using SessionCommandsTest = ShellProject;

TEST_F(SessionCommandsTest, AUsersOwnPasswordIsStoredAndTheRememberedLoginFollows) {
  MakeProject(path);
  CAppPreferences preferences(dir.File("Quillmark.conf"));
  preferences.SetLastUser("ADMIN", "");
  Open();
  ASSERT_EQ(CurrentPassword(*doc), "");

  {  // Refused while a window of this program edits the record, and nothing changes.
    CTaskWindow window(*doc, table<CTaskTable>(kTasksTag), ui, marks);
    marks.Set(doc->currentUser(), &window);
    EXPECT_FALSE(StorePassword(*doc, &marks, &preferences, "s3cret", ui));
  }
  EXPECT_EQ(ui.Texts(), Strings{"Your user record is open in a window. Close it and try again."});
  EXPECT_EQ(CurrentPassword(*doc), "");

  EXPECT_TRUE(StorePassword(*doc, nullptr, &preferences, "s3cret", ui));
  doc->CloseProject();
  std::string name, password;
  CAppPreferences reread(dir.File("Quillmark.conf"));
  reread.Load();
  reread.GetLastUser(name, password);
  EXPECT_EQ(password, "s3cret") << "the next start logs in by itself still";
  Open(ui::LoginEntry{"admin", "S3CRET"});

  // A group that denies "Set Own Password" leaves nothing to change.
  auto& group = static_cast<CUserGroup&>(*doc->GetTable(kGroupTag)->ItemAt(1));
  group.SetCommandDisabled(37, true);
  ASSERT_EQ(doc->GetTable(kGroupTag)->SaveItem(group), DBStatus::kOk);
  ASSERT_EQ(doc->LogInUser(ui::LoginEntry{"tess", ""}), 0);
  EXPECT_EQ(CurrentPassword(*doc), std::nullopt);
  EXPECT_FALSE(StorePassword(*doc, nullptr, nullptr, "x", ui));
}

TEST_F(SessionCommandsTest, ASingleUserProjectsPasswordIsAskedForAtTheNextOpening) {
  MakeProject(path, false);
  Open(std::nullopt);
  ASSERT_EQ(CurrentPassword(*doc), "");
  EXPECT_TRUE(StorePassword(*doc, nullptr, nullptr, "door", ui));
  doc->CloseProject();
  ui.ScriptPassword("DOOR");
  Open(std::nullopt);
  EXPECT_EQ(ui.passwordTexts.size(), 1u);
  EXPECT_EQ(CurrentPassword(*doc), "door");
}

}  // namespace
}  // namespace qm::test
