// Defect events against hand-built bytes in the forms of each record version, what each
// kind does to its defect's copies, and the event list's texts.
#include "defects/defect_event.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "store/file_bytes.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

using ByteList = std::vector<std::uint8_t>;

constexpr std::uint32_t kDate = 0xB1C2D3E4;

std::size_t Read(CDefectEvent& event, const ByteList& bytes, std::uint16_t recordVersion) {
  PayloadReader in(bytes);
  event.ReadFrom(in, recordVersion);
  return in.remaining();
}

// userId 7, kDate and the notes, as a record of 0x102 or later holds them.
Bytes Head(const std::string& notes = "Seen twice") {
  return Bytes().u32(7).u32(kDate).str16(notes);
}

TEST(DefectEvent, EachKindsByteForm) {
  std::vector<std::pair<std::unique_ptr<CDefectEvent>, Bytes>> cases;
  const auto add = [&cases](std::unique_ptr<CDefectEvent> event, Bytes bytes) {
    event->userId = 7;
    event->date = kDate;
    event->notes = "Seen twice";
    cases.emplace_back(std::move(event), std::move(bytes));
  };
  for (EventKind kind : {EventKind::kAssign, EventKind::kReOpen, EventKind::kComment}) {
    add(CDefectEvent::Make(static_cast<std::int16_t>(kind)), Head());
  }
  auto fix = std::make_unique<CFixEvent>();
  fix->hours = 2.5;
  fix->affectsDocs = true;
  fix->resolutionId = 0x11223344;
  fix->fixVersion = "1.2";
  add(std::move(fix), Head().u32(0x40040000).u32(0).u8(1).u8(0).u32(0x11223344).fixed33("1.2"));
  auto verify = std::make_unique<CVerifyEvent>();
  verify->passed = false;
  add(std::move(verify), Head().u8(0));
  auto close = std::make_unique<CCloseEvent>();
  close->resolutionId = 5;
  add(std::move(close), Head().u32(5));
  auto estimate = std::make_unique<CEstimateEvent>();
  estimate->hours = 10;
  estimate->estimatedDate = 0x0A0B0C0D;
  estimate->estimatedVersion = "2.0b";
  add(std::move(estimate), Head().u32(0x40240000).u32(0).u32(0x0A0B0C0D).fixed33("2.0b"));
  auto release = std::make_unique<CReleaseNotesEvent>();
  release->releaseVersion = "3.1";
  add(std::move(release), Head().u8(3).text("3.1"));

  for (const auto& [event, bytes] : cases) {
    SCOPED_TRACE(event->ActionText());
    EXPECT_EQ(Written(*event), bytes.b);
    auto read = CDefectEvent::Make(static_cast<std::int16_t>(event->kind()));
    EXPECT_EQ(Read(*read, bytes.b, 0x104), 0u);
    EXPECT_EQ(read->version, 0x104);
    EXPECT_EQ(Written(*read), bytes.b);
  }
}

TEST(DefectEvent, OlderFormsAndFixedVersions) {
  // Below 0x102: text8 notes and two-byte hours, -1 for none.
  CFixEvent fix;
  Bytes old;
  old.u32(7).u32(kDate).u8(3).text("old").u16(0xFFFF).u8(0).u8(1).u32(4);
  old.fixed33("0.9");
  EXPECT_EQ(Read(fix, old.b, 0x101), 0u);
  EXPECT_EQ(fix.notes, "old");
  EXPECT_EQ(fix.hours, -1.0);
  EXPECT_TRUE(fix.affectsTestPlan);
  EXPECT_EQ(fix.resolutionId, 4u);
  EXPECT_EQ(fix.fixVersion, "0.9");
  PutU16(old.b, 12, 7);
  Read(fix, old.b, 0x101);
  EXPECT_EQ(fix.hours, 7.0);
  EXPECT_EQ(Written(fix), Head("old").u32(0x401C0000).u32(0).u8(0).u8(1).u32(4).fixed33("0.9").b);

  // 0x102 and 0x103 hold twelve bytes that say nothing in place of the hours.
  EXPECT_EQ(Read(fix, Head().raw(ByteList(12, 0xAB)).u8(1).u8(0).u32(6).fixed33("1.0").b, 0x103),
            0u);
  EXPECT_EQ(fix.hours, 0.0);
  EXPECT_TRUE(fix.affectsDocs);
  EXPECT_EQ(fix.resolutionId, 6u);

  // The defect's own old hours are four unsigned bytes, all ones for none.
  const ByteList fourBytes{0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0, 0, 0};
  PayloadReader hours(fourBytes);
  EXPECT_EQ(ReadHours(hours, 0x100, 4), -1.0);
  EXPECT_EQ(ReadHours(hours, 0x100, 4), 2147483648.0);
  EXPECT_EQ(ReadHours(hours, 0x100, 4), -1.0) << "no hours left";

  // A version field takes at most 32 bytes of text, up to a 0 byte, and always all 33.
  ByteList versions{40};
  for (int i = 0; i < 32; ++i) versions.push_back(static_cast<std::uint8_t>('a' + i % 26));
  versions.insert(versions.end(), {3, 'x', 0, 'y'});
  versions.resize(66, 0xEE);
  PayloadReader in(versions);
  std::string field;
  ASSERT_TRUE(ReadFixedVersion(in, field));
  EXPECT_EQ(field, "abcdefghijklmnopqrstuvwxyzabcdef");
  ASSERT_TRUE(ReadFixedVersion(in, field));
  EXPECT_EQ(field, "x");
  EXPECT_EQ(in.remaining(), 0u);

  // Written versions are cut between characters: 32 bytes would halve the last "é".
  const std::string longVersion = std::string(31, 'v') + "\xC3\xA9";
  CEstimateEvent estimate;
  estimate.userId = 7;
  estimate.date = kDate;
  estimate.estimatedVersion = longVersion;
  EXPECT_EQ(Written(estimate),
            Head("").u32(0xBFF00000).u32(0).u32(0xFFFFFFFF).fixed33(std::string(31, 'v')).b);

  CReleaseNotesEvent release;
  release.userId = 7;
  release.date = kDate;
  release.notes = "Seen twice";
  release.releaseVersion = longVersion;
  EXPECT_EQ(Written(release), Head().u8(31).text(std::string(31, 'v')).b);
}

