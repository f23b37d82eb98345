// User records of every layout against hand-built bytes, names and the capacities of the
// fields, and the order of users by their joined names.
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "people/user.h"
#include "store/file_bytes.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

using ByteList = std::vector<std::uint8_t>;

// Bytes 1, 2, 3, ... from `first`, so that each offset of the block shows where it went.
Bytes& Counting(Bytes& b, std::uint8_t first, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) b.u8(static_cast<std::uint8_t>(first + i));
  return b;
}

// Sets every field of the newest layout, to the values that Record() holds.
void Fill(CUser& user) {
  user.SetFirstName("Ann");
  user.SetLastName("Lee");
  user.SetLogin("alee");
  user.SetPassword("secret");
  user.SetNotes("a b");
  user.SetContactKind(0, 3);
  user.SetContactText(0, "555-0100");
  user.SetContactKind(1, 0x105);
  user.SetContactText(1, "ext 12");
  user.SetGroupId(5);
  CUser::PlacementBlock block;
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i + 1);
  for (std::size_t i = 84; i < 88; ++i) block[i] = static_cast<std::uint8_t>(0xF1 + i - 84);
  user.SetPlacementBlock(block);
  user.SetDateLastLogin(0xB0C0D0E0);
  user.SetSavedText(0, "s1", 1);
  user.SetSavedText(1, "", 2);
  user.SetSavedText(2, "s3", 0xFFFF);
  user.SetCompany("Corvane");
  user.SetAddress("1 Main St\rSpringfield");
  user.SetBetaSite(1);
  user.SetEmail("ann@example.com");
  user.GetComputerConfig().name = "Ann's PC";
  user.GetComputerConfig().hasPrinter = true;
  user.GetComputerConfig().printer = "LaserJet";
  user.SetMailMethod(2);
  user.SetNotifyFlags(CUser::kNotifyOnChanges | CUser::kOnlyAssignedToMe);
  user.SetCustomer(true);
  user.SetReservedValue(0x0A0B);
  user.SetListValue(0x0C0D0E0F);
  IdList narrow(2);
  for (std::uint32_t field : {1u, 2u, 39u}) narrow.Append(field);
  user.SetColumns(0, narrow);
  IdList wide(4);
  wide.Append(0x01020304);
  user.SetColumns(5, wide);
}

// The record of Fill()'s person as `v` lays it out. An `old` one is marked deleted, holds
// other bytes in row 2 of the placement block than its run does, and is followed by bytes
// that a reader taking the fields of a later version would take.
ByteList Record(std::uint16_t v, bool old) {
  Bytes b;
  b.u16(v);
  if (v >= 0x102) b.u8(old ? 1 : 0);
  b.str8("Ann").str8("Lee").str8("alee").str8("secret");
  // Notes: text8, which keeps a 0 byte, then text, which reads it as a blank.
  v < 0x108 ? b.u8(3).raw({'a', 0, 'b'}) : b.u16(3).raw({'a', ' ', 'b'});
  b.u8(3).str8("555-0100").u8(5).str8("ext 12").u32(5);  // the low byte of each kind
  Counting(b, 1, 76);                                    // block bytes 0-75
  if (v > 0x100) b.u32(0xF1F2F3F4);                      // the u32 at 84
  b.u32(0xB0C0D0E0);
  if (v > 0x102) b.str8("s1").str8("").str8("s3").u16(1).u16(2).u16(0xFFFF);
  if (v > 0x103) b.str8("Corvane").str8("1 Main St\rSpringfield").u16(1).str8("ann@example.com");
  if (v > 0x104) {
    CUser user;
    Fill(user);
    b.raw(user.GetComputerConfig().Pack());
  }
  if (v > 0x105) b.u16(2);
  if (v > 0x106) Counting(b.u32(18).u16(1), old ? 0xA0 : 15, 10);  // row 2, block bytes 14-23
  if (v > 0x108) {
    b.u16(0x0A0B).u32(0x0C0D0E0F);
    b.u32(2).u32(3).u16(1).u16(2).u16(39);
    for (int i = 1; i < 5; ++i) b.u32(2).u32(0);
    b.u32(4).u32(1).u32(0x01020304);
    for (int i = 6; i < 8; ++i) b.u32(2).u32(0);
  }
  if (old) b.raw(ByteList(64, 1));
  return b.b;
}

ByteList BlockBytes(const CUser& user, std::size_t at, std::size_t n) {
  const auto& block = user.GetPlacementBlock();
  return {block.begin() + static_cast<std::ptrdiff_t>(at),
          block.begin() + static_cast<std::ptrdiff_t>(at + n)};
}

