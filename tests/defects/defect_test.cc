// The defect record against bytes built by hand for its versions, the order of its events
// and the copies they give, and the table's guarded read and sorting.
#include "defects/defect.h"

#include <gtest/gtest.h>

#include <bit>

#include "defects/defect_table.h"
#include "defects/fixtures.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

// Hours as a record of version `v` holds them: twelve bytes that say nothing below 0x104.
Bytes& Hours(Bytes& b, std::uint16_t v, double hours) {
  const auto bits = std::bit_cast<std::uint64_t>(hours);
  if (v < 0x104) return b.zeros(12);
  return b.u32(static_cast<std::uint32_t>(bits >> 32)).u32(static_cast<std::uint32_t>(bits));
}
std::unique_ptr<CDefect> Read(const std::vector<std::uint8_t>& bytes,
                              const DefectLookups* lookups = nullptr) {
  return ReadItem<CDefect>(bytes, lookups);
}

// Version 0x100: no deleted flag, the found-by block and the description of old, text8
// notes, the hours as a whole number; no numbers, no modification date.
TEST(DefectRecord, TheOldestFormBecomesAReportedByRow) {
  FakeLookups lookups;
  lookups.users[9].SetCompany("Initech");
  lookups.users[10].SetLastName("Lumbergh");
  for (const auto& [foundBy, contact] :
       std::vector<std::pair<std::uint32_t, std::string>>{{9, "Initech"}, {10, "Lumbergh"}}) {
    Bytes b;
    b.u16(0x100).u32(3'000'000'000u).u32(4).u32(7).u32(5).str8("Old one").u8(1).u8(0).u32(3);
    b.u32(foundBy).u32(3'000'000'050u).u8(0).str8("Desc.").str8("1.0").u32(13).str8(" cfg");
    b.u32(12).u32(3'000'000'100u).u32(0).u32(kNone).u32(kNone);  // hours not set
    b.str8("").u8(1).u8(0).u32(0).u32(kNone).str8("").u32(0);
    b.u16(1).u16(2).u32(12).u32(3'000'000'100u).str8("hi");  // text8 notes
    b.u16(5);  // a status of closed, with no close event
    const auto read = Read(b.b, &lookups);
    CDefect& d = *read;
    d.SetId(77);
    EXPECT_EQ(d.number, 77u) << "numbered by its record id";
    EXPECT_EQ(d.status(), 1) << "status comes from the events";
    EXPECT_EQ(std::tuple(d.copies().assignedToId, d.EventAt(1)->notes, d.dateModified,
                         d.isDuplicate, d.reproducedId, d.testConfigId, d.copies().hoursToFix),
              std::tuple(12u, "hi", d.dateCreated, true, 4u, 13u, -1.0));
    ASSERT_EQ(d.ReportedByCount(), 1u);
    const CReportedBy& row = *d.ReportedByAt(1);
    EXPECT_EQ(row.description, "Desc. cfg") << "the old description goes first";
    EXPECT_EQ(row.reproducedId, 4u) << "not reproducible";
    EXPECT_EQ(std::tuple(row.foundById, row.contact.str(), row.versionFound, row.configKind(),
                         row.testConfigId()),
              std::tuple(foundBy, contact, "1.0", CReportedBy::kStoredConfig, 13u));
  }
}

// The versions from 0x102: what each adds, read from records built field by field; the
// newest is written back unchanged, with the copies of its fix that the record holds.
TEST(DefectRecord, EachVersionReadsItsOwnFields) {
  for (const std::uint16_t v :
       std::vector<std::uint16_t>{0x102, 0x104, 0x105, 0x109, 0x10A, 0x10B}) {
    SCOPED_TRACE(v);
    const bool newest = v == 0x10B;
    Bytes b;
    b.u16(v);
    if (v >= 0x103) b.u8(1);
    b.u32(3'000'000'000u).u32(4).u32(newest ? 7 : 0).u32(5).str8("Mid").u8(0).u8(0).u32(3);
    b.u32(9).u32(v < 0x105 ? 3'000'000'050u : 3'000'000'060u);
    if (v < 0x105) b.u8(1);
    if (v <= 0x105) b.str16("Old. ");
    if (v < 0x105) b.str8("1.0").u32(0).str16("");
    b.u32(0).u32(kNone).u32(newest ? 9 : 0).u32(newest ? 3'000'000'070u : kNone);
    Hours(b, v, newest ? 2.0 : 3.0).str8(newest ? "1.1" : "").u8(newest ? 1 : 0).u8(0);
    b.u32(0).u32(kNone).str8("").u32(0);
    b.u16(1).u16(3).u32(9).u32(3'000'000'070u).str16("fixed");
    Hours(b, v, 2.0).u8(1).u8(0).u32(7).fixed33("1.1").u16(2);
    if (v >= 0x105) {  // a reported-by row of kind 1 without attachments
      b.u32(24).str8("R").u16(1).u16(2).u32(9).str8("Acme").u32(3'000'000'000u).fixed33("2.0");
      b.str16("New.").u32(2).str16("Click twice").u16(1).u32(0).str16("");
    }
    if (v >= 0x107) b.u32(33);
    if (v >= 0x108) b.str16("wa");
    if (v >= 0x109) b.u32(3'000'000'500u);
    if (v >= 0x10A) b.u32(6).u32(4).u32(1).u32(7);
    if (newest) b.u32(43).u32(4).u32(1).u32(7);  // the list again: written, never read

    const auto read = Read(b.b);
    CDefect& d = *read;
    d.SetId(50);
    if (newest) {
      EXPECT_EQ(d.Pack(), b.b);
    }
    EXPECT_EQ(d.status(), 2);
    EXPECT_EQ(d.copies().resolutionId, 7u) << "from the fix, not the record";
    EXPECT_EQ(d.copies().hoursToFix, v < 0x104 ? -1.0 : 2.0) << "hours of 0 add nothing";
    ASSERT_EQ(d.ReportedByCount(), 1u);
    EXPECT_EQ(d.ReportedByAt(1)->description,
              v < 0x105 ? "Old. " : (v == 0x105 ? "Old. New." : "New."));
    EXPECT_EQ(std::tuple(d.dateCreated, d.typeId, d.priorityId, d.summary, d.productId,
                         d.EventAt(1)->notes, d.foundById),
              std::tuple(3'000'000'000u, 4u, 5u, "Mid", 3u, "fixed", 9u));
    EXPECT_EQ(
        std::tuple(d.deleted, d.componentId, d.reference, d.severityId, d.workaround,
                   d.dateModified, d.number, d.enteredById, d.notifyList(), d.dispositionId),
        std::tuple(v >= 0x103, v >= 0x105 ? 24u : 0u, v >= 0x105 ? "R" : "", v >= 0x107 ? 33u : 0u,
                   v >= 0x108 ? "wa" : "", v >= 0x109 ? 3'000'000'500u : 3'000'000'000u,
                   v >= 0x10A ? 6u : 50u, v >= 0x105 ? 9u : 0u,
                   std::vector<std::uint32_t>(v >= 0x10A ? 1 : 0, 7), newest ? 43u : 0u));
    if (!newest) continue;
    // A record that ends behind the first list has no disposition, and says nothing of it.
    const std::vector<std::uint8_t> cut(b.b.begin(), b.b.end() - 16);
    EXPECT_EQ(Read(cut)->dispositionId, 0u);
  }
}

TEST(DefectRecord, DamageIsThrownWithWhatWasRead) {
  EXPECT_THROW(Read(Bytes().u16(0x10C).b), ItemError);

  Bytes badKind;
  badKind.u16(0x10B).u8(0).u32(1).u32(4).u32(0).u32(5).str8("Bad kind").u8(0).u8(0).u32(3);
  Hours(badKind.u32(0).u32(kNone).u32(0).u32(kNone).u32(0).u32(kNone), 0x10B, -1);
  badKind.str8("").u8(0).u8(0).u32(0).u32(kNone).str8("").u32(0).u16(1).u16(12);
  CDefect partial;
  PayloadReader bad(badKind.b);
  EXPECT_EQ(ThrownCode([&] { partial.ReadFrom(bad); }), kNoItem) << "an event of kind 12";
  EXPECT_EQ(partial.summary, "Bad kind") << "what was read stays";

  // The table keeps such a defect and says what to do about it.
  ScriptedUi ui;
  CDefectTable table(nullptr, ui, nullptr);
  const auto item = table.ItemFromRecord(badKind.b, 31);
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{
                            "Defect #31 is corrupt (probably due to a system crash.) Re-edit it "
                            "to correct the problem."});
}

std::unique_ptr<CDefectEvent> Event(EventKind kind, std::uint32_t date, std::uint32_t user = 1) {
  auto e = CDefectEvent::Make(static_cast<std::int16_t>(kind));
  e->date = date;
  e->userId = user;
  return e;
}

TEST(DefectEvents, OrderByDateThenWeightAndReplay) {
  CDefect d;
  d.AddEvent(Event(EventKind::kFix, 200));
  d.AddEvent(Event(EventKind::kAssign, 100, 5));
  EXPECT_EQ(d.EventAt(1)->kind(), EventKind::kAssign) << "by date, not by arrival";
  EXPECT_EQ(d.copies().assignedToId, 0u) << "the later fix ends the assignment";
  d.AddEvent(Event(EventKind::kComment, 200));
  EXPECT_EQ(d.EventAt(3)->kind(), EventKind::kComment) << "same date: arrival order";
  d.AddEvent(Event(EventKind::kComment, kNone));
  EXPECT_EQ(d.EventAt(2)->date, kNone) << "no date: before the first row of a higher weight";
  EXPECT_EQ(d.EventAt(3)->kind(), EventKind::kFix);
  d.AddEvent(Event(EventKind::kReOpen, 300));
  EXPECT_EQ(d.status(), 6);
  auto failed = Event(EventKind::kVerify, 400);
  static_cast<CVerifyEvent&>(*failed).passed = false;
  d.AddEvent(std::move(failed));
  EXPECT_EQ(d.status(), 3);
  d.RemoveEvent(d.EventAt(d.EventCount()));
  EXPECT_EQ(d.status(), 6);
}

TEST(DefectTable, SortsByNumberThenTypeThenRecord) {
  FakeLookups lookups;
  lookups.positions[{MakeTag("type"), 40}] = 2;
  lookups.positions[{MakeTag("type"), 41}] = 1;
  ScriptedUi ui;
  CDefectTable table(nullptr, ui, &lookups);
  std::vector<std::unique_ptr<CDefect>> defects;
  for (const auto& [id, number, type] :
       std::vector<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>>{
           {1, 5, 40}, {2, 0, 40}, {3, 0, 41}, {4, 5, 99}, {5, 2, 41}}) {
    auto d = std::make_unique<CDefect>(&lookups);
    d->SetId(id);
    d->number = number;
    d->typeId = type;
    table.AddSorted(d.get());
    defects.push_back(std::move(d));
  }
  std::vector<std::uint32_t> ids;
  for (std::uint32_t p = 1; p <= table.count(); ++p) ids.push_back(table.ItemAt(p)->GetId());
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{3, 2, 5, 4, 1})) << "a type that is gone sorts first";
  table.SetSecondaryField(kNoSortField);
  EXPECT_EQ(table.CompareItems(*defects[1], *defects[2], table.sortOrder()), 0)
      << "two un-numbered defects stay equal by number alone";
  table.SetSortOrder({2, 2});
  defects[0]->summary = "apple";
  defects[1]->summary = "Banana";
  EXPECT_GT(table.CompareItems(*defects[0], *defects[1], table.sortOrder()), 0) << "descending";
  for (auto& d : defects) table.RemoveItem(d.get());
}

// A defect deleted for good takes the attachments stored in the project with it; those in
// the attachments folder are the folder's business.
TEST_F(ProjectTest, DeletingADefectDeletesItsStoredAttachments) {
  CProjectStore& store = *doc.store();
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  ASSERT_EQ(store.AddRecord(MakeTag("atch"), std::vector<std::uint8_t>{1}, &first), DBStatus::kOk);
  ASSERT_EQ(store.AddRecord(MakeTag("atch"), std::vector<std::uint8_t>{2}, &second), DBStatus::kOk);
  CDefect& defect = AddDefect("Gone");
  for (const std::uint32_t id : {first, 0u, CFileAttachment::kInFolder, second}) {
    auto row = std::make_unique<CReportedBy>();
    auto attachment = std::make_unique<CFileAttachment>();
    attachment->storeId = id;
    row->AddAttachment(std::move(attachment));
    defect.AddReportedBy(std::move(row));
  }
  ASSERT_EQ(defects().SaveItem(defect), DBStatus::kOk);
  ASSERT_EQ(defects().DeleteItem(defect, false), DBStatus::kOk);
  std::uint32_t count = 1;
  ASSERT_EQ(store.CountRecords(MakeTag("atch"), count), DBStatus::kOk);
  EXPECT_EQ(count, 0u);
  ASSERT_EQ(store.CountRecords(kDefectTag, count), DBStatus::kOk);
  EXPECT_EQ(count, 0u);
}

}  // namespace
}  // namespace qm::test