TEST(DefectEvent, ReplayCopiesWhatEachKindSets) {
  DefectCopies copies;
  CFixEvent fix;
  fix.userId = 8;
  for (const double hours : {2.0, 3.0, -1.0}) {
    fix.hours = hours;
    fix.Apply(copies, 0);
  }
  EXPECT_EQ(copies.hoursToFix, 5.0);
  CEstimateEvent estimate;
  estimate.hours = 6;
  estimate.Apply(copies, 0);

  copies.closeResolutionId = 12;
  CVerifyEvent verify;
  verify.userId = 10;
  verify.date = 300;
  verify.passed = false;
  verify.Apply(copies, 0);
  EXPECT_EQ(copies.closedById, 0u);
  verify.passed = true;
  verify.Apply(copies, 0);
  EXPECT_EQ(std::tuple(copies.verifiedById, copies.closedById, copies.dateClosed,
                       copies.closeResolutionId),
            std::tuple(10u, 10u, 300u, 12u));

  CReOpenEvent().Apply(copies, 0);
  EXPECT_EQ((std::vector<std::uint32_t>{copies.resolutionId, copies.fixedById, copies.dateFixed,
                                        copies.verifiedById, copies.closedById,
                                        copies.closeResolutionId, copies.dateClosed}),
            (std::vector<std::uint32_t>{0, 0, platform::kNoStamp, 0, 0, 0, platform::kNoStamp}));
  EXPECT_EQ(copies.hoursToFix, 5.0) << "the work done stays";
  EXPECT_EQ(copies.estimatedHours, 6.0);

  // Whether the defect is mine is only known with someone logged in.
  CAssignEvent assign;
  assign.userId = 5;
  for (const auto& [me, mine] : {std::pair(5u, true), std::pair(0u, true), std::pair(6u, false)}) {
    assign.Apply(copies, me);
    EXPECT_EQ(copies.assignedToMe, mine) << me;
  }
  CReleaseNotesEvent release;
  release.Apply(copies, 0);
  EXPECT_TRUE(copies.hasReleaseNotes);
  EXPECT_EQ(copies.releaseNotes, &release.notes);
  EXPECT_EQ(copies.assignedToId, 5u) << "release notes keep the assignment";
}

TEST(DefectEvent, InfoTextsAndKinds) {
  CFixEvent docs;
  docs.affectsDocs = true;
  CFixEvent both = docs;
  both.hours = 2.5;
  both.affectsTestPlan = true;
  CFixEvent plan;
  plan.hours = 12.25;
  plan.affectsTestPlan = true;
  CFixEvent none;
  none.hours = 0;
  CVerifyEvent failed;
  failed.passed = false;
  CEstimateEvent dated;
  dated.estimatedDate = platform::StampFromCivil({.year = 2024, .month = 3, .day = 7});
  CEstimateEvent full = dated;
  full.hours = 4;
  full.estimatedVersion = "2.1";
  CReleaseNotesEvent released;
  released.releaseVersion = "4.0";
  const std::pair<const CDefectEvent*, std::string_view> cases[] = {
      {&docs, "Effort: ??"},
      {&both, "Effort:  2.50 hours Affects Docs and Test Plans"},
      {&plan, "Effort: 12.25 hours Affects Test Plans"},
      {&none, "Effort:  0.00 hours"},
      {&failed, "Failed"},
      {&full, "Hours:  4.00, Date: 3/7/2024, Version: 2.1"},
      {&dated, "Date: 3/7/2024"},
      {&released, "Released in Version: 4.0"},
  };
  for (const auto& [event, text] : cases) EXPECT_EQ(event->GetInfoText(), text);
  EXPECT_EQ(CReleaseNotesEvent().GetInfoText(), "Released in Version: not set");

  EXPECT_EQ(CDefectEvent::Make(1), nullptr) << "the report row is no event";
  EXPECT_EQ(CDefectEvent::Make(10), nullptr);
  const char* const actions[] = {"Assigned",  "Fixed",     "Verified", "Closed",
                                 "Re-opened", "Estimated", "Comment",  "Released"};
  const int weights[] = {2, 5, 6, 7, 8, 4, 3, 9};
  for (std::int16_t kind = 2; kind <= 9; ++kind) {
    const auto event = CDefectEvent::Make(kind);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(static_cast<std::int16_t>(event->kind()), kind);
    EXPECT_EQ(event->ActionText(), actions[kind - 2]);
    EXPECT_EQ(event->Weight(), weights[kind - 2]);
  }
}

}  // namespace
}  // namespace qm::test
