// quillmark-cli new, info and values, run as the real program: what a person reads, the
// exit codes, the remembered login, and a second program logging in while the first is.
#include <gtest/gtest.h>

#include "cli/cli_run.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "shell/app_preferences.h"
#include "shell/project_item_kinds.h"
#include "support/child_process.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

class ProjectCli : public ::testing::Test {
 protected:
  CliResult Run(const std::string& args) { return RunCli(dir, args); }
  CliResult AsAdmin(const std::string& args) { return Run("--user admin --password '' " + args); }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  std::string file = "'" + path + "'";
};

TEST_F(ProjectCli, NewProjectOpensWithItsTablesAndAdministrator) {
  CliResult r = Run("new " + file);
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Created multi-user project file " + path +
                       "\n\nNew Project File Instructions\n"
                       "You are currently logged in as user 'admin'.\n"
                       "This user has no password. For security reasons, you should set one.\n"
                       "The next time the project file is opened, a user name and password are "
                       "asked for. Log in as admin with an empty password:\n"
                       "  quillmark-cli --user admin --password '' info " +
                       path + "\n");
  r = Run("new " + file);
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("already exists"), std::string::npos);

  r = Run("info " + file);
  EXPECT_EQ(r.code, 2) << "no terminal, no login";
  EXPECT_EQ(r.err, "The project " + path +
                       " was not opened.\nWithout a terminal, log in with --user NAME "
                       "--password TEXT.\n");

  r = Run("info " + file + " --user ADMIN --password ''");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out,
            "Project: Atlas\nDescription: \nData version: 355\nAccess: multi-user\nTables:\n"
            "  msgs  0\n  misc  6\n  dfct  0\n  scfg  0\n  user  1\n  ugrp  1\n  dflt  0\n"
            "  rprt  0\n  type  5\n  reso  6\n  prio  5\n  prod  1\n  stat  6\n  comp  0\n"
            "  rpro  5\n  atch  0\n  task  0\n  sevr  4\n  usta  6\n  etmp  0\n"
            "Logged in:\n  Project Admin\n");
  r = Run("--user admin --password wrong info " + file);
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.err,
            "The user name or password you last used for this project file is not valid.\n"
            "The project " +
                path + " was not opened.\n");

  const std::string single = "'" + dir.File("Solo.qmk") + "'";
  ASSERT_EQ(Run("new --single-user " + single).code, 0);
  r = Run("info " + single);
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Access: single-user\n"), std::string::npos);
  EXPECT_NE(r.out.find("  user  0\n"), std::string::npos);
  EXPECT_EQ(r.out.find("Logged in:"), std::string::npos);
}

