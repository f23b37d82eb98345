// User group records against hand-built bytes, members and denied rights.
#include <gtest/gtest.h>

#include "people/user_group.h"
#include "session/item_error.h"
#include "store/file_bytes.h"

namespace qm::test {
namespace {

Bytes& Str(Bytes& b, const std::string& s) {
  return b.u8(static_cast<std::uint8_t>(s.size())).text(s);
}

std::unique_ptr<CUserGroup> Read(const std::vector<std::uint8_t>& payload) {
  auto group = std::make_unique<CUserGroup>();
  PayloadReader in(payload);
  group->ReadFrom(in);
  return group;
}

TEST(PeopleGroup, RecordFormsOfEachVersion) {
  CUserGroup group;
  group.name = "Testers";
  group.description = "Test team";
  group.notes = "Night shift";
  group.AddUser(7);
  group.AddUser(0x01020304);
  group.AddUser(7);
  group.SetCommandDisabled(8, true);
  group.SetCommandDisabled(67, true);
  group.SetCommandDisabled(4, true);
  group.SetCommandDisabled(8, true);
  group.customFlags = 0x21;
  group.defectFilterId = 12;
  group.onlyAssigned = 1;

  Bytes expected;
  expected.u16(0x103).u8(0);
  Str(Str(Str(expected, "Testers"), "Test team"), "Night shift");
  expected.u32(4).u32(2).u32(7).u32(0x01020304);
  expected.u32(4).u32(3).u32(8).u32(67).u32(4);
  expected.u16(0x21).u32(12).u16(1);
  EXPECT_EQ(group.Pack(), expected.b);

  EXPECT_EQ(Read(expected.b)->Pack(), expected.b);

  // 0x100: no deleted mark, no flags, filter or onlyAssigned.
  Bytes old;
  old.u16(0x100);
  Str(Str(Str(old, "Admins"), ""), "All rights");
  old.u32(4).u32(1).u32(3);
  old.u32(4).u32(0);
  const auto read = Read(old.b);
  EXPECT_EQ(read->GetName(), "Admins");
  EXPECT_EQ(read->notes.str(), "All rights");
  EXPECT_EQ(read->userIds(), std::vector<std::uint32_t>{3});
  EXPECT_TRUE(read->disabledCommands().empty());
  EXPECT_FALSE(read->deleted);
  EXPECT_EQ(read->customFlags, 0);
  EXPECT_EQ(read->defectFilterId, 0u);

  // 0x102 has the flags but not the filter.
  Bytes v102;
  v102.u16(0x102).u8(1);
  Str(Str(Str(v102, "Old"), ""), "");
  v102.u32(4).u32(0).u32(4).u32(1).u32(2).u16(3);
  const auto read102 = Read(v102.b);
  EXPECT_TRUE(read102->deleted);
  EXPECT_TRUE(read102->IsCommandDisabled(2));
  EXPECT_EQ(read102->customFlags, 3);

  // A count beyond the payload: the whole ids are taken, then the record is at its end.
  Bytes cut;
  cut.u16(0x103).u8(0);
  Str(Str(Str(cut, "Cut"), ""), "");
  cut.u32(4).u32(1000).u32(1).u32(2).u16(0xABCD);
  const auto readCut = Read(cut.b);
  EXPECT_EQ(readCut->userIds(), (std::vector<std::uint32_t>{1, 2}));
  EXPECT_TRUE(readCut->disabledCommands().empty());
  EXPECT_EQ(readCut->customFlags, 0);

  EXPECT_THROW(Read(Bytes().u16(0x104).b), ItemError);
  EXPECT_THROW(Read(Bytes().u16(0x0FF).b), ItemError);
}

TEST(PeopleGroup, MembersAndDeniedRights) {
  CUserGroup group;
  group.AddUser(1);
  group.AddUser(2);
  group.AddUser(3);
  group.RemoveUser(2);
  EXPECT_EQ(group.userIds(), (std::vector<std::uint32_t>{1, 3}));
  EXPECT_TRUE(group.HasUser(3));
  EXPECT_FALSE(group.HasUser(2));

  group.SetCommandDisabled(5, true);
  group.SetCommandDisabled(6, true);
  group.SetCommandDisabled(5, false);
  EXPECT_FALSE(group.IsCommandDisabled(5));
  EXPECT_TRUE(group.IsCommandDisabled(6));
  EXPECT_EQ(group.disabledCommands(), std::vector<std::uint32_t>{6});

  group.name = "A group name far longer than thirty-two bytes";
  EXPECT_EQ(group.GetName(), "A group name far longer than thi");
}

}  // namespace
}  // namespace qm::test
