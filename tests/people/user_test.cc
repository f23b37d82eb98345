// User records of every layout against hand-built bytes, names, capacities, and the
// three people tables through a real project file.
#include <gtest/gtest.h>

#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/item_error.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

Bytes& Str(Bytes& b, const std::string& s) {
  return b.u8(static_cast<std::uint8_t>(s.size())).text(s);
}

// Bytes 1, 2, 3, ... from `first`, so that each offset of the block shows where it went.
Bytes& Counting(Bytes& b, std::uint8_t first, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) b.u8(static_cast<std::uint8_t>(first + i));
  return b;
}

// An in-line test configuration with only a name, and with multipleMonitors from 0x102.
Bytes& InlineConfig(Bytes& b, std::uint16_t version, const std::string& name) {
  b.u16(version).u8(0);
  Str(b, name);
  for (int i = 0; i < 11; ++i) Str(b, "");
  for (int i = 0; i < 4; ++i) Str(b.u8(0), "");
  Str(b, "");
  if (version >= 0x102) b.u8(1);
  return b;
}

std::unique_ptr<CUser> Read(const std::vector<std::uint8_t>& payload) {
  auto user = std::make_unique<CUser>();
  PayloadReader in(payload);
  user->ReadFrom(in);
  return user;
}

std::vector<std::uint8_t> BlockBytes(const CUser& user, std::size_t at, std::size_t n) {
  const auto& block = user.GetPlacementBlock();
  return {block.begin() + static_cast<std::ptrdiff_t>(at),
          block.begin() + static_cast<std::ptrdiff_t>(at + n)};
}

TEST(PeopleUser, WritesTheNewestRecordByteForByte) {
  CUser user;
  user.SetFirstName("Ann");
  user.SetLastName("Lee");
  user.SetLogin("alee");
  user.SetPassword("secret");
  user.SetNotes("Line one\rLine two");
  user.SetContactKind(0, 3);
  user.SetContactText(0, "555-0100");
  user.SetContactKind(1, 0x105);
  user.SetContactText(1, "ext 12");
  user.SetGroupId(5);
  CUser::PlacementBlock block;
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i + 1);
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

  Bytes expected;
  expected.u16(0x109).u8(0);
  Str(Str(Str(Str(expected, "Ann"), "Lee"), "alee"), "secret");
  expected.u16(17).text("Line one\rLine two");
  Str(expected.u8(3), "555-0100");
  Str(expected.u8(5), "ext 12");  // the low byte of the kind
  expected.u32(5);
  Counting(expected, 1, 76);  // block bytes 0-75
  Counting(expected, 85, 4);  // the u32 at 84
  expected.u32(0xB0C0D0E0);
  Str(Str(Str(expected, "s1"), ""), "s3").u16(1).u16(2).u16(0xFFFF);
  Str(Str(expected, "Corvane"), "1 Main St\rSpringfield").u16(1);
  Str(expected, "ann@example.com");
  expected.u16(0x102).u8(0);
  Str(expected, "Ann's PC");
  for (int i = 0; i < 11; ++i) Str(expected, "");
  Str(expected.u8(0), "");
  Str(expected.u8(0), "");
  Str(expected.u8(1), "LaserJet");
  Str(expected.u8(0), "");
  Str(expected, "").u8(0);
  expected.u16(2).u32(18).u16(1);
  Counting(expected, 15, 10);  // row 2, block bytes 14-23
  expected.u16(0x0A0B).u32(0x0C0D0E0F);
  expected.u32(2).u32(3).u16(1).u16(2).u16(39);
  for (int i = 1; i < 5; ++i) expected.u32(2).u32(0);
  expected.u32(4).u32(1).u32(0x01020304);
  for (int i = 6; i < 8; ++i) expected.u32(2).u32(0);
  ASSERT_EQ(user.Pack(), expected.b);

  // Read back, every field is there to be written again.
  const auto read = Read(expected.b);
  EXPECT_EQ(read->Pack(), expected.b);
  EXPECT_EQ(read->GetContactKind(1), 5u);
  EXPECT_EQ(read->GetColumns(0).At(2), 39u);
  EXPECT_EQ(read->GetColumns(5).elementSize(), 4u);
  EXPECT_TRUE(read->IsCustomer());
  EXPECT_EQ(read->GetComputerConfig().printer.str(), "LaserJet");

  EXPECT_THROW(Read(Bytes().u16(0x10A).u8(0).b), ItemError);
  EXPECT_THROW(Read(Bytes().u16(0x0FF).u8(0).b), ItemError);
}

