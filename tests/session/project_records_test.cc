// Record payload elements and the project's security, information, preference and
// assignment records against bytes built by hand; counter values handed out by several
// processes at once.
#include <gtest/gtest.h>

#include <numbers>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "session/counters.h"
#include "session/handle_file.h"
#include "session/item_error.h"
#include "session/payload.h"
#include "session/project_records.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/child_process.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

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

// Counter values handed out by several processes at once: every number once.
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

using ByteList = std::vector<std::uint8_t>;

// `head`, then the bytes of `body`.
ByteList Cat(ByteList head, std::string_view body) {
  head.insert(head.end(), body.begin(), body.end());
  return head;
}

template <class Write>
ByteList Written(Write&& write) {
  CHandleFile file;
  PayloadWriter out(file);
  write(out);
  return file.Detach();
}

TEST(Payload, ElementsAreBigEndianAndStringsAreCutWhole) {
  EXPECT_EQ(
      Written([](PayloadWriter& w) {
        w.U16(0x0102);
        w.U8(7);
        w.U32(0xDEADBEEF);
        w.Stamp(0xFFFFFFFF);
        w.Float64(-1.5);
        w.String("abc");
        w.Text("hi");
        w.Raw(ByteList{9, 8});
      }),
      (ByteList{0x01, 0x02, 0x07, 0xDE, 0xAD, 0xBE, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0xBF, 0xF8, 0, 0,
                0,    0,    0,    0,    0x03, 'a',  'b',  'c',  0,    2,    'h',  'i',  9,    8}));

  // A two-byte character is not halved at the cut; text that is not UTF-8 is cut at the
  // byte, even where its bytes look like the inside of a character.
  std::string accents;
  for (int i = 0; i < 128; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(Written([&](PayloadWriter& w) { w.String(accents); }),
            Cat({254}, accents.substr(0, 254)));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String(std::string(300, '\xA9')); }),
            Cat({255}, std::string(255, '\xA9')));
  EXPECT_EQ(Written([](PayloadWriter& w) { w.String("\xE2\x82\xAC\xE2\x82\xAC", 4); }),
            (ByteList{3, 0xE2, 0x82, 0xAC}))
      << "a field's own capacity cuts too";
  EXPECT_EQ(Written([](PayloadWriter& w) { w.Text(std::string(40000, 't')); }),
            Cat({0x7F, 0xFF}, std::string(32767, 't')));
}

TEST(Payload, ReadingKeepsFieldsWhereThereIsNothingToRead) {
  std::string s;
  std::uint8_t b = 42;
  std::uint16_t u = 0;
  double d = 0;

  // A 0 byte reads as a blank; a string longer than its field stops the reading for good.
  ByteList bytes = Cat({255}, std::string(255, 'x'));
  bytes.insert(bytes.end(), {3, 'a', 0, 'b', 100});
  bytes = Cat(bytes, std::string(100, 'y') + "\x05");
  PayloadReader strings(bytes);
  ASSERT_TRUE(strings.String(s, 255));
  ASSERT_TRUE(strings.String(s, 63));
  EXPECT_FALSE(strings.String(s, 63));
  EXPECT_FALSE(strings.U8(b));
  EXPECT_TRUE(strings.failed());
  EXPECT_EQ(s, "a b");
  EXPECT_EQ(b, 42);

  // A text over the reader's limit leaves its tail to be read as what follows; an
  // element that runs past the end reads as nothing and takes the rest with it.
  const ByteList more{0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18, 0,
                      5,    'h',  'e',  'l',  'l',  'o',  0,    7};
  PayloadReader rest(more);
  ASSERT_TRUE(rest.Float64(d));
  EXPECT_EQ(d, std::numbers::pi);
  ASSERT_TRUE(rest.Text(s, 3));
  ASSERT_TRUE(rest.U8(b));
  ASSERT_TRUE(rest.U16(u));
  EXPECT_EQ(s + static_cast<char>(b), "hell");
  EXPECT_EQ(u, 0x6F00);
  EXPECT_FALSE(rest.U16(u)) << "one byte is not a u16";
  EXPECT_FALSE(rest.U8(b)) << "the short element took the rest";
  EXPECT_EQ(u, 0x6F00);
  EXPECT_FALSE(rest.failed()) << "reading past the end is no failure";

  // A text's 0 bytes read as blanks; a length below 0 as a signed number stops the reading.
  const ByteList texts{0, 3, 'a', 0, 'b', 0x80, 0, 'x', 'y'};
  PayloadReader signedLength(texts);
  ASSERT_TRUE(signedLength.Text(s, 100));
  EXPECT_EQ(s, "a b");
  EXPECT_FALSE(signedLength.Text(s, 100));
  EXPECT_TRUE(signedLength.failed());
  EXPECT_EQ(s, "a b");

  // The version of every payload: one outside the range, or none, throws.
  const ByteList two{0, 2}, three{0, 3}, none;
  PayloadReader ok(two), high(three), empty(none);
  EXPECT_EQ(ReadVersion(ok, 1, 2), 2);
  EXPECT_THROW(ReadVersion(high, 1, 2), ItemError);
  EXPECT_THROW(ReadVersion(empty, 1, 2), ItemError);
}

}  // namespace
}  // namespace qm::test