TEST(PeopleUser, RecordsOfEveryLayout) {
  CUser ann;
  Fill(ann);
  ASSERT_EQ(ann.Pack(), Record(0x109, false));
  EXPECT_EQ(ReadItem<CUser>(Record(0x109, false))->Pack(), Record(0x109, false));
  EXPECT_THROW(ReadItem<CUser>(Bytes().u16(0x10A).u8(0).b), ItemError);
  EXPECT_THROW(ReadItem<CUser>(Bytes().u16(0x0FF).u8(0).b), ItemError);

  for (std::uint16_t v = 0x100; v <= 0x109; ++v) {
    SCOPED_TRACE(v);
    const auto user = ReadItem<CUser>(Record(v, true));
    EXPECT_EQ(user->deleted, v >= 0x102);
    EXPECT_EQ(user->GetNotes(), v < 0x108 ? std::string("a\0b", 3) : "a b");
    EXPECT_EQ(user->GetContactKind(1), 5u);
    EXPECT_EQ(user->GetDateLastLogin(), 0xB0C0D0E0u);
    // The run ends at 76; the u32 at 84 comes after 0x100, row 2 again after 0x106.
    Bytes tail;
    Counting(tail, 73, 4).zeros(8).u32(v > 0x100 ? 0xF1F2F3F4 : 0);
    EXPECT_EQ(BlockBytes(*user, 72, 16), tail.b);
    Bytes row2;
    Counting(row2.u8(14), v > 0x106 ? 0xA0 : 15, 10).u8(25);
    EXPECT_EQ(BlockBytes(*user, 13, 12), row2.b);
    EXPECT_EQ(user->GetSavedText(2), v > 0x102 ? "s3" : "");
    EXPECT_EQ(user->GetEmail(), v > 0x103 ? "ann@example.com" : "");
    EXPECT_EQ(user->GetComputerConfig().printer.str(), v > 0x104 ? "LaserJet" : "");
    EXPECT_EQ(user->GetMailMethod(), v > 0x105 ? 2 : 0);
    EXPECT_EQ(user->IsCustomer(), v > 0x106);
    EXPECT_EQ(user->GetListValue(), v > 0x108 ? 0x0C0D0E0Fu : 0u);
    EXPECT_EQ(user->GetColumns(0).count(), v > 0x108 ? 3u : 0u);
  }
}

TEST(PeopleUser, NamesAndCapacities) {
  CUser user;
  user.SetLastName("Lee");
  EXPECT_EQ(user.GetName() + "|" + user.GetFullName(), "Lee|Lee");
  user.SetFirstName("Ann");
  EXPECT_EQ(user.GetName() + "|" + user.GetFullName(), "Lee, Ann|Ann Lee");
  user.SetLastName("");
  EXPECT_EQ(user.GetName() + "|" + user.GetFullName(), "Ann|Ann");

  user.SetLogin(std::string(40, 'l'));
  EXPECT_EQ(user.GetLogin(), std::string(32, 'l'));
  // The address holds 256 bytes, its record 255.
  user.SetAddress(std::string(300, 'a'));
  EXPECT_EQ(user.GetAddress().size(), 256u);
  EXPECT_EQ(ReadItem<CUser>(user.Pack())->GetAddress().size(), 255u);
}

TEST(PeopleUser, ComparesAsItsJoinedNameDoes) {
  // Last and first names whose joined forms meet at the ", " and at the ends: a comma or
  // a blank in a name, one name a prefix of another, letters of either case, bytes above
  // 0x7F and names missing.
  const std::pair<const char*, const char*> names[] = {
      {"", ""},         {"Lee", ""},     {"", "Lee"},      {"Lee", "Ann"},   {"lee", "ann"},
      {"Lee,", ""},     {"Lee,", "Ann"}, {"Lee, Ann", ""}, {"Lee", "Ann B"}, {"Lee!", "A"},
      {"Le", "e, Ann"}, {"LEE", "ANNA"}, {"Lee ", "Ann"},  {"L\u00E9a", ""}, {"Lea", "Z"}};
  std::vector<std::unique_ptr<CUser>> people;
  for (const auto& [last, first] : names) {
    people.push_back(std::make_unique<CUser>());
    people.back()->SetLastName(last);
    people.back()->SetFirstName(first);
  }
  for (const auto& a : people) {
    for (const auto& b : people) {
      EXPECT_EQ(CUser::Compare(a.get(), b.get()), CompareNoCase(a->GetName(), b->GetName()))
          << "\"" << a->GetName() << "\" against \"" << b->GetName() << "\"";
    }
  }
  EXPECT_EQ(CUser::Compare(nullptr, people[0].get()), -1);
}

}  // namespace
}  // namespace qm::test
