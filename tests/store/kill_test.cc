// Writers killed at random moments: whatever a writer was told it had done survives, the
// table loads every such record by position, and nothing a killed writer left behind
// names a record twice or a record 0. QM_KILL_ROUNDS sets the rounds (two kills each).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include "store/project_store.h"
#include "support/child_process.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

std::vector<std::uint8_t> Payload(std::uint32_t size, std::uint32_t seed) {
  std::vector<std::uint8_t> p(size);
  for (std::uint32_t i = 0; i < size; ++i) p[i] = static_cast<std::uint8_t>(seed * 31 + i * 7);
  return p;
}

// A writer's changes in one round at most, so that with the records of a round the index
// keeps its first 128 entries and stays within one page of the file.
constexpr int kMostChanges = 50;

// Adds, updates and deletes its own records until it is killed or has made kMostChanges. Before
// each change it says what it begins ("add SIZE SEED", "upd ID SIZE SEED", "del ID"), after it "ok"
// (with the id for an add). Sizes reach past a page, so writes straddle page bounds.
int Writer(const std::string& path, unsigned seed, Child::Channel& out) {
  ScriptedUi ui;
  // A killed process leaves what it wrote in the system's cache, so the flush is no part
  // of what this test proves, only of its time.
  FaultyFileSystem files;
  files.flushes = false;
  CProjectStore store(ui, files);
  if (store.Open(path) != DBStatus::kOk) return 10;
  std::minstd_rand random(seed);
  std::vector<std::uint32_t> mine;
  for (int op = 0; op < kMostChanges; ++op) {
    const auto size = static_cast<std::uint32_t>(random() % 10 == 0 ? 5000 : random() % 700);
    const auto content = static_cast<std::uint32_t>(random());
    const auto kind = random() % 10;
    const std::string version = " " + std::to_string(size) + " " + std::to_string(content);
    DBStatus s;
    std::uint32_t id = 0;
    if (kind < 5 || mine.empty()) {
      out.Send("add" + version);
      if ((s = store.AddRecord(kDfct, Payload(size, content), &id)) == DBStatus::kOk)
        mine.push_back(id);
    } else {
      const std::size_t pick = random() % mine.size();
      id = mine[pick];
      if (kind < 8) {
        out.Send("upd " + std::to_string(id) + version);
        s = store.UpdateRecord(kDfct, id, Payload(size, content));
      } else {
        out.Send("del " + std::to_string(id));
        s = store.DeleteRecord(kDfct, id);
        mine.erase(mine.begin() + static_cast<long>(pick));
      }
    }
    if (s != DBStatus::kOk) return 20;
    out.Send("ok " + std::to_string(id));
  }
  out.Receive();  // waits to be killed
  return 0;
}

struct Version {
  std::uint32_t size = 0;
  std::uint32_t seed = 0;
  bool operator==(const Version&) const = default;
};

// What the writers were told: each record's acknowledged version (none once deleted), and
// the one change each killed writer had begun, which may or may not have happened.
struct Model {
  std::map<std::uint32_t, std::optional<Version>> records;
  std::set<std::uint32_t> unacknowledged;  // ids of adds whose writer died before "ok"
  struct Pending {
    char kind = 0;
    std::uint32_t id = 0;
    Version version;
  };
  std::vector<Pending> pending;
  std::uint32_t acknowledged = 0;  // changes, each of which moved the change counter

  void Take(const std::vector<std::string>& lines) {
    Pending begun;
    for (const std::string& line : lines) {
      std::istringstream in(line);
      std::string word;
      in >> word;
      if (word == "ok") {
        ++acknowledged;
        std::uint32_t id = 0;
        in >> id;
        if (begun.kind == 'a') {
          EXPECT_EQ(records.count(id) + unacknowledged.count(id), 0u)
              << "id " << id << " given twice";
          records[id] = begun.version;
        } else if (begun.kind == 'u') {
          records[id] = begun.version;
        } else {
          records[id] = std::nullopt;
        }
        begun = {};
        continue;
      }
      begun.kind = word[0];
      if (word != "add") in >> begun.id;
      if (word != "del") in >> begun.version.size >> begun.version.seed;
    }
    if (begun.kind != 0) pending.push_back(begun);
  }

  const Pending* PendingOn(std::uint32_t id) const {
    for (const Pending& p : pending)
      if (p.kind != 'a' && p.id == id) return &p;
    return nullptr;
  }
};

