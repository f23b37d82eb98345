// The Options dialog's logic: its pages by what is open, the General page's values, and
// what OK writes where; the session commands' passwords.
#include "shell/options_pages.h"

#include <gtest/gtest.h>

#include "people/user_group.h"
#include "session/project_records.h"
#include "shell/app_preferences.h"
#include "shell/session_commands.h"
#include "shell/task_window.h"
#include "shell_project.h"

namespace qm::test {
namespace {

// A host whose check interval follows the preferences, as the program's does.
class PreferenceHost : public QuietHost {
 public:
  explicit PreferenceHost(const CAppPreferences& preferences) : preferences_(preferences) {}
  std::int32_t DatabaseCheckSeconds() const override { return preferences_.GetDBCheckSeconds(); }

 private:
  const CAppPreferences& preferences_;
};

class OptionsTest : public ::testing::Test {
 protected:
  void SetUp() override { preferences.Load(); }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  CAppPreferences preferences{dir.File("Quillmark.conf")};
  ScriptedUi ui;
  PreferenceHost host{preferences};
  ProjectItemKinds kinds;
};

TEST_F(OptionsTest, GeneralValuesGoToTheFileAndTheUserPageToTheUserAndTheProject) {
  EXPECT_EQ(OptionsDialog(preferences, nullptr).pages(), std::vector<std::string_view>{"General"});
  MakeProject(path);
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  OptionsDialog options(preferences, &doc);
  EXPECT_EQ(options.pages(), (std::vector<std::string_view>{"General", "User", "Assign"}));
  EXPECT_TRUE(options.openPreviousFile);
  EXPECT_EQ(kCheckIntervalTexts[static_cast<std::size_t>(options.checkInterval)], "30 seconds");
  EXPECT_TRUE(options.playSound) << "an alert plays a sound until the user says not to";
  options.openPreviousFile = false;
  options.checkInterval = 7;  // "1 hour"
  options.grayClosed = false;
  options.autoLogin = true;
  options.notifyFlags = 1 | 8;
  options.playSound = false;
  options.viewOnDoubleClick = true;
  options.assign.afterWork = 1;  // "Keep its current assignment"
  EXPECT_TRUE(options.Apply()) << "the lists are to be drawn again";
  EXPECT_FALSE(OptionsDialog(preferences, &doc).Apply()) << "nothing changed this time";
  EXPECT_EQ(preferences.lastUserName, "admin");
  EXPECT_EQ(doc.nextDatabaseCheck(), 0u) << "the next tick checks, at the new interval after";
  doc.CloseProject();

  CAppPreferences again(dir.File("Quillmark.conf"));
  again.Load();
  EXPECT_EQ(again.openLastFile, 0u);
  EXPECT_EQ(again.dbCheckTime, 8u) << "the combo's position plus 1";
  EXPECT_EQ(again.GetDBCheckSeconds(), 3600);
  EXPECT_EQ(again.strikeClosedDefects, 0u);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  EXPECT_EQ(static_cast<const CUser*>(doc.currentUser())->GetNotifyFlags(), 9u) << "saved";
  EXPECT_EQ(ReadPersonalSettings(doc.preferences()), (PersonalSettings{true, false, false, true}))
      << "in the user's record";
  EXPECT_EQ(doc.assignRules().afterWork, 1u) << "in the project";
  doc.CloseProject();
}

TEST_F(OptionsTest, ASingleUserProjectKeepsItsChoicesOnItsProjectPage) {
  MakeProject(path, false);
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.OpenProject(path), 1);
  OptionsDialog options(preferences, &doc);
  EXPECT_EQ(options.pages(), (std::vector<std::string_view>{"General", "Project", "Assign"}));
  options.firstNameFirst = true;
  options.Apply();
  doc.CloseProject();
  ASSERT_EQ(doc.OpenProject(path), 1);
  EXPECT_TRUE(ReadPersonalSettings(doc.preferences()).firstNameFirst) << "misc record 3";
  doc.CloseProject();
}

// The session commands on a real project: a password stored where it belongs and refused
// where it may not change.
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

// Asked for at every opening, in any case of its letters; a cancel shows nothing.
TEST_F(SessionCommandsTest, ASingleUserProjectsPasswordIsAskedForAtEveryOpening) {
  MakeProject(path, false);
  Open(std::nullopt);
  ASSERT_EQ(CurrentPassword(*doc), "");
  EXPECT_TRUE(StorePassword(*doc, nullptr, nullptr, "Open", ui));
  doc->CloseProject();
  ui.ScriptPassword("shut");
  ui.ScriptPassword("OPEN");
  Open(std::nullopt);
  EXPECT_EQ(
      ui.passwordTexts,
      Strings(2, "The file " + path + " is password protected. Please enter the password below."));
  EXPECT_EQ(ui.Texts(), Strings{"Password incorrect -- please try again."});
  EXPECT_EQ(CurrentPassword(*doc), "Open");
  doc->CloseProject();
  ui.shown.clear();
  ui.ScriptPassword(std::nullopt);
  EXPECT_EQ(doc->OpenProject(path), 0);
  EXPECT_TRUE(ui.shown.empty());
}

}  // namespace
}  // namespace qm::test
