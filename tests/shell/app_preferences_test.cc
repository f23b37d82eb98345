// The machine's preferences: defaults on a first start, values read from hand-built files,
// the cut of strings, the last project's three answers, the windows' values and the recent
// files of the File menu.
#include "shell/app_preferences.h"

#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "shell/recent_files.h"
#include "support/temp_dir.h"

namespace qm {
namespace {

using test::ReadText;
using test::TempDir;
using test::WriteText;

// What a first start writes, on a little-endian machine.
constexpr std::string_view kDefaults =
    "# Quillmark preferences, one value a line: Name=string:TEXT or Name=binary:HEXBYTES\n"
    "OpenLastFile=binary:01000000\n"
    "StrikeClosedDefects=binary:01000000\n"
    "DBCheckTime=binary:0200\n"
    "LastOpenFile=string:\n"
    "AutoLogin=binary:00000000\n"
    "LastUserName=string:\n"
    "LastPassword=string:\n"
    "FullPathInTitleBar=binary:00000000\n"
    "WispNoteCheckTime=binary:0900\n"
    "WispNoteAfterImport=binary:0100\n"
    "WispNoteSrcPath=string:\n"
    "WispNoteDstPath=string:\n"
    "AckWispNoteSubmitter=binary:00000000\n"
    "AssignWispNoteImportSeqNum=binary:01000000\n"
    "SMTPHost=string:\n"
    "EMailReturnAddress=string:\n"
    "MAPIPassword=string:\n"
    "MAPIProfile=string:\n"
    "EnableMAPI=binary:00000000\n"
    "EnableSMTP=binary:00000000\n"
    "BackgroundMail=binary:01000000\n"
    "PromptToBackupQueues=binary:01000000\n";

class AppPreferencesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if constexpr (std::endian::native != std::endian::little) {
      GTEST_SKIP() << "the hand-built files hold little-endian numbers";
    }
  }

  test::TempDir dir_;
  const std::string path_ = dir_.File("config/Quillmark.conf");
};

// A first start writes every default; the open windows block is written only once there
// is one, and a window's placement is written at once and survives the next Save.
TEST_F(AppPreferencesTest, AFirstStartWritesEveryDefaultAndTheWindowsOnceThereAreAny) {
  CAppPreferences prefs(path_);
  prefs.smtpHost = "left over";
  EXPECT_EQ(prefs.Load(), 1);
  EXPECT_EQ(ReadText(path_), kDefaults);
  EXPECT_EQ(prefs.smtpHost, "");
  EXPECT_EQ(prefs.GetDBCheckSeconds(), 30);
  EXPECT_EQ(prefs.GetWispNoteCheckSeconds(), -1);
  EXPECT_FALSE(prefs.GetWindowBlock());
  const std::pair<std::uint16_t, int> intervals[] = {{0, 0},  {1, 10},  {7, 1800},  {8, 3600},
                                                     {9, -1}, {10, 30}, {65535, 30}};
  CAppPreferences other(path_);
  for (const auto& [index, seconds] : intervals) {
    other.dbCheckTime = index;
    EXPECT_EQ(other.GetDBCheckSeconds(), seconds) << index;
  }
  other.wispNoteCheckTime = 3;
  EXPECT_EQ(other.GetWispNoteCheckSeconds(), 60);
  other.wispNoteCheckTime = 10;
  EXPECT_EQ(other.GetWispNoteCheckSeconds(), -1) << "the default, never";

  prefs.SetWindowBlock({});
  ASSERT_TRUE(prefs.Save());
  EXPECT_EQ(ReadText(path_), std::string(kDefaults) + "WindowPos=binary:\n");
  const std::uint8_t block[] = {2, 0, 0x8D, 0, 0, 0, 0x05, 0x01, 0, 0};
  prefs.SetWindowBlock(block);
  ASSERT_TRUE(prefs.Save());
  EXPECT_TRUE(prefs.SetPlacement("MainWindowPos", "1 10 20 800 600"));
  prefs.autoLogin = 1;
  ASSERT_TRUE(prefs.Save());
  CAppPreferences next(path_);
  ASSERT_EQ(next.Load(), 1);
  EXPECT_EQ(next.GetWindowBlock(), std::vector<std::uint8_t>(std::begin(block), std::end(block)));
  EXPECT_EQ(next.GetPlacement("MainWindowPos"), "1 10 20 800 600");
  EXPECT_EQ(next.autoLogin, 1u);
}

