// quillmark-cli users and user, run as the real program: people added under the person
// window's checks, the two lists of one table, and a person's form with the statistics.
#include <gtest/gtest.h>

#include "cli/cli_run.h"

namespace qm::test {
namespace {

TEST(PeopleCli, PeopleAreAddedListedAndShown) {
  TempDir dir;
  const std::string file = dir.File("team.qmk");
  ASSERT_EQ(RunCli(dir, "new " + file).code, 0);
  const auto run = [&](const std::string& args) {
    return RunCli(dir, "--user admin --password '' " + args);
  };
  CliResult r = run("user " + file + " add --first Ann --last Dvorak");
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err,
            "Please enter a unique login name for this user to disinguish her or him from other "
            "users when logging into the program.\n");
  EXPECT_EQ(run("user " + file + " add --first Ann --last Dvorak --login ann --group nobody").code,
            64)
      << "a group that does not exist";
  r = run("user " + file + " add --first Ann --last Dvorak --login ann --group administration");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Dvorak, Ann\n");
  ASSERT_EQ(run("user " + file + " add --last Ortiz --customer --company 'Harbor Lines'").code, 0);
  ASSERT_EQ(run("defect " + file + " add --summary Slow").code, 0);
  ASSERT_EQ(run("defect " + file + " 1 assign --to ann").code, 0);

  EXPECT_EQ(run("users " + file).out,
            "Name\tGroup\tAssigned\n"
            "Dvorak, Ann\tAdministration\t1\n"
            "Project Admin\tAdministration\t0\n");
  EXPECT_EQ(run("users " + file + " --customers").out,
            "Name\tCompany\te-mail Address\tReported\nOrtiz\tHarbor Lines\t\t0\n");

  // Ann logs in with the password she was given, and her form counts her defect.
  EXPECT_EQ(RunCli(dir, "--user ann --password '' info " + file).code, 0);
  r = run("user " + file + " ann");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.substr(0, r.out.find("e-mail")),
            "Name: Dvorak, Ann\r\nUser Group: Administration\r\nLogin: ann\r\n");
  EXPECT_NE(r.out.find("Defects currently assigned to user: 1 (100%)\r\n"), std::string::npos);
  EXPECT_NE(run("user " + file + " Ortiz --html").out.find("<B>Company:</B> Harbor Lines"),
            std::string::npos);
  EXPECT_EQ(run("user " + file + " nobody").err, "There is no person \"nobody\".\n");
}

}  // namespace
}  // namespace qm::test
