// Reported-by rows and their attachments against hand-built bytes, the ways a row names
// its configuration, copies, and damaged records.
#include "defects/reported_by.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/file_bytes.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

// The first attachment of the rows below; version 1 has no stored name.
Bytes& NotesAttachment(Bytes& b, std::uint16_t version) {
  b.u16(version).u16(1).u16(0);
  b.str8("notes.txt").tag("TEXT").tag("ttxt").u32(1000).u32(2000).u32(42).u32(0);
  if (version >= 2) b.str8("");
  return b;
}

Bytes& LogAttachment(Bytes& b) {
  b.u16(2).u16(7).u16(9).str8("crash.log").tag("????").tag("QMrk").u32(3000).u32(0xFFFFFFFF);
  return b.u32(70000).u32(CFileAttachment::kInFolder).str8("00000012.dat");
}

Bytes RowHead(std::uint16_t version, std::uint16_t kind) {
  Bytes b;
  b.u16(version).u32(5).str8("Acme Labs").u32(86400 * 400).fixed33("4.0b2");
  return b.str16("It crashes.").u32(3).str16("1. Open\r2. Print").u16(kind);
}

TEST(ReportedBy, RowFormOfEachConfigKind) {
  for (std::uint16_t kind = 1; kind <= 3; ++kind) {
    SCOPED_TRACE(kind);
    // Read with a version 1 attachment; written with both at version 2.
    Bytes read = RowHead(2, kind);
    Bytes written = RowHead(2, kind);
    for (Bytes* b : {&read, &written}) {
      if (kind == 2) b->u32(0x1234);
      if (kind == 3) {  // a test configuration record: name, os, cd-rom, multiple monitors
        b->u16(0x102).u8(0).str8("Lab PC").zeros(2).str8("NT 4.0").zeros(8).u8(1).str8("Cd");
        b->zeros(7).u8(1);
      }
      b->u32(2);
      NotesAttachment(*b, b == &read ? 1 : 2);
      LogAttachment(*b).str16("SCSI card");
    }
    read.u8(0x7F);  // one read too many would take it

    CReportedBy row;
    PayloadReader in(read.b);
    row.ReadFrom(in);
    EXPECT_EQ(in.remaining(), 1u);
    EXPECT_EQ(row.configKind(), kind);
    ASSERT_EQ(row.customConfig() != nullptr, kind == 3);
    ASSERT_EQ(row.AttachmentCount(), 2u);
    EXPECT_EQ(row.AttachmentAt(1)->storedName.str(), "") << "version 1 has none";
    EXPECT_EQ(Written(row), written.b);
  }
}

TEST(ReportedBy, OlderDamagedAndRefusedRows) {
  // Version 1 ends at its attachments: the byte behind them is not other hardware.
  Bytes old = RowHead(1, 1);
  old.u32(0).u8(0x7F);
  CReportedBy row;
  PayloadReader in(old.b);
  row.ReadFrom(in);
  EXPECT_EQ(in.remaining(), 1u);
  EXPECT_EQ(row.otherHardware, "");
  Bytes current = RowHead(2, 1);
  EXPECT_EQ(Written(row), current.u32(0).u16(0).b) << "written back as version 2";

  // Refused versions of a row and of an attachment, a count of four thousand million with
  // one attachment behind it, an attachment cut off before its stored name: the whole
  // attachments stay.
  std::vector<std::pair<Bytes, std::uint32_t>> damaged;
  for (std::uint16_t version : std::initializer_list<std::uint16_t>{0, 3}) {
    damaged.emplace_back(RowHead(version, 1).u32(0).u16(0), 0);
    Bytes attachment = RowHead(2, 1);
    damaged.emplace_back(NotesAttachment(attachment.u32(1), version).str16(""), 0);
  }
  Bytes huge = RowHead(2, 1);
  damaged.emplace_back(LogAttachment(huge.u32(0xFFFFFFFF)), 1);
  Bytes cut = RowHead(2, 1);
  LogAttachment(cut.u32(1));
  cut.b.resize(cut.b.size() - 5);
  damaged.emplace_back(cut, 0);
  for (const auto& [bytes, whole] : damaged) {
    CReportedBy damagedRow;
    PayloadReader from(bytes.b);
    EXPECT_EQ(ThrownCode([&] { damagedRow.ReadFrom(from); }), kItemFailed) << bytes.b.size();
    EXPECT_EQ(damagedRow.AttachmentCount(), whole);
  }
}

TEST(ReportedBy, ConfigKindsAttachmentsAndClone) {
  CReportedBy row;
  row.SetConfigKind(CReportedBy::kStoredConfig);
  row.SetTestConfigId(9);
  row.SetConfigKind(CReportedBy::kCustomConfig);
  EXPECT_EQ(row.testConfigId(), 0u) << "only kind 2 keeps an id";
  // Kind 3 before a configuration is given still writes one a reader can take.
  Bytes empty;
  empty.u16(2).u32(0).u8(0).u32(0xFFFFFFFF).zeros(33).u16(0).u32(0).u16(0).u16(3);
  empty.u16(0x102).zeros(23).u32(0).u16(0);
  EXPECT_EQ(Written(row), empty.b);

  row.SetCustomConfig(std::make_unique<CTestConfig>());
  row.SetTestConfigId(4);
  EXPECT_EQ(row.customConfig(), nullptr) << "a stored id gives up the custom one";
  EXPECT_EQ(row.configKind(), CReportedBy::kCustomConfig) << "the kind is the caller's";
  row.SetCustomConfig(std::make_unique<CTestConfig>());
  row.SetConfigKind(CReportedBy::kNoConfig);
  EXPECT_EQ(row.customConfig(), nullptr);
  EXPECT_EQ(row.testConfigId(), 0u);

  auto notes = std::make_unique<CFileAttachment>();
  notes->sourcePath = "/home/ann/notes.txt";
  notes->deleteSource = true;
  row.AddAttachment(std::move(notes));

  // A clone owns copies of everything, including what is never stored.
  row.description = "Comments";
  row.otherHardware = "SCSI";
  row.SetConfigKind(CReportedBy::kCustomConfig);
  auto custom = std::make_unique<CTestConfig>();
  custom->name = "Lab PC";
  custom->multipleMonitors = true;
  row.SetCustomConfig(std::move(custom));
  const auto copy = row.Clone();
  EXPECT_EQ(copy->sessionId, row.sessionId);
  EXPECT_EQ(Written(*copy), Written(row));
  ASSERT_NE(copy->customConfig(), nullptr);
  EXPECT_NE(copy->customConfig(), row.customConfig());
  ASSERT_NE(copy->AttachmentAt(1), row.AttachmentAt(1));
  EXPECT_EQ(copy->AttachmentAt(1)->sourcePath, "/home/ann/notes.txt");
  EXPECT_TRUE(copy->AttachmentAt(1)->deleteSource);
}

}  // namespace
}  // namespace qm::test
