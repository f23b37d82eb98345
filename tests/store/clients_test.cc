// Several clients of one file: the write lock between them, and indexes that stay true
// whoever changed them. Processes writing together are in the stress test.
#include <gtest/gtest.h>

#include <map>

#include "store/project_store.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

std::vector<std::uint8_t> P(const std::string& s) { return {s.begin(), s.end()}; }

std::string MakeFile(const TempDir& dir, std::uint16_t multiUser) {
  ScriptedUi ui;
  CProjectStore store(ui);
  const std::string path = dir.File("shared.qmk");
  EXPECT_EQ(store.Create(path, multiUser), DBStatus::kOk);
  EXPECT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
  return path;
}

TEST(Clients, TheWriteLockKeepsOthersOutUntilItIsReleased) {
  TempDir dir;
  const std::string path = MakeFile(dir, 1);
  ScriptedUi ui;
  FakeClock clock;
  clock.pauseTicks = 600;  // ten seconds a pause: the five minutes pass quickly
  CProjectStore holder(ui), waiter(ui, platform::FileSystem::Real(), clock);
  ASSERT_EQ(holder.Open(path), DBStatus::kOk);
  ASSERT_EQ(waiter.Open(path), DBStatus::kOk);

  ASSERT_EQ(holder.BeginAccess(true), DBStatus::kOk);
  ASSERT_EQ(holder.AddRecord(kDfct, P("inside"), nullptr), DBStatus::kOk);
  ASSERT_EQ(holder.AddRecord(kDfct, P("bracket"), nullptr), DBStatus::kOk);
  EXPECT_EQ(waiter.AddRecord(kDfct, P("waits"), nullptr), DBStatus::kBusy);
  EXPECT_GE(clock.pauses, 30);
  EXPECT_LE(clock.pauses, 31);
  ASSERT_EQ(holder.EndAccess(true), DBStatus::kOk);

  std::uint32_t id = 0;
  ASSERT_EQ(waiter.AddRecord(kDfct, P("after"), &id), DBStatus::kOk);
  EXPECT_EQ(id, 3u);
  std::uint32_t count = 0;
  ASSERT_EQ(holder.CountRecords(kDfct, count), DBStatus::kOk);
  EXPECT_EQ(count, 3u);
}

// Each client keeps the index it holds while the file's head says the same; a change by
// another client must always be seen, whatever kind of change it was.
TEST(Clients, EachClientSeesTheIndexOnDisk) {
  TempDir dir;
  const std::string path = MakeFile(dir, 1);
  ScriptedUi ui;
  CProjectStore a(ui), b(ui);
  ASSERT_EQ(a.Open(path), DBStatus::kOk);
  ASSERT_EQ(b.Open(path), DBStatus::kOk);
  std::map<std::uint32_t, std::string> truth;
  std::uint32_t id = 0;
  for (int round = 0; round < 300; ++round) {
    CProjectStore& writer = round % 3 == 0 ? a : b;
    CProjectStore& reader = round % 3 == 0 ? b : a;
    const std::string text = std::string("r").append(std::to_string(round));
    if (round % 7 == 3 && !truth.empty()) {
      const auto victim = truth.begin()->first;
      ASSERT_EQ(writer.DeleteRecord(kDfct, victim), DBStatus::kOk);
      truth.erase(victim);
    } else if (round % 5 == 2 && !truth.empty()) {
      const auto target = truth.rbegin()->first;
      const std::string changed = truth[target] + (round % 2 ? "+" : "");
      ASSERT_EQ(writer.UpdateRecord(kDfct, target, P(changed)), DBStatus::kOk);
      truth[target] = changed;
    } else {
      ASSERT_EQ(writer.AddRecord(kDfct, P(text), &id), DBStatus::kOk);
      truth[id] = text;
    }
    std::vector<IndexEntry> index;
    ASSERT_EQ(reader.ReadIndex(kDfct, index), DBStatus::kOk);
    ASSERT_EQ(index.size(), truth.size()) << "round " << round;
    for (const IndexEntry& e : index) {
      std::vector<std::uint8_t> out;
      ASSERT_EQ(reader.ReadRecord(kDfct, e.id, out), DBStatus::kOk) << "round " << round;
      ASSERT_EQ(std::string(out.begin(), out.end()), truth[e.id]);
    }
  }
}

// A single-user file keeps its write lock from the opening to the closing, so a second
// copy waits and is told the database is busy.
TEST(Clients, ASingleUserFileIsHeldByTheClientThatOpenedIt) {
  TempDir dir;
  const std::string path = MakeFile(dir, 0);
  ScriptedUi ui;
  FakeClock clock;
  clock.pauseTicks = 6000;
  CProjectStore owner(ui), second(ui, platform::FileSystem::Real(), clock);
  ASSERT_EQ(owner.Open(path), DBStatus::kOk);
  EXPECT_EQ(second.Open(path), DBStatus::kBusy);
  ASSERT_EQ(owner.AddRecord(kDfct, P("mine"), nullptr), DBStatus::kOk);
  ASSERT_EQ(owner.Close(), DBStatus::kOk);
  ASSERT_EQ(second.Open(path), DBStatus::kOk);
  std::vector<std::uint8_t> out;
  ASSERT_EQ(second.ReadRecord(kDfct, 1, out), DBStatus::kOk);
}

// Switching a file to single-user makes its client the only one: it keeps the write lock
// until it switches back.
TEST(Clients, SwitchingToSingleUserHoldsTheFileUntilSwitchedBack) {
  TempDir dir;
  const std::string path = MakeFile(dir, 1);
  ScriptedUi ui;
  FakeClock clock;
  clock.pauseTicks = 6000;
  CProjectStore owner(ui), other(ui, platform::FileSystem::Real(), clock);
  ASSERT_EQ(owner.Open(path), DBStatus::kOk);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  ASSERT_EQ(owner.SetMultiUser(0), DBStatus::kOk);
  EXPECT_FALSE(owner.multiUser());
  std::vector<std::uint8_t> out;
  EXPECT_EQ(other.ReadRecord(kDfct, 1, out), DBStatus::kBusy);
  ASSERT_EQ(owner.AddRecord(kDfct, P("alone"), nullptr), DBStatus::kOk);
  ASSERT_EQ(owner.SetMultiUser(1), DBStatus::kOk);
  ASSERT_EQ(other.ReadRecord(kDfct, 1, out), DBStatus::kOk);
  EXPECT_EQ(std::string(out.begin(), out.end()), "alone");
  EXPECT_EQ(other.header().multiUser, 1);
}

}  // namespace
}  // namespace qm::test
