// The defect commands' table of states, and a command run on a selection of defects.
#include "defects/defect_actions.h"

#include <algorithm>
#include <array>

#include "defects/project_defects.h"
#include "defects/selection_commands.h"
#include "defects/text_forms.h"
#include "session/db_doc.h"
#include "session/record_notice.h"
#include "store/bytes.h"
#include "store/store_error.h"

namespace qm {

namespace {

// Statuses as bits: bit n stands for status n.
constexpr std::uint8_t Statuses(std::initializer_list<int> statuses) {
  std::uint8_t bits = 0;
  for (const int s : statuses) bits = static_cast<std::uint8_t>(bits | (1u << s));
  return bits;
}

constexpr std::uint8_t kAnyStatus = 0xFF;
constexpr std::uint8_t kNoStatus = 0;
constexpr std::uint8_t kClosed = Statuses({4, 5});
constexpr std::uint8_t kNotClosed = Statuses({1, 2, 3, 6});

struct CommandRow {
  DefectCommandInfo info;
  std::uint8_t windowAllows;  // the statuses the record window offers it in
  std::uint8_t listBlocks;    // a selected defect in one of these disables it in the list
  // The statuses that leave a selection before the dialog, and the messages of step 2
  // and 3 (empty: no filter).
  std::uint8_t filterOut;
  std::string_view lockedText;
  std::string_view filterText;
};

// By DefectCommand. Fix has status 2 added in the window and taken from the list's
// blocks when a project allows several fixes.
constexpr std::array<CommandRow, 8> kCommands{{
    {{EventKind::kAssign, "&Assign...", Right::kAssignDefect},
     kNotClosed,
     kClosed,
     kClosed,
     "One or more defects will not be assigned because they are in use by another user.",
     "One or more defects will not be assigned because they are closed."},
    {{EventKind::kEstimate, "&Estimate...", Right::kEstimateResolution},
     Statuses({1, 3, 6}),
     Statuses({2, 4, 5}),
     kClosed,
     "One or more defects will not be updated because they are in use by another user.",
     "One or more defects will not be updated because they are closed."},
    {{EventKind::kFix, "&Fix...", Right::kFixDefects},
     Statuses({1, 3, 6}),
     Statuses({2, 4, 5}),
     kClosed,
     "One or more defects will not be updated because they are in use by another user.",
     "One or more defects will not be updated because they are closed."},
    {{EventKind::kVerify, "&Verify...", Right::kVerifyDefects},
     Statuses({2}),
     Statuses({1, 3, 4, 5, 6}),
     kClosed,
     "One or more defects will not be verified because they are in use by another user.",
     "One or more defects will not be verified because they are closed."},
    {{EventKind::kClose, "&Close...", Right::kCloseDefects},
     kNotClosed,
     kClosed,
     kClosed,
     "One or more defects will not be closed because they are in use by another user.",
     "One or more defects will not be closed because they are not open."},
    {{EventKind::kReOpen, "Re-&Open...", Right::kReOpenDefects},
     kClosed,
     kNotClosed,
     static_cast<std::uint8_t>(~kClosed),
     "One or more defects will not be re-opened because they are in use by another user.",
     "One or more defects will not be re-opened because they are not closed."},
    {{EventKind::kReleaseNotes, "&Release Notes...", Right::kReleaseNotes},
     kAnyStatus,
     kNoStatus,
     kNoStatus,
     "One or more defects will not be released because they are in use by another user.",
     ""},
    {{EventKind::kComment, "Co&mment...", Right::kAddComment},
     kAnyStatus,
     kNoStatus,
     kNoStatus,
     "One or more defects will not be commented because they are in use by another user.",
     ""},
}};

const CommandRow& Row(DefectCommand command) {
  return kCommands[static_cast<std::size_t>(command)];
}

bool In(std::uint8_t statuses, std::uint16_t status) {
  return status < 8 && (statuses & (1u << status)) != 0;
}

std::string AssigneeName(const DefectLookups& lookups, std::uint32_t userId) {
  return userId != 0 ? UserName(lookups, userId) : std::string("not assigned");
}

}  // namespace

const DefectCommandInfo& CommandInfo(DefectCommand command) { return Row(command).info; }

std::unique_ptr<CDefectEvent> NewCommandEvent(DefectCommand command, std::uint32_t now) {
  std::unique_ptr<CDefectEvent> event =
      CDefectEvent::Make(static_cast<std::int16_t>(CommandInfo(command).kind));
  event->userId = 0;
  event->date = now;
  return event;
}

namespace {

std::unique_ptr<CDefectEvent> AssignTo(std::uint32_t userId, std::uint32_t now) {
  if (userId == 0) return nullptr;
  auto event = CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kAssign));
  event->userId = userId;
  event->date = now;
  return event;
}

}  // namespace

