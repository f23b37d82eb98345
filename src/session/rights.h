// The rights a user group can deny, one per command of the program and of quillmark-cli
// that a group may keep from its members. Every place that offers or runs such a command
// names it here, by its Right, and asks the session; no other number or name of a right
// is written anywhere else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qm {

// Right n allows the command of the same name; the numbers are those stored in a group's
// disabled commands. kNone stands for a command that needs no right.
enum class Right : std::uint8_t {
  kNone = 0,
  kAddDefects,
  kViewDefects,
  kEditDefects,
  kDeleteDefects,
  kAddUsers,
  kViewUsers,
  kEditUsers,
  kDeleteUsers,
  kAddUserGroups,
  kViewUserGroups,
  kEditUserGroups,
  kDeleteUserGroups,
  kSeeSecurityTab,
  kAddTestConfigs,
  kViewTestConfigs,
  kEditTestConfigs,
  kDeleteTestConfigs,
  kAddFilters,
  kViewFilters,
  kEditFilters,
  kDeleteFilters,
  kAddReports,
  kViewReports,
  kEditReports,
  kDeleteReports,
  kRunReports,
  kChangeProjectInfo,
  kChangeProjectPrefs,
  kSetUpProjectFields,
  kListActiveUsers,
  kAssignDefect,
  kFixDefects,
  kVerifyDefects,
  kCloseDefects,
  kReOpenDefects,
  kCompactProject,
  kSetOwnPassword,
  kEditUserLogin,
  kEditClosedDefects,
  kEstimateResolution,
  kAddComment,
  kAddTasks,
  kViewTasks,
  kEditTasks,
  kDeleteTasks,
  kReleaseNotes,
  kMergeDefects,
  kBackupProject,
  kDuplicateDefects,
  kDuplicateUsers,
  kDuplicateUserGroups,
  kDuplicateTestConfigs,
  kDuplicateFilters,
  kDuplicateReports,
  kDuplicateCustomers,
  kAddCustomers,
  kViewCustomers,
  kEditCustomers,
  kDeleteCustomers,
  kAttachmentSettings,
  kToggleSingleMultiUser,
  kAssignDefectNumbers,
  kRenumberDefects,
  kSetUpDefectNumbering,
  kMakeUserCustomer,
  kMakeCustomerUser,
  kSaveProjectTemplate,
};

inline constexpr std::uint32_t kRightCount = 67;

constexpr std::uint32_t RightNumber(Right right) { return static_cast<std::uint32_t>(right); }

// "Add Defects", as the group window lists it; empty for kNone.
std::string_view RightName(Right right);
// A right by its number (1 to 67) or its name, ignoring case.
std::optional<Right> FindRight(std::string_view numberOrName);
// What a person is told when the group keeps a command from them.
std::string RightRefusal(Right right);

// The five commands every list offers on its items, and the rights they ask on one list.
struct ItemRights {
  Right add;
  Right view;
  Right edit;
  Right remove;
  Right duplicate;
};

}  // namespace qm
