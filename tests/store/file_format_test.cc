// The bytes a store writes and the files of older versions it reads, checked against
// layouts built by hand in the test.
#include <gtest/gtest.h>

#include "store/checksum.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

constexpr Tag kDfct = MakeTag("dfct");

// The file Create makes: every block at its offset, 8796 bytes in all.
Bytes NewFileBytes(std::uint16_t multiUser) {
  Bytes f;
  f.tag("dbdb").u16(358).u16(multiUser).u32(392).u32(128).u32(3880).u32(1044).u32(0).u32(4928);
  f.zeros(96);
  f.zeros(244).zeros(20);               // lock area
  f.tag("tabl").u16(32).u16(1).u32(0);  // directory
  f.tag("msgs").u32(0).u32(1).u32(7240).u32(0);
  for (int i = 1; i < 32; ++i) f.tag("????").u32(0).u32(1).u32(0).u32(0);
  f.tag("user").u32(128).u32(0).u32(0).u32(0).zeros(128 * 22);
  f.tag("caps").u32(128).u32(0).u32(0).u32(0).u32(0).zeros(1024);
  f.u32(0).u32(0);  // lock block
  for (int i = 0; i < 128; ++i) f.tag("????").u32(0).u32(0).u16(0).u32(0);
  f.tag("indx").u32(128).u32(0).u32(0).u32(0).zeros(1536);
  return f;
}

class FileFormat : public ::testing::Test {
 protected:
  // A new multi-user file at `path`, closed again, as its bytes.
  std::vector<std::uint8_t> Create(const std::string& path) {
    EXPECT_EQ(CProjectStore(ui).Create(path, 1), DBStatus::kOk);
    return ReadFileBytes(path);
  }

  TempDir dir;
  ScriptedUi ui;
};

TEST_F(FileFormat, NewFileHasEveryBlockAtItsOffset) {
  for (std::uint16_t multiUser : {std::uint16_t{0}, std::uint16_t{1}}) {
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(dir.File("new.qmk"), multiUser), DBStatus::kOk);
    ASSERT_EQ(store.Close(), DBStatus::kOk);
    const auto bytes = ReadFileBytes(dir.File("new.qmk"));
    ASSERT_EQ(bytes.size(), 8796u);
    EXPECT_EQ(bytes, NewFileBytes(multiUser).b) << "multiUser " << multiUser;
  }
  EXPECT_TRUE(ui.shown.empty());
}

// The table values of the bytes are checked in the records below; here the sums of long
// payloads, taken whole, in pieces, and both ways.
TEST_F(FileFormat, ChecksumsOfLongPayloadsAddEveryByte) {
  EXPECT_EQ(Checksum::Of(nullptr, 0), 0);
  const std::vector<std::uint8_t> ff(1001, 0xFF);  // table value E902
  EXPECT_EQ(Checksum::Of(ff.data(), ff.size()), static_cast<std::uint16_t>(1001u * 0xE902));
  std::vector<std::uint8_t> noise(300);
  for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<std::uint8_t>(i * 167 + 13);
  std::uint32_t bytewise = 0;  // the bytes before n, added one at a time
  for (std::size_t n = 0; n <= noise.size(); ++n) {
    const auto sum = static_cast<std::uint16_t>(bytewise);
    EXPECT_EQ(static_cast<std::uint16_t>(Checksum::SumPortable(noise.data(), n)), sum);
    EXPECT_TRUE(!Checksum::HasVectorSum() ||
                static_cast<std::uint16_t>(Checksum::SumVector(noise.data(), n)) == sum)
        << n;
    if (n < noise.size()) bytewise += Checksum::SumPortable(&noise[n], 1);
  }
  Checksum pieces;
  pieces.Add(noise.data(), 5);
  pieces.Add(noise.data() + 5, 12);
  EXPECT_EQ(pieces.value(), Checksum::Of(noise.data(), 17));
}