// Each value that does not fit its entry keeps its default and costs nothing else; values
// the table does not know are written back; the file's order is kept.
TEST_F(AppPreferencesTest, ReadsAFileValueByValue) {
  std::filesystem::create_directories(dir_.File("config"));
  const std::string long_name(64, 'n');
  WriteText(path_,
            "DefectListPos=string:0 1 2\n"
            "OpenLastFile=binary:00000000\n"
            "StrikeClosedDefects=binary:0000\n"  // too narrow
            "DBCheckTime=binary:0500\n"
            "LastOpenFile=string:/p/a.qmk\n"
            "AutoLogin=binary:01000000\n"
            "LastUserName=string:" +
                long_name +  // one byte too long
                "\n"
                "LastPassword=binary:01\n"             // the other kind
                "WispNoteCheckTime=binary:03000000\n"  // too wide
                "WispNoteAfterImport=binary:0300\n"
                "SMTPHost=string:mail.example.org\n"
                "EnableSMTP=binary:02000000\n"
                "WindowPos=binary:01008d000000\n");
  CAppPreferences prefs(path_);
  ASSERT_EQ(prefs.Load(), 1);
  EXPECT_EQ(prefs.openLastFile, 0u);
  EXPECT_EQ(prefs.strikeClosedDefects, 1u);
  EXPECT_EQ(prefs.dbCheckTime, 5u);
  EXPECT_EQ(prefs.lastOpenFile, "/p/a.qmk");
  EXPECT_EQ(prefs.autoLogin, 1u);
  std::string name = "x", password = "y";
  prefs.GetLastUser(name, password);
  EXPECT_EQ(name, "");
  EXPECT_EQ(password, "");
  EXPECT_EQ(prefs.wispNoteCheckTime, 9u);
  EXPECT_EQ(prefs.wispNoteAfterImport, 3u);
  EXPECT_EQ(prefs.smtpHost, "mail.example.org");
  EXPECT_EQ(prefs.enableSmtp, 2u) << "a number is kept as stored";
  EXPECT_EQ(prefs.backgroundMail, 1u);
  EXPECT_EQ(prefs.GetWindowBlock(), (std::vector<std::uint8_t>{1, 0, 0x8D, 0, 0, 0}));
  EXPECT_EQ(prefs.GetPlacement("DefectListPos"), "0 1 2");
  EXPECT_EQ(prefs.GetPlacement("UserListPos"), std::nullopt);

  ASSERT_TRUE(prefs.Save());
  const std::string saved = ReadText(path_);
  EXPECT_NE(saved.find("\nDefectListPos=string:0 1 2\nOpenLastFile=binary:00000000\n"
                       "StrikeClosedDefects=binary:01000000\n"),
            std::string::npos)
      << saved;
  EXPECT_NE(saved.find("\nLastUserName=string:\nLastPassword=string:\n"), std::string::npos);
  EXPECT_NE(saved.find("\nWindowPos=binary:01008d000000\nFullPathInTitleBar="), std::string::npos);
}

// Without a readable OpenLastFile the values in the file are not trusted: every default is
// written over them. Values the table does not know stay.
TEST_F(AppPreferencesTest, WithoutOpenLastFileEveryDefaultIsWritten) {
  std::filesystem::create_directories(dir_.File("config"));
  for (const std::string_view open_last_file :
       {"", "OpenLastFile=binary:0100\n", "OpenLastFile=string:1\n"}) {
    WriteText(path_, std::string(open_last_file) +
                         "SMTPHost=string:mail.example.org\n"
                         "MainWindowPos=string:1 0 0 800 600\n");
    CAppPreferences prefs(path_);
    ASSERT_EQ(prefs.Load(), 1);
    EXPECT_EQ(prefs.smtpHost, "") << open_last_file;
    EXPECT_EQ(prefs.openLastFile, 1u);
    CAppPreferences again(path_);
    ASSERT_EQ(again.Load(), 1);
    EXPECT_EQ(again.smtpHost, "");
    EXPECT_EQ(again.GetPlacement("MainWindowPos"), "1 0 0 800 600");
  }
}

TEST_F(AppPreferencesTest, LastOpenFileAnswers) {
  CAppPreferences prefs(path_);
  std::string path = "x";
  EXPECT_EQ(prefs.GetLastOpenFile(path), 1);
  EXPECT_EQ(path, "");
  const std::string project = dir_.File("Bugs.qmk");
  WriteText(project, "x");
  prefs.SetLastOpenFile(project);
  EXPECT_EQ(prefs.GetLastOpenFile(path), 0);
  EXPECT_EQ(path, project);
  std::filesystem::remove(project);
  path.clear();
  EXPECT_EQ(prefs.GetLastOpenFile(path), 2);
  EXPECT_EQ(path, project) << "the path is given even when its file is gone";
  prefs.SetLastOpenFile(dir_.path());
  EXPECT_EQ(prefs.GetLastOpenFile(path), 2) << "a folder is not a project";
}

