// quillmark-cli, run as the real program, on command lines it must refuse: an option the
// command does not take, a word too many or missing, a login option where no login is.
// Each exits 64, names the option or word and the command, and leaves the file as it was.
#include <gtest/gtest.h>

#include "cli/cli_run.h"

namespace qm::test {
namespace {

TEST(CommandLineCli, RefusedCommandLinesChangeNothing) {
  TempDir dir;
  const std::string file = "'" + dir.File("Atlas.qmk") + "'";
  const std::string admin = "--user admin --password '' ";
  ASSERT_EQ(RunCli(dir, "new " + file).code, 0);
  ASSERT_EQ(RunCli(dir, admin + "defect " + file + " add --summary One").code, 0);
  const std::string bytes = Slurp(dir.File("Atlas.qmk"));

  struct Case {
    std::string args;
    std::string message;  // the first line of standard error
  };
  const Case cases[] = {
      {admin + "--yes defects " + file + " act delete --numbers 1 --dry-rn",
       "quillmark-cli defects act delete: unknown option --dry-rn"},
      {"store delete " + file + " dfct --id 1 --dry-run",
       "quillmark-cli store delete: unknown option --dry-run"},
      {admin + "defects " + file + " --bogus", "quillmark-cli defects: unknown option --bogus"},
      {admin + "defect " + file + " 1 comment --notes x --hours 3",
       "quillmark-cli defect comment: unknown option --hours"},
      {admin + "defects " + file + " act close --numbers 1 --to admin",
       "quillmark-cli defects act close: unknown option --to"},
      {admin + "store delete " + file + " dfct --id 1",
       "quillmark-cli store delete: unknown option --user"},
      {admin + "values " + file + " Severity add Blocker Now",
       "quillmark-cli values add: unexpected word \"Now\"."},
      {admin + "info " + file + " extra", "quillmark-cli info: unexpected word \"extra\"."},
      {admin + "defect " + file + " 1 dance", "quillmark-cli defect: unexpected word \"dance\"."},
      {"store delete " + file, "quillmark-cli store delete: expected TAG."},
      {admin + "defects " + file + " act",
       "quillmark-cli defects act: expected assign, estimate, fix, verify, close, reopen, "
       "comment, release, duplicate or delete."},
      {"store put " + file + " dfct --id 1", "quillmark-cli store put: --mode is required."},
      {admin + "defects " + file + " act close",
       "quillmark-cli defects act close: --numbers is "
       "required."},
      {"store frobnicate " + file,
       "quillmark-cli: \"store frobnicate " + dir.File("Atlas.qmk") + "\" is no command."},
      {"frobnicate", "Unknown command \"frobnicate\"; quillmark-cli --help lists them."},
  };
  for (const Case& c : cases) {
    const CliResult r = RunCli(dir, c.args);
    EXPECT_EQ(r.code, 64) << c.args;
    EXPECT_EQ(r.err.substr(0, r.err.find('\n')), c.message) << c.args;
    if (c.message.starts_with("quillmark-cli ")) {
      EXPECT_NE(r.err.find("\nusage: quillmark-cli "), std::string::npos) << c.args;
    }
    EXPECT_EQ(r.out, "") << c.args;
    EXPECT_TRUE(Slurp(dir.File("Atlas.qmk")) == bytes) << "changed by " << c.args;
  }
}

}  // namespace
}  // namespace qm::test