TEST(PeopleUser, ReadsEveryOlderLayout) {
  // 0x100: no deleted mark, notes as text8 with its 0 byte kept, no u32 of the block.
  Bytes v100;
  v100.u16(0x100);
  Str(Str(Str(Str(v100, "Ann"), "Lee"), "alee"), "pw");
  v100.u8(5).raw({'a', 0, 'b', '\r', 'c'});
  Str(v100.u8(1), "555");
  Str(v100.u8(2), "fax");
  v100.u32(9);
  Counting(v100, 1, 76);
  v100.u32(0x11111111);
  const auto u100 = Read(v100.b);
  EXPECT_EQ(u100->GetName(), "Lee, Ann");
  EXPECT_EQ(u100->GetLogin(), "alee");
  EXPECT_EQ(u100->GetPassword(), "pw");
  EXPECT_EQ(u100->GetNotes(), std::string("a\0b\rc", 5));
  EXPECT_EQ(u100->GetContactKind(1), 2u);
  EXPECT_EQ(u100->GetContactText(1), "fax");
  EXPECT_EQ(u100->GetGroupId(), 9u);
  EXPECT_EQ(BlockBytes(*u100, 72, 4), (std::vector<std::uint8_t>{73, 74, 75, 76}));
  EXPECT_EQ(BlockBytes(*u100, 76, 12), std::vector<std::uint8_t>(12, 0));
  EXPECT_EQ(u100->GetDateLastLogin(), 0x11111111u);
  EXPECT_FALSE(u100->deleted);

  // 0x103: saved texts, but no company, address or e-mail; the bytes after the saved
  // values are not its own and stay unread.
  Bytes v103;
  v103.u16(0x103).u8(1);
  Str(Str(Str(Str(v103, "Ann"), "Lee"), "alee"), "pw");
  v103.u8(2).text("hi");
  Str(v103.u8(1), "555");
  Str(v103.u8(0), "");
  v103.u32(9).zeros(76).u32(0x01020304).u32(0x22222222);
  Str(Str(Str(v103, "one"), "two"), "three").u16(1).u16(2).u16(3);
  Str(Str(v103, "Trap Inc"), "Trap St").u16(1);
  Str(v103, "trap@example.com");
  const auto u103 = Read(v103.b);
  EXPECT_TRUE(u103->deleted);
  EXPECT_EQ(u103->GetNotes(), "hi");
  EXPECT_EQ(BlockBytes(*u103, 84, 4), (std::vector<std::uint8_t>{1, 2, 3, 4}));
  EXPECT_EQ(u103->GetDateLastLogin(), 0x22222222u);
  EXPECT_EQ(u103->GetSavedText(2), "three");
  EXPECT_EQ(u103->GetSavedValue(2), 3);
  EXPECT_EQ(u103->GetCompany(), "");
  EXPECT_EQ(u103->GetAddress(), "");
  EXPECT_EQ(u103->GetEmail(), "");
  EXPECT_EQ(u103->GetBetaSite(), 0);

  // 0x105: company to e-mail and the configuration, no mail method yet.
  Bytes v105;
  v105.u16(0x105).u8(0);
  Str(Str(Str(Str(v105, "Ann"), "Lee"), ""), "");
  v105.u8(0);
  Str(v105.u8(0), "");
  Str(v105.u8(0), "");
  v105.u32(0).zeros(76).u32(0).u32(0x33333333);
  Str(Str(Str(v105, ""), ""), "").u16(0).u16(0).u16(0);
  Str(Str(v105, "Corvane"), "Addr").u16(1);
  Str(v105, "ann@example.com");
  InlineConfig(v105, 0x101, "Home PC");
  v105.u16(0x7777);
  const auto u105 = Read(v105.b);
  EXPECT_EQ(u105->GetCompany(), "Corvane");
  EXPECT_EQ(u105->GetAddress(), "Addr");
  EXPECT_EQ(u105->GetBetaSite(), 1);
  EXPECT_EQ(u105->GetEmail(), "ann@example.com");
  EXPECT_EQ(u105->GetComputerConfig().GetName(), "Home PC");
  EXPECT_FALSE(u105->GetComputerConfig().multipleMonitors);
  EXPECT_EQ(u105->GetMailMethod(), 0);

  // 0x108: notes as text, row 2 of the block again after the flags, and nothing of 0x109.
  Bytes v108;
  v108.u16(0x108).u8(0);
  Str(Str(Str(Str(v108, ""), "Lee"), ""), "");
  v108.u16(4).text("note");
  Str(v108.u8(0), "");
  Str(v108.u8(0), "");
  v108.u32(0);
  Counting(v108, 1, 76);
  v108.u32(0).u32(0);
  Str(Str(Str(v108, ""), ""), "").u16(0).u16(0).u16(0);
  Str(Str(v108, ""), "").u16(0);
  Str(v108, "");
  InlineConfig(v108, 0x102, "");
  v108.u16(3).u32(8).u16(1);
  v108.u32(0xAABBCCDD).u16(0x1111).u16(0x2222).u16(0x3333);
  v108.u16(0x7777).u32(0x88888888).u32(2).u32(1).u16(1);
  const auto u108 = Read(v108.b);
  EXPECT_EQ(u108->GetNotes(), "note");
  EXPECT_TRUE(u108->GetComputerConfig().multipleMonitors);
  EXPECT_EQ(u108->GetMailMethod(), 3);
  EXPECT_EQ(u108->GetNotifyFlags(), CUser::kNotForOwnChanges);
  EXPECT_TRUE(u108->IsCustomer());
  EXPECT_EQ(BlockBytes(*u108, 13, 12),
            (std::vector<std::uint8_t>{14, 0xAA, 0xBB, 0xCC, 0xDD, 0x11, 0x11, 0x22, 0x22, 0x33,
                                       0x33, 25}));
  EXPECT_EQ(u108->GetReservedValue(), 0);
  EXPECT_EQ(u108->GetListValue(), 0u);
  EXPECT_EQ(u108->GetColumns(0).count(), 0u);
}

