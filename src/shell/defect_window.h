// CDefectWindow, the logic of the record window of one defect: its tabs, the event list of
// the History tab with the actions that add to it, the notification list, the reported-by
// rows, and the save that yields the change text of the edit.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_actions.h"
#include "defects/defect_table.h"
#include "defects/event_dialogs.h"
#include "defects/selection_commands.h"
#include "shell/record_window.h"
#include "shell/report_pane.h"

namespace qm {

// The tabs, in order; the reported-by panes follow them.
inline constexpr std::array<std::string_view, 4> kDefectTabs = {"Detail", "History", "Notify",
                                                                "Workaround"};

// One row of the History tab's event list: "Action", "Date", "Who", "Other Information".
struct EventRow {
  std::string action;
  std::string date;  // empty when not set
  std::string who;
  std::string info;
};

// Where the focus is in the window, which names the Edit, View and Delete items of the
// menu.
enum class DefectFocus { kHistory, kAttachments, kElsewhere };
struct ItemCommandTexts {
  std::string_view edit;
  std::string_view view;
  std::string_view remove;
};
ItemCommandTexts ItemCommands(DefectFocus focus);

class CDefectWindow : public CRecordWindow {
 public:
  // Runs an event's dialog in `mode` and answers its closing button; nothing is Cancel.
  using RunEventDialog =
      std::function<std::optional<EventDialogResult>(CDefectEvent& event, EventDialogMode mode)>;

  CDefectWindow(CDBDoc& doc, CDefectTable& table, ui::Ui& ui, EditMarks& marks,
                RunEventDialog runDialog, platform::Clock& clock = platform::Clock::System());

  // The defect as the window shows it: the stored one with the fields edited and the
  // actions taken since it was loaded. A view changes its fields here and then calls
  // MarkChanged. Empty (no id) before a load.
  CDefect& defect() { return *shown_; }
  const CDefect& defect() const { return *shown_; }
  void MarkChanged() { changed_ = true; }

  // Whether a command is offered now: by the status the window shows, the user's right,
  // and a window in edit mode whose fields may change.
  bool CommandEnabled(DefectCommand command) const;
  // Runs a command as its button or menu item does: one event in its dialog, which goes
  // into the event list when the dialog accepts it, followed by the assignment or the
  // release notes its closing button asks for. True when an event went in. A command that
  // is not enabled does nothing.
  bool RunCommand(DefectCommand command);

  // The event list: row 1 is the first report, then one row per event.
  std::vector<EventRow> EventRows() const;
  // Edit, view and delete of the event on a row of the list (2 and on); false for a row
  // that holds no event, or when the window may not change the defect (all but view).
  bool EventEditable(std::uint32_t row) const;
  bool EditEvent(std::uint32_t row);
  bool ViewEvent(std::uint32_t row);
  // Asks first; true when the event went.
  bool DeleteEvent(std::uint32_t row);

  // The Notify tab.
  void AddToNotify(std::uint32_t userId);
  void RemoveFromNotify(std::uint32_t userId);

  // The reported-by panes show one row at a time, 1-based; 0 when there are none.
  std::uint32_t reportRow() const { return reportRow_; }
  // "%d of %d".
  std::string ReportCounter() const;
  // The pane of the row shown, as the widgets last gave it.
  const ReportPane& reportPane() const { return pane_; }
  // The widgets' values for the row shown. They go into the row at once when they pass its
  // checks; otherwise they wait in the pane until they are put right, and saving or moving
  // to another row says what is wrong. A row changed in defect() directly keeps what it
  // was given while no pane waits.
  void EditReport(const ReportPane& pane);
  // Moving away from a row first writes the pane back. A pane that fails its checks tells
  // why, stays on its row and answers false, as do the commands below.
  bool ShowReport(std::uint32_t row);
  // Makes a user the finder of the row shown, with the user's company (or name) as the
  // contact.
  void SetFinder(std::uint32_t userId);
  // "&New Reported By": a row with today's date and the user logged in as the finder.
  bool NewReportedBy();
  // "&Delete Reported By": the row shown goes; the panes show the same place or the new
  // last row.
  bool DeleteReportedBy();
  // The field the last refusal of the pane names, for the focus; cleared by an edit.
  std::optional<ReportField> refusedField() const { return refused_; }
  // A copy of the row's own computer description to edit in its dialog: an empty one when
  // the row has none. Null without a row.
  std::unique_ptr<CTestConfig> CustomConfigCopy() const;
  // The edited description becomes the row's own, and the row's kind custom.
  void SetCustomConfig(std::unique_ptr<CTestConfig> config);

  // The resolution of the defect as its status has it ("<not set>" for a value gone);
  // empty while it has none.
  std::string ResolutionText() const;

  // The reply to the people who reported the defect, as the window shows it.
  SubmitterReply ReplyToSubmitter() const { return ReplyToSubmitters({shown_.get()}); }

  // What saving now would tell as the change; empty when adding.
  std::string PendingChangeText() const;
  // The change text of the last save of an edit, for the notification of the change.
  const std::string& changeText() const { return changeText_; }
  // The defect the last add made, as the table holds it; null before one.
  const CDefect* added() const { return added_; }

 protected:
  std::string GetWindowTitle(std::uint16_t mode) const override;
  void LoadFields(const RecordItem& item) override;
  void StoreFields(RecordItem& item) override;
  std::optional<FieldRefusal> ValidateFields() override;
  void AfterAdd(RecordItem& item) override { added_ = static_cast<const CDefect*>(&item); }
  void EnableFields(bool enable) override { fieldsEnabled_ = enable; }
  bool FieldsChanged() const override;
  void ResetForAdd() override;
  // A closed defect is changed only by those whose group allows it.
  bool MayEdit(const RecordItem& item) const override;

 private:
  CDefectTable& defects() const { return static_cast<CDefectTable&>(table()); }
  CDefectEvent* EventOfRow(std::uint32_t row) const;
  // Puts a new event into the list by its date, and the window shows the status after it.
  void Insert(std::unique_ptr<CDefectEvent> event);
  // A new reported-by row with the defaults of the user logged in.
  std::unique_ptr<CReportedBy> DefaultReport() const;
  // What a report row of the user gives as the contact: the company, else the name.
  std::string ContactOf(std::uint32_t userId) const;
  // The row shown and its pane, after a load or a move.
  void ShowRow(std::uint32_t row);
  // The pane into the row shown, when it passes its checks; the refusal otherwise.
  std::optional<ReportRefusal> StorePaneInRow();
  // As StorePaneInRow, telling the refusal; true when the pane went in.
  bool WriteBackPane();

  RunEventDialog runDialog_;
  platform::Clock& clock_;
  std::unique_ptr<CDefect> shown_;
  // The payload of the defect as loaded, to tell an edit of the fields.
  std::vector<std::uint8_t> loaded_;
  bool changed_ = false;
  bool fieldsEnabled_ = true;
  std::uint32_t reportRow_ = 0;
  ReportPane pane_;
  // The pane holds edits its row does not have yet: they failed the checks.
  bool paneWaiting_ = false;
  std::optional<ReportField> refused_;
  std::string changeText_;
  const CDefect* added_ = nullptr;
};

}  // namespace qm
