// The record window's logic: modes, stepping, the record lock with its retry, and saving.
#include "shell/record_window.h"

#include <cstdio>
#include <utility>

#include "session/db_doc.h"
#include "session/record_notice.h"
#include "store/store_error.h"

namespace qm {
namespace {

std::string WithStatus(const char* format, DBStatus status) {
  char text[160];
  std::snprintf(text, sizeof text, format, static_cast<int>(status));
  return text;
}

}  // namespace

CRecordWindow* EditMarks::HolderOf(const RecordItem* item) const {
  auto found = holders_.find(item);
  return found == holders_.end() ? nullptr : found->second;
}

CRecordWindow::CRecordWindow(CDBDoc& doc, ItemTable& table, ui::Ui& ui, EditMarks& marks,
                             platform::Clock& clock)
    : doc_(doc), table_(table), ui_(ui), marks_(marks), clock_(clock) {
  next_.tip = "Next Record";
  previous_.tip = "Previous Record";
  lockedBy_.label = "Locked By?";
  lockedBy_.tip = "Locked By?";
  lockedBy_.visible = false;
}

CRecordWindow::~CRecordWindow() { ReleaseLock(); }

bool CRecordWindow::UsesStoreLocks() const { return doc_.multiUser() && doc_.store() != nullptr; }

void CRecordWindow::Open(std::uint16_t mode, std::vector<RecordItem*> browse, std::uint32_t start,
                         bool readOnly) {
  mode_ = mode;
  readOnly_ = readOnly;
  browse_ = std::move(browse);
  position_ = browse_.empty() ? 0 : start;
  SetStepButtons();
  SetButtons();
  if (mode_ == kEdit || mode_ == kView) LoadCurrent();
  if (mode_ == kAddClose) ResetForAdd();
  SetTitle();
}

void CRecordWindow::SetButtons() {
  switch (mode_) {
    case kAdd:
      first_ = {true, true, "Close", "Close (no save)"};
      second_ = {true, true, "Add", "Add & Reset"};
      break;
    case kEdit:
      first_ = {true, true, "Cancel", "Cancel Edit"};
      second_ = {true, true, "OK", "Save & Close"};
      break;
    case kView:
      first_ = {false, false, "", ""};
      second_ = {true, true, "OK", "Close"};
      break;
    default:
      first_ = {true, true, "Cancel", "Cancel Add"};
      second_ = {true, true, "Add", "Add & Close"};
      break;
  }
  lockedBy_.visible = false;
}

void CRecordWindow::SetTitle() {
  const char* prefix = Adding() ? "Add " : mode_ == kEdit && !editRefused_ ? "Edit " : "View ";
  title_ = prefix + GetWindowTitle(mode_);
}

void CRecordWindow::SetStepButtons() {
  const bool several = browse_.size() > 1;
  next_.visible = several;
  previous_.visible = several;
  previous_.enabled = position_ > 1;
  next_.enabled = position_ < browse_.size();
}

void CRecordWindow::LoadCurrent() {
  if (changeCheck) changeCheck();
  if (position_ < 1 || position_ > browse_.size()) return;
  item_ = browse_[position_ - 1];
  editRefused_ = mode_ == kEdit && !MayEdit(*item_);
  if (mode_ == kEdit && !editRefused_) {
    if (TakeLock()) {
      LockTaken();
      // What the list holds may be older than the record: another user may have saved it
      // since the last check. The edit starts from the record as the lock found it.
      Reload();
    } else {
      lockFailed_ = true;
      lockedBy_.visible = true;
      second_.enabled = false;
      nextRetry_ = clock_.Now() + kRetrySeconds;
      retryActive_ = true;
    }
  }
  LoadFields(*item_);
  // Read-only while someone else holds the lock; editable again after a step away.
  if (mode_ == kEdit) EnableFields(editable());
}

bool CRecordWindow::TakeLock() {
  if (marks_.HolderOf(item_) != nullptr) return false;
  if (UsesStoreLocks() && doc_.store()->LockRecord(table_.tag(), item_->GetId(),
                                                   doc_.currentUserId()) != DBStatus::kOk) {
    return false;
  }
  return true;
}

void CRecordWindow::Reload() {
  if (!UsesStoreLocks()) return;
  try {
    table_.ReloadItem(*item_);
  } catch (const StoreError& e) {
    ui::DebugOutput(WithStatus("record window: reload failed with %d", e.status));
  }
}

void CRecordWindow::LockTaken() {
  lockHeld_ = true;
  marks_.Set(item_, this);
  lockFailed_ = false;
  retryActive_ = false;
  lockedBy_.visible = false;
  second_.enabled = true;
}

void CRecordWindow::ReleaseLock() {
  if (lockHeld_ && item_ != nullptr) {
    // A lock that cannot be released dies with this client's slot; nothing more to do.
    if (UsesStoreLocks()) (void)doc_.store()->UnlockRecord(table_.tag(), item_->GetId());
    marks_.Clear(item_);
  }
  lockHeld_ = false;
  retryActive_ = false;
}

void CRecordWindow::OnIdle() {
  if (!retryActive_ || item_ == nullptr) return;
  const std::uint32_t now = clock_.Now();
  if (now < nextRetry_) return;
  if (lockHeld_ || !TakeLock()) {
    nextRetry_ = now + kRetrySeconds;
    return;
  }
  LockTaken();
  EnableFields(editable());
  // Show what the other party saved while it held the lock.
  Reload();
  LoadFields(*item_);
}

CRecordWindow* CRecordWindow::OnLockedBy() {
  if (item_ == nullptr) return nullptr;
  if (CRecordWindow* other = marks_.HolderOf(item_); other != nullptr && other != this) {
    const ui::Message question{
        "You are editing this item in another window. Do you want to go there?", "",
        ui::Icon::kQuestion, ui::Buttons::kYesNo};
    return ui_.Ask(question) == ui::Answer::kYes ? other : nullptr;
  }
  if (!UsesStoreLocks()) return nullptr;
  bool locked = false;
  LockHolder holder;
  if (doc_.store()->IsRecordLocked(table_.tag(), item_->GetId(), locked, &holder) !=
          DBStatus::kOk ||
      !locked) {
    return nullptr;
  }
  std::string name;
  if (ItemTable* users = doc_.GetTable(kUserTag); users != nullptr) {
    if (RecordItem* user = users->ItemById(holder.userId); user != nullptr) name = user->GetName();
  }
  if (showLockHolder) {
    showLockHolder(name);
  } else {
    ui_.Tell(name, ui::Icon::kInformation);
  }
  return nullptr;
}

bool CRecordWindow::StoreEdit() {
  StoreFields(*item_);
  const DBStatus status = table_.SaveItem(*item_);
  if (status != DBStatus::kOk) {
    ui_.Tell(WithStatus("Error #%d occured while updating the item in the database. The item "
                        "was not updated.",
                        status),
             ui::Icon::kError);
    return false;
  }
  doc_.PostChangeNotice(kNoticeChanged, table_.tag(), item_->GetId());
  AfterUpdate(*item_);
  return true;
}

bool CRecordWindow::OnAcceptButton() {
  if (!second_.enabled) return false;
  if (mode_ == kView) {
    Close();
    return true;
  }
  if (!FieldsPass()) return false;
  if (mode_ == kEdit) {
    if (item_ != nullptr && lockHeld_ && !readOnly_ && FieldsChanged()) StoreEdit();
    Close();
    return true;
  }
  if (!AddFromFields()) return false;
  if (mode_ == kAddClose) {
    Close();
    return true;
  }
  ResetForAdd();
  return false;
}

bool CRecordWindow::AddFromFields() {
  std::unique_ptr<RecordItem> added = NewItem();
  RecordItem* item = added.get();
  StoreFields(*added);
  added->changedAt = clock_.Now();
  const DBStatus status = table_.AddItem(added);
  if (status != DBStatus::kOk) {
    ui_.Tell(WithStatus("Error #%d occured while adding the item to the database. The item was "
                        "not added.",
                        status),
             ui::Icon::kError);
    return false;
  }
  AfterAdd(*item);  // the table's own now
  return true;
}

bool CRecordWindow::FieldsPass() {
  std::optional<FieldRefusal> refusal = ValidateFields();
  refusedField_ = refusal ? refusal->field : std::string();
  if (refusal) ui_.Tell(refusal->message);
  return !refusal;
}

void CRecordWindow::OnCancelButton() { Close(); }

bool CRecordWindow::QueryClose(bool* saved) {
  if (saved != nullptr) *saved = false;
  const bool unsaved = editable() && (Adding() || (mode_ == kEdit && lockHeld_)) && FieldsChanged();
  if (!unsaved) return true;
  const ui::Message question{
      "The window \"" + title_ + "\" has changes that are not saved. Do you want to save them?", "",
      ui::Icon::kQuestion, ui::Buttons::kYesNoCancel};
  switch (ui_.Ask(question)) {
    case ui::Answer::kNo:
      return true;
    case ui::Answer::kYes:
      if (!FieldsPass()) return false;
      if (!(Adding() ? AddFromFields() : StoreEdit())) return false;
      if (saved != nullptr) *saved = true;
      return true;
    default:
      return false;
  }
}

void CRecordWindow::Close() {
  ReleaseLock();
  if (changeCheck) changeCheck();
}

bool CRecordWindow::OnNextRecord() { return Step(1); }

bool CRecordWindow::OnPreviousRecord() { return Step(-1); }

bool CRecordWindow::Step(std::int32_t delta) {
  if (browse_.size() < 2) return false;
  if (delta > 0 ? position_ >= browse_.size() : position_ <= 1) return false;
  if (mode_ == kEdit) {
    if (lockHeld_ && !readOnly_ && FieldsChanged()) {
      // The step stores with no question, but never what the second button would refuse.
      if (!FieldsPass()) return false;
      StoreEdit();
    }
    ReleaseLock();
  }
  lockFailed_ = false;
  position_ = delta > 0 ? position_ + 1 : position_ - 1;
  SetStepButtons();
  SetButtons();
  LoadCurrent();
  SetTitle();
  return true;
}

}  // namespace qm