TEST(PeopleUser, NamesAndCapacities) {
  CUser user;
  user.SetLastName("Lee");
  EXPECT_EQ(user.GetName(), "Lee");
  EXPECT_EQ(user.GetFullName(), "Lee");
  user.SetFirstName("Ann");
  EXPECT_EQ(user.GetName(), "Lee, Ann");
  EXPECT_EQ(user.GetFullName(), "Ann Lee");
  user.SetLastName("");
  EXPECT_EQ(user.GetName(), "Ann");

  user.SetLogin(std::string(40, 'l'));
  EXPECT_EQ(user.GetLogin(), std::string(32, 'l'));
  // A three-byte character that would end at byte 33 is left out whole.
  user.SetPassword(std::string(30, 'p') + "\xE2\x82\xAC");
  EXPECT_EQ(user.GetPassword(), std::string(30, 'p'));
  user.SetContactText(0, std::string(40, '5'));
  EXPECT_EQ(user.GetContactText(0).size(), 35u);
  // The address holds 256 bytes, its record 255.
  user.SetAddress(std::string(300, 'a'));
  EXPECT_EQ(user.GetAddress().size(), 256u);
  EXPECT_EQ(Read(user.Pack())->GetAddress().size(), 255u);
  EXPECT_THROW(user.SetContactText(2, "x"), std::out_of_range);
}