std::unique_ptr<CDefectEvent> RuleAssignmentOnAdd(const AssignRules& rules, const CDefect& defect,
                                                  std::uint32_t now) {
  switch (rules.onAdd) {
    case 1:
      return AssignTo(defect.enteredById, now);
    case 2:
      return AssignTo(rules.onAddUser, now);
    default:
      return nullptr;
  }
}

std::unique_ptr<CDefectEvent> RuleAssignmentAfter(const AssignRules& rules, EventKind kind,
                                                  const CDefect& defect,
                                                  std::uint32_t formerAssignee, std::uint32_t now) {
  if (kind != EventKind::kFix && kind != EventKind::kEstimate && kind != EventKind::kVerify &&
      kind != EventKind::kReOpen) {
    return nullptr;
  }
  switch (rules.afterWork) {
    case 1:
      return AssignTo(formerAssignee, now);
    case 2:
      return AssignTo(defect.enteredById, now);
    case 3:
      return AssignTo(rules.afterWorkUser, now);
    default:
      return nullptr;
  }
}

bool AcceptsResult(EventKind kind, EventDialogResult result) {
  switch (kind) {
    case EventKind::kEstimate:
    case EventKind::kFix:
    case EventKind::kReOpen:
      return result != EventDialogResult::kSaveAndRelease;
    case EventKind::kVerify:
      return true;
    default:
      return result == EventDialogResult::kOk;
  }
}

std::optional<DefectCommand> FollowUp(const CDefectEvent& event, EventDialogResult result) {
  const auto* verify = dynamic_cast<const CVerifyEvent*>(&event);
  if (result == EventDialogResult::kSaveAndAssign && (verify == nullptr || !verify->passed)) {
    return DefectCommand::kAssign;
  }
  if (result == EventDialogResult::kSaveAndRelease && verify != nullptr && verify->passed) {
    return DefectCommand::kReleaseNotes;
  }
  return std::nullopt;
}

bool AllowedInWindow(DefectCommand command, std::uint16_t shownStatus, bool allowMultipleFixes) {
  if (command == DefectCommand::kFix && allowMultipleFixes && shownStatus == 2) return true;
  return Row(command).windowAllows == kAnyStatus || In(Row(command).windowAllows, shownStatus);
}

bool AllowedOnSelection(DefectCommand command, std::span<const std::uint16_t> statuses,
                        bool allowMultipleFixes) {
  if (statuses.empty()) return false;
  return std::none_of(statuses.begin(), statuses.end(), [&](std::uint16_t status) {
    if (command == DefectCommand::kFix && allowMultipleFixes && status == 2) return false;
    return In(Row(command).listBlocks, status);
  });
}

SelectionAction::SelectionAction(CDBDoc& doc, CDefectTable& table, std::vector<CDefect*> selection,
                                 ui::Ui& ui, RunDialog runDialog, platform::Clock& clock)
    : doc_(doc),
      table_(table),
      selection_(std::move(selection)),
      ui_(ui),
      runDialog_(std::move(runDialog)),
      clock_(clock) {}