TEST_F(FileFormat, RecordsCarryHeaderChecksumAndIndexEntryAndTheIndexGrows) {
  const std::string path = dir.File("p.qmk");
  CProjectStore store(ui);
  ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
  ASSERT_EQ(store.AddTable(kDfct, "Defect"), DBStatus::kOk);
  for (const auto& payload :
       {std::vector<std::uint8_t>{0x00, 0x01, 0xFF}, std::vector<std::uint8_t>{},
        std::vector<std::uint8_t>{'A', 'B', 'A'}}) {
    ASSERT_EQ(store.AddRecord(kDfct, payload, nullptr), DBStatus::kOk);
  }
  ASSERT_EQ(store.Close(), DBStatus::kOk);

  const auto f = ReadFileBytes(path);
  // The dfct index was appended at 8796 by AddTable; the records follow it.
  const std::size_t index = 8796, first = index + 1556;
  ASSERT_EQ(f.size(), first + 23 + 20 + 23);
  Bytes expected;
  expected.tag("indx").u32(128).u32(3).u32(3).u32(0);
  expected.u32(1).u32(first).u32(23);
  expected.u32(2).u32(first + 23).u32(20);
  expected.u32(3).u32(first + 43).u32(23);
  EXPECT_EQ(std::vector<std::uint8_t>(f.begin() + index, f.begin() + index + 56), expected.b);
  Bytes records;
  records.tag("RcRd").tag("dfct").u32(1).u32(3).u16(0xE907).u16(0).u8(0x00).u8(0x01).u8(0xFF);
  records.tag("RcRd").tag("dfct").u32(2).u32(0).u16(0).u16(0);
  records.tag("RcRd").tag("dfct").u32(3).u32(3).u16(0xB4A9).u16(0).text("ABA");
  EXPECT_EQ(std::vector<std::uint8_t>(f.begin() + first, f.end()), records.b);
  // Directory entry 1 is dfct: count 3, nextId 4, its index, revision 3.
  EXPECT_EQ(std::vector<std::uint8_t>(f.begin() + 392 + 32, f.begin() + 392 + 52),
            Bytes().tag("dfct").u32(3).u32(4).u32(index).u32(3).b);
  EXPECT_EQ(BeU16(f, 392 + 6), 2u);  // tables in use
  EXPECT_EQ(BeU32(f, 24), 3u);       // one change per add

  // At the 129th record the index grows by 128 entries and moves to the end of the file.
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  for (std::uint8_t i = 3; i < 128; ++i) {
    ASSERT_EQ(store.AddRecord(kDfct, std::vector<std::uint8_t>{i}, nullptr), DBStatus::kOk);
  }
  const auto before = ReadFileBytes(path);
  const std::size_t end = before.size();
  ASSERT_EQ(store.AddRecord(kDfct, std::vector<std::uint8_t>{0xAA}, nullptr), DBStatus::kOk);
  TableEntry e;
  ASSERT_EQ(store.GetTableEntry(kDfct, e), DBStatus::kOk);
  // The record went to the old end, the grown index right behind it.
  EXPECT_EQ(e.indexOffset, end + 21);
  EXPECT_EQ(e.count, 129u);
  const auto after = ReadFileBytes(path);
  ASSERT_EQ(after.size(), end + 21 + 20 + 256 * 12);
  EXPECT_EQ(BeU32(after, e.indexOffset + 4), 256u);
  EXPECT_EQ(BeU32(after, e.indexOffset + 8), 129u);
  EXPECT_EQ(BeU32(after, e.indexOffset + 20 + 128 * 12), 129u);     // id of the new entry
  EXPECT_EQ(BeU32(after, e.indexOffset + 20 + 128 * 12 + 4), end);  // its offset
  for (std::size_t i = e.indexOffset + 20 + 129 * 12; i < after.size(); ++i) {
    ASSERT_EQ(after[i], 0) << "unused entries are zero";
  }
  // The old block stays as it was: dead bytes until compaction.
  EXPECT_TRUE(
      std::equal(before.begin() + 8796, before.begin() + 8796 + 1556, after.begin() + 8796));
  std::vector<std::uint8_t> payload;
  ASSERT_EQ(store.ReadRecord(kDfct, 129, payload), DBStatus::kOk);
  EXPECT_EQ(payload, std::vector<std::uint8_t>{0xAA});
  ASSERT_EQ(store.ReadRecord(kDfct, 1, payload), DBStatus::kOk);
  EXPECT_EQ(payload, (std::vector<std::uint8_t>{0x00, 0x01, 0xFF}));
}

