// The user group window's logic, the membership kept on both sides, and the group list's
// delete and duplicate.
#include "shell/group_window.h"

#include <algorithm>

#include "defects/selection_commands.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/login.h"

namespace qm {
namespace {

CUserGroup& GroupOf(RecordItem& item) { return static_cast<CUserGroup&>(item); }

std::vector<CUser*> Users(CDBDoc& doc) {
  std::vector<CUser*> users;
  ItemTable& people = *doc.GetTable(kUserTag);
  for (std::uint32_t p = 1; p <= people.count(); ++p) {
    auto* person = static_cast<CUser*>(people.ItemAt(p));
    if (!person->deleted && !person->IsCustomer()) users.push_back(person);
  }
  return users;
}

}  // namespace

std::optional<FieldRefusal> ValidateGroup(const ItemTable& groups, const CUserGroup& group) {
  if (group.name.str().empty()) {
    return FieldRefusal(
        "Please enter a unique name for this user group to disinguish it from other groups.",
        "name");
  }
  for (std::uint32_t p = 1; p <= groups.count(); ++p) {
    const RecordItem& other = *groups.ItemAt(p);
    if (!other.deleted && other.GetId() != group.GetId() &&
        SameLoginText(other.GetName(), group.name.str())) {
      return FieldRefusal("A user group with this name already exists, please enter a unique name.",
                          "name");
    }
  }
  return std::nullopt;
}

std::uint32_t OnlyAssignedUser(const CDBDoc& doc) {
  const auto* user = dynamic_cast<const CUser*>(doc.currentUser());
  if (user == nullptr) return 0;
  const CUserGroup* group =
      user->GetGroup(static_cast<const CUserGroupTable&>(*doc.GetTable(kGroupTag)));
  return group != nullptr && group->onlyAssigned != 0 ? user->GetId() : 0;
}

bool PlaceInGroup(CDBDoc& doc, CUser& user, std::uint32_t groupId) {
  ItemTable& groups = *doc.GetTable(kGroupTag);
  bool saved = true;
  for (std::uint32_t p = 1; p <= groups.count(); ++p) {
    CUserGroup& group = GroupOf(*groups.ItemAt(p));
    const bool member = group.GetId() == groupId;
    if (group.HasUser(user.GetId()) == member) continue;
    if (member) {
      group.AddUser(user.GetId());
    } else {
      group.RemoveUser(user.GetId());
    }
    saved = groups.SaveItem(group) == DBStatus::kOk && saved;
  }
  if (user.GetGroupId() != groupId) {
    user.SetGroupId(groupId);
    saved = doc.GetTable(kUserTag)->SaveItem(user) == DBStatus::kOk && saved;
  }
  return saved;
}

std::uint32_t DeleteGroups(CDBDoc& doc, const std::vector<CUserGroup*>& selection, ui::Ui& ui,
                           const ChooseHeir& chooseHeir) {
  const std::vector<CUserGroup*> going = LeaveOutLocked(
      doc, kGroupTag, selection, ui,
      "One or more user groups will not be deleted because they are in use by another user.");
  if (going.empty()) return 0;
  ItemTable& groups = *doc.GetTable(kGroupTag);
  std::vector<const CUserGroup*> staying;
  for (std::uint32_t p = 1; p <= groups.count(); ++p) {
    const CUserGroup& group = GroupOf(*groups.ItemAt(p));
    if (!group.deleted && std::find(going.begin(), going.end(), &group) == going.end()) {
      staying.push_back(&group);
    }
  }
  if (staying.empty()) {
    ui.Tell(
        "If you remove all user groups you will not be able to access the project file. "
        "Deselect one user group.",
        ui::Icon::kWarning);
    return 0;
  }
  if (!ConfirmDeleteForGood(ui)) return 0;
  std::vector<CUser*> orphans;
  for (CUser* user : Users(doc)) {
    for (const CUserGroup* group : going) {
      if (group->HasUser(user->GetId()) || user->GetGroupId() == group->GetId()) {
        orphans.push_back(user);
        break;
      }
    }
  }
  std::uint32_t heir = 0;
  if (!orphans.empty()) {
    const std::optional<std::uint32_t> chosen = chooseHeir(staying);
    if (!chosen) return 0;
    heir = *chosen;
  }
  for (CUser* user : orphans) (void)PlaceInGroup(doc, *user, heir);
  return DeleteForGood(doc, groups, {going.begin(), going.end()});
}

std::vector<CUserGroup*> DuplicateGroups(CDBDoc& doc, const std::vector<CUserGroup*>& selection,
                                         ui::Ui& ui) {
  // A user is in one group only: the copy starts without members.
  return DuplicateNamed<CUserGroup>(
      doc, *doc.GetTable(kGroupTag), selection, ui,
      "One or more user groups will not be duplicated because they are in use by another user.",
      [](CUserGroup& copy) {
        const std::vector<std::uint32_t> members = copy.userIds();
        for (const std::uint32_t id : members) copy.RemoveUser(id);
      });
}

// ---- the window ---------------------------------------------------------------------------

CGroupWindow::CGroupWindow(CDBDoc& doc, ItemTable& groups, ui::Ui& ui, EditMarks& marks,
                           platform::Clock& clock)
    : CRecordWindow(doc, groups, ui, marks, clock), shown_(std::make_unique<CUserGroup>()) {}

std::vector<const CUser*> CGroupWindow::Candidates() const {
  std::vector<const CUser*> users;
  for (const CUser* user : Users(doc())) users.push_back(user);
  return users;
}

std::optional<std::string> CGroupWindow::SetMember(std::uint32_t userId, bool member) {
  if (member) {
    shown_->AddUser(userId);
    return std::nullopt;
  }
  if (std::find(loadedMembers_.begin(), loadedMembers_.end(), userId) != loadedMembers_.end()) {
    return "Every user belongs to a user group. To move this user, tick the user in the group "
           "that is to take the user.";
  }
  shown_->RemoveUser(userId);
  return std::nullopt;
}

void CGroupWindow::SetDenied(Right right, bool denied) {
  shown_->SetCommandDisabled(RightNumber(right), denied);
}

std::string CGroupWindow::GetWindowTitle(std::uint16_t /*mode*/) const {
  const std::string name = shown_->name.str();
  return "User Group" + (name.empty() ? "" : " - " + name);
}

void CGroupWindow::LoadFields(const RecordItem& item) {
  shown_->CopyPayloadFrom(item);
  shown_->SetId(item.GetId());
  loadedMembers_ = shown_->userIds();
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CGroupWindow::StoreFields(RecordItem& item) {
  const std::uint32_t id = item.GetId();
  item.CopyPayloadFrom(*shown_);
  item.SetId(id);
  loaded_ = shown_->Pack();
  changed_ = false;
}

std::optional<FieldRefusal> CGroupWindow::ValidateFields() {
  return ValidateGroup(table(), *shown_);
}

bool CGroupWindow::FieldsChanged() const { return changed_ || shown_->Pack() != loaded_; }

void CGroupWindow::ResetForAdd() {
  shown_ = std::make_unique<CUserGroup>();
  loadedMembers_.clear();
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CGroupWindow::MoveMembersIn(const RecordItem& group) {
  ItemTable& people = *doc().GetTable(kUserTag);
  for (const std::uint32_t id : static_cast<const CUserGroup&>(group).userIds()) {
    if (auto* user = static_cast<CUser*>(people.ItemById(id))) {
      (void)PlaceInGroup(doc(), *user, group.GetId());
    }
  }
  loadedMembers_ = shown_->userIds();
}

}  // namespace qm
