// The names of the rights, in the order of their numbers.
#include "session/rights.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace qm {
namespace {

constexpr std::array<std::string_view, kRightCount> kNames = {"Add Defects",
                                                              "View Defects",
                                                              "Edit Defects",
                                                              "Delete Defects",
                                                              "Add Users",
                                                              "View Users",
                                                              "Edit Users",
                                                              "Delete Users",
                                                              "Add Users Groups",
                                                              "View User Groups",
                                                              "Edit User Groups",
                                                              "Delete User Groups",
                                                              "See Security Tab",
                                                              "Add Test Configs",
                                                              "View Test Configs",
                                                              "Edit Test Configs",
                                                              "Delete Test Configs",
                                                              "Add Filters",
                                                              "View Filters",
                                                              "Edit Filters",
                                                              "Delete Filters",
                                                              "Add Reports",
                                                              "View Reports",
                                                              "Edit Reports",
                                                              "Delete Reports",
                                                              "Run Reports",
                                                              "Change Project Info",
                                                              "Change Project Prefs",
                                                              "Set Up Project Fields",
                                                              "List Active Users",
                                                              "Assign Defect",
                                                              "Fix Defects",
                                                              "Verify Defects",
                                                              "Close Defects",
                                                              "Re-Open Defects",
                                                              "Compact Project",
                                                              "Set Own Password",
                                                              "Edit User Login",
                                                              "Edit Closed Defects",
                                                              "Estimate Resolution",
                                                              "Add a Comment",
                                                              "Add Tasks",
                                                              "View Tasks",
                                                              "Edit Tasks",
                                                              "Delete Tasks",
                                                              "Add/Edit Release Notes",
                                                              "Merge Defects",
                                                              "Backup Project",
                                                              "Duplicate Defects",
                                                              "Duplicate Users",
                                                              "Duplicate User Groups",
                                                              "Duplicate Test Configs",
                                                              "Duplicate Filters",
                                                              "Duplicate Reports",
                                                              "Duplicate Customers",
                                                              "Add Customers",
                                                              "View Customers",
                                                              "Edit Customers",
                                                              "Delete Customers",
                                                              "Attachment Settings",
                                                              "Toggle Single/Multi-User",
                                                              "Assign Defect Numbers",
                                                              "Renumber Defects",
                                                              "Setup Defect Numbering",
                                                              "Make User a Customer",
                                                              "Make Customer a User",
                                                              "Save Project Template"};

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

}  // namespace

std::string_view RightName(Right right) {
  const std::uint32_t n = RightNumber(right);
  return n == 0 || n > kRightCount ? std::string_view() : kNames[n - 1];
}

std::optional<Right> FindRight(std::string_view numberOrName) {
  std::uint32_t n = 0;
  const char* end = numberOrName.data() + numberOrName.size();
  if (const auto [ptr, ec] = std::from_chars(numberOrName.data(), end, n);
      ec == std::errc() && ptr == end) {
    if (n >= 1 && n <= kRightCount) return static_cast<Right>(n);
    return std::nullopt;
  }
  for (std::uint32_t i = 0; i < kRightCount; ++i) {
    if (SameIgnoringCase(kNames[i], numberOrName)) return static_cast<Right>(i + 1);
  }
  return std::nullopt;
}

std::string RightRefusal(Right right) {
  return "Your user group does not allow \"" + std::string(RightName(right)) + "\".";
}

}  // namespace qm
