// What the user group window and list do beyond one record: the checks of a group, its
// members kept both in the group and in each user's record, and the deletion of groups with
// the group that inherits their users.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "people/user_group.h"
#include "session/rights.h"
#include "shell/record_window.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;
class CUser;

// Why the group cannot be saved as entered, or nothing when it can.
std::optional<FieldRefusal> ValidateGroup(const ItemTable& groups, const CUserGroup& group);

// The user logged in when that user's group shows its members only the defects assigned to
// them; 0 when the defect list shows every defect.
std::uint32_t OnlyAssignedUser(const CDBDoc& doc);

// Makes the user a member of `groupId` alone (0: of none): the user's record names the
// group, and every group lists the user exactly when it is that one. The records that
// change are saved; false when one could not be.
bool PlaceInGroup(CDBDoc& doc, CUser& user, std::uint32_t groupId);

// Chooses the group that takes the users of the groups being deleted, among `candidates`;
// nothing when the person cancels.
using ChooseHeir =
    std::function<std::optional<std::uint32_t>(const std::vector<const CUserGroup*>& candidates)>;
inline constexpr std::string_view kHeirTitle = "User Group:";
inline constexpr std::string_view kHeirText =
    "All users must belong to a group for security purposes. Please select a group to inherit "
    "the users belonging to the groups you are deleting.";

// "Delete Item" on the group list: groups whose record someone holds are left out with a
// message; a selection of every group is refused; the question is asked with Cancel the
// default; the members of the groups going move to the group `chooseHeir` names. Answers
// how many groups went.
std::uint32_t DeleteGroups(CDBDoc& doc, const std::vector<CUserGroup*>& selection, ui::Ui& ui,
                           const ChooseHeir& chooseHeir);

// Copies of the selected groups that are not locked, named "Copy of" the group, with the
// same rights and no members (a user belongs to one group).
std::vector<CUserGroup*> DuplicateGroups(CDBDoc& doc, const std::vector<CUserGroup*>& selection,
                                         ui::Ui& ui);

// The record window of a user group: its name, description and notes, its members as a
// check list, the rights it denies, the custom-value permissions and "only assigned".
class CGroupWindow : public CRecordWindow {
 public:
  CGroupWindow(CDBDoc& doc, ItemTable& groups, ui::Ui& ui, EditMarks& marks,
               platform::Clock& clock = platform::Clock::System());

  // The group as shown; a view changes its texts and flags here and then calls MarkChanged.
  CUserGroup& group() { return *shown_; }
  void MarkChanged() { changed_ = true; }
  bool fieldsEnabled() const { return fieldsEnabled_; }

  // The users the check list offers: every user who is not a customer, by name.
  std::vector<const CUser*> Candidates() const;
  // Ticks or unticks a user. A member cannot be taken out here, as every user belongs to a
  // group: the message says where to move the user instead.
  std::optional<std::string> SetMember(std::uint32_t userId, bool member);
  void SetDenied(Right right, bool denied);

 protected:
  std::string GetWindowTitle(std::uint16_t mode) const override;
  void LoadFields(const RecordItem& item) override;
  void StoreFields(RecordItem& item) override;
  std::unique_ptr<RecordItem> NewItem() override { return std::make_unique<CUserGroup>(); }
  std::optional<FieldRefusal> ValidateFields() override;
  void AfterAdd(RecordItem& item) override { MoveMembersIn(item); }
  void AfterUpdate(RecordItem& item) override { MoveMembersIn(item); }
  void EnableFields(bool enable) override { fieldsEnabled_ = enable; }
  bool FieldsChanged() const override;
  void ResetForAdd() override;

 private:
  // The users ticked here leave their former groups.
  void MoveMembersIn(const RecordItem& group);

  std::unique_ptr<CUserGroup> shown_;
  std::vector<std::uint32_t> loadedMembers_;
  std::vector<std::uint8_t> loaded_;
  bool changed_ = false;
  bool fieldsEnabled_ = true;
};

}  // namespace qm
