// quillmark-cli, run as the real program, on what it must refuse: command lines it cannot
// take (exit 64, naming the option or word and the command, with the usage), values its
// dialogs or lists turn down (exit 1), files it cannot open (exit 2). Each says why on
// standard error and leaves the project as it was.
#include <gtest/gtest.h>

#include <map>

#include "cli/cli_run.h"
#include "store/project_store.h"
#include "support/scripted_ui.h"

namespace qm::test {
namespace {

struct Case {
  std::string args;  // '@' stands for the project file
  int code;
  std::string err;  // the first line for a command line refused, else the whole text
};

std::string Fill(std::string text, const std::string& with) {
  for (std::size_t at; (at = text.find('@')) != std::string::npos;) text.replace(at, 1, with);
  return text;
}

// Every record of every table as the store reads it; of the users only the ids, since a
// login writes to the user's record.
std::map<std::pair<Tag, std::uint32_t>, std::vector<std::uint8_t>> Records(
    const std::string& path) {
  ScriptedUi ui;
  CProjectStore store(ui);
  std::map<std::pair<Tag, std::uint32_t>, std::vector<std::uint8_t>> records;
  EXPECT_EQ(store.Open(path), DBStatus::kOk);
  for (const Tag tag : store.TableTags()) {
    std::vector<IndexEntry> index;
    EXPECT_EQ(store.ReadIndex(tag, index), DBStatus::kOk);
    for (const IndexEntry& e : index) {
      auto& payload = records[{tag, e.id}];
      if (tag != MakeTag("user")) {
        EXPECT_EQ(store.ReadRecord(tag, e.id, payload), DBStatus::kOk);
      }
    }
  }
  return records;
}

TEST(RefusedCli, RefusalsSayWhyAndChangeNothing) {
  TempDir dir;
  const std::string path = dir.File("Atlas.qmk");
  const std::string a = "--user admin --password '' ";
  ASSERT_EQ(RunCli(dir, Fill("new '@'", path)).code, 0);
  ASSERT_EQ(RunCli(dir, Fill(a + "defect '@' add --summary One", path)).code, 0);
  WriteText(dir.File("short.qmk"), "dbdb");
  WriteText(dir.File("not.qmk"), std::string(200, 'x'));
  const auto records = Records(path);
  const std::string exists =
      "The file @ already exists. You must delete it from the operating system before creating "
      "it within Quillmark. This feature prevents users from accidently deleting existing "
      "databases.\n";
  const std::string unknown = "quillmark-cli store delete: unknown option ";

  const Case cases[] = {
      {a + "--yes defects @ act delete --numbers 1 --dry-rn", 64,
       "quillmark-cli defects act delete: unknown option --dry-rn"},
      {"store delete @ dfct --id 1 --dry-run", 64, unknown + "--dry-run"},
      {a + "store delete @ dfct --id 1", 64, unknown + "--user"},
      {a + "defects @ --bogus", 64, "quillmark-cli defects: unknown option --bogus"},
      {a + "defect @ 1 comment --notes x --hours 3", 64,
       "quillmark-cli defect comment: unknown option --hours"},
      {a + "defects @ act close --numbers 1 --to admin", 64,
       "quillmark-cli defects act close: unknown option --to"},
      {a + "values @ Severity add Blocker Now", 64,
       "quillmark-cli values add: unexpected word \"Now\"."},
      {a + "info @ extra", 64, "quillmark-cli info: unexpected word \"extra\"."},
      {a + "defect @ 1 dance", 64, "quillmark-cli defect: unexpected word \"dance\"."},
      {"store delete @", 64, "quillmark-cli store delete: expected TAG."},
      {a + "defects @ act", 64,
       "quillmark-cli defects act: expected assign, estimate, fix, verify, close, reopen, "
       "comment, release, duplicate or delete."},
      {"store put @ dfct --id 1", 64, "quillmark-cli store put: --mode is required."},
      {a + "defects @ act reopen", 64, "quillmark-cli defects act reopen: --numbers is required."},
      {a + "defect @ add", 64, "quillmark-cli defect add: --summary is required."},
      {"store frobnicate @", 64, "quillmark-cli: \"store frobnicate @\" is no command."},
      {"frobnicate", 64, "Unknown command \"frobnicate\"; quillmark-cli --help lists them."},
      {a + "defect @ add --summary x --priority Nonsense", 64,
       "The list of --priority has no name \"Nonsense\"."},
      {a + "defects @ --sort colour", 64, "There is no defect field \"colour\"."},
      {a + "values @ Colour", 64,
       "There is no value list \"Colour\". The lists are Type, Resolution, Priority, Product, "
       "Reproducible, Severity, Component, Disposition and Status."},
      {"store read @ dfct --id x", 64,
       "--id takes a whole number from 0 to 4294967295, not \"x\"."},
      {"store add @ toolong", 64, "A table tag is four printable characters, not \"toolong\"."},
      {a + "user @ add --first Ann --last Dvorak --login ann --group nobody", 64,
       "There is no user group \"nobody\"."},

      {"new @", 1, exists},
      {"store create @", 1, exists},
      {"store read @ dfct --id 9", 1, "Error 1012: The table has no record with that id.\n"},
      {"store put @ dfct --id 1 --mode 1", 1,
       "Error 1039: A record with that id exists and was kept.\n"},
      {"store add-table @ dfct", 1,
       "Error 1007: The table exists already, or the directory has no free entry.\n"},
      {a + "defect @ 9", 1, "There is no defect number 9.\n"},
      {a + "defect @ 1 fix --date 2/30/2025 --resolution 'Code Change'", 1,
       "Please enter the date this defect was fixed.\n"},
      {a + "defect @ 1 reopen", 1,
       "\"Re-Open\" is not offered for defect 1, which is Open, not assigned.\n"},
      {a + "defects @ act delete --numbers 1", 1,
       "Are you sure that you want to delete the selected items(s)? There is no undo "
       "available.\n"},
      {a + "user @ nobody", 1, "There is no person \"nobody\".\n"},
      {a + "values @ sevr add 'causes crash'", 1,
       "An item with that name already exists, please enter a unique name.\n"},
      {a + "values @ Severity delete Cosmetic", 1,
       "Are you sure that you want to delete the selected name? There is no undo available.\n"},
      // What the window refuses without a message, by a button it disables or a name it
      // leaves as it was.
      {a + "values @ Severity add ' '", 1,
       "A name cannot be empty; nothing was added to the Defect Severity list.\n"},
      {a + "values @ Severity rename Cosmetic ''", 1,
       "A name cannot be empty; \"Cosmetic\" was kept.\n"},
      {a + "values @ Severity rename cosmetic ' Cosmetic'", 1,
       "The name is \"Cosmetic\" already; nothing was changed.\n"},
      {a + "values @ Severity move 'Causes Crash' up", 1,
       "\"Causes Crash\" is the first name of the Defect Severity list already.\n"},
      {a + "values @ Severity move cosmetic down", 1,
       "\"Cosmetic\" is the last name of the Defect Severity list already.\n"},
      {a + "--yes values @ Type delete 'Crash - Data Loss'", 1,
       "Are you sure that you want to delete the selected name? There is no undo available.\n"
       "[o]k/[c]ancel (--yes)\n"
       "One or more defects use this field name. Quillmark will change these defects to use the "
       "field name you choose from the popup menu.\n"
       "New name: give one of the other names with --replace-with.\n"},
      {a + "values @ Status add Parked", 1, "The Status names are fixed.\n"},
      {a + "values @ Component rename X Y", 1, "The Component list has no name \"X\".\n"},

      {"info @", 2,
       "The project @ was not opened.\nWithout a terminal, log in with --user NAME --password "
       "TEXT.\n"},
      {"--user admin --password wrong info @", 2,
       "The user name or password you last used for this project file is not valid.\n"
       "The project @ was not opened.\n"},
      {"store info " + dir.File("not.qmk"), 2,
       "The file you selected was either created by an old version of Quillmark or is not a "
       "Quillmark project file. If it is an old Quillmark project file, run DB Refit update it.\n"},
      {"store info " + dir.File("short.qmk"), 2, "Could not open file due to file I/O error.\n"},
      {"store info " + dir.File("absent.qmk"), 2, "Cannot open file.\n"},
  };
  for (const Case& c : cases) {
    const std::string args = Fill(c.args, "'" + path + "'");
    const CliResult r = RunCli(dir, args);
    EXPECT_EQ(r.code, c.code) << args;
    EXPECT_EQ(c.code == 64 ? r.err.substr(0, r.err.find('\n')) : r.err, Fill(c.err, path)) << args;
    if (c.code == 64) {
      EXPECT_EQ(r.out, "") << args;
      if (c.err.starts_with("quillmark-cli ")) {
        EXPECT_NE(r.err.find("\nusage: quillmark-cli "), std::string::npos) << args;
      }
    }
    EXPECT_TRUE(Records(path) == records) << "changed by " << args;
  }
}

}  // namespace
}  // namespace qm::test
