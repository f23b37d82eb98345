// quillmark-cli defects and defect, run as the real program: new defects and their
// numbers, the list and its sorting, one defect's forms and events, events on a selection,
// dry runs, and value names deleted from under the defects that use them.
#include <gtest/gtest.h>

#include "cli/cli_run.h"

namespace qm::test {
namespace {

// The status line that an event command prints before its change text.
std::string FirstLine(const std::string& out) { return out.substr(0, out.find('\n') + 1); }

class DefectCli : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(RunCli(dir, "new " + file).code, 0); }
  CliResult Run(const std::string& args) {
    return RunCli(dir, "--user admin --password '' " + args);
  }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  std::string file = "'" + path + "'";
};

TEST_F(DefectCli, NewDefectsAreNumberedListedAndSorted) {
  CliResult r = Run("defect " + file + " add --summary 'Crash on save' --type Cosmetic");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "1\n");
  r = Run("defect " + file +
          " add --summary 'Assert in parser' --priority 'Before Beta' --description 'Boom'");
  EXPECT_EQ(r.out, "2\n");

  r = Run("defects " + file);
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out,
            "No.\tSummary\tType\tPriority\tStatus\n"
            "1\tCrash on save\tCosmetic\tImmediate\tOpen, not assigned\n"
            "2\tAssert in parser\tCrash - Data Loss\tBefore Beta\tOpen, not assigned\n");
  r = Run("defects " + file + " --sort summary");
  EXPECT_EQ(r.out.substr(r.out.find('\n') + 1, 1), "2");
  r = Run("defects " + file + " --sort 5 --desc");
  EXPECT_EQ(r.out.substr(r.out.find('\n') + 1, 1), "2") << "Before Beta comes after Immediate";
  r = Run("defects " + file + " --json");
  EXPECT_NE(r.out.find("\"2\":\"Assert in parser\""), std::string::npos);
  EXPECT_NE(r.out.find("\"200\":\"Boom\""), std::string::npos);

  r = Run("defect " + file + " 2");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.substr(0, 13), "Defect No: 2\r");
  EXPECT_NE(r.out.find("Summary: Assert in parser\r\n"), std::string::npos);
  EXPECT_NE(r.out.find("This defect has never been assigned, fixed or closed.\r\n"),
            std::string::npos);
  r = Run("defect " + file + " 2 --html");
  EXPECT_EQ(r.out.substr(0, 63), "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>");
}

TEST_F(DefectCli, DeletingANameReachesTheDefectsThatUseIt) {
  ASSERT_EQ(Run("defect " + file + " add --summary One --type Cosmetic").code, 0);
  ASSERT_EQ(Run("defect " + file + " add --summary Two --type 'Feature Request'").code, 0);
  CliResult r =
      Run("--yes values " + file + " Type delete Cosmetic --replace-with 'Feature Request'");
  ASSERT_EQ(r.code, 0) << r.err;
  r = Run("defects " + file);
  EXPECT_EQ(r.out,
            "No.\tSummary\tType\tPriority\tStatus\n"
            "1\tOne\tFeature Request\tImmediate\tOpen, not assigned\n"
            "2\tTwo\tFeature Request\tImmediate\tOpen, not assigned\n");

  // A component may go without a replacement: the defects lose it.
  ASSERT_EQ(Run("values " + file + " Component add Parser").code, 0);
  ASSERT_EQ(Run("defect " + file + " add --summary Three --component parser").code, 0);
  ASSERT_EQ(Run("--yes values " + file + " Component delete Parser").code, 0);
  r = Run("defects " + file + " --json");
  EXPECT_EQ(r.out.find("Parser"), std::string::npos);
}

