// User groups and rights through quillmark-cli as the real program: each command refused by
// the right it asks and allowed again with it, a group's change reaching a session at its
// next login only, and the bad input that changes nothing.
#include <gtest/gtest.h>

#include <regex>

#include "cli/cli_run.h"
#include "session/db_doc.h"
#include "session/value_setup.h"
#include "shell/project_item_kinds.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

class RightsCli : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run("new " + file).code, 0);
    for (const std::string args :
         {"group F add Testers", "user F add --last Tess --login tess --group Testers",
          "defect F add --summary Crash"}) {
      const CliResult r = AsAdmin(args);
      ASSERT_EQ(r.code, 0) << args << ": " << r.err;
    }
  }
  CliResult Run(const std::string& args) { return RunCli(dir, args); }
  std::string InFile(std::string args) const {
    args.replace(args.find(" F"), 2, " " + file);
    return args;
  }
  CliResult AsAdmin(const std::string& args) {
    return Run("--user admin --password '' --yes " + InFile(args));
  }
  CliResult AsTess(const std::string& args) {
    return Run("--user tess --password '' --yes " + InFile(args));
  }

  TempDir dir;
  std::string path = dir.File("Rights.qmk");
  std::string file = "'" + path + "'";
};

TEST_F(RightsCli, EachCommandIsRefusedByTheRightItAsksAndRunsWithIt) {
  const struct {
    const char* args;
    const char* right;
  } table[] = {
      {"defects F", "View Defects"},
      {"defect F 1", "View Defects"},
      {"defect F add --summary Second", "Add Defects"},
      {"defect F 1 comment --notes seen", "Add a Comment"},
      {"defects F act assign --numbers 1 --to admin", "Assign Defect"},
      {"values F Severity add Blocker", "Set Up Project Fields"},
      {"users F", "View Users"},
      {"users F --customers", "View Customers"},
      {"user F add --last Ortiz --customer", "Add Customers"},
      {"groups F", "View User Groups"},
      {"group F add Guests", "Add Users Groups"},
      {"group F Guests deny 36", "Edit User Groups"},
      {"configs F", "View Test Configs"},
      {"config F add Lab --capture", "Add Test Configs"},
      {"defects F act delete --numbers 1", "Delete Defects"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.args);
    ASSERT_EQ(AsAdmin(std::string("group F Testers deny '") + row.right + "'").code, 0);
    const std::string defects = AsAdmin("defects F").out + AsAdmin("groups F").out;
    CliResult r = AsTess(row.args);
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, std::string("Your user group does not allow \"") + row.right + "\".\n");
    EXPECT_EQ(AsAdmin("defects F").out + AsAdmin("groups F").out, defects);
    ASSERT_EQ(AsAdmin(std::string("group F Testers allow '") + row.right + "'").code, 0);
    r = AsTess(row.args);
    EXPECT_EQ(r.code, 0) << r.err;
  }
  // The configuration was filled from this machine: Linux always tells its memory.
  const std::string lab = AsAdmin("config F lab").out;
  EXPECT_TRUE(lab.starts_with("Name: Lab\r\n")) << lab;
  EXPECT_TRUE(std::regex_search(lab, std::regex("\r\nRAM: [1-9][0-9]*\r\n"))) << lab;
}

// The rights are the group's as it was at the login: a change made by another program
// reaches a logged-in user only when that user logs in again.
TEST_F(RightsCli, AGroupChangedElsewhereReachesASessionAtItsNextLogin) {
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"tess", ""}), 1);
  ASSERT_TRUE(doc.HasRight(Right::kCompactProject));
  ASSERT_EQ(AsAdmin("group F Testers deny 'Compact Project'").code, 0);
  (void)doc.CheckDatabase();
  EXPECT_TRUE(doc.HasRight(Right::kCompactProject)) << "not before the next login";
  doc.CloseProject();
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"tess", ""}), 1);
  EXPECT_FALSE(doc.HasRight(Right::kCompactProject));
  doc.CloseProject();
}

