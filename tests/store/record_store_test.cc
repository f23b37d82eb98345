// Record operations: ids, positions, the three put modes, updates in place and moved,
// damage that is found and named, and failures of the file at any step.
#include <gtest/gtest.h>

#include <set>

#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

std::vector<std::uint8_t> P(const std::string& s) { return {s.begin(), s.end()}; }

class RecordStore : public ::testing::Test {
 protected:
  void SetUp() override {
    path = dir.File("p.qmk");
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, "Defect"), DBStatus::kOk);
  }
  std::uint32_t Add(const std::string& s) {
    std::uint32_t id = 0;
    EXPECT_EQ(store.AddRecord(kDfct, P(s), &id), DBStatus::kOk);
    return id;
  }
  std::string Read(std::uint32_t id) {
    std::vector<std::uint8_t> out;
    EXPECT_EQ(store.ReadRecord(kDfct, id, out), DBStatus::kOk);
    return {out.begin(), out.end()};
  }
  std::vector<IndexEntry> Index() {
    std::vector<IndexEntry> index;
    EXPECT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
    return index;
  }
  std::uint32_t Counter() { return BeU32(ReadFileBytes(path), 24); }

  TempDir dir;
  ScriptedUi ui;
  CProjectStore store{ui};
  std::string path;
};

TEST_F(RecordStore, PositionsShiftOnDeleteAndIdsAreNeverGivenTwice) {
  for (const char* s : {"one", "two", "three", "four", "five"}) Add(s);
  ASSERT_EQ(store.DeleteRecord(kDfct, 3), DBStatus::kOk);
  std::vector<std::uint8_t> out;
  std::uint32_t id = 0;
  ASSERT_EQ(store.ReadRecordByIndex(kDfct, 3, out, &id), DBStatus::kOk);
  EXPECT_EQ(std::string(out.begin(), out.end()), "four");
  EXPECT_EQ(id, 4u);
  ASSERT_EQ(store.DeleteRecord(kDfct, 5), DBStatus::kOk);
  EXPECT_EQ(Add("six"), 6u) << "the deleted highest id is not given again";
  std::uint32_t count = 0;
  ASSERT_EQ(store.CountRecords(kDfct, count), DBStatus::kOk);
  EXPECT_EQ(count, 4u);
  // The deleted entries left the index; the last slots are zero again.
  const auto f = ReadFileBytes(path);
  const std::uint32_t index = 8796;
  EXPECT_EQ(BeU32(f, index + 8), 4u);
  for (std::size_t i = index + 20 + 4 * 12; i < index + 20 + 6 * 12; ++i) EXPECT_EQ(f[i], 0);
  // The deleted record's bytes stay, header and all, until compaction.
  EXPECT_EQ(store.ReadRecordByIndex(kDfct, 0, out, &id), DBStatus::kBadPosition);
  EXPECT_EQ(store.ReadRecordByIndex(kDfct, 5, out, &id), DBStatus::kBadPosition);
  EXPECT_EQ(store.ReadRecord(kDfct, 3, out), DBStatus::kNoSuchRecord);
  EXPECT_EQ(store.ReadRecord(kDfct, 77, out), DBStatus::kNoSuchRecord);
  EXPECT_EQ(store.DeleteRecord(kDfct, 77), DBStatus::kNoSuchRecord);
  EXPECT_EQ(store.ReadRecord(MakeTag("none"), 1, out), DBStatus::kNoSuchTable);
}

// An update never overwrites the version it replaces, even at the same length: a writer
// killed inside the write must leave the old one whole.
TEST_F(RecordStore, UpdateWritesTheNewVersionApartFromTheOld) {
  Add("abc");
  Add("def");
  const std::uint32_t offset = Index()[0].offset;
  for (const char* text : {"xyz", "wxyz"}) {
    const std::size_t end = ReadFileBytes(path).size();
    ASSERT_EQ(store.UpdateRecord(kDfct, 1, P(text)), DBStatus::kOk);
    EXPECT_EQ(Index()[0].offset, end);
    EXPECT_EQ(Index()[0].size, 20u + std::string(text).size());
    EXPECT_EQ(Index()[0].id, 1u) << "the record keeps its place in the index";
    EXPECT_EQ(Read(1), text);
  }
  const auto f = ReadFileBytes(path);
  EXPECT_EQ(std::string(f.begin() + offset + 20, f.begin() + offset + 23), "abc");
  EXPECT_EQ(Read(2), "def");
  EXPECT_EQ(store.UpdateRecord(kDfct, 9, P("q")), DBStatus::kNoSuchRecord);
}