TEST_F(DefectCli, EventsGoThroughTheirDialogs) {
  ASSERT_EQ(Run("defect " + file + " add --summary 'Crash on save'").code, 0);
  // A dry run prints the change text and saves nothing.
  const std::string comment = " 1 comment --notes 'first look' --date 3/4/2025";
  const std::string change =
      "**** Added Comment dated 3/4/2025 ****\nComment by: Project Admin\n"
      "Date Entered: 3/4/2025\nComments: first look\n\n";
  CliResult r = Run("defect " + file + comment + " --dry-run");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, change);
  EXPECT_EQ(Run("defect " + file + " 1").out.find("first look"), std::string::npos);
  r = Run("defect " + file + comment);
  EXPECT_EQ(r.out, "Defect 1: Open, not assigned\n" + change);

  r = Run("defect " + file + " 1 assign --to ADMIN --notes 'please look'");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Open, assigned to Project Admin\n");
  r = Run("defect " + file + " 1 fix --hours 2.5 --resolution 'code change' --version 1.1");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Fixed, not assigned\n");
  r = Run("defect " + file + " 1 estimate --hours 3");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "\"Estimate\" is not offered for defect 1, which is Fixed, not assigned.\n");
  r = Run("defect " + file + " 1 verify --pass");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Passed verification, closed\n");
  r = Run("defect " + file + " 1 reopen --date 1/1/2099");
  EXPECT_EQ(r.code, 1) << "beyond what a date of the file can hold";
  r = Run("defect " + file + " 1 reopen");
  EXPECT_EQ(FirstLine(r.out), "Defect 1: Re-opened, not assigned\n");

  r = Run("defect " + file + " 1");
  EXPECT_NE(r.out.find("Hours to Fix:  2.50\r\n"), std::string::npos);
  EXPECT_NE(r.out.find("Re-opened by:Project Admin\r\n"), std::string::npos);
  r = Run("defects " + file + " --json");
  EXPECT_NE(r.out.find("\"19\":\"\""), std::string::npos)
      << "re-opened, a defect read again shows no hours until its next fix";
}

TEST_F(DefectCli, ActionsRunOnASelection) {
  for (const char* summary : {"One", "Two", "Three"}) {
    ASSERT_EQ(Run("defect " + file + " add --summary " + summary).code, 0);
  }
  ASSERT_EQ(Run("defect " + file + " 2 close --resolution 'Not a Bug'").code, 0);
  CliResult r = Run("defects " + file + " act close --numbers 1,2,3 --resolution 'not a bug'");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.err, "One or more defects will not be closed because they are not open.\n");
  EXPECT_EQ(r.out, "Defect 1: Closed\nDefect 3: Closed\n") << "a close carries no change text";

  r = Run("defects " + file + " act fix --numbers 1");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err, "One or more defects will not be updated because they are closed.\n");
  EXPECT_EQ(r.out, "");
  r = Run("defects " + file + " act reopen --numbers 3,2 --by admin");
  EXPECT_EQ(r.out, "Defect 3: Re-opened, not assigned\nDefect 2: Re-opened, not assigned\n");
  r = Run("defects " + file + " act assign --numbers 1,2");
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
  r = Run("defects " + file + " act assign --numbers 2,3 --to admin --dry-run");
  EXPECT_EQ(r.out, assigned);
  EXPECT_NE(Run("defects " + file)
                .out.find("3\tThree\tCrash - Data Loss\tImmediate\tRe-opened, not assigned\n"),
            std::string::npos)
      << "a dry run saves nothing";
  r = Run("defects " + file + " act assign --numbers 2,3 --to admin");
  EXPECT_EQ(r.out, assigned);
  EXPECT_EQ(Run("defects " + file + " act reopen --numbers 2,9").err,
            "There is no defect number 9.\n");
}

TEST_F(DefectCli, DuplicateAndDeleteASelection) {
  ASSERT_EQ(Run("defect " + file + " add --summary One").code, 0);
  ASSERT_EQ(Run("defect " + file + " add --summary Two").code, 0);
  // Dry runs show a new defect's text form and name the defects they would take.
  EXPECT_NE(
      Run("defect " + file + " add --summary 'Not yet' --dry-run").out.find("Summary: Not yet"),
      std::string::npos);
  EXPECT_EQ(Run("--yes defects " + file + " act delete --numbers 1 --dry-run").out,
            "Defect 1 would be deleted.\n");
  EXPECT_EQ(Run("defects " + file + " act duplicate --numbers 1 --dry-run").out,
            "Defect 1 would be duplicated.\n");
  CliResult r = Run("defects " + file + " act duplicate --numbers 1,2");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Defect 3: One\nDefect 4: Two\n");
  r = Run("--yes defects " + file + " act delete --numbers 1,3");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Deleted 2 of 2 defects.\n");
  EXPECT_EQ(Run("defects " + file).out,
            "No.\tSummary\tType\tPriority\tStatus\n"
            "2\tTwo\tCrash - Data Loss\tImmediate\tOpen, not assigned\n"
            "4\tTwo\tCrash - Data Loss\tImmediate\tOpen, not assigned\n");
}

}  // namespace
}  // namespace qm::test
