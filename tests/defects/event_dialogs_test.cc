// The event dialogs' models: the order and words of their checks, what OK writes to the
// event, the Save buttons' states, the user chosen at opening, and the dates people type.
#include "defects/event_dialogs.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/clock.h"

namespace qm::test {
namespace {

constexpr std::uint32_t kMe = 9;
std::uint32_t Day(int year, int month, int day) {
  return platform::StampFromCivil({year, month, day, 0, 0, 0});
}

std::uint32_t March7() { return Day(2021, 3, 7); }

// What OK is refused with: the message, the field to focus and whether its text is selected.
std::tuple<std::string_view, EventField, bool> Refused(EventDialog& dialog) {
  const auto answer = dialog.Accept(EventDialogResult::kOk);
  const auto* refusal = std::get_if<EventDialogRefusal>(&answer);
  EXPECT_NE(refusal, nullptr);
  if (refusal == nullptr) return {};
  return {refusal->message, refusal->focus, refusal->selectText};
}

std::optional<EventDialogResult> Closed(EventDialog& dialog,
                                        EventDialogResult button = EventDialogResult::kOk) {
  const auto answer = dialog.Accept(button);
  if (const auto* result = std::get_if<EventDialogResult>(&answer)) return *result;
  return std::nullopt;
}

// The Save buttons: "-" for one hidden, a letter for one shown, capital when enabled.
std::string Buttons(const EventDialog& d) {
  const auto state = [](bool visible, bool enabled, char letter) {
    return !visible ? '-' : enabled ? letter : static_cast<char>(letter - 'A' + 'a');
  };
  return {state(d.saveAndAssignVisible(), d.saveAndAssignEnabled(), 'A'),
          state(d.saveAndReleaseVisible(), d.saveAndReleaseEnabled(), 'R')};
}

// Per kind: the title, the checks in their order with their words, the user chosen at
// opening and the Save && Assign button.
TEST(EventDialog, EachKindsTitleChecksUserAndSaveButton) {
  constexpr std::string_view kResolution = "Please select the defect's resolution.";
  struct Row {
    EventKind kind;
    std::string_view title;
    std::string_view dateMessage;
    std::string_view userMessage;
    std::string_view fieldMessage;         // empty: no check of its own
    bool saveAndAssign;                    // offered to a user who may assign
    EventField field = EventField::kDate;  // the focus of its own check
  };
  const Row rows[] = {
      {EventKind::kAssign, "Assign Defect", "Please enter the date this defect was assigned.",
       "Please select the user to which this defect was assigned.", "", false},
      {EventKind::kFix, "Fix Defect", "Please enter the date this defect was fixed.",
       "Please select the user who fixed this defect.", kResolution, true, EventField::kResolution},
      {EventKind::kVerify, "Verify Defect", "Please enter the date this defect was verified.",
       "Please select the user who verified this defect.", "", false},
      {EventKind::kClose, "Close Defect", "Please enter the date this defect was closed.",
       "Please select the user who closed this defect.", kResolution, false,
       EventField::kResolution},
      {EventKind::kReOpen, "Re-open Defect", "Please enter the date this defect was re-opened.",
       "Please select the user who re-opened this defect.", "", true},
      {EventKind::kEstimate, "Estimate to Fix Problem",
       "Please enter the date this estimate was created.",
       "Please select the user who estimated the resolution to the problem.",
       "Please estimate the number of hours to resolve the problem or enter a target date or "
       "version.",
       true, EventField::kHours},
      {EventKind::kComment, "Defect Comments", "Please enter the date this comment was entered.",
       "Please select the user who entered this comment.", "Please enter the text of the comment.",
       false, EventField::kNotes},
      {EventKind::kReleaseNotes, "Release Fix or Feature",
       "Please enter the date these release notes were entered.",
       "Please select the user who entered these notes.", "", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.title);
    auto event = CDefectEvent::Make(static_cast<std::int16_t>(row.kind));
    event->date = March7() + 3600 * 15;
    const auto original = event->Clone();
    EXPECT_EQ(EventDialog(*event, EventDialogMode::kEdit, kMe, true).userId,
              row.kind == EventKind::kAssign ? 0u : kMe);
    if (row.kind != EventKind::kVerify) {
      for (bool mayAssign : {true, false}) {
        EXPECT_EQ(Buttons(EventDialog(*event, EventDialogMode::kEdit, kMe, mayAssign)),
                  row.saveAndAssign && mayAssign ? "A-" : "--");
      }
    }
    EventDialog dialog(*event, EventDialogMode::kEdit, 0, true);
    EXPECT_EQ(dialog.userId, 0u);
    EXPECT_EQ(dialog.Title(), row.title);
    EXPECT_TRUE(dialog.fieldsEnabled());

    for (const char* date : {"", "  ", "2/30/2021", "yesterday"}) {
      dialog.dateText = date;
      EXPECT_EQ(Refused(dialog), std::tuple(row.dateMessage, EventField::kDate, true)) << date;
    }
    dialog.dateText = "3/7/2021";
    EXPECT_EQ(Refused(dialog), std::tuple(row.userMessage, EventField::kUser, false));
    dialog.userId = 4;
    if (!row.fieldMessage.empty()) {
      EXPECT_EQ(Refused(dialog), std::tuple(row.fieldMessage, row.field, false));
      dialog.resolutionId = 2;
      dialog.versionText = "2.0";
      dialog.notes = "Seen again";
    }
    EXPECT_EQ(event->userId, original->userId);
    EXPECT_EQ(event->date, original->date);

    EXPECT_EQ(Closed(dialog), EventDialogResult::kOk);
    EXPECT_EQ(event->userId, 4u);
    EXPECT_EQ(event->date, March7());
    EXPECT_EQ(EventDialog(*event, EventDialogMode::kEdit, kMe, true).userId, 4u);
  }
}

TEST(EventDialog, EstimateAndFixFields) {
  CEstimateEvent estimate;
  estimate.date = March7();
  EventDialog dialog(estimate, EventDialogMode::kEdit, kMe, true);

  dialog.hoursText = " ";
  dialog.estimatedDateText = "  ";
  EXPECT_EQ(std::get<0>(Refused(dialog)),
            "Please estimate the number of hours to resolve the problem or enter a target date or "
            "version.");

  dialog.estimatedDateText = "4/1/2021";
  EXPECT_EQ(Closed(dialog), EventDialogResult::kOk);
  EXPECT_EQ(estimate.hours, -1.0);
  EXPECT_EQ(estimate.estimatedDate, Day(2021, 4, 1));
  EXPECT_EQ(estimate.userId, kMe);

  dialog.estimatedDateText = "";
  dialog.versionText = "2.1";
  EXPECT_EQ(Closed(dialog, EventDialogResult::kSaveAndAssign), EventDialogResult::kSaveAndAssign);
  EXPECT_EQ(estimate.estimatedDate, platform::kNoStamp);
  EXPECT_EQ(estimate.estimatedVersion, "2.1");

  estimate.hours = 2.5;
  EventDialog reopened(estimate, EventDialogMode::kEdit, kMe, true);
  EXPECT_EQ(reopened.hoursText, " 2.50");
  EXPECT_EQ(Closed(reopened), EventDialogResult::kOk);
  EXPECT_EQ(estimate.hours, 2.5);

  CFixEvent fix;
  fix.date = March7();
  EventDialog fixDialog(fix, EventDialogMode::kEdit, kMe, true);
  fixDialog.resolutionId = 3;
  fixDialog.affectsTestPlan = true;
  fixDialog.hoursText = "1.5";
  fixDialog.versionText = std::string(31, 'v') + "\xC3\xA9";  // whole characters only
  ASSERT_EQ(Closed(fixDialog), EventDialogResult::kOk);
  EXPECT_EQ(
      std::tuple(fix.hours, fix.resolutionId, fix.affectsDocs, fix.affectsTestPlan, fix.fixVersion),
      std::tuple(1.5, 3u, false, true, std::string(31, 'v')));
  fixDialog.hoursText = "-0";
  ASSERT_EQ(Closed(fixDialog), EventDialogResult::kOk);
  EXPECT_EQ(EventDialog(fix, EventDialogMode::kEdit, kMe, true).hoursText, " 0.00");
  fix.hours = -1.0;
  EXPECT_EQ(EventDialog(fix, EventDialogMode::kEdit, kMe, true).hoursText, "");
}

TEST(EventDialog, VerifySaveButtonsAndViewMode) {
  // Shown even to a user without the right to assign; Pass and Fail switch them.
  CVerifyEvent verify;
  verify.date = March7();
  EventDialog dialog(verify, EventDialogMode::kEdit, kMe, false);
  EXPECT_EQ(Buttons(dialog), "aR");
  dialog.passed = false;
  EXPECT_EQ(Buttons(dialog), "Ar");
  EXPECT_EQ(Closed(dialog, EventDialogResult::kSaveAndAssign), EventDialogResult::kSaveAndAssign);
  EXPECT_FALSE(verify.passed);

  EventDialog failed(verify, EventDialogMode::kEdit, kMe, false);
  EXPECT_EQ(Buttons(failed), "Ar");
  failed.passed = true;
  EXPECT_EQ(Closed(failed, EventDialogResult::kSaveAndRelease), EventDialogResult::kSaveAndRelease);
  EXPECT_TRUE(verify.passed);

  EventDialog view(verify, EventDialogMode::kView, kMe, true);
  EXPECT_FALSE(view.fieldsEnabled());
  EXPECT_EQ(Buttons(view), "--");
  view.userId = 0;
  view.dateText = "";
  view.notes = "changed";
  view.passed = false;
  EXPECT_EQ(Closed(view), EventDialogResult::kOk);
  EXPECT_EQ(std::tuple(verify.userId, verify.date, verify.notes, verify.passed),
            std::tuple(kMe, March7(), "", true));
}

// Notes get CR LF in the control and CR stored: a CR LF already stored is not doubled and
// goes back as a CR, a bare LF stays; they are cut to what the record holds.
TEST(EventDialog, NotesGetCrLfInTheControlAndCrStored) {
  CCommentEvent comment;
  comment.date = March7();
  comment.notes = "one\r\rtwo\r\nthree\nfour\r";
  EventDialog dialog(comment, EventDialogMode::kEdit, kMe, false);
  EXPECT_EQ(dialog.notes, "one\r\n\r\ntwo\r\nthree\nfour\r\n");
  ASSERT_EQ(Closed(dialog), EventDialogResult::kOk);
  EXPECT_EQ(comment.notes, "one\r\rtwo\rthree\nfour\r");
  dialog.notes = std::string(CDefectEvent::kNotesCapacity + 5, 'n');
  ASSERT_EQ(Closed(dialog), EventDialogResult::kOk);
  EXPECT_EQ(comment.notes.size(), CDefectEvent::kNotesCapacity);
}

TEST(EventDialog, ParseDate) {
  const std::pair<const char*, std::uint32_t> read[] = {
      {"3/7/2021", Day(2021, 3, 7)},   {" 03/07/2021 ", Day(2021, 3, 7)},
      {"12/31/39", Day(2039, 12, 31)}, {"1/1/40", Day(1940, 1, 1)},
      {"1/1/00", Day(2000, 1, 1)},     {"2/29/2020", Day(2020, 2, 29)},
      {"2021-03-07", Day(2021, 3, 7)}, {"1/1/1904", 0},
      {"2/6/2040", Day(2040, 2, 6)},
  };
  for (const auto& [text, stamp] : read) EXPECT_EQ(ParseDate(text), stamp) << text;
  EXPECT_EQ(ParseDate(FormatDate(March7() + 3600 * 15)), March7());

  for (const char* text : {"", "3/7", "3/7/", "3/7/2021x", "3/7/202", "3/7/20211", "13/1/2021",
                           "0/1/2021", "1/0/2021", "2/29/2021", "4/31/2021", "3-7-2021",
                           "2021/03/07", "12/31/1903", "1/1/2041", "2021-13-01", "123/1/2021"}) {
    EXPECT_EQ(ParseDate(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace qm::test
