// The project's security and information records against bytes built by hand.
#include "session/project_records.h"

#include <gtest/gtest.h>

#include "session/item_error.h"
#include "store/file_bytes.h"

namespace qm::test {
namespace {

constexpr std::uint32_t kNow = 3'700'000'000u;

TEST(ProjectRecords, SecurityRecordLayout) {
  ProjectSecurity s;
  s.securityMode = 1;
  s.projectPassword = "Open Sesame";
  Bytes expected;
  expected.u16(256).u16(1).u8(11).text("Open Sesame");
  EXPECT_EQ(s.Encode(), expected.b);
  EXPECT_EQ(ProjectSecurity::Decode(expected.b).Encode(), expected.b);
  Bytes wrong;
  wrong.u16(257).u16(0).u8(0);
  EXPECT_THROW(ProjectSecurity::Decode(wrong.b), ItemError);
}

// Each layout from 256 on adds its fields; what an older record lacks keeps its default,
// the creation time being the time of reading.
TEST(ProjectInfoRecords, EveryDataVersionReadsItsOwnFields) {
  ProjectInfo info;
  info.projectName = "Atlas";
  info.description = "Flight software";
  info.attachmentsInProject = false;
  info.attachmentFolder = "/srv/atlas";
  Bytes newest;
  newest.u16(355).u8(5).text("Atlas").u8(15).text("Flight software").u32(kNow).u32(0);
  newest.u8(0).u8(10).text("/srv/atlas").u16(0).u16(0).u32(0).u32(0).u8(0);
  EXPECT_EQ(info.Encode(kNow), newest.b) << "createdAt 0 takes the present time";
  info.createdAt = 12345;
  EXPECT_EQ(BeU32(info.Encode(kNow), 2 + 1 + 5 + 1 + 15), 12345u);

  Bytes v256;
  v256.u16(256).u8(1).text("A").u8(0);
  ProjectInfo read = ProjectInfo::Decode(v256.b, kNow);
  EXPECT_EQ(read.dataVersion, 256);
  EXPECT_EQ(read.projectName, "A");
  EXPECT_EQ(read.createdAt, kNow);
  EXPECT_TRUE(read.attachmentsInProject);

  Bytes v300;
  v300.u16(300).u8(1).text("B").u8(1).text("d").u32(777).u32(0).u8(0).u8(3).text("ign");
  read = ProjectInfo::Decode(v300.b, kNow);
  EXPECT_EQ(read.createdAt, 777u);
  EXPECT_TRUE(read.attachmentsInProject) << "attachments fields come only from 341";
  EXPECT_EQ(read.attachmentFolder, "");

  Bytes v341;
  v341.u16(341).u8(1).text("C").u8(0).u32(888).u32(0).u8(0).u8(2).text("/a");
  read = ProjectInfo::Decode(v341.b, kNow);
  EXPECT_FALSE(read.attachmentsInProject);
  EXPECT_EQ(read.attachmentFolder, "/a");

  Bytes newer;
  newer.u16(356).u8(1).text("D");
  EXPECT_EQ(ProjectInfo::Decode(newer.b, kNow).dataVersion, 356) << "left to the opening";
  Bytes older;
  older.u16(255).u8(0).u8(0);
  EXPECT_THROW(ProjectInfo::Decode(older.b, kNow), ItemError);
}

// The preferences of a single-user project: the versioned form, and the older raw run of
// 76 bytes that any record shorter than 89 bytes is.
TEST(ProjectRecords, PreferenceRecordForms) {
  PreferenceBlock block{};
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i + 1);
  Bytes expected;
  expected.u16(258);
  expected.b.insert(expected.b.end(), block.begin(), block.end());
  EXPECT_EQ(EncodePreferences(block), expected.b);
  EXPECT_EQ(DecodePreferences(expected.b), block);

  const std::vector<std::uint8_t> old(block.begin(), block.begin() + 76);
  PreferenceBlock oldBlock{};
  std::copy(old.begin(), old.end(), oldBlock.begin());
  EXPECT_EQ(DecodePreferences(old), oldBlock) << "no version, the rest 0";
  std::vector<std::uint8_t> shortNew(88, 0);
  shortNew[0] = 0x01;
  shortNew[1] = 0x02;
  EXPECT_EQ(DecodePreferences(shortNew)->at(0), 0x01) << "88 bytes is still the old form";

  Bytes unknown;
  unknown.u16(300).zeros(88);
  EXPECT_EQ(DecodePreferences(unknown.b), std::nullopt);
}

}  // namespace
TEST(ProjectRecords, PersonalSettingsStandInTheBlocksRowAt64) {
  PreferenceBlock block{};
  EXPECT_EQ(ReadPersonalSettings(block), PersonalSettings{}) << "zeros: the defaults";
  WritePersonalSettings(block, {true, true, false, true});
  PreferenceBlock expected{};
  expected[69] = 1;  // view on double-click
  expected[71] = 1;  // "First Last"
  expected[73] = 1;  // no sound
  EXPECT_EQ(block, expected);
  expected[73] = 2;
  EXPECT_EQ(ReadPersonalSettings(expected), (PersonalSettings{true, true, true, false}));
}

TEST(ProjectRecords, AssignRulesAreFourteenBytes) {
  const AssignRules rules{2, 0x01020304, 3, 7};
  const std::vector<std::uint8_t> bytes = {0, 1, 0, 2, 1, 2, 3, 4, 0, 3, 0, 0, 0, 7};
  EXPECT_EQ(rules.Encode(), bytes);
  EXPECT_EQ(AssignRules::Decode(bytes), rules);
  std::vector<std::uint8_t> other = bytes;
  other[1] = 2;
  EXPECT_EQ(AssignRules::Decode(other), std::nullopt) << "another version";
  EXPECT_EQ(AssignRules::Decode(std::span(bytes).first(13)), std::nullopt);
}

}  // namespace qm::test
