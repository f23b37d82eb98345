// The defect record window's logic: the actions, the event list and the save of an edit.
#include "shell/defect_window.h"

#include <algorithm>
#include <utility>

#include "defects/change_history.h"
#include "defects/project_defects.h"
#include "defects/text_forms.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/numbering.h"

namespace qm {

ItemCommandTexts ItemCommands(DefectFocus focus) {
  switch (focus) {
    case DefectFocus::kHistory:
      return {"Edit Action\tAlt+E", "View Action\tAlt+Enter", "Delete Action\tAlt+Del"};
    case DefectFocus::kAttachments:
      return {"Extract Attachment\tAlt+E", "View Attachment\tAlt+Enter",
              "Delete Attachment\tAlt+Del"};
    default:
      return {"Edit Defect\tAlt+E", "View Defect\tAlt+Enter", "Delete Defect\tAlt+Del"};
  }
}

CDefectWindow::CDefectWindow(CDBDoc& doc, CDefectTable& table, ui::Ui& ui, EditMarks& marks,
                             RunEventDialog runDialog, platform::Clock& clock)
    : CRecordWindow(doc, table, ui, marks, clock),
      runDialog_(std::move(runDialog)),
      clock_(clock),
      shown_(std::make_unique<CDefect>(table.lookups())) {}

bool CDefectWindow::MayEdit(const RecordItem& item) const {
  return !static_cast<const CDefect&>(item).IsClosed() || doc().HasRight(Right::kEditClosedDefects);
}

std::string CDefectWindow::GetWindowTitle(std::uint16_t mode) const {
  if (mode == kAdd || mode == kAddClose || shown_->number == 0) return "Defect";
  return "Defect #" + std::to_string(shown_->number);
}

void CDefectWindow::LoadFields(const RecordItem& item) {
  shown_->CopyFrom(static_cast<const CDefect&>(item));
  loaded_ = shown_->Pack();
  changed_ = false;
  ShowRow(shown_->ReportedByCount() > 0 ? 1 : 0);
}

void CDefectWindow::ResetForAdd() {
  shown_ = std::make_unique<CDefect>(defects().lookups());
  shown_->dateCreated = shown_->dateEntered = clock_.Now();
  shown_->enteredById = doc().currentUserId();
  shown_->AddReportedBy(DefaultReport());
  shown_->RefreshFromFirstReport();
  loaded_ = shown_->Pack();
  changed_ = false;
  ShowRow(1);
}

std::unique_ptr<CReportedBy> CDefectWindow::DefaultReport() const {
  auto row = std::make_unique<CReportedBy>();
  row->dateFound = clock_.Now();
  row->foundById = doc().currentUserId();
  row->contact = ContactOf(row->foundById);
  return row;
}

std::string CDefectWindow::ContactOf(std::uint32_t userId) const {
  const ItemTable* users = doc().GetTable(kUserTag);
  const auto* user =
      users != nullptr ? dynamic_cast<const CUser*>(users->ItemById(userId)) : nullptr;
  if (user == nullptr) return {};
  return user->GetCompany().empty() ? user->GetName() : user->GetCompany();
}

void CDefectWindow::SetFinder(std::uint32_t userId) {
  ReportPane pane = pane_;
  pane.foundById = userId;
  pane.contact = ContactOf(userId);
  EditReport(pane);
}

bool CDefectWindow::FieldsChanged() const { return changed_ || shown_->Pack() != loaded_; }

std::optional<FieldRefusal> CDefectWindow::ValidateFields() {
  // A summary of blanks names nothing in a list.
  if (shown_->summary.find_first_not_of(" \t") == std::string::npos) {
    return FieldRefusal("Please enter a summary for the defect.", "summary");
  }
  // The pane names the field of its refusal itself (refusedField).
  if (const std::optional<ReportRefusal> refusal = StorePaneInRow()) {
    return FieldRefusal(std::string(refusal->message));
  }
  return std::nullopt;
}

std::string CDefectWindow::PendingChangeText() const {
  const auto* stored = static_cast<const CDefect*>(currentItem());
  if (stored == nullptr) return {};
  std::string text;
  BuildChangeText(DocLookups(doc()), *stored, *shown_, text);
  return text;
}

void CDefectWindow::StoreFields(RecordItem& item) {
  auto& defect = static_cast<CDefect&>(item);
  // A step to the next record saves without the checks: a pane that fails them leaves its
  // row as it was.
  (void)StorePaneInRow();
  shown_->dateModified = clock_.Now();
  if (defect.GetId() == 0) {
    if (shown_->copies().assignedToId == 0) {
      if (auto ruled = RuleAssignmentOnAdd(doc().assignRules(), *shown_, clock_.Now())) {
        shown_->AddEvent(std::move(ruled));
      }
    }
    defect.CopyFrom(*shown_);
    // Without a number the defect is still added; renumbering gives it one later.
    if (doc().options().numberOnUserEntry &&
        doc().NextCounter(kMiscTag, kDefectCounterRecord, defect.number) != DBStatus::kOk) {
      defect.number = 0;
    }
    // After the add, the notification of a new defect and the mail layer's send or queue.
    return;
  }
  // An edit: the change text compares the stored defect with the one about to replace it.
  // After the save it becomes %CHNG% of the notification of a changed defect (template 3),
  // and then the mail layer is told to send or queue.
  changeText_.clear();
  BuildChangeText(DocLookups(doc()), defect, *shown_, changeText_);
  defect.CopyFrom(*shown_);
  loaded_ = shown_->Pack();
  changed_ = false;
}

bool CDefectWindow::CommandEnabled(DefectCommand command) const {
  return editable() && doc().HasRight(CommandInfo(command).right) &&
         AllowedInWindow(command, shown_->status(), doc().options().allowMultipleFixes);
}

bool CDefectWindow::RunCommand(DefectCommand command) {
  if (!CommandEnabled(command)) return false;
  std::unique_ptr<CDefectEvent> event = NewCommandEvent(command, clock_.Now());
  const std::optional<EventDialogResult> result = runDialog_(*event, EventDialogMode::kEdit);
  if (!result || !AcceptsResult(event->kind(), *result)) return false;
  const std::optional<DefectCommand> next = FollowUp(*event, *result);
  const EventKind kind = event->kind();
  const std::uint32_t formerAssignee = shown_->copies().assignedToId;
  Insert(std::move(event));
  // The project's rule may give the defect its next assignee at once.
  if (auto ruled =
          RuleAssignmentAfter(doc().assignRules(), kind, *shown_, formerAssignee, clock_.Now())) {
    Insert(std::move(ruled));
  }
  if (next) RunCommand(*next);
  return true;
}

void CDefectWindow::Insert(std::unique_ptr<CDefectEvent> event) {
  shown_->AddEvent(std::move(event));
  changed_ = true;
}

std::vector<EventRow> CDefectWindow::EventRows() const {
  const DocLookups lookups(doc());
  std::vector<EventRow> rows;
  if (const CReportedBy* report = shown_->ReportedByAt(1); report != nullptr) {
    const std::string& d = report->description;
    rows.push_back({"Reported", FormatDate(report->dateFound), report->GetFoundByName(lookups),
                    d.substr(0, d.find_first_of("\r\n"))});
  }
  for (std::uint32_t n = 1; n <= shown_->EventCount(); ++n) {
    const CDefectEvent& e = *shown_->EventAt(n);
    std::string info = e.GetInfoText();
    // A close says nothing of its own there; the resolution it gave is what a reader looks
    // for.
    if (e.kind() == EventKind::kClose) {
      info = "Resolution: " +
             ValueName(lookups, MakeTag("reso"), static_cast<const CCloseEvent&>(e).resolutionId);
    }
    rows.push_back(
        {std::string(e.ActionText()), FormatDate(e.date), UserName(lookups, e.userId), info});
  }
  return rows;
}

CDefectEvent* CDefectWindow::EventOfRow(std::uint32_t row) const {
  // Row 1 is the first report when there is one.
  const std::uint32_t first = shown_->ReportedByCount() > 0 ? 2 : 1;
  return row >= first ? shown_->EventAt(row - first + 1) : nullptr;
}

bool CDefectWindow::EventEditable(std::uint32_t row) const {
  return editable() && EventOfRow(row) != nullptr;
}

bool CDefectWindow::EditEvent(std::uint32_t row) {
  if (!EventEditable(row)) return false;
  CDefectEvent* event = EventOfRow(row);
  // The dialog works on a copy, so that a cancelled edit leaves the event as it was; the
  // edited event goes back in by its date, which may have changed.
  std::unique_ptr<CDefectEvent> copy = event->Clone();
  const std::optional<EventDialogResult> result = runDialog_(*copy, EventDialogMode::kEdit);
  if (!result) return false;
  (void)shown_->RemoveEvent(event);
  Insert(std::move(copy));
  return true;
}

bool CDefectWindow::ViewEvent(std::uint32_t row) {
  CDefectEvent* event = EventOfRow(row);
  if (event == nullptr) return false;
  (void)runDialog_(*event, EventDialogMode::kView);
  return true;
}

bool CDefectWindow::DeleteEvent(std::uint32_t row) {
  if (!EventEditable(row)) return false;
  const ui::Message question{
      "Are you sure that you want to delete the selected action? There is no undo available.", "",
      ui::Icon::kQuestion, ui::Buttons::kYesNo};
  if (userInterface().Ask(question) != ui::Answer::kYes) return false;
  (void)shown_->RemoveEvent(EventOfRow(row));
  changed_ = true;
  return true;
}

void CDefectWindow::AddToNotify(std::uint32_t userId) {
  std::vector<std::uint32_t> ids = shown_->notifyList();
  if (std::find(ids.begin(), ids.end(), userId) != ids.end()) return;
  ids.push_back(userId);
  shown_->SetNotifyList(std::move(ids));
  changed_ = true;
}

void CDefectWindow::RemoveFromNotify(std::uint32_t userId) {
  std::vector<std::uint32_t> ids = shown_->notifyList();
  if (std::erase(ids, userId) == 0) return;
  shown_->SetNotifyList(std::move(ids));
  changed_ = true;
}

std::string CDefectWindow::ReportCounter() const {
  return std::to_string(reportRow_) + " of " + std::to_string(shown_->ReportedByCount());
}

void CDefectWindow::ShowRow(std::uint32_t row) {
  reportRow_ = row;
  const CReportedBy* report = shown_->ReportedByAt(row);
  pane_ = report != nullptr ? PaneOf(*report) : ReportPane{};
  paneWaiting_ = false;
  refused_.reset();
}

void CDefectWindow::EditReport(const ReportPane& pane) {
  if (!editable() || shown_->ReportedByAt(reportRow_) == nullptr || pane == pane_) return;
  pane_ = pane;
  paneWaiting_ = true;
  refused_.reset();
  changed_ = true;
  (void)StorePaneInRow();
}

std::optional<ReportRefusal> CDefectWindow::StorePaneInRow() {
  CReportedBy* row = shown_->ReportedByAt(reportRow_);
  // A pane that went in already leaves the row to what others write into it.
  if (row == nullptr || !paneWaiting_) return std::nullopt;
  if (std::optional<ReportRefusal> refusal = CheckPane(pane_)) {
    refused_ = refusal->focus;
    return refusal;
  }
  // The date as shown is the day only: a report keeps its time of day until the day
  // itself is changed.
  const std::uint32_t keptDate = row->dateFound;
  StorePane(pane_, *row);
  if (pane_.dateText == FormatDate(keptDate)) row->dateFound = keptDate;
  paneWaiting_ = false;
  if (reportRow_ == 1) shown_->RefreshFromFirstReport();
  return std::nullopt;
}

bool CDefectWindow::WriteBackPane() {
  const std::optional<ReportRefusal> refusal = StorePaneInRow();
  if (refusal) userInterface().Tell(std::string(refusal->message));
  return !refusal;
}

bool CDefectWindow::ShowReport(std::uint32_t row) {
  if (row < 1 || row > shown_->ReportedByCount() || row == reportRow_) return false;
  if (!WriteBackPane()) return false;
  ShowRow(row);
  return true;
}

bool CDefectWindow::NewReportedBy() {
  if (!editable() || shown_->ReportedByCount() >= CDefect::kMaxReportedBy || !WriteBackPane()) {
    return false;
  }
  shown_->AddReportedBy(DefaultReport());
  ShowRow(shown_->ReportedByCount());
  if (reportRow_ == 1) shown_->RefreshFromFirstReport();
  changed_ = true;
  return true;
}

bool CDefectWindow::DeleteReportedBy() {
  const CReportedBy* row = shown_->ReportedByAt(reportRow_);
  if (!editable() || row == nullptr) return false;
  (void)shown_->RemoveReportedBy(row);
  ShowRow(std::min(reportRow_, shown_->ReportedByCount()));
  shown_->RefreshFromFirstReport();
  changed_ = true;
  return true;
}

std::unique_ptr<CTestConfig> CDefectWindow::CustomConfigCopy() const {
  const CReportedBy* row = shown_->ReportedByAt(reportRow_);
  if (row == nullptr) return nullptr;
  auto copy = std::make_unique<CTestConfig>();
  if (row->customConfig() != nullptr) {
    // A configuration is an item, copied through its record form.
    const std::vector<std::uint8_t> bytes = row->customConfig()->Pack();
    PayloadReader in(bytes);
    copy->ReadFrom(in);
  }
  return copy;
}

void CDefectWindow::SetCustomConfig(std::unique_ptr<CTestConfig> config) {
  CReportedBy* row = shown_->ReportedByAt(reportRow_);
  if (!editable() || row == nullptr) return;
  ReportPane pane = pane_;
  pane.configKind = CReportedBy::kCustomConfig;
  pane.testConfigId = 0;
  EditReport(pane);
  // The kind goes in with the pane only when the rest of it passes its checks.
  row->SetConfigKind(CReportedBy::kCustomConfig);
  row->SetCustomConfig(std::move(config));
  changed_ = true;
}

std::string CDefectWindow::ResolutionText() const {
  if (shown_->copies().resolutionId == 0) return {};
  return ValueName(DocLookups(doc()), MakeTag("reso"), shown_->copies().resolutionId);
}

}  // namespace qm
