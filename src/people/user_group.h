// CUserGroup, the security of its members: the rights they lack, which defects they
// see, and who they are. Items of the 'ugrp' table.
//
// Payload (version 0x103 written; 0x100 to 0x103 read):
//
//   order  field             form                                        present when
//   1      version           u16                                         always
//   2      deleted           u8                                          0x101 or later
//   3      name              string(255)                                 always
//   4      description       string(255)                                 always
//   5      notes             string(255)                                 always
//   6      userIds           idlist: u32 element size 4, u32 count, ids  always
//   7      disabledCommands  idlist: u32 element size 4, u32 count, ids  always
//   8      customFlags       u16                                         0x102 or later
//   9      defectFilterId    u32                                         0x103 or later
//   10     onlyAssigned      u16                                         0x103 or later
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "people/record_fields.h"
#include "session/item_table.h"
#include "session/login.h"
#include "session/record_item.h"

namespace qm {

class CUserGroup : public RecordItem, public RightsGroup {
 public:
  static constexpr std::uint16_t kOldestVersion = 0x100;
  static constexpr std::uint16_t kVersion = 0x103;

  void WriteTo(PayloadWriter& out) const override;
  // Reads a record of version 0x100 to 0x103; throws ItemError(kItemFailed) for another.
  void ReadFrom(PayloadReader& in) override;

  std::string GetName() const override { return name.str(); }

  // The members, by user record id, in the order they were added.
  const std::vector<std::uint32_t>& userIds() const { return userIds_; }
  bool HasUser(std::uint32_t userId) const;
  // Adds a user not yet a member.
  void AddUser(std::uint32_t userId);
  void RemoveUser(std::uint32_t userId);

  // The right numbers (1 to 67) that members lack, in the order they were denied.
  const std::vector<std::uint32_t>& disabledCommands() const { return disabledCommands_; }
  bool IsCommandDisabled(std::uint32_t right) const;
  bool DeniesRight(std::uint32_t right) const override { return IsCommandDisabled(right); }
  void SetCommandDisabled(std::uint32_t right, bool disabled);

  // The widths of the fields less their terminators.
  BoundedText<32> name;
  BoundedText<255> description;
  BoundedText<258> notes;
  // Bit n allows members to type a new value into a field's list, as kCustomValueLabels
  // names it.
  std::uint16_t customFlags = 0;
  std::uint32_t defectFilterId = 0;  // the filter that limits what members see; 0 none
  std::uint16_t onlyAssigned = 0;    // members see only the defects assigned to them

 private:
  std::vector<std::uint32_t> userIds_;
  std::vector<std::uint32_t> disabledCommands_;
};

// The group window's check boxes of the custom-value permissions, bit n of the flags at n.
inline constexpr const char* kCustomValueLabels[] = {
    "User can enter custom types",         "User can enter custom severities",
    "User can enter custom products",      "User can enter custom versions",
    "User can enter custom reproducibles", "User can enter custom components"};

// The text form, CR LF line ends: name, description, notes, then "Users in Group: " with a
// line per member named in `users`, "Enabled Commands: " with the name of each right the
// group keeps and "Disabled Commands: " with the rest, each of them a line.
void WriteGroupText(const CUserGroup& group, const ItemTable& users, std::string& out);
// The HTML form: the same in rows of a four-column table, one name to a row.
void WriteGroupHtml(const CUserGroup& group, const ItemTable& users, std::string& out);

// The 'ugrp' table, sorted by name ignoring case.
class CUserGroupTable : public ItemTableOf<CUserGroup> {
 public:
  CUserGroupTable(CProjectStore* store, ui::Ui& ui) : ItemTableOf(store, MakeTag("ugrp"), ui) {}

  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;
};

}  // namespace qm
