// The reported-by pane's fields, their checks and their way back into the report.
#include "shell/report_pane.h"

#include "defects/defect_event.h"
#include "defects/event_dialogs.h"
#include "session/payload.h"

namespace qm {
namespace {

// versionFound stands in 33 bytes: a length byte and the text.
constexpr std::size_t kVersionCapacity = 32;

}  // namespace

ReportPane PaneOf(const CReportedBy& report) {
  return {report.foundById,    FormatDate(report.dateFound), report.contact.str(),
          report.versionFound, report.reproducedId,          report.description,
          report.steps,        report.configKind(),          report.testConfigId(),
          report.otherHardware};
}

std::optional<ReportRefusal> CheckPane(const ReportPane& pane) {
  const bool noDate = pane.dateText.find_first_not_of(' ') == std::string::npos;
  if (!noDate && !ParseDate(pane.dateText)) {
    return ReportRefusal{
        "Please enter the date this defect was found as M/D/YYYY, or leave it empty.",
        ReportField::kDateFound};
  }
  if (pane.configKind == CReportedBy::kStoredConfig && pane.testConfigId == 0) {
    return ReportRefusal{"Please choose the standard test configuration this defect was found on.",
                         ReportField::kStoredConfig};
  }
  return std::nullopt;
}

void StorePane(const ReportPane& pane, CReportedBy& report) {
  report.foundById = pane.foundById;
  report.dateFound = ParseDate(pane.dateText).value_or(platform::kNoStamp);
  report.contact = pane.contact;
  report.versionFound = std::string(CutToCapacity(pane.versionFound, kVersionCapacity));
  report.reproducedId = pane.reproducedId;
  report.description = pane.description;
  report.steps = pane.steps;
  report.SetConfigKind(pane.configKind);
  if (pane.configKind == CReportedBy::kStoredConfig) report.SetTestConfigId(pane.testConfigId);
  report.otherHardware = pane.otherHardware;
}

}  // namespace qm