TEST_F(RecordStore, PutRecordModesAndCallerIds) {
  Add("a");
  Add("b");
  const std::uint32_t before = Counter();
  ASSERT_EQ(store.PutRecord(kDfct, P("thousand"), 1000, PutMode::kKeep), DBStatus::kOk);
  EXPECT_EQ(Counter(), before + 1);
  EXPECT_EQ(Add("next"), 1001u);

  EXPECT_EQ(store.PutRecord(kDfct, P("zz"), 1, PutMode::kKeep), DBStatus::kRecordKept);
  EXPECT_EQ(Read(1), "a");
  ASSERT_EQ(store.PutRecord(kDfct, P("longer"), 2, PutMode::kKeepIfShorter), DBStatus::kOk);
  EXPECT_EQ(store.PutRecord(kDfct, P("short"), 2, PutMode::kKeepIfShorter), DBStatus::kRecordKept);
  ASSERT_EQ(store.PutRecord(kDfct, P("equal!"), 2, PutMode::kKeepIfShorter), DBStatus::kOk);
  EXPECT_EQ(Read(2), "equal!");
  const std::uint32_t beforeReplace = Counter();
  ASSERT_EQ(store.PutRecord(kDfct, P("r"), 1, PutMode::kReplace), DBStatus::kOk);
  EXPECT_EQ(Counter(), beforeReplace + 2) << "a replacement is a delete and an add";
  std::vector<std::uint32_t> order;
  for (const IndexEntry& e : Index()) order.push_back(e.id);
  EXPECT_EQ(order, (std::vector<std::uint32_t>{1000, 1001, 2, 1})) << "replaced records go last";
  EXPECT_EQ(Read(1), "r");
}

TEST_F(RecordStore, DamagedRecordsAreNamedAndGiveNoData) {
  Add("first");
  Add("second");
  Add("third");
  auto f = ReadFileBytes(path);
  const auto index = Index();
  f[index[0].offset + 20 + 2] ^= 0x01;  // a payload byte
  f[index[1].offset + 8 + 3] = 9;       // the header's id
  f[index[2].offset] = 'X';             // the marker
  WriteFileBytes(path, f);
  std::vector<std::uint8_t> out = {1, 2, 3};
  EXPECT_EQ(store.ReadRecord(kDfct, 1, out), DBStatus::kBadChecksum);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(store.ReadRecord(kDfct, 2, out), DBStatus::kBadRecordHeader);
  EXPECT_EQ(store.ReadRecord(kDfct, 3, out), DBStatus::kBadRecordHeader);
  std::uint32_t delivered = 0;
  std::vector<std::uint8_t> buffer(3);
  EXPECT_EQ(store.ReadRecordInto(kDfct, 1, buffer, delivered), DBStatus::kBadChecksum);
  EXPECT_EQ(delivered, 0u);
  EXPECT_EQ(store.ReadRecordToFile(kDfct, 1, dir.File("out")), DBStatus::kBadChecksum);
  EXPECT_FALSE(std::ifstream(dir.File("out")).good()) << "a damaged copy is not left behind";
  PutU32(f, 8796, 0x696e6478 + 1);
  WriteFileBytes(path, f);
  EXPECT_EQ(store.ReadRecord(kDfct, 1, out), DBStatus::kIoError);
}

TEST_F(RecordStore, CopiesPayloadsFromAndToFiles) {
  std::vector<std::uint8_t> big(5000);
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<std::uint8_t>(i * 7);
  WriteFileBytes(dir.File("in.bin"), big);
  std::uint32_t id = 0;
  ASSERT_EQ(store.AddRecordFromFile(kDfct, dir.File("in.bin"), &id), DBStatus::kOk);
  std::uint32_t size = 0;
  ASSERT_EQ(store.GetRecordSize(kDfct, id, size), DBStatus::kOk);
  EXPECT_EQ(size, 5000u);
  ASSERT_EQ(store.ReadRecordToFile(kDfct, id, dir.File("out.bin")), DBStatus::kOk);
  EXPECT_EQ(ReadFileBytes(dir.File("out.bin")), big);
  std::vector<std::uint8_t> partial(10);
  std::uint32_t delivered = 0;
  ASSERT_EQ(store.ReadRecordInto(kDfct, id, partial, delivered), DBStatus::kOk);
  EXPECT_EQ(delivered, 10u);
  EXPECT_EQ(partial, std::vector<std::uint8_t>(big.begin(), big.begin() + 10));
  EXPECT_EQ(store.AddRecordFromFile(kDfct, dir.File("absent"), &id), DBStatus::kCannotOpen);
  EXPECT_EQ(store.ReadRecordToFile(kDfct, 1, dir.File("no/such/dir")), DBStatus::kCannotCreate);
}

