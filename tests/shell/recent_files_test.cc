// The recent files of the File menu: their order as projects open, and how they are kept
// in the preference file and shown in the menu.
#include "shell/recent_files.h"

#include <gtest/gtest.h>

#include "shell/app_preferences.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

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
}  // namespace qm::test
