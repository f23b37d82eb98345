// EventDialog, the model of the dialog of one event kind: its fields as the person edits
// them, the states of its buttons, the checks of OK and the Save buttons, and ParseDate.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "defects/defect_event.h"

namespace qm {

// A date as people type it: "M/D/YYYY" (month and day of one or two digits, a year of two
// or four; a two-digit year 40 to 99 is 19xx, 00 to 39 is 20xx) or "YYYY-MM-DD", blanks
// around it allowed. The stamp of that day at midnight; nothing for other text, a day the
// month does not have, or a day the stamp cannot hold (before 1904 or after early 2040).
std::optional<std::uint32_t> ParseDate(std::string_view text);

enum class EventDialogMode { kEdit = 1, kView = 2 };

// The button that closed the dialog. The numbers are what the callers of an event's edit
// read: 3 asks for an assignment next, 1103 for release notes.
enum class EventDialogResult { kOk = 1, kSaveAndAssign = 3, kSaveAndRelease = 1103 };

// The fields a refusal puts the focus on.
enum class EventField { kDate, kUser, kResolution, kHours, kEstimatedDate, kNotes };

// Why OK or a Save button did not close the dialog: the message to show, the field to
// focus, and whether that field's text is selected (a date's is).
struct EventDialogRefusal {
  std::string_view message;
  EventField focus;
  bool selectText;
};

// The dialog of one event, in mode 1 (edit) or 2 (view, everything disabled). Opening
// fills the public fields from the event; Accept writes them back. Only the fields of the
// event's kind are shown and written:
//
//   kind            fields beside userId, dateText and notes
//   fix             versionText, resolutionId, hoursText, affectsDocs, affectsTestPlan
//   verify          passed
//   close           resolutionId
//   estimate        hoursText, estimatedDateText, versionText
//   release notes   versionText
class EventDialog {
 public:
  // The Save buttons' texts, "&&" showing a single ampersand on the button.
  static constexpr std::string_view kSaveAndAssignText = "Save && Assign";
  static constexpr std::string_view kSaveAndReleaseText = "Save && Release";

  // `loggedInUserId` is the user logged in, 0 when the project is not in the logged-in
  // mode; `mayAssign` whether that user holds the right to assign (right 31).
  EventDialog(CDefectEvent& event, EventDialogMode mode, std::uint32_t loggedInUserId,
              bool mayAssign);

  EventKind kind() const { return event_.kind(); }
  EventDialogMode mode() const { return mode_; }

  std::string_view Title() const;
  // The labels of the dialog's fields, check boxes and radio buttons, top to bottom.
  std::span<const std::string_view> Labels() const;

  // Every control but OK and Cancel; all are disabled in mode 2.
  bool fieldsEnabled() const { return mode_ == EventDialogMode::kEdit; }
  // "Save && Assign": in fix, estimate and re-open for a user who may assign, and always in
  // verify, where it is enabled only while Fail is chosen.
  bool saveAndAssignVisible() const;
  bool saveAndAssignEnabled() const;
  // "Save && Release": in verify only, enabled while Pass is chosen.
  bool saveAndReleaseVisible() const;
  bool saveAndReleaseEnabled() const;

  // The checks of OK in order: the date, the user, then the kind's own fields. Text that
  // cannot be taken as typed is refused, never stored as something else. Nothing when all
  // pass.
  std::optional<EventDialogRefusal> Validate() const;

  // OK or a Save button; `button` is OK or a Save button that the dialog shows enabled. In
  // mode 1 the fields are checked and, when they pass, written to the event, and the
  // dialog closes with the button; a refusal leaves the event as it was and the dialog
  // open. In mode 2 OK closes and changes nothing.
  std::variant<EventDialogResult, EventDialogRefusal> Accept(EventDialogResult button);

  // The user chosen in the combo, 0 for none. A new event (userId 0) starts with the user
  // logged in, except in the assign dialog, which starts with no one.
  std::uint32_t userId = 0;
  // As typed, read by ParseDate; the event then holds that day at midnight.
  std::string dateText;
  // With CR LF line ends, as the edit control holds them; stored with CR. A comment's may
  // not be blank: the notes are all a comment has.
  std::string notes;
  // The fix's version, the estimated version or the released version, up to 32 bytes.
  std::string versionText;
  std::uint32_t resolutionId = 0;  // 0: none chosen
  // "%5.2lf" of the hours when they are 0 or above, else empty. Empty stores -1.0, not
  // given; otherwise the whole text is one number, of 0 or more for a fix and above 0 for
  // an estimate.
  std::string hoursText;
  bool affectsDocs = false;
  bool affectsTestPlan = false;
  bool passed = true;  // Pass or Fail
  // The estimate's completion date: empty for none, else a date ParseDate reads.
  std::string estimatedDateText;

 private:
  // The dialog's fields into the event, after the checks passed.
  void Store();

  CDefectEvent& event_;
  EventDialogMode mode_;
  bool mayAssign_;
};

}  // namespace qm
