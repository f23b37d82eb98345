// quillmark-cli new, info, values, users, user, defects and defect, run as the real program:
// what a person reads, the remembered login, names deleted from under the defects that use
// them, people added and listed, a second program logging in while the first is; new defects
// and their numbers, the list and its sorting, one defect's forms and events, events on a
// selection, dry runs.
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

// The same, the project made.
class MadeCli : public ProjectCli {
 protected:
  void SetUp() override { ASSERT_EQ(Run("new " + file).code, 0); }
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

TEST_F(MadeCli, PeopleAreAddedListedAndShown) {
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

TEST_F(MadeCli, RememberedLoginServesTheNextOpeningOfThatFile) {
  ASSERT_EQ(AsAdmin("--remember info " + file).code, 0);
  CliResult r = Run("info " + file);
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Logged in:\n  Project Admin\n"), std::string::npos);

  CAppPreferences prefs(dir.File("config") + "/Corvane Software/Quillmark.conf");
  prefs.Load();
  prefs.SetLastUser("nobody", "");
  ASSERT_TRUE(prefs.Save());
  EXPECT_EQ(Run("info " + file).code, 2) << "refused as a wrong login given is";
}

// One process holds the project with admin logged in: a second program logs in as another
// user, sees both, and cannot be admin at the same time.
TEST_F(MadeCli, ASecondProgramLogsInWhileTheFirstIsLoggedIn) {
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

// The status line that an event command prints before its change text.
std::string FirstLine(const std::string& out) { return out.substr(0, out.find('\n') + 1); }

TEST_F(MadeCli, NewDefectsAreNumberedListedAndSorted) {
  CliResult r = AsAdmin("defect " + file + " add --summary 'Crash on save' --type Cosmetic");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "1\n");
  r = AsAdmin("defect " + file +
              " add --summary 'Assert in parser' --priority 'Before Beta' --description 'Boom'");
  EXPECT_EQ(r.out, "2\n");

  r = AsAdmin("defects " + file);
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out,
            "No.\tSummary\tType\tPriority\tStatus\n"
            "1\tCrash on save\tCosmetic\tImmediate\tOpen, not assigned\n"
            "2\tAssert in parser\tCrash - Data Loss\tBefore Beta\tOpen, not assigned\n");
  r = AsAdmin("defects " + file + " --sort summary");
  EXPECT_EQ(r.out.substr(r.out.find('\n') + 1, 1), "2");
  r = AsAdmin("defects " + file + " --sort 5 --desc");
  EXPECT_EQ(r.out.substr(r.out.find('\n') + 1, 1), "2") << "Before Beta comes after Immediate";
  r = AsAdmin("defects " + file + " --json");
  EXPECT_NE(r.out.find("\"2\":\"Assert in parser\""), std::string::npos);
  EXPECT_NE(r.out.find("\"200\":\"Boom\""), std::string::npos);

  r = AsAdmin("defect " + file + " 2");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.substr(0, 13), "Defect No: 2\r");
  EXPECT_NE(r.out.find("Summary: Assert in parser\r\n"), std::string::npos);
  EXPECT_NE(r.out.find("This defect has never been assigned, fixed or closed.\r\n"),
            std::string::npos);
  r = AsAdmin("defect " + file + " 2 --html");
  EXPECT_EQ(r.out.substr(0, 63), "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>");
}

// A name moved; a deleted name's defects take the name given; a component may go without
// one, and the last product may go, but the last priority may not.
TEST_F(MadeCli, DeletingANameReachesTheDefectsThatUseIt) {
  EXPECT_EQ(AsAdmin("values " + file + " Severity move Cosmetic up").out,
            "Causes Crash\nNo Workaround\nCosmetic\nWorkaround\n");
  EXPECT_EQ(AsAdmin("--yes values " + file + " Product delete Atlas").out, "");
  for (const char* name : {"Immediate", "'Before Alpha'", "'Before Beta'", "'Before Final'"}) {
    ASSERT_EQ(AsAdmin("--yes values " + file + " Priority delete " + name).code, 0);
  }
  const CliResult r = AsAdmin("--yes values " + file + " Priority delete 'Future Release'");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err,
            "Sorry, this field cannot be deleted. You must leave at least one field name in the "
            "list.\n");
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary One --type Cosmetic").code, 0);
  ASSERT_EQ(AsAdmin("values " + file + " Component add Parser").code, 0);
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary Two --component parser").code, 0);
  ASSERT_EQ(
      AsAdmin("--yes values " + file + " Type delete Cosmetic --replace-with 'Feature Request'")
          .code,
      0);
  ASSERT_EQ(AsAdmin("--yes values " + file + " Component delete Parser").code, 0);
  const std::string json = AsAdmin("defects " + file + " --json").out;
  EXPECT_NE(json.find("Feature Request"), std::string::npos) << json;
  EXPECT_EQ(json.find("Parser"), std::string::npos);
}

