// The shared test configurations: the window's logic and the list's delete and duplicate.
#include "shell/config_window.h"

#include "defects/defect.h"
#include "defects/reported_by.h"
#include "defects/selection_commands.h"
#include "session/db_doc.h"
#include "session/login.h"

namespace qm {

std::optional<FieldRefusal> ValidateConfig(const ItemTable& configs, const CTestConfig& config) {
  if (config.name.str().empty()) {
    return FieldRefusal(
        "Please enter a unique name for this test configuration to disinguish it from other "
        "configurations.",
        "name");
  }
  for (std::uint32_t p = 1; p <= configs.count(); ++p) {
    const RecordItem& other = *configs.ItemAt(p);
    if (!other.deleted && other.GetId() != config.GetId() &&
        SameLoginText(other.GetName(), config.name.str())) {
      return FieldRefusal(
          "A test configuration with this name already exists, please enter a unique name.",
          "name");
    }
  }
  return std::nullopt;
}

std::uint32_t DeleteConfigs(CDBDoc& doc, const std::vector<CTestConfig*>& selection, ui::Ui& ui) {
  const std::vector<CTestConfig*> going = LeaveOutLocked(
      doc, kConfigTag, selection, ui,
      "One or more test configurations will not be deleted because they are in use by another "
      "user.");
  if (going.empty()) return 0;
  std::uint32_t naming = 0;
  const ItemTable& defects = *doc.GetTable(kDefectTag);
  for (std::uint32_t p = 1; p <= defects.count(); ++p) {
    const auto& defect = static_cast<const CDefect&>(*defects.ItemAt(p));
    for (std::uint32_t r = 1; r <= defect.ReportedByCount(); ++r) {
      const CReportedBy& report = *defect.ReportedByAt(r);
      for (const CTestConfig* config : going) {
        if (report.configKind() == CReportedBy::kStoredConfig &&
            report.testConfigId() == config->GetId()) {
          ++naming;
        }
      }
    }
  }
  if (naming > 0) {
    const std::string count = std::to_string(naming);
    ui.Tell(count + (naming == 1 ? " report of a defect names" : " reports of defects name") +
                " a configuration being deleted; they will show no configuration.",
            ui::Icon::kInformation);
  }
  if (!ConfirmDeleteForGood(ui)) return 0;
  return DeleteForGood(doc, *doc.GetTable(kConfigTag), {going.begin(), going.end()});
}

std::vector<CTestConfig*> DuplicateConfigs(CDBDoc& doc, const std::vector<CTestConfig*>& selection,
                                           ui::Ui& ui) {
  return DuplicateNamed(doc, *doc.GetTable(kConfigTag), selection, ui,
                        "One or more test configurations will not be duplicated because they "
                        "are in use by another user.");
}

CConfigWindow::CConfigWindow(CDBDoc& doc, ItemTable& configs, ui::Ui& ui, EditMarks& marks,
                             platform::Clock& clock)
    : CRecordWindow(doc, configs, ui, marks, clock), shown_(std::make_unique<CTestConfig>()) {}

std::string CConfigWindow::GetWindowTitle(std::uint16_t /*mode*/) const {
  const std::string name = shown_->name.str();
  return "Test Configuration" + (name.empty() ? "" : " - " + name);
}

void CConfigWindow::LoadFields(const RecordItem& item) {
  shown_->CopyPayloadFrom(item);
  shown_->SetId(item.GetId());
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CConfigWindow::StoreFields(RecordItem& item) {
  const std::uint32_t id = item.GetId();
  item.CopyPayloadFrom(*shown_);
  item.SetId(id);
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CConfigWindow::ResetForAdd() {
  shown_ = std::make_unique<CTestConfig>();
  loaded_ = shown_->Pack();
  changed_ = false;
}

}  // namespace qm