// Loads the table by position, as the program does, and holds it against the model.
void Verify(const std::string& path, Model& model) {
  ScriptedUi ui;
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  EXPECT_GE(store.header().changeCounter, model.acknowledged) << "the change counter went back";
  std::uint32_t count = 0;
  ASSERT_EQ(store.CountRecords(kDfct, count), DBStatus::kOk);
  std::set<std::uint32_t> loaded;
  std::size_t addsTaken = 0;
  for (std::uint32_t position = 1; position <= count; ++position) {
    std::vector<std::uint8_t> payload;
    std::uint32_t id = 0;
    const DBStatus s = store.ReadRecordByIndex(kDfct, position, payload, &id);
    ASSERT_NE(id, 0u) << "the index names a record 0 at position " << position;
    ASSERT_TRUE(loaded.insert(id).second) << "id " << id << " twice in the index";
    const auto known = model.records.find(id);
    if (known == model.records.end()) {
      // An add begun by a killed writer: cut before its id was patched (it reads as
      // damaged) or after. Either way no writer was told of it.
      if (!model.unacknowledged.count(id)) ++addsTaken;
      model.unacknowledged.insert(id);
      EXPECT_TRUE(s == DBStatus::kOk || s == DBStatus::kBadRecordHeader) << Code(s);
      continue;
    }
    ASSERT_EQ(s, DBStatus::kOk) << "acknowledged record " << id;
    const Model::Pending* pending = model.PendingOn(id);
    ASSERT_TRUE(known->second || (pending && pending->kind == 'd'))
        << "record " << id << " was deleted and is back";
    const bool asAcknowledged =
        known->second && payload == Payload(known->second->size, known->second->seed);
    const bool asPending = pending && pending->kind == 'u' &&
                           payload == Payload(pending->version.size, pending->version.seed);
    ASSERT_TRUE(asAcknowledged || asPending) << "record " << id << " holds neither version";
    if (asPending) known->second = pending->version;
  }
  std::size_t addsBegun = 0;
  for (const Model::Pending& p : model.pending) addsBegun += p.kind == 'a';
  EXPECT_LE(addsTaken, addsBegun);
  for (auto& [id, version] : model.records) {
    if (!version || loaded.count(id)) continue;
    const Model::Pending* pending = model.PendingOn(id);
    ASSERT_TRUE(pending && pending->kind == 'd') << "acknowledged record " << id << " is lost";
    version = std::nullopt;
  }
  model.pending.clear();
}

// Deletes every record, so each round starts from an empty table and the index stays
// within one page: a kill inside one system call that writes many pages of a large index
// can still leave a page of it old, which only a write elsewhere and a switch (the
// compaction's work) rules out.
void Empty(const std::string& path, Model& model) {
  ScriptedUi ui;
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  std::vector<IndexEntry> index;
  ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
  for (const IndexEntry& e : index) ASSERT_EQ(store.DeleteRecord(kDfct, e.id), DBStatus::kOk);
  for (auto& [id, version] : model.records) version = std::nullopt;
  model.acknowledged += static_cast<std::uint32_t>(index.size());
}

TEST(Kill, WritersKilledAtRandomLoseNoAcknowledgedChange) {
  const char* text = std::getenv("QM_KILL_ROUNDS");
  const int rounds = text != nullptr && std::atoi(text) > 0 ? std::atoi(text) : 100;
  TempDir dir;
  const std::string path = dir.File("killed.qmk");
  {
    ScriptedUi ui;
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
  }
  std::minstd_rand random(20261124);
  Model model;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::vector<std::unique_ptr<Child>> writers;
    for (int w = 0; w < 2; ++w) {
      const unsigned seed = static_cast<unsigned>(random());
      writers.push_back(std::make_unique<Child>(
          [&path, seed](Child::Channel& out) { return Writer(path, seed, out); }));
    }
    // Each writer is let run for some changes, then killed a few microseconds on, at
    // whatever point of a change that is; the other writes on meanwhile.
    for (auto& writer : writers) {
      std::vector<std::string> lines;
      const auto changes = 1 + random() % 20;
      while (lines.size() < 2 * changes) {
        std::string line = writer->Receive();
        ASSERT_FALSE(line.empty()) << "a writer failed: " << writer->Wait();
        lines.push_back(line);
      }
      ::usleep(static_cast<useconds_t>(random() % 200));
      writer->Kill();
      for (std::string line = writer->Receive(); !line.empty(); line = writer->Receive())
        lines.push_back(line);
      model.Take(lines);
    }
    Verify(path, model);
    if (HasFatalFailure()) return;
    Empty(path, model);
  }
}

}  // namespace
}  // namespace qm::test
