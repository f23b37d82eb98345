// CTaskWindow, the logic of the record window of a task the user writes: a reminder or a
// notification in the workbook. Tasks that stand for defects open the defect's window.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "defects/task.h"
#include "shell/record_window.h"

namespace qm {

class CTaskWindow : public CRecordWindow {
 public:
  CTaskWindow(CDBDoc& doc, CTaskTable& tasks, ui::Ui& ui, EditMarks& marks,
              platform::Clock& clock = platform::Clock::System());

  // The task as shown; a view changes it here and then calls MarkChanged.
  CTask& task() { return *shown_; }
  void MarkChanged() { changed_ = true; }
  // "Date Needed" as typed: a date ParseDate reads, or empty for none. The checks refuse
  // any other text, and saving takes the date from here.
  std::string dateNeededText;

 protected:
  std::string GetWindowTitle(std::uint16_t mode) const override;
  void LoadFields(const RecordItem& item) override;
  // A new task with no owner becomes the user's; its entry date is the day it is added.
  void StoreFields(RecordItem& item) override;
  std::optional<FieldRefusal> ValidateFields() override;
  void EnableFields(bool) override {}
  bool FieldsChanged() const override;
  void ResetForAdd() override;

 private:
  platform::Clock& clock_;
  std::unique_ptr<CTask> shown_;
  std::vector<std::uint8_t> loaded_;
  bool changed_ = false;
};

}  // namespace qm