TEST_F(ProjectCli, ValuesAreSetUpAsTheDialogDoes) {
  ASSERT_EQ(Run("new " + file).code, 0);
  CliResult r = AsAdmin("values " + file + " Severity");
  EXPECT_EQ(r.out, "Causes Crash\nNo Workaround\nWorkaround\nCosmetic\n");

  r = AsAdmin("values " + file + " severity add '  Blocker '");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "Causes Crash\nNo Workaround\nWorkaround\nCosmetic\nBlocker\n");
  r = AsAdmin("values " + file + " sevr add BLOCKER");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "An item with that name already exists, please enter a unique name.\n");

  r = AsAdmin("values " + file + " Severity rename blocker 'Stops Work'");
  EXPECT_EQ(r.code, 0) << r.err;
  r = AsAdmin("values " + file + " Severity move 'Stops Work' up");
  EXPECT_EQ(r.out, "Causes Crash\nNo Workaround\nWorkaround\nStops Work\nCosmetic\n");
  // What the window refuses without a message, by a button it disables or a name it leaves.
  const std::pair<std::string, std::string> quietRefusals[] = {
      {"add ' '", "A name cannot be empty; nothing was added to the Defect Severity list.\n"},
      {"rename 'Stops Work' ''", "A name cannot be empty; \"Stops Work\" was kept.\n"},
      {"rename 'stops work' ' Stops Work'",
       "The name is \"Stops Work\" already; nothing was changed.\n"},
      {"move 'Causes Crash' up",
       "\"Causes Crash\" is the first name of the Defect Severity list "
       "already.\n"},
      {"move cosmetic down",
       "\"Cosmetic\" is the last name of the Defect Severity list already.\n"},
  };
  for (const auto& [words, message] : quietRefusals) {
    r = AsAdmin("values " + file + " Severity " + words);
    EXPECT_EQ(r.code, 1) << words;
    EXPECT_EQ(r.err, message) << words;
  }

  const std::string sure =
      "Are you sure that you want to delete the selected name? There is no undo available.\n";
  r = AsAdmin("values " + file + " Severity delete 'Stops Work'");
  EXPECT_EQ(r.code, 1) << "without a terminal the question is answered Cancel";
  EXPECT_EQ(r.err, sure);
  r = AsAdmin("--yes values " + file + " Severity delete 'Stops Work'");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "Causes Crash\nNo Workaround\nWorkaround\nCosmetic\n");

  // The last product may go; the last priority may not.
  EXPECT_EQ(AsAdmin("--yes values " + file + " Product delete Atlas").out, "");
  for (const char* name : {"Immediate", "'Before Alpha'", "'Before Beta'", "'Before Final'"}) {
    ASSERT_EQ(AsAdmin("--yes values " + file + " Priority delete " + name).code, 0);
  }
  r = AsAdmin("--yes values " + file + " Priority delete 'Future Release'");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err,
            "Sorry, this field cannot be deleted. You must leave at least one field name in the "
            "list.\n");

  r = AsAdmin("values " + file + " Status add Parked");
  EXPECT_EQ(r.err, "The Status names are fixed.\n");
  r = AsAdmin("values " + file + " Component rename X Y");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "The Component list has no name \"X\".\n");
  EXPECT_EQ(AsAdmin("values " + file + " Colour").code, 64);
}

TEST_F(ProjectCli, RememberedLoginServesTheNextOpeningOfThatFile) {
  ASSERT_EQ(Run("new " + file).code, 0);
  ASSERT_EQ(AsAdmin("--remember info " + file).code, 0);
  CliResult r = Run("info " + file);
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Logged in:\n  Project Admin\n"), std::string::npos);

  // The preferences now name a user this project does not have.
  CAppPreferences prefs(dir.File("config") + "/Corvane Software/Quillmark.conf");
  prefs.Load();
  EXPECT_EQ(prefs.autoLogin, 1u);
  EXPECT_EQ(prefs.lastUserName, "admin");
  prefs.SetLastUser("nobody", "");
  ASSERT_TRUE(prefs.Save());
  r = Run("info " + file);
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.err.find("The user name or password you last used for this project file is not "
                       "valid.\n"),
            0u)
      << "then the dialog, which a script cannot answer";
}

// The file `new` wrote, open in one process with admin logged in: a second program logs
// in as another user, sees both, and cannot be admin at the same time.
TEST_F(ProjectCli, ASecondProgramLogsInWhileTheFirstIsLoggedIn) {
  ASSERT_EQ(Run("new " + file).code, 0);
  const std::string project = path;
  Child first([project](Child::Channel& c) {
    ScriptedUi ui;
    QuietHost host;
    ProjectItemKinds kinds;
    CDBDoc doc(ui, kinds, host);
    if (doc.OpenProject(project, ui::LoginEntry{"admin", ""}) != 1) return 1;
    auto user = std::make_unique<CUser>();
    user->SetLastName("Tess");
    user->SetLogin("tess");
    user->SetPassword("pw");
    user->SetGroupId(1);
    std::unique_ptr<RecordItem> item = std::move(user);
    if (doc.GetTable(kUserTag)->AddItem(item) != DBStatus::kOk) return 1;
    c.Send("in");
    c.Receive();
    doc.CloseProject();
    return 0;
  });
  ASSERT_EQ(first.Receive(), "in");
  CliResult r = Run("--user tess --password PW info " + file);
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Logged in:\n  Project Admin\n  Tess\n"), std::string::npos) << r.out;
  r = AsAdmin("info " + file);
  EXPECT_EQ(r.code, 2);
  EXPECT_EQ(r.err.find("That user is already logged in somewhere, please login under a "
                       "different user name.\n"),
            0u)
      << "the true reason";
  first.Send("done");
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_EQ(AsAdmin("info " + file).code, 0) << "free again once the first has closed";
}

}  // namespace
}  // namespace qm::test