// A name a list lacks joins it when the member's group lets them type new names of that
// list; a program that has the project open meanwhile learns the name at its next check.
TEST_F(RightsCli, ANewListNameNeedsTheGroupsBoxAndReachesTheOthers) {
  ASSERT_EQ(AsAdmin("user F add --last Berg --login ola --group Administration").code, 0);
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"ola", ""}), 1);
  const std::string severities = AsAdmin("values F Severity").out;
  CliResult r = AsTess("defect F add --summary Hang --severity Blocker");
  EXPECT_EQ(r.code, 64);
  EXPECT_EQ(r.err.substr(0, r.err.find('\n')),
            "The list of --severity has no name \"Blocker\", and your user group does not let "
            "you add one.");
  EXPECT_EQ(AsAdmin("values F Severity").out, severities);

  ASSERT_EQ(AsAdmin("group F Testers allow 'user can enter custom severities'").code, 0);
  r = AsTess("defect F add --summary Hang --severity ' Blocker '");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(AsAdmin("values F Severity").out, severities + "Blocker\n");
  r = AsTess("defect F add --summary Again --severity BLOCKER --priority Urgent");
  EXPECT_EQ(r.err.substr(0, r.err.find('\n')), "The list of --priority has no name \"Urgent\".")
      << "no group adds priorities by typing";
  EXPECT_EQ(AsAdmin("values F Severity").out, severities + "Blocker\n");

  (void)doc.CheckDatabase();
  const auto& list = static_cast<const CValueTable&>(*doc.GetTable(MakeTag("sevr")));
  const ValueItem* blocker = FindValueName(list, "blocker");
  ASSERT_NE(blocker, nullptr) << "the other program's list holds it";
  EXPECT_EQ(blocker->order, list.count());
  doc.CloseProject();
}

TEST_F(RightsCli, BadInputIsRefusedWithItsReasonAndChangesNothing) {
  const struct {
    const char* args;
    int code;
    const char* err;
  } table[] = {
      {"group F Testers deny Bogus", 64,
       "There is no right \"Bogus\": give its number, 1 to 67, or its name as the group window "
       "shows it, such as \"Delete Defects\" or \"User can enter custom types\".\n"},
      {"group F Testers deny 68", 64, ""},
      {"group F Nobody deny 4", 64, "There is no user group \"Nobody\".\n"},
      {"group F Testers members add ghost", 64, "There is no user \"ghost\".\n"},
      {"group F Testers members remove admin --to Testers", 64,
       "Project Admin is not in the user group Testers.\n"},
      {"group F Testers members remove tess --to testers", 64,
       "name with --to another group that is to take the users.\n"},
      {"config F Nothing", 64, "There is no test configuration \"Nothing\".\n"},
      {"config F add 123456789012345678901234567890123", 64,
       "A test configuration's name takes at most 32 bytes; nothing was changed.\n"},
      {"group F add testers", 1,
       "A user group with this name already exists, please enter a unique name.\n"},
      {"group F Testers delete", 1, ""},
  };
  const std::string groups = AsAdmin("groups F").out;
  for (const auto& row : table) {
    SCOPED_TRACE(row.args);
    const CliResult r = AsAdmin(row.args);
    EXPECT_EQ(r.code, row.code);
    EXPECT_NE(r.err.find(row.err), std::string::npos) << r.err;
    EXPECT_EQ(AsAdmin("groups F").out, groups);
  }
  // Leaving a group is joining another; the user is then listed in that one alone.
  ASSERT_EQ(AsAdmin("group F Testers members remove tess --to Administration").code, 0);
  EXPECT_EQ(AsAdmin("groups F").out,
            "Name\tUsers\tDenied\tDescription\nAdministration\t2\t0\tProject file "
            "administration\nTesters\t0\t0\t\n");
  ASSERT_EQ(AsAdmin("group F Testers delete --heir Administration").code, 0);
  const CliResult last = AsAdmin("group F Administration delete --heir Administration");
  EXPECT_EQ(last.code, 1);
  EXPECT_NE(last.err.find("If you remove all user groups you will not be able to access the "
                          "project file. Deselect one user group."),
            std::string::npos);
}

}  // namespace
}  // namespace qm::test
