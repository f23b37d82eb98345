// The task window's logic.
#include "shell/task_window.h"

#include "defects/event_dialogs.h"
#include "session/db_doc.h"

namespace qm {
CTaskWindow::CTaskWindow(CDBDoc& doc, CTaskTable& tasks, ui::Ui& ui, EditMarks& marks,
                         platform::Clock& clock)
    : CRecordWindow(doc, tasks, ui, marks, clock),
      clock_(clock),
      shown_(std::make_unique<CTask>(tasks.lookups())) {}

std::string CTaskWindow::GetWindowTitle(std::uint16_t /*mode*/) const { return "Task"; }

void CTaskWindow::LoadFields(const RecordItem& item) {
  shown_->CopyPayloadFrom(item);
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CTaskWindow::StoreFields(RecordItem& item) {
  if (shown_->ownerId == 0) shown_->ownerId = doc().currentUserId();
  if (shown_->dateEntered == platform::kNoStamp) shown_->dateEntered = clock_.Now();
  const std::uint32_t id = item.GetId();
  item.CopyPayloadFrom(*shown_);
  item.SetId(id);
  loaded_ = shown_->Pack();
  changed_ = false;
}

std::optional<std::string> CTaskWindow::ValidateFields() {
  if (shown_->toDo.str().empty()) return std::string("Please enter what is to be done.");
  return std::nullopt;
}

bool CTaskWindow::FieldsChanged() const { return changed_ || shown_->Pack() != loaded_; }

void CTaskWindow::ResetForAdd() {
  shown_ = std::make_unique<CTask>(static_cast<CTaskTable&>(table()).lookups());
  loaded_ = shown_->Pack();
  changed_ = false;
}

bool CTaskWindow::SetDateNeeded(const std::string& text) {
  if (text.find_first_not_of(' ') == std::string::npos) {
    shown_->dateNeeded = platform::kNoStamp;
    return true;
  }
  const std::optional<std::uint32_t> date = ParseDate(text);
  if (!date) return false;
  shown_->dateNeeded = *date;
  return true;
}

}  // namespace qm
