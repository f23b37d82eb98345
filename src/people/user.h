// CUser, a person of the project: a user of the program or, with isCustomer set, a
// customer who reports defects. Items of the 'user' table.
//
// Payload (version 0x109 written; 0x100 to 0x109 read):
//
//   order  field                                  form                 present when
//   1      version                                u16                  always
//   2      deleted                                u8                   0x102 or later
//   3      firstName                              string(255)          always
//   4      lastName                               string(255)          always
//   5      login                                  string(255)          always
//   6      password                               string(255)          always
//   7      notes                                  text8 before 0x108,  always
//                                                 else text
//   8      2 contacts: kind u8, text string(255)                       always
//   9      groupId                                u32                  always
//   10     placementBlock bytes 0-75              raw                  always
//          placementBlock u32 at 84               u32                  above 0x100
//   11     dateLastLogin                          stamp                always
//   12     savedText1-3 string(255) each,                              above 0x102
//          then savedValue1-3 u16 each
//   13     company, address                       string(255) each     above 0x103
//   14     betaSite                               u16                  above 0x103
//   15     email                                  string(255)          above 0x103
//   16     computerConfig                         in-line CTestConfig  above 0x104
//   17     mailMethod                             u16                  above 0x105
//   18     notifyFlags u32, isCustomer u16, then placementBlock row 2:  above 0x106
//          u32 at 14, u16 at 18, 20, 22
//   19     reservedValue u16, listValue u32                            0x109 or later
//   20     8 column tables                        idlist each          0x109 or later
//
// The placement block, 88 bytes, holds the saved places of the person's list and record
// windows. It is kept as it is stored, values big-endian: bytes 0-3, then eight rows of
// one u32 and three u16 at 4, 14, 24, 34, 44, 54, 64 and 74, then a u32 at 84. Only its
// first 76 bytes travel as one run (so the last row keeps just the high half of its u32);
// the u32 at 84 and row 2 travel on their own. Bytes that the record does not hold read
// as 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "people/record_fields.h"
#include "people/test_config.h"
#include "platform/clock.h"
#include "session/item_table.h"
#include "session/login.h"
#include "session/record_item.h"

namespace qm {

class CUserGroup;
class CUserGroupTable;

class CUser : public RecordItem, public LoginAccount {
 public:
  static constexpr std::uint16_t kOldestVersion = 0x100;
  static constexpr std::uint16_t kVersion = 0x109;

  static constexpr std::size_t kContactCount = 2;
  static constexpr std::size_t kSavedTextCount = 3;
  static constexpr std::size_t kColumnTableCount = 8;
  // The element size of the column tables of a new person: field numbers as u16.
  static constexpr std::uint32_t kColumnElementSize = 2;
  using PlacementBlock = PreferenceBlock;

  // The bits of notifyFlags.
  static constexpr std::uint32_t kNotifyOnChanges = 2;
  static constexpr std::uint32_t kNotForOwnChanges = 8;
  static constexpr std::uint32_t kOnlyAssignedToMe = 16;

  CUser();

  void WriteTo(PayloadWriter& out) const override;
  // Reads a record of version 0x100 to 0x109; throws ItemError(kItemFailed) for another,
  // and for an in-line configuration of a version it does not know.
  void ReadFrom(PayloadReader& in) override;

  // "Last, First": the last name, ", " when both names exist, the first name.
  std::string GetName() const override;
  // "First Last", for letters and mail.
  std::string GetFullName() const;
  // By GetName, ignoring case; a missing person sorts first.
  static int Compare(const CUser* a, const CUser* b);

  const std::string& GetFirstName() const { return firstName_.str(); }
  void SetFirstName(std::string_view text) { firstName_ = text; }
  const std::string& GetLastName() const { return lastName_.str(); }
  void SetLastName(std::string_view text) { lastName_ = text; }
  const std::string& GetLogin() const { return login_.str(); }
  void SetLogin(std::string_view text) { login_ = text; }
  // Kept as plain text.
  const std::string& GetPassword() const { return password_.str(); }
  void SetPassword(std::string_view text) { password_ = text; }

  // i of 0 or 1. The record keeps the low byte of a kind.
  std::uint32_t GetContactKind(std::size_t i) const { return contacts_.at(i).kind; }
  void SetContactKind(std::size_t i, std::uint32_t kind) { contacts_.at(i).kind = kind; }
  const std::string& GetContactText(std::size_t i) const { return contacts_.at(i).text.str(); }
  void SetContactText(std::size_t i, std::string_view text) { contacts_.at(i).text = text; }

  const std::string& GetNotes() const { return notes_.str(); }
  void SetNotes(std::string_view text) { notes_ = text; }