// An older file, built by hand: tables msgs and dfct, dfct records 7 "xx" and 8 "x\0x" ('x'
// has the table value 8001, NUL 0001, so the headers' sums are easy).
std::vector<std::uint8_t> OldFile(std::uint16_t version) {
  const std::uint32_t h = version == 352 || version >= 358 ? 20 : 0;  // record header
  const std::uint32_t user = 1044, hole = user + (version >= 357 ? 2836 : 788), lock = hole + 1048,
                      msgs = lock + 2312, dfct = msgs + 1556, records = dfct + 1556;
  Bytes f;
  f.tag("dbdb").u16(version).u16(1).u32(392).u32(128).u32(hole).u32(user).u32(41).u32(lock);
  f.zeros(96).zeros(264);
  f.tag("tabl").u16(32).u16(2).u32(0);
  f.tag("msgs").u32(0).u32(1).u32(msgs).u32(0);
  f.tag("dfct").u32(2).u32(10).u32(dfct).u32(5);
  for (int i = 2; i < 32; ++i) f.tag("????").u32(0).u32(1).u32(0).u32(0);
  f.tag("user").u32(128).u32(0).u32(0).u32(0).zeros(hole - user - 20);
  f.tag("caps").u32(128).u32(0).u32(0).u32(0).u32(0).zeros(1024);
  f.u32(0).u32(0);
  for (int i = 0; i < 128; ++i) f.tag("????").u32(0).u32(0).u16(0).u32(0xFFFFFFFF);
  f.tag("indx").u32(128).u32(0).u32(0).u32(0).zeros(1536);
  f.tag("indx").u32(128).u32(2).u32(9).u32(0);
  f.u32(7).u32(records).u32(h + 2).u32(8).u32(records + h + 2).u32(h + 3).zeros(126 * 12);
  if (h != 0) f.tag("RcRd").tag("dfct").u32(7).u32(2).u16(0x0002).u16(0);
  f.text("xx");
  if (h != 0) f.tag("RcRd").tag("dfct").u32(8).u32(3).u16(0x0003).u16(0);
  f.text(std::string("x\0x", 3));
  return f.b;
}

// A file of an older version is read and extended in its own form. Upgraded, it gains the
// long user block at the end of the file; the version says whether records carry headers,
// so 352 becomes 358 and the versions without headers become 357.
TEST_F(FileFormat, OlderFilesAreReadExtendedAndUpgraded) {
  for (const auto& [version, upgraded] :
       std::vector<std::pair<std::uint16_t, std::uint16_t>>{{336, 357}, {352, 358}, {357, 357}}) {
    SCOPED_TRACE(version);
    const std::string path = dir.File("old" + std::to_string(version) + ".qmk");
    WriteFileBytes(path, OldFile(version));
    const std::size_t length = ReadFileBytes(path).size();
    {
      CProjectStore store(ui);
      ASSERT_EQ(store.Open(path), DBStatus::kOk);
      EXPECT_EQ(store.header().version, version);
      std::vector<std::uint8_t> payload;
      std::uint32_t id = 0;
      ASSERT_EQ(store.ReadRecordByIndex(kDfct, 2, payload, &id), DBStatus::kOk);
      EXPECT_EQ(id, 8u);
      EXPECT_EQ(std::string(payload.begin(), payload.end()), std::string("x\0x", 3));
      std::uint32_t size = 0;
      ASSERT_EQ(store.GetRecordSize(kDfct, 7, size), DBStatus::kOk);
      EXPECT_EQ(size, 2u);
      // A new record takes nextId and is stored in the version's own form.
      ASSERT_EQ(store.AddRecord(kDfct, std::vector<std::uint8_t>{'x'}, &id), DBStatus::kOk);
      EXPECT_EQ(id, 10u);
    }
    const auto old = ReadFileBytes(path);
    Bytes added;
    if (version == 352) added.tag("RcRd").tag("dfct").u32(10).u32(1).u16(0x8001).u16(0);
    EXPECT_EQ(std::vector<std::uint8_t>(old.begin() + length, old.end()), added.text("x").b);
    EXPECT_EQ(BeU32(old, 24), 42u);

    {
      CProjectStore store(ui);
      ASSERT_EQ(store.Open(path), DBStatus::kOk);
      ASSERT_EQ(store.UpgradeUserBlock(), DBStatus::kOk);
    }
    const std::vector<std::uint8_t> now = ReadFileBytes(path);
    EXPECT_EQ(BeU16(now, 4), upgraded);
    if (version == upgraded) {
      EXPECT_EQ(now.size(), old.size());
      EXPECT_EQ(BeU32(now, 20), 1044u);
      continue;
    }
    ASSERT_EQ(now.size(), old.size() + 2836);
    EXPECT_EQ(BeU32(now, 20), old.size()) << "the block's offset is the old end of the file";
    EXPECT_EQ(std::vector<std::uint8_t>(now.begin() + 1044, now.begin() + 1044 + 788),
              std::vector<std::uint8_t>(old.begin() + 1044, old.begin() + 1044 + 788))
        << "the short block stays behind";
    EXPECT_EQ(std::vector<std::uint8_t>(now.begin() + old.size(), now.begin() + old.size() + 12),
              Bytes().tag("user").u32(128).u32(0).b);
    CProjectStore again(ui);
    ASSERT_EQ(again.Open(path), DBStatus::kOk);
    std::vector<std::uint8_t> payload;
    ASSERT_EQ(again.ReadRecord(kDfct, 10, payload), DBStatus::kOk);
    EXPECT_EQ(payload, std::vector<std::uint8_t>{'x'});
    ASSERT_EQ(again.LoginUser(5), DBStatus::kOk);
  }
}

