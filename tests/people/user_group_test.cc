// User group records against hand-built bytes, members and denied rights.
#include <gtest/gtest.h>

#include "people/user_group.h"
#include "store/file_bytes.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

TEST(PeopleGroup, RecordFormsOfEachVersion) {
  // Members and denied rights keep the order they came in, each once.
  CUserGroup group;
  group.name = "A group name far longer than thirty-two bytes";
  group.description = "Test team";
  group.notes = "Night shift";
  for (std::uint32_t id : {7u, 0x01020304u, 9u, 7u}) group.AddUser(id);
  group.RemoveUser(9);
  for (std::uint32_t right : {8u, 67u, 5u, 4u, 8u}) group.SetCommandDisabled(right, true);
  group.SetCommandDisabled(5, false);
  EXPECT_TRUE(group.HasUser(7));
  EXPECT_FALSE(group.IsCommandDisabled(5));
  group.customFlags = 0x21;
  group.defectFilterId = 12;
  group.onlyAssigned = 1;

  Bytes expected;
  expected.u16(0x103).u8(0).str8("A group name far longer than thi").str8("Test team");
  expected.str8("Night shift").u32(4).u32(2).u32(7).u32(0x01020304);
  expected.u32(4).u32(3).u32(8).u32(67).u32(4).u16(0x21).u32(12).u16(1);
  EXPECT_EQ(group.Pack(), expected.b);
  EXPECT_EQ(ReadItem<CUserGroup>(expected.b)->Pack(), expected.b);
  EXPECT_THROW(ReadItem<CUserGroup>(Bytes().u16(0x104).b), ItemError);
  EXPECT_THROW(ReadItem<CUserGroup>(Bytes().u16(0x0FF).b), ItemError);

  // The deleted mark comes with 0x101, the flags with 0x102, the filter with 0x103; the
  // bytes after each record show a field read too many.
  for (std::uint16_t v = 0x100; v <= 0x103; ++v) {
    SCOPED_TRACE(v);
    Bytes old;
    old.u16(v);
    if (v >= 0x101) old.u8(1);
    old.str8("Admins").str8("").str8("All rights").u32(4).u32(1).u32(3).u32(4).u32(1).u32(2);
    if (v >= 0x102) old.u16(3);
    if (v >= 0x103) old.u32(12).u16(1);
    const auto read = ReadItem<CUserGroup>(old.u32(0x0BADBAD0).u32(0x0BADBAD0).b);
    EXPECT_EQ(read->deleted, v >= 0x101);
    EXPECT_EQ(read->notes.str(), "All rights");
    EXPECT_EQ(read->userIds(), std::vector<std::uint32_t>{3});
    EXPECT_TRUE(read->IsCommandDisabled(2));
    EXPECT_EQ(read->customFlags, v >= 0x102 ? 3 : 0);
    EXPECT_EQ(read->defectFilterId, v >= 0x103 ? 12u : 0u);
  }

  // A count beyond the payload: the whole ids are taken, then the record is at its end.
  Bytes cut;
  cut.u16(0x103).u8(0).str8("Cut").str8("").str8("").u32(4).u32(1000).u32(1).u32(2).u16(0xABCD);
  const auto readCut = ReadItem<CUserGroup>(cut.b);
  EXPECT_EQ(readCut->userIds(), (std::vector<std::uint32_t>{1, 2}));
  EXPECT_TRUE(readCut->disabledCommands().empty());
  EXPECT_EQ(readCut->customFlags, 0);
}

}  // namespace
}  // namespace qm::test