// Strings keep at most their width less one byte, cut as payloads cut them.
TEST_F(AppPreferencesTest, StringsAreCutToTheirWidth) {
  CAppPreferences prefs(path_);
  ASSERT_EQ(prefs.Load(), 1);
  prefs.SetLastUser(std::string(64, 'a'), std::string(70, '\xE9'));
  const std::string long_path = "/" + std::string(300, 'd');
  prefs.SetLastOpenFile(long_path);
  prefs.wispNoteSrcPath = long_path;  // as the Options dialog sets it
  prefs.smtpHost = std::string(64, 'h');
  ASSERT_TRUE(prefs.Save());
  EXPECT_EQ(prefs.wispNoteSrcPath, long_path.substr(0, 255)) << "Save cuts the value too";
  EXPECT_EQ(prefs.smtpHost, std::string(63, 'h'));

  CAppPreferences again(path_);
  ASSERT_EQ(again.Load(), 1);
  EXPECT_EQ(again.lastUserName, std::string(63, 'a'));
  EXPECT_EQ(again.lastOpenFile, long_path.substr(0, 255));
  EXPECT_EQ(again.lastPassword, std::string(63, '\xE9'));
}

TEST(WindowBlock, KindsLittleEndianAndUnknownOnesLeftOut) {
  const std::uint32_t kinds[] = {141, 261};
  EXPECT_EQ(EncodeWindowBlock(kinds),
            (std::vector<std::uint8_t>{2, 0, 0x8D, 0, 0, 0, 0x05, 0x01, 0, 0}));
  // An unknown kind is skipped; a count beyond the bytes stops where they end.
  const std::vector<std::uint8_t> block = {3, 0, 0xE7, 0x03, 0, 0, 0x92, 0, 0, 0, 0x8D, 0};
  const std::vector<const ListWindowKind*> windows = DecodeWindowBlock(block);
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0]->openingText, "Opening workbook window...");
  EXPECT_TRUE(DecodeWindowBlock(std::vector<std::uint8_t>{1}).empty());
}

using Strings = std::vector<std::string>;

TEST(RecentFiles, NewestFirstWithoutRepeatsAndAtMostFour) {
  struct Case {
    Strings opened;
    const char* removed;
    Strings expected;
  };
  const Case cases[] = {
      {{"/a.qmk", "/b.qmk"}, nullptr, {"/b.qmk", "/a.qmk"}},
      {{"/a.qmk", "/b.qmk", "/a.qmk"}, nullptr, {"/a.qmk", "/b.qmk"}},
      {{"/1", "/2", "/3", "/4", "/5"}, nullptr, {"/5", "/4", "/3", "/2"}},
      {{"/1", "/2", "/3"}, "/2", {"/3", "/1"}},
      {{"/1", "", "/2"}, "/9", {"/2", "/1"}},
  };
  for (const Case& c : cases) {
    RecentFileList list;
    for (const std::string& path : c.opened) list.Add(path);
    if (c.removed != nullptr) list.Remove(c.removed);
    EXPECT_EQ(list.paths(), c.expected) << c.opened.size() << " opened";
  }
}

TEST(RecentFiles, KeptInThePreferenceFileUnderTheirNames) {
  TempDir dir;
  const std::string file = dir.File("Quillmark.conf");
  CAppPreferences preferences(file);
  RecentFileList list;
  for (const char* path : {"/srv/old.qmk", "/srv/a&b.qmk", "/srv/new.qmk"}) list.Add(path);
  ASSERT_TRUE(list.Write(preferences));
  EXPECT_NE(ReadText(file).find("Recent File List\\File1=string:/srv/new.qmk\n"
                                "Recent File List\\File2=string:/srv/a&b.qmk\n"
                                "Recent File List\\File3=string:/srv/old.qmk\n"),
            std::string::npos);

  // A file gone from the list leaves an empty value, which ends the list when read.
  list.Remove("/srv/a&b.qmk");
  ASSERT_TRUE(list.Write(preferences));
  CAppPreferences reread(file);
  reread.Load();
  RecentFileList again;
  again.Read(reread);
  EXPECT_EQ(again.paths(), (Strings{"/srv/new.qmk", "/srv/old.qmk"}));
}

TEST(RecentFiles, MenuTexts) {
  struct Case {
    std::size_t index;
    const char* path;
    const char* home;
    const char* text;
  };
  const Case cases[] = {
      {0, "/home/ann/Atlas.qmk", "/home/ann", "&1 ~/Atlas.qmk"},
      {3, "/home/anna/Atlas.qmk", "/home/ann", "&4 /home/anna/Atlas.qmk"},
      {1, "/srv/R&D.qmk", "", "&2 /srv/R&&D.qmk"},
      {2, "/x.qmk", "/", "&3 /x.qmk"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(RecentFileMenuText(c.index, c.path, c.home), c.text) << c.path;
  }
}

}  // namespace
}  // namespace qm
