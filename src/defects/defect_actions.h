// The commands that add an event to defects (assign, estimate, fix, verify, close,
// re-open, release notes, comment): when each is offered, and each run on a selection.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_table.h"
#include "defects/event_dialogs.h"
#include "platform/clock.h"
#include "session/project_records.h"
#include "session/rights.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

enum class DefectCommand {
  kAssign,
  kEstimate,
  kFix,
  kVerify,
  kClose,
  kReOpen,
  kReleaseNotes,
  kComment
};

// Every command, in the order of its enumeration.
inline constexpr std::array<DefectCommand, 8> kDefectCommands = {
    DefectCommand::kAssign,       DefectCommand::kEstimate, DefectCommand::kFix,
    DefectCommand::kVerify,       DefectCommand::kClose,    DefectCommand::kReOpen,
    DefectCommand::kReleaseNotes, DefectCommand::kComment};

// What a command adds, how its menu item reads, and the right it needs.
struct DefectCommandInfo {
  EventKind kind;
  std::string_view menuText;
  Right right;
};
const DefectCommandInfo& CommandInfo(DefectCommand command);

// Whether a command is offered by the status each place tests; the right, the record
// window's edit mode and a record that is not read-only are for the caller to add.
//
// In the record window the status is the one the window shows, with its unsaved events.
bool AllowedInWindow(DefectCommand command, std::uint16_t shownStatus, bool allowMultipleFixes);
// In the defect list every selected defect must allow it; an empty selection allows nothing.
bool AllowedOnSelection(DefectCommand command, std::span<const std::uint16_t> statuses,
                        bool allowMultipleFixes);

// The event a command starts from: of the command's kind, by no one yet, dated `now`.
std::unique_ptr<CDefectEvent> NewCommandEvent(DefectCommand command, std::uint32_t now);

// Whether the button that closed the dialog adds the event: assign, comment, release notes
// and close know OK only; estimate, fix and re-open "Save && Assign" too; verify both
// Saves.
bool AcceptsResult(EventKind kind, EventDialogResult result);

// The command that the closing button asks for next, once the event is in: assign after
// "Save && Assign" (on a verify only with Fail), release notes after "Save && Release"
// on a passed verify.
std::optional<DefectCommand> FollowUp(const CDefectEvent& event, EventDialogResult result);

// The assignment the project's rules make by themselves: for a new defect, and after a
// fix, an estimate, a verification or a re-opening of a defect that was assigned to
// `formerAssignee`. An assign event dated `now`, or null when the rule leaves the defect
// as it is.
std::unique_ptr<CDefectEvent> RuleAssignmentOnAdd(const AssignRules& rules, const CDefect& defect,
                                                  std::uint32_t now);
std::unique_ptr<CDefectEvent> RuleAssignmentAfter(const AssignRules& rules, EventKind kind,
                                                  const CDefect& defect,
                                                  std::uint32_t formerAssignee, std::uint32_t now);

// A command run on a selection of defects: one dialog, then one event for each defect that
// may take it.
//
//   1. the selection is copied;
//   2. defects whose record another client holds locked leave the copy, with one message;
//   3. defects that cannot take the event leave it (closed ones for most commands, open
//      ones for re-open), with one message. This is looser than AllowedOnSelection: a
//      selection made before the list disabled the command still goes through;
//   4. nothing left: nothing more happens;
//   5. one event is made and its dialog runs once;
//   6. on a result the kind accepts, every defect left gets a copy of the event and is
//      saved; in a multi-user project the other clients get notice 1002. A defect whose
//      save fails gets back its former state, and the others go on.
//
// Afterwards changed() lists the defects saved; Run's answer is the command the closing
// button asks for next (assign after "Save && Assign", release notes after "Save &&
// Release" on a passed verify), which the caller runs on the selection as it then stands.
class SelectionAction {
 public:
  // Runs the event's dialog in mode 1 and answers its closing button; nothing is Cancel.
  using RunDialog = std::function<std::optional<EventDialogResult>(CDefectEvent& event)>;

  struct Changed {
    CDefect* defect;
    // For an assignment, what its mail tells as %CHNG%; empty for the other commands.
    std::string changeText;
  };

  SelectionAction(CDBDoc& doc, CDefectTable& table, std::vector<CDefect*> selection, ui::Ui& ui,
                  RunDialog runDialog, platform::Clock& clock = platform::Clock::System());

  [[nodiscard]] std::optional<DefectCommand> Run(DefectCommand command);

  // A preview runs everything up to the saves, and then changes copies of the defects,
  // which it keeps, instead of the defects: nothing is saved and nobody is told.
  void SetPreview(bool preview) { preview_ = preview; }

  // The defects the last Run saved, in the order of the selection; in a preview, the
  // copies as saving would have left them.
  const std::vector<Changed>& changed() const { return changed_; }

 private:
  // Steps 1 to 3: the defects that take the command.
  std::vector<CDefect*> Eligible(DefectCommand command);
  // Step 6 for one defect, or for its copy in a preview; false when its save failed.
  bool Apply(CDefect& defect, const CDefectEvent& event, std::uint32_t now);

  CDBDoc& doc_;
  CDefectTable& table_;
  std::vector<CDefect*> selection_;
  ui::Ui& ui_;
  RunDialog runDialog_;
  platform::Clock& clock_;
  bool preview_ = false;
  std::vector<std::unique_ptr<CDefect>> previews_;
  std::vector<Changed> changed_;
};

}  // namespace qm