TEST_F(MadeCli, EventsGoThroughTheirDialogs) {
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary 'Crash on save'").code, 0);
  // A dry run prints the change text and saves nothing.
  const std::string comment = " 1 comment --notes 'first look' --date 3/4/2025";
  const std::string change =
      "**** Added Comment dated 3/4/2025 ****\nComment by: Project Admin\n"
      "Date Entered: 3/4/2025\nComments: first look\n\n";
  CliResult r = AsAdmin("defect " + file + comment + " --dry-run");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, change);
  EXPECT_EQ(AsAdmin("defect " + file + " 1").out.find("first look"), std::string::npos);
  r = AsAdmin("defect " + file + comment);
  EXPECT_EQ(r.out, "Defect 1: Open, not assigned\n" + change);

  r = AsAdmin("defect " + file + " 1 assign --to ADMIN --notes 'please look'");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Open, assigned to Project Admin\n");
  r = AsAdmin("defect " + file + " 1 fix --hours 2.5 --resolution 'code change' --version 1.1");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Fixed, not assigned\n");
  r = AsAdmin("defect " + file + " 1 verify --pass");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Passed verification, closed\n");
  r = AsAdmin("defect " + file + " 1 reopen --date 1/1/2099");
  EXPECT_EQ(r.code, 1) << "beyond what a date of the file can hold";
  r = AsAdmin("defect " + file + " 1 reopen");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Re-opened, not assigned\n");

  r = AsAdmin("defect " + file + " 1");
  EXPECT_NE(r.out.find("Hours to Fix:  2.50\r\n"), std::string::npos);
  EXPECT_NE(r.out.find("Re-opened by:Project Admin\r\n"), std::string::npos);
  r = AsAdmin("defects " + file + " --json");
  EXPECT_NE(r.out.find("\"19\":\"\""), std::string::npos)
      << "re-opened, a defect read again shows no hours until its next fix";
}

TEST_F(MadeCli, ActionsRunOnASelection) {
  for (const char* summary : {"One", "Two", "Three"}) {
    ASSERT_EQ(AsAdmin("defect " + file + " add --summary " + summary).code, 0);
  }
  ASSERT_EQ(AsAdmin("defect " + file + " 2 close --resolution 'Not a Bug'").code, 0);
  CliResult r = AsAdmin("defects " + file + " act close --numbers 1,2,3 --resolution 'not a bug'");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.err, "One or more defects will not be closed because they are not open.\n");
  EXPECT_EQ(r.out, "Defect 1: Closed\nDefect 3: Closed\n") << "a close carries no change text";

  r = AsAdmin("defects " + file + " act fix --numbers 1");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "One or more defects will not be updated because they are closed.\n");
  EXPECT_EQ(r.out, "");
  r = AsAdmin("defects " + file + " act reopen --numbers 3,2 --by admin");
  EXPECT_EQ(r.out, "Defect 3: Re-opened, not assigned\nDefect 2: Re-opened, not assigned\n");
  r = AsAdmin("defects " + file + " act assign --numbers 1,2");
  EXPECT_EQ(r.code, 1) << "the dialog refused";
  EXPECT_EQ(r.err,
            "One or more defects will not be assigned because they are closed.\n"
            "Please select the user to which this defect was assigned.\n");
  // An assignment's own change text, per defect, is what its notification carries.
  const std::string assigned =
      "Defect 2: Re-opened, assigned to Project Admin\n"
      "The following fields changed:\n\nDefect assignment:  [not assigned] to [Project Admin]\n"
      "Defect 3: Re-opened, assigned to Project Admin\n"
      "The following fields changed:\n\nDefect assignment:  [not assigned] to [Project Admin]\n";
  r = AsAdmin("defects " + file + " act assign --numbers 2,3 --to admin --dry-run");
  EXPECT_EQ(r.out, assigned);
  EXPECT_NE(AsAdmin("defects " + file)
                .out.find("3\tThree\tCrash - Data Loss\tImmediate\tRe-opened, not assigned\n"),
            std::string::npos)
      << "a dry run saves nothing";
  r = AsAdmin("defects " + file + " act assign --numbers 2,3 --to admin");
  EXPECT_EQ(r.out, assigned);
  EXPECT_EQ(AsAdmin("defects " + file + " act reopen --numbers 2,9").err,
            "There is no defect number 9.\n");
}

TEST_F(MadeCli, DuplicateAndDeleteASelection) {
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary One").code, 0);
  ASSERT_EQ(AsAdmin("defect " + file + " add --summary Two").code, 0);
  // Dry runs show a new defect's text form and name the defects they would take.
  EXPECT_NE(
      AsAdmin("defect " + file + " add --summary 'Not yet' --dry-run").out.find("Summary: Not yet"),
      std::string::npos);
  EXPECT_EQ(AsAdmin("--yes defects " + file + " act delete --numbers 1 --dry-run").out,
            "Defect 1 would be deleted.\n");
  EXPECT_EQ(AsAdmin("defects " + file + " act duplicate --numbers 1 --dry-run").out,
            "Defect 1 would be duplicated.\n");
  CliResult r = AsAdmin("defects " + file + " act duplicate --numbers 1,2");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Defect 3: One\nDefect 4: Two\n");
  r = AsAdmin("--yes defects " + file + " act delete --numbers 1,3");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Deleted 2 of 2 defects.\n");
  EXPECT_EQ(AsAdmin("defects " + file).out,
            "No.\tSummary\tType\tPriority\tStatus\n"
            "2\tTwo\tCrash - Data Loss\tImmediate\tOpen, not assigned\n"
            "4\tTwo\tCrash - Data Loss\tImmediate\tOpen, not assigned\n");
}

}  // namespace
}  // namespace qm::test