std::vector<CDefect*> SelectionAction::Eligible(DefectCommand command) {
  const CommandRow& row = Row(command);
  std::vector<CDefect*> defects = LeaveOutLocked(doc_, kDefectTag, selection_, ui_, row.lockedText);
  const auto filteredGo =
      std::erase_if(defects, [&row](const CDefect* d) { return In(row.filterOut, d->status()); });
  if (filteredGo > 0) ui_.Tell(std::string(row.filterText), ui::Icon::kWarning);
  return defects;
}

std::optional<DefectCommand> SelectionAction::Run(DefectCommand command) {
  changed_.clear();
  previews_.clear();
  const std::vector<CDefect*> defects = Eligible(command);
  if (defects.empty()) return std::nullopt;

  std::unique_ptr<CDefectEvent> event = NewCommandEvent(command, clock_.Now());
  const std::optional<EventDialogResult> result = runDialog_(*event);
  if (!result || !AcceptsResult(event->kind(), *result)) return std::nullopt;
  const std::uint32_t now = clock_.Now();
  const CommandRow& row = Row(command);
  for (CDefect* defect : defects) {
    // A defect is changed under its record lock, from its record as it stands now: another
    // user may have saved it since this list last read it.
    const bool locks = !preview_ && doc_.multiUser() && doc_.store() != nullptr;
    if (locks && doc_.store()->LockRecord(kDefectTag, defect->GetId(), doc_.currentUserId()) !=
                     DBStatus::kOk) {
      ui_.Tell(std::string(row.lockedText), ui::Icon::kWarning);
      continue;
    }
    bool applied = false;
    try {
      if (!preview_) table_.ReloadItem(*defect);
      if (!In(row.filterOut, defect->status())) {
        applied = Apply(*defect, *event, now);
      } else {
        ui_.Tell(std::string(row.filterText), ui::Icon::kWarning);
      }
    } catch (const StoreError& e) {
      ui_.Tell(
          "Cannot complete command. Database error " + std::to_string(static_cast<int>(e.status)),
          ui::Icon::kError);
    }
    if (locks) (void)doc_.store()->UnlockRecord(kDefectTag, defect->GetId());
    if (!applied || preview_) continue;
    // The notification of a changed defect goes here, with the change text as %CHNG%.
  }
  // Then the mail layer is told to send or queue what the notifications made.
  return FollowUp(*event, *result);
}

bool SelectionAction::Apply(CDefect& defect, const CDefectEvent& event, std::uint32_t now) {
  const std::uint32_t oldAssignee = defect.copies().assignedToId;
  CDefect* target = &defect;
  if (preview_) {
    previews_.push_back(defect.Clone());
    target = previews_.back().get();
  }
  const std::uint32_t oldModified = target->dateModified;
  std::unique_ptr<CDefectEvent> copy = event.Clone();
  const CDefectEvent* added = copy.get();
  target->AddEvent(std::move(copy));
  // The project's rule may give the defect its next assignee at once.
  std::unique_ptr<CDefectEvent> ruled =
      RuleAssignmentAfter(doc_.assignRules(), event.kind(), *target, oldAssignee, now);
  const CDefectEvent* ruledAdded = ruled.get();
  if (ruled) target->AddEvent(std::move(ruled));
  target->dateModified = now;
  if (!preview_) {
    if (table_.SaveItem(defect) != DBStatus::kOk) {
      // The defect stays as its record holds it, and the loop goes on with the next one.
      if (ruledAdded != nullptr) defect.RemoveEvent(ruledAdded);
      defect.RemoveEvent(added);
      defect.dateModified = oldModified;
      return false;
    }
    doc_.PostChangeNotice(kNoticeChanged, kDefectTag, defect.GetId());
  }
  std::string changeText;
  if (event.kind() == EventKind::kAssign) {
    const DocLookups lookups(doc_);
    changeText = "The following fields changed:\r\rDefect assignment: ";
    changeText += " [" + AssigneeName(lookups, oldAssignee) + "] to [" +
                  AssigneeName(lookups, target->copies().assignedToId) + "]";
  }
  changed_.push_back({target, std::move(changeText)});
  return true;
}

}  // namespace qm
