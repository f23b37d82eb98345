// The task window's logic.
#include "shell/task_window.h"

#include "defects/event_dialogs.h"
#include "session/db_doc.h"

namespace qm {
namespace {

bool Blank(std::string_view text) {
  return text.find_first_not_of(" \t") == std::string_view::npos;
}

}  // namespace

CTaskWindow::CTaskWindow(CDBDoc& doc, CTaskTable& tasks, ui::Ui& ui, EditMarks& marks,
                         platform::Clock& clock)
    : CRecordWindow(doc, tasks, ui, marks, clock),
      clock_(clock),
      shown_(std::make_unique<CTask>(tasks.lookups())) {}

std::string CTaskWindow::GetWindowTitle(std::uint16_t /*mode*/) const { return "Task"; }

void CTaskWindow::LoadFields(const RecordItem& item) {
  shown_->CopyPayloadFrom(item);
  dateNeededText = FormatDate(shown_->dateNeeded);
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CTaskWindow::StoreFields(RecordItem& item) {
  shown_->dateNeeded = ParseDate(dateNeededText).value_or(platform::kNoStamp);
  dateNeededText = FormatDate(shown_->dateNeeded);
  if (shown_->ownerId == 0) shown_->ownerId = doc().currentUserId();
  if (shown_->dateEntered == platform::kNoStamp) shown_->dateEntered = clock_.Now();
  const std::uint32_t id = item.GetId();
  item.CopyPayloadFrom(*shown_);
  item.SetId(id);
  loaded_ = shown_->Pack();
  changed_ = false;
}

std::optional<FieldRefusal> CTaskWindow::ValidateFields() {
  if (Blank(shown_->toDo.str())) return FieldRefusal("Please enter what is to be done.", "to do");
  if (!Blank(dateNeededText) && !ParseDate(dateNeededText)) {
    return FieldRefusal(
        "Please enter the date needed as M/D/YYYY or YYYY-MM-DD, or leave the field empty.",
        "date needed");
  }
  return std::nullopt;
}

bool CTaskWindow::FieldsChanged() const {
  return changed_ || shown_->Pack() != loaded_ || dateNeededText != FormatDate(shown_->dateNeeded);
}

void CTaskWindow::ResetForAdd() {
  shown_ = std::make_unique<CTask>(static_cast<CTaskTable&>(table()).lookups());
  dateNeededText.clear();
  loaded_ = shown_->Pack();
  changed_ = false;
}

}  // namespace qm