TEST_F(RecordStore, TablesAreAddedOnceAndTheDirectoryFillsUp) {
  EXPECT_EQ(store.AddTable(kDfct, ""), DBStatus::kTableExists);
  // msgs and dfct are in; 30 more fill the 32 entries, but a directory with all 32 in
  // use no longer reads as valid, so 31 tables is the practical limit.
  for (int i = 0; i < 30; ++i) {
    const Tag tag = MakeTag("t000") + static_cast<Tag>(i);
    ASSERT_EQ(store.AddTable(tag, ""), DBStatus::kOk) << i;
  }
  EXPECT_EQ(store.AddTable(MakeTag("full"), ""), DBStatus::kIoError);
  ASSERT_EQ(store.Close(), DBStatus::kOk);
  EXPECT_EQ(store.Open(path), DBStatus::kIoError);
}

// A file whose length the system misreports: the byte behind the supposed end exists.
TEST_F(RecordStore, AFileLongerThanItsLengthIsRefused) {
  std::uint32_t id = 0;
  ASSERT_EQ(store.AddRecord(kDfct, P("so the index is not last"), &id), DBStatus::kOk);
  ASSERT_EQ(store.Close(), DBStatus::kOk);
  FaultyFileSystem lying;
  lying.shortLength = true;
  CProjectStore other(ui, lying);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  EXPECT_EQ(other.AddRecord(kDfct, P("x"), nullptr), DBStatus::kIoError);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Database Error: Invalid end of file."});
  ASSERT_EQ(other.Close(), DBStatus::kOk);
}

// Whatever call of the file fails during an add, the store answers a status, shows the
// system's text for a failed write, and the file opens afterwards with every record that
// was reported as added.
class RecordStoreFailures : public ::testing::TestWithParam<std::uint16_t> {};

TEST_P(RecordStoreFailures, EveryFailingFileCallLeavesASoundFile) {
  TempDir dir;
  const std::string path = dir.File("f.qmk");
  ScriptedUi setupUi;
  {
    CProjectStore store(setupUi);
    ASSERT_EQ(store.Create(path, GetParam()), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
    for (int i = 0; i < 127; ++i) {
      ASSERT_EQ(store.AddRecord(kDfct, P("r" + std::to_string(i)), nullptr), DBStatus::kOk);
    }
  }
  const auto original = ReadFileBytes(path);
  bool sawGetLastError = false;
  long total = 0;  // the calls of the two adds when nothing fails
  for (long k = 0; k == 0 || k <= total; ++k) {
    WriteFileBytes(path, original);
    ScriptedUi ui;
    FaultyFileSystem failing;
    CProjectStore store(ui, failing);
    ASSERT_EQ(store.Open(path), DBStatus::kOk);
    failing.FailAt(k);
    // Two adds: the second grows the index past 128 entries.
    std::uint32_t id1 = 0, id2 = 0;
    const DBStatus s1 = store.AddRecord(kDfct, P("new-1"), &id1);
    const DBStatus s2 = store.AddRecord(kDfct, P("new-2"), &id2);
    if (k == 0) {
      ASSERT_EQ(s1, DBStatus::kOk);
      ASSERT_EQ(s2, DBStatus::kOk);
      total = failing.calls();
    }
    for (const ui::Message& m : ui.shown) {
      EXPECT_EQ(m.caption, "GetLastError");
      EXPECT_EQ(m.text, "Input/output error");
      sawGetLastError = true;
    }
    ASSERT_EQ(store.Close(), DBStatus::kOk);

    CProjectStore check(setupUi);
    ASSERT_EQ(check.Open(path), DBStatus::kOk) << "failing call " << k;
    std::vector<IndexEntry> index;
    std::vector<std::uint8_t> out;
    ASSERT_EQ(check.ReadIndex(kDfct, index), DBStatus::kOk);
    std::set<std::uint32_t> sound, all;
    for (const IndexEntry& e : index) all.insert(e.id);
    EXPECT_EQ(all.size(), index.size()) << "no id twice, call " << k;
    for (const IndexEntry& e : index) {
      const DBStatus s = check.ReadRecord(kDfct, e.id, out);
      if (s == DBStatus::kOk) {
        sound.insert(e.id);
      } else {
        // Only an add that failed between its index and its header patch leaves this.
        EXPECT_EQ(s, DBStatus::kBadRecordHeader) << "call " << k;
      }
    }
    for (std::uint32_t id = 1; id <= 127; ++id) EXPECT_TRUE(sound.count(id)) << id << " call " << k;
    EXPECT_TRUE(s1 != DBStatus::kOk || sound.count(id1)) << "call " << k;
    EXPECT_TRUE(s2 != DBStatus::kOk || sound.count(id2)) << "call " << k;
  }
  EXPECT_GT(total, 15);
  EXPECT_TRUE(sawGetLastError);
}

INSTANTIATE_TEST_SUITE_P(SingleAndMultiUser, RecordStoreFailures, ::testing::Values(0, 1));

}  // namespace
}  // namespace qm::test
