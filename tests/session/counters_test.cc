// Counter values handed out by several processes at once: every number once.
#include "session/counters.h"

#include <gtest/gtest.h>

#include <set>

#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

TEST(Counters, ProcessesNeverGetTheSameNumber) {
  TempDir dir;
  const std::string path = dir.File("c.qmk");
  ScriptedUi ui;
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kMiscTag, ""), DBStatus::kOk);
    StoreCounters counters(store, 0);
    ASSERT_EQ(counters.SetCounter(kMiscTag, kDefectCounterRecord, 99), DBStatus::kOk);
  }
  const auto file = ReadFileBytes(path);
  EXPECT_EQ(std::vector<std::uint8_t>(file.end() - 4, file.end()),
            std::vector<std::uint8_t>({0, 0, 0, 99}));
  std::vector<std::unique_ptr<Child>> children;
  for (std::uint32_t user = 1; user <= 3; ++user) {
    children.push_back(std::make_unique<Child>([=](Child::Channel& c) {
      ScriptedUi childUi;
      CProjectStore store(childUi);
      if (store.Open(path) != DBStatus::kOk || store.LoginUser(user) != DBStatus::kOk) return 1;
      StoreCounters counters(store, user);
      for (int i = 0; i < 100; ++i) {
        std::uint32_t value = 0;
        // A record locked by another user at that moment refuses; the window would retry.
        if (counters.NextCounter(kMiscTag, kDefectCounterRecord, value) == DBStatus::kOk) {
          c.Send(std::to_string(value));
        }
      }
      return 0;
    }));
  }
  std::set<std::uint32_t> given;
  std::size_t count = 0;
  for (auto& child : children) {
    for (std::string n = child->Receive(); !n.empty(); n = child->Receive(), ++count) {
      given.insert(static_cast<std::uint32_t>(std::stoul(n)));
    }
    ASSERT_EQ(child->Wait(), 0);
  }
  EXPECT_EQ(given.size(), count) << "a number was given twice";
  ASSERT_FALSE(given.empty());
  EXPECT_EQ(*given.begin(), 100u);
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  std::uint32_t stored = 0;
  ASSERT_EQ(ReadDefectCounter(store, stored), DBStatus::kOk);
  EXPECT_EQ(stored, *given.rbegin());
  EXPECT_EQ(stored, 99 + count) << "every number handed out was counted";
}

}  // namespace
}  // namespace qm::test