TEST_F(FileFormat, RefusesFilesItCannotRead) {
  const std::string path = dir.File("v.qmk");
  auto file = OldFile(352);
  struct Case {
    std::uint16_t version;
    const char* magic;
    DBStatus status;
  };
  for (const Case& c : {Case{335, "dbdb", DBStatus::kTooOld}, Case{336, "dbdb", DBStatus::kOk},
                        Case{358, "dbdb", DBStatus::kOk}, Case{359, "dbdb", DBStatus::kTooNew},
                        Case{358, "dbdc", DBStatus::kNotProjectFile},
                        Case{340, "DBDB", DBStatus::kNotProjectFile}}) {
    PutU16(file, 4, c.version);
    for (int i = 0; i < 4; ++i)
      file[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(c.magic[i]);
    WriteFileBytes(path, file);
    CProjectStore store(ui);
    EXPECT_EQ(store.Open(path), c.status) << c.version << " " << c.magic;
    EXPECT_EQ(store.IsOpen(), c.status == DBStatus::kOk);
  }
  CProjectStore store(ui);
  EXPECT_EQ(store.Open(dir.File("missing.qmk")), DBStatus::kCannotOpen);
  // Statuses without a text of their own get the general one with their number; the
  // trash names the project.
  EXPECT_EQ(OpeningText(DBStatus::kNoSuchRecord, path),
            "Could not open the file due to error #:1012");
  EXPECT_EQ(OpeningText(DBStatus::kInTrash, "/x/p.qmk").substr(0, 34),
            "Cannot open the project '/x/p.qmk'");
  EXPECT_EQ(OpeningText(DBStatus::kDataTooNew, path), OpeningText(DBStatus::kTooNew, path));
  EXPECT_TRUE(OpeningText(DBStatus::kCancelled, path).empty());
}

// A record never starts inside a fixed block. The guard keeps out of the long form of
// the user block even in a file that has the short one.
TEST_F(FileFormat, RecordsAreKeptOutOfFixedBlocks) {
  const std::string path = dir.File("g.qmk");
  auto f = OldFile(352);
  PutU32(f, 20, static_cast<std::uint32_t>(f.size()));
  Bytes users;
  users.tag("user").u32(128).u32(0).u32(0).u32(0).zeros(128 * 6);
  f.insert(f.end(), users.b.begin(), users.b.end());
  WriteFileBytes(path, f);
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  const auto before = ReadFileBytes(path);
  EXPECT_EQ(store.AddRecord(kDfct, std::vector<std::uint8_t>{'x'}, nullptr),
            DBStatus::kGuardRefused);
  EXPECT_EQ(ReadFileBytes(path), before) << "a refused write changes nothing";
  std::vector<std::uint8_t> out;
  EXPECT_EQ(store.ReadRecord(kDfct, 7, out), DBStatus::kOk);
}

TEST_F(FileFormat, ChangeCounterSkipsZeroWhenItWraps) {
  const std::string path = dir.File("c.qmk");
  auto f = Create(path);
  PutU32(f, 24, 0xFFFFFFFF);
  WriteFileBytes(path, f);
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  ASSERT_EQ(store.AddRecord(kMessagesTag, std::vector<std::uint8_t>(24, 0), nullptr),
            DBStatus::kOk);
  EXPECT_EQ(BeU32(ReadFileBytes(path), 24), 1u);
}

// A user slot whose life sign nobody holds belongs to a client that died: the opening
// clears it and counts the clearing in the block.
TEST_F(FileFormat, OpeningClearsTheSlotsOfDeadClients) {
  const std::string path = dir.File("u.qmk");
  auto f = Create(path);
  PutU32(f, 1044 + 8, 1);             // loggedIn
  PutU32(f, 1044 + 12, 6);            // changeCounter
  PutU32(f, 1044 + 20 + 22 * 3, 17);  // slot 3: user 17
  PutU16(f, 1044 + 20 + 22 * 3 + 4, 250);
  f[1044 + 20 + 22 * 3 + 6] = 0x5A;  // reserved bytes stay as they were
  WriteFileBytes(path, f);
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  EXPECT_EQ(store.userBlock().loggedIn, 0u);
  const auto after = ReadFileBytes(path);
  EXPECT_EQ(BeU32(after, 1044 + 12), 7u);
  EXPECT_EQ(BeU32(after, 1044 + 20 + 22 * 3), 0u);
  EXPECT_EQ(BeU16(after, 1044 + 20 + 22 * 3 + 4), 0u);
  EXPECT_EQ(after[1044 + 20 + 22 * 3 + 6], 0x5A);
  EXPECT_EQ(BeU32(after, 1044 + 8), 0u);
}

// Notices of former sessions are of no use once nobody is logged in: the opening removes
// them and enters their space, filled with FE, as one merged hole. A damaged notice entry
// is found, never acted upon: the purge must not fill a fixed block with FE.
TEST_F(FileFormat, OpeningPurgesOldNoticesIntoHoles) {
  const std::string path = dir.File("m.qmk");
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    for (int i = 0; i < 4; ++i) {
      ASSERT_EQ(store.AddRecord(kMessagesTag, std::vector<std::uint8_t>(24, 7), nullptr),
                DBStatus::kOk);
    }
  }
  auto f = ReadFileBytes(path);
  PutU32(f, 7240 + 20 + 3 * 12 + 4, 392);  // the last notice "stands" on the directory
  PutU32(f, 7240 + 20 + 3 * 12 + 8, 652);
  WriteFileBytes(path, f);
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Open(path), DBStatus::kOk);
    EXPECT_EQ(store.GetUnusedBytes(), 3u * 44);
    std::vector<std::uint8_t> payload;
    EXPECT_EQ(store.ReadRecord(kMessagesTag, 1, payload), DBStatus::kNoSuchRecord);
  }
  const auto g = ReadFileBytes(path);
  for (std::size_t i = 8796; i < 8796 + 3 * 44; ++i) ASSERT_EQ(g[i], 0xFE) << i;
  EXPECT_NE(g[8796 + 3 * 44], 0xFE);
  EXPECT_TRUE(std::equal(f.begin() + 392, f.begin() + 392 + 652, g.begin() + 392));
  EXPECT_EQ(std::vector<std::uint8_t>(g.begin() + 3880, g.begin() + 3880 + 32),
            Bytes().tag("caps").u32(128).u32(1).u32(3).u32(0).u32(3 * 44).u32(8796).u32(3 * 44).b);
  EXPECT_EQ(BeU32(g, 7240 + 8), 0u) << "the msgs index is empty";
  EXPECT_EQ(BeU32(g, 392 + 12 + 4), 4u) << "its TableEntry is left as it was";

  // A hole block whose capacity reaches beyond the file is no reason to write there.
  f = g;
  PutU32(f, 3880 + 4, 0x7FFFFFFF);
  WriteFileBytes(path, f);
  CProjectStore store(ui);
  EXPECT_EQ(store.Open(path), DBStatus::kIoError);
  EXPECT_EQ(ReadFileBytes(path), f);
}

