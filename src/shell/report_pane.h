// The reported-by pane of the defect window: one report's fields as the person edits them,
// the checks they pass before they go back into the report, and the names of its choices.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "defects/reported_by.h"

namespace qm {

// The entries of the configuration combo, in order, by the kind each stands for: the
// finder's own computer, a standard test configuration of the project, or one described
// for this report alone.
inline constexpr std::array<std::string_view, 3> kConfigKindEntries = {
    "User's Computer Configuration", "Standard Test Configuration",
    "Custom Computer Configuration"};

// The fields of one report as the pane holds them. Texts keep the stored line ends (a bare
// CR); the date is as typed, empty for none.
struct ReportPane {
  std::uint32_t foundById = 0;  // 0: unknown
  std::string dateText;
  std::string contact;
  std::string versionFound;
  std::uint32_t reproducedId = 0;
  std::string description;
  std::string steps;
  std::uint16_t configKind = CReportedBy::kNoConfig;
  std::uint32_t testConfigId = 0;  // with the standard kind only
  std::string otherHardware;

  friend bool operator==(const ReportPane&, const ReportPane&) = default;
};

// The fields a refusal puts the focus on.
enum class ReportField { kDateFound, kStoredConfig };

struct ReportRefusal {
  std::string_view message;
  ReportField focus;
};

// What the pane shows of a report.
ReportPane PaneOf(const CReportedBy& report);
// Why the pane cannot go back into its report; nothing when it can.
std::optional<ReportRefusal> CheckPane(const ReportPane& pane);
// Writes a pane that passed its checks into the report. The contact and the version are
// cut to what the record holds, never inside a character; a custom configuration stays
// while the kind stays custom.
void StorePane(const ReportPane& pane, CReportedBy& report);

}  // namespace qm
