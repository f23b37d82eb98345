// Many processes doing mixed adds, updates and deletes on one multi-user file. The counts
// come from QM_STRESS_PROCESSES and QM_STRESS_OPS, so a longer run can be made by hand.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

int FromEnvironment(const char* name, int fallback) {
  const char* text = std::getenv(name);
  return text != nullptr && std::atoi(text) > 0 ? std::atoi(text) : fallback;
}

// One writer: its own records, what it was told it wrote, and how many changes committed.
// The final state goes to `report` as lines "id size seed" and a last line "changes N".
int Writer(const std::string& path, int process, int operations, const std::string& report) {
  ScriptedUi ui;
  CProjectStore store(ui);
  if (store.Open(path) != DBStatus::kOk) return 10;
  std::minstd_rand random(static_cast<unsigned>(process) * 7919u + 1);
  std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> mine;  // id -> size, seed
  auto payload = [process](std::uint32_t size, std::uint32_t seed) {
    std::vector<std::uint8_t> p(size);
    for (std::uint32_t i = 0; i < size; ++i)
      p[i] = static_cast<std::uint8_t>(seed * 31 + i * 7 + static_cast<unsigned>(process));
    return p;
  };
  long changes = 0;
  for (int op = 0; op < operations; ++op) {
    const auto size = static_cast<std::uint32_t>(random() % 300);
    const auto seed = static_cast<std::uint32_t>(random());
    const auto kind = static_cast<unsigned>(random() % 10);
    DBStatus s;
    if (kind < 5 || mine.empty()) {
      std::uint32_t id = 0;
      s = store.AddRecord(kDfct, payload(size, seed), &id);
      if (s == DBStatus::kOk) {
        if (mine.count(id)) return 20;  // an id given twice
        mine[id] = {size, seed};
      }
    } else {
      auto it = std::next(mine.begin(), static_cast<long>(random() % mine.size()));
      if (kind < 8) {
        s = store.UpdateRecord(kDfct, it->first, payload(size, seed));
        if (s == DBStatus::kOk) it->second = {size, seed};
      } else {
        s = store.DeleteRecord(kDfct, it->first);
        if (s == DBStatus::kOk) mine.erase(it);
      }
    }
    if (s == DBStatus::kOk)
      ++changes;
    else if (s != DBStatus::kBusy)
      return 30;
  }
  std::ofstream out(report);
  for (const auto& [id, p] : mine) out << id << " " << p.first << " " << p.second << "\n";
  out << "changes " << changes << "\n";
  return 0;
}

TEST(Stress, MixedWritersLoseNothingAndGiveNoIdTwice) {
  const int processes = FromEnvironment("QM_STRESS_PROCESSES", 8);
  const int operations = FromEnvironment("QM_STRESS_OPS", 1000);
  TempDir dir;
  const std::string path = dir.File("stress.qmk");
  ScriptedUi ui;
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
  }
  std::vector<std::unique_ptr<Child>> writers;
  for (int p = 0; p < processes; ++p) {
    const std::string report = dir.File("report" + std::to_string(p));
    writers.push_back(std::make_unique<Child>(
        [=](Child::Channel&) { return Writer(path, p, operations, report); }));
  }
  for (auto& w : writers) ASSERT_EQ(w->Wait(), 0);

  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  std::vector<IndexEntry> index;
  ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
  std::set<std::uint32_t> ids;
  for (const IndexEntry& e : index) {
    EXPECT_TRUE(ids.insert(e.id).second) << "id " << e.id << " twice in the index";
    std::vector<std::uint8_t> out;
    EXPECT_EQ(store.ReadRecord(kDfct, e.id, out), DBStatus::kOk) << e.id;
  }
  long changes = 0;
  std::size_t expected = 0;
  for (int p = 0; p < processes; ++p) {
    std::ifstream in(dir.File("report" + std::to_string(p)));
    std::string first;
    while (in >> first) {
      if (first == "changes") {
        long n = 0;
        in >> n;
        changes += n;
        continue;
      }
      const std::uint32_t id = static_cast<std::uint32_t>(std::stoul(first));
      std::uint32_t size = 0, seed = 0;
      in >> size >> seed;
      ++expected;
      std::vector<std::uint8_t> out;
      ASSERT_EQ(store.ReadRecord(kDfct, id, out), DBStatus::kOk) << "process " << p << " id " << id;
      ASSERT_EQ(out.size(), size);
      for (std::uint32_t i = 0; i < size; ++i) {
        ASSERT_EQ(out[i], static_cast<std::uint8_t>(seed * 31 + i * 7 + static_cast<unsigned>(p)));
      }
    }
  }
  EXPECT_EQ(index.size(), expected) << "records that nobody was told it wrote";
  EXPECT_GE(BeU32(ReadFileBytes(path), 24), static_cast<std::uint32_t>(changes));
  std::cout << processes << " processes x " << operations << " operations: " << changes
            << " committed changes, " << expected << " records\n";
}

}  // namespace
}  // namespace qm::test
