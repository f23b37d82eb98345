// What the test configuration window and list do beyond one record: the checks of a shared
// configuration, and the list's delete and duplicate.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "people/test_config.h"
#include "shell/record_window.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

// Why a configuration of the table cannot be saved as entered, or nothing when it can. A
// configuration inside a person or a report has no name to check.
std::optional<FieldRefusal> ValidateConfig(const ItemTable& configs, const CTestConfig& config);

// "Delete Item" on the configuration list: those whose record someone holds are left out
// with a message; the question names the reports of defects that name a configuration
// going, which then show none. Answers how many went.
std::uint32_t DeleteConfigs(CDBDoc& doc, const std::vector<CTestConfig*>& selection, ui::Ui& ui);
// Copies named "Copy of" each selected configuration that is not locked.
std::vector<CTestConfig*> DuplicateConfigs(CDBDoc& doc, const std::vector<CTestConfig*>& selection,
                                           ui::Ui& ui);

// The record window of a shared test configuration.
class CConfigWindow : public CRecordWindow {
 public:
  CConfigWindow(CDBDoc& doc, ItemTable& configs, ui::Ui& ui, EditMarks& marks,
                platform::Clock& clock = platform::Clock::System());

  // The configuration as shown; a view changes it here and then calls MarkChanged.
  CTestConfig& config() { return *shown_; }
  void MarkChanged() { changed_ = true; }

 protected:
  std::string GetWindowTitle(std::uint16_t mode) const override;
  void LoadFields(const RecordItem& item) override;
  void StoreFields(RecordItem& item) override;
  std::unique_ptr<RecordItem> NewItem() override { return std::make_unique<CTestConfig>(); }
  std::optional<FieldRefusal> ValidateFields() override { return ValidateConfig(table(), *shown_); }
  void EnableFields(bool /*enable*/) override {}
  bool FieldsChanged() const override { return changed_ || shown_->Pack() != loaded_; }
  void ResetForAdd() override;

 private:
  std::unique_ptr<CTestConfig> shown_;
  std::vector<std::uint8_t> loaded_;
  bool changed_ = false;
};

}  // namespace qm