TEST(PeopleStore, TablesRoundTripThroughAProjectFile) {
  TempDir dir;
  ScriptedUi ui;
  CProjectStore store{ui};
  ASSERT_EQ(store.Create(dir.File("p.qmk"), 1), DBStatus::kOk);
  for (Tag tag : {MakeTag("user"), MakeTag("ugrp"), MakeTag("scfg")}) {
    ASSERT_EQ(store.AddTable(tag, ""), DBStatus::kOk);
  }

  CUserGroupTable groups(&store, ui);
  std::unique_ptr<RecordItem> item = groups.NewItem();
  auto* qa = static_cast<CUserGroup*>(item.get());
  qa->name = "QA";
  qa->SetCommandDisabled(36, true);
  ASSERT_EQ(groups.AddItem(item), DBStatus::kOk);

  CUserTable users(&store, ui);
  for (const char* last : {"bravo", "Alpha", "charlie"}) {
    item = users.NewItem();
    auto* user = static_cast<CUser*>(item.get());
    user->SetLastName(last);
    user->SetFirstName("Pat");
    user->SetNotes("Notes of " + std::string(last));
    user->GetComputerConfig().ram = "64";
    if (last[0] == 'b') user->SetGroupId(qa->GetId());
    ASSERT_EQ(users.AddItem(item), DBStatus::kOk);
    qa->AddUser(users.ItemAt(users.PositionOf(user))->GetId());
  }
  ASSERT_EQ(groups.SaveItem(*qa), DBStatus::kOk);

  CTestConfigTable configs(&store, ui);
  for (const char* name : {"zeta", "Alpha"}) {
    item = configs.NewItem();
    static_cast<CTestConfig&>(*item).name = name;
    ASSERT_EQ(configs.AddItem(item), DBStatus::kOk);
  }

  CUserTable loadedUsers(&store, ui);
  loadedUsers.LoadTable(true);
  CUserGroupTable loadedGroups(&store, ui);
  loadedGroups.LoadTable(true);
  CTestConfigTable loadedConfigs(&store, ui);
  loadedConfigs.LoadTable(true);

  ASSERT_EQ(loadedUsers.count(), 3u);
  const char* const kOrder[] = {"Alpha, Pat", "bravo, Pat", "charlie, Pat"};
  for (std::uint32_t p = 1; p <= 3; ++p) {
    EXPECT_EQ(loadedUsers.ItemAt(p)->GetName(), kOrder[p - 1]);
    EXPECT_EQ(loadedUsers.ItemAt(p)->GetId(), users.ItemAt(p)->GetId());
    EXPECT_EQ(loadedUsers.ItemAt(p)->Pack(), users.ItemAt(p)->Pack());
  }
  const auto& bravo = static_cast<const CUser&>(*loadedUsers.ItemAt(2));
  const auto& alpha = static_cast<const CUser&>(*loadedUsers.ItemAt(1));
  EXPECT_EQ(bravo.GetGroupName(loadedGroups), "QA");
  EXPECT_EQ(alpha.GetGroupName(loadedGroups), "None");
  EXPECT_EQ(bravo.GetComputerConfig().ram.str(), "64");

  ASSERT_EQ(loadedGroups.count(), 1u);
  EXPECT_EQ(loadedGroups.ItemAt(1)->Pack(), qa->Pack());
  EXPECT_EQ(static_cast<const CUserGroup&>(*loadedGroups.ItemAt(1)).userIds().size(), 3u);

  ASSERT_EQ(loadedConfigs.count(), 2u);
  EXPECT_EQ(loadedConfigs.ItemAt(1)->GetName(), "Alpha");
  EXPECT_EQ(loadedConfigs.ItemAt(2)->GetName(), "zeta");
  EXPECT_TRUE(ui.shown.empty());
}

}  // namespace
}  // namespace qm::test
