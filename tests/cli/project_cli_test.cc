// quillmark-cli new, info, values, users and user, run as the real program: what a person
// reads, the remembered login, the value lists set up as their dialog does, people added
// and listed, and a second program logging in while the first is.
#include <gtest/gtest.h>

#include "cli/cli_run.h"
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
  r = Run("info " + file + " --user ADMIN --password ''");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out,
            "Project: Atlas\nDescription: \nData version: 355\nAccess: multi-user\nTables:\n"
            "  msgs  0\n  misc  6\n  dfct  0\n  scfg  0\n  user  1\n  ugrp  1\n  dflt  0\n"
            "  rprt  0\n  type  5\n  reso  6\n  prio  5\n  prod  1\n  stat  6\n  comp  0\n"
            "  rpro  5\n  atch  0\n  task  0\n  sevr  4\n  usta  6\n  etmp  0\n"
            "Logged in:\n  Project Admin\n");

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
  r = AsAdmin("values " + file + " Severity rename blocker 'Stops Work'");
  EXPECT_EQ(r.code, 0) << r.err;
  r = AsAdmin("values " + file + " Severity move 'Stops Work' up");
  EXPECT_EQ(r.out, "Causes Crash\nNo Workaround\nWorkaround\nStops Work\nCosmetic\n");
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
}

TEST_F(ProjectCli, PeopleAreAddedListedAndShown) {
  ASSERT_EQ(Run("new " + file).code, 0);
  CliResult r =
      AsAdmin("user " + file + " add --first Ann --last Dvorak --login ann --group administration");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Dvorak, Ann\n");
  ASSERT_EQ(AsAdmin("user " + file + " add --last Ortiz --customer --company 'Harbor Lines'").code,
            0);
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary Slow").code, 0);
  ASSERT_EQ(AsAdmin("defect " + file + " 1 assign --to ann").code, 0);
  EXPECT_EQ(AsAdmin("users " + file).out,
            "Name\tGroup\tAssigned\n"
            "Dvorak, Ann\tAdministration\t1\n"
            "Project Admin\tAdministration\t0\n");
  EXPECT_EQ(AsAdmin("users " + file + " --customers").out,
            "Name\tCompany\te-mail Address\tReported\nOrtiz\tHarbor Lines\t\t0\n");

  // Ann logs in with the password she was given, and her form counts her defect.
  EXPECT_EQ(Run("--user ann --password '' info " + file).code, 0);
  r = AsAdmin("user " + file + " ann");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.substr(0, r.out.find("e-mail")),
            "Name: Dvorak, Ann\r\nUser Group: Administration\r\nLogin: ann\r\n");
  EXPECT_NE(r.out.find("Defects currently assigned to user: 1 (100%)\r\n"), std::string::npos);
  EXPECT_NE(AsAdmin("user " + file + " Ortiz --html").out.find("<B>Company:</B> Harbor Lines"),
            std::string::npos);
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

// One process holds the project with admin logged in: a second program logs in as another
// user, sees both, and cannot be admin at the same time.
TEST_F(ProjectCli, ASecondProgramLogsInWhileTheFirstIsLoggedIn) {
  ASSERT_EQ(Run("new " + file).code, 0);
  ASSERT_EQ(AsAdmin("user " + file +
                    " add --last Tess --login tess --user-password pw --group administration")
                .code,
            0);
  const std::string project = path;
  Child first([project](Child::Channel& c) {
    ScriptedUi ui;
    QuietHost host;
    ProjectItemKinds kinds;
    CDBDoc doc(ui, kinds, host);
    if (doc.OpenProject(project, ui::LoginEntry{"admin", ""}) != 1) return 1;
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