// Notices that do not stand side by side become separate holes; past 128 of them the
// hole block grows by 128 and moves to the end of the file.
TEST_F(FileFormat, TheHoleBlockGrowsAndMovesWhenItIsFull) {
  const std::string path = dir.File("h.qmk");
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
    for (int i = 0; i < 130; ++i) {
      ASSERT_EQ(store.AddRecord(kMessagesTag, std::vector<std::uint8_t>(24, 3), nullptr),
                DBStatus::kOk);
      ASSERT_EQ(store.AddRecord(kDfct, std::vector<std::uint8_t>{'x'}, nullptr), DBStatus::kOk);
    }
  }
  const std::size_t end = ReadFileBytes(path).size();
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  EXPECT_EQ(store.GetUnusedBytes(), 130u * 44);
  ASSERT_EQ(store.holes().size(), 130u);
  const auto f = ReadFileBytes(path);
  EXPECT_EQ(BeU32(f, 16), end) << "the grown block stands at the old end of the file";
  EXPECT_EQ(f.size(), end + 24 + 256 * 8);
  EXPECT_EQ(BeU32(f, end + 4), 256u);
  EXPECT_EQ(BeU32(f, end + 8), 130u);
  std::vector<std::uint8_t> out;
  EXPECT_EQ(store.ReadRecord(kDfct, 130, out), DBStatus::kOk) << "records between holes stay";
}

}  // namespace
}  // namespace qm::test