  // The CUserGroup record id; 0 for none.
  std::uint32_t GetGroupId() const { return groupId_; }
  std::string_view LoginName() const override { return GetLogin(); }
  std::string_view LoginPassword() const override { return GetPassword(); }
  std::uint32_t LoginGroupId() const override { return groupId_; }
  const PreferenceBlock& Preferences() const override { return placementBlock_; }
  void SetPreferences(const PreferenceBlock& block) override { placementBlock_ = block; }
  void SetLastLogin(std::uint32_t stamp) override { dateLastLogin_ = stamp; }
  void SetGroupId(std::uint32_t id) { groupId_ = id; }
  // The person's group in the group table, or null when there is none or it is gone.
  const CUserGroup* GetGroup(const CUserGroupTable& groups) const;
  // The group's name, or "None".
  std::string GetGroupName(const CUserGroupTable& groups) const;

  const PlacementBlock& GetPlacementBlock() const { return placementBlock_; }
  void SetPlacementBlock(const PlacementBlock& block) { placementBlock_ = block; }

  std::uint32_t GetDateLastLogin() const { return dateLastLogin_; }
  void SetDateLastLogin(std::uint32_t stamp) { dateLastLogin_ = stamp; }

  // i of 0 to 2: a saved text and its value go together.
  const std::string& GetSavedText(std::size_t i) const { return savedTexts_.at(i).str(); }
  std::uint16_t GetSavedValue(std::size_t i) const { return savedValues_.at(i); }
  void SetSavedText(std::size_t i, std::string_view text, std::uint16_t value);

  const std::string& GetCompany() const { return company_.str(); }
  void SetCompany(std::string_view text) { company_ = text; }
  const std::string& GetAddress() const { return address_.str(); }
  void SetAddress(std::string_view text) { address_ = text; }
  std::uint16_t GetBetaSite() const { return betaSite_; }
  void SetBetaSite(std::uint16_t flag) { betaSite_ = flag; }
  const std::string& GetEmail() const { return email_.str(); }
  void SetEmail(std::string_view text) { email_ = text; }
  std::uint16_t GetMailMethod() const { return mailMethod_; }
  void SetMailMethod(std::uint16_t method) { mailMethod_ = method; }
  std::uint32_t GetNotifyFlags() const { return notifyFlags_; }
  void SetNotifyFlags(std::uint32_t flags) { notifyFlags_ = flags; }

  bool IsCustomer() const { return isCustomer_ != 0; }
  void SetCustomer(bool customer) { isCustomer_ = customer ? 1 : 0; }

  // The person's own machine.
  CTestConfig& GetComputerConfig() { return computerConfig_; }
  const CTestConfig& GetComputerConfig() const { return computerConfig_; }

  std::uint16_t GetReservedValue() const { return reservedValue_; }
  void SetReservedValue(std::uint16_t value) { reservedValue_ = value; }
  std::uint32_t GetListValue() const { return listValue_; }
  void SetListValue(std::uint32_t value) { listValue_ = value; }

  // i of 0 to 7: the default columns of one of the person's list windows.
  const IdList& GetColumns(std::size_t i) const { return columns_.at(i); }
  void SetColumns(std::size_t i, const IdList& columns) { columns_.at(i) = columns; }

 private:
  struct Contact {
    std::uint32_t kind = 0;  // names the label; the text is a telephone number or the like
    BoundedText<35> text;
  };

  // The widths of the fields less their terminators.
  BoundedText<32> password_;
  BoundedText<32> login_;
  BoundedText<32> firstName_;
  BoundedText<32> lastName_;
  std::array<Contact, kContactCount> contacts_;
  BoundedText<kTextCapacity> notes_;
  std::uint32_t groupId_ = 0;
  PlacementBlock placementBlock_{};
  std::uint32_t dateLastLogin_ = platform::kNoStamp;
  std::array<BoundedText<63>, kSavedTextCount> savedTexts_;
  std::array<std::uint16_t, kSavedTextCount> savedValues_{};
  BoundedText<63> company_;
  BoundedText<256> address_;
  std::uint16_t betaSite_ = 0;
  BoundedText<63> email_;
  std::uint16_t mailMethod_ = 0;
  std::uint32_t notifyFlags_ = 0;
  std::uint16_t isCustomer_ = 0;
  CTestConfig computerConfig_;
  std::uint16_t reservedValue_ = 0;
  std::uint32_t listValue_ = 0;
  std::array<IdList, kColumnTableCount> columns_;
};

// The 'user' table, users and customers together, sorted by GetName ignoring case.
class CUserTable : public ItemTableOf<CUser> {
 public:
  CUserTable(CProjectStore* store, ui::Ui& ui) : ItemTableOf(store, MakeTag("user"), ui) {}

  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;
};

}  // namespace qm
