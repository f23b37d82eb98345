// The event dialogs' texts by kind, their button states and checks, and the reading of
// the dates and hours people type.
#include "defects/event_dialogs.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "defects/text_forms.h"
#include "platform/clock.h"
#include "session/payload.h"

namespace qm {
namespace {

// The version fields hold at most this many bytes.
constexpr std::size_t kVersionCapacity = 32;

constexpr std::string_view kResolutionMessage = "Please select the defect's resolution.";
constexpr std::string_view kHoursMessage = "The number of hours you entered is not valid.";
constexpr std::string_view kFixHoursMessage =
    "Please enter the hours to fix as a number of 0 or more, such as 2.5, or leave the field "
    "empty.";
constexpr std::string_view kCompletionDateMessage =
    "Please enter the estimated completion date as M/D/YYYY or YYYY-MM-DD, or leave the field "
    "empty.";
constexpr std::string_view kCommentMessage = "Please enter the text of the comment.";
constexpr std::string_view kNothingEstimatedMessage =
    "Please estimate the number of hours to resolve the problem or enter a target date or "
    "version.";

struct KindTexts {
  std::string_view title;
  std::span<const std::string_view> labels;
  std::string_view dateMessage;
  std::string_view userMessage;
};

constexpr std::array<std::string_view, 3> kAssignLabels = {"Assign to:", "Date:", "Notes:"};
constexpr std::array<std::string_view, 8> kFixLabels = {
    "Fixed by:",         "Date:",         "Version:",
    "Resolution:",       "Hours to Fix:", "Affects Documentation",
    "Affects Test Plan", "Notes:"};
constexpr std::array<std::string_view, 5> kVerifyLabels = {"Verified by:", "Date:", "Pass", "Fail",
                                                           "Notes:"};
constexpr std::array<std::string_view, 4> kCloseLabels = {
    "Closed by:", "Date:", "Resolution:", "Notes:"};
constexpr std::array<std::string_view, 3> kReOpenLabels = {"Re-opened by:", "Date:", "Notes:"};
constexpr std::array<std::string_view, 7> kEstimateLabels = {"Estimate provided by:",
                                                             "Date:",
                                                             "Estimated time to complete:",
                                                             "hours",
                                                             "Estimated completion date:",
                                                             "or version:",
                                                             "Assumptions:"};
constexpr std::array<std::string_view, 3> kCommentLabels = {"Comment by:", "Date:", "Comment:"};
constexpr std::array<std::string_view, 4> kReleaseNotesLabels = {
    "Entered by:", "Released in Version:", "Date:",
    "Enter release notes to include in read me files, documentation, etc.:"};

const KindTexts& TextsOf(EventKind kind) {
  static const KindTexts kAssign{"Assign Defect", kAssignLabels,
                                 "Please enter the date this defect was assigned.",
                                 "Please select the user to which this defect was assigned."};
  static const KindTexts kFix{"Fix Defect", kFixLabels,
                              "Please enter the date this defect was fixed.",
                              "Please select the user who fixed this defect."};
  static const KindTexts kVerify{"Verify Defect", kVerifyLabels,
                                 "Please enter the date this defect was verified.",
                                 "Please select the user who verified this defect."};
  static const KindTexts kClose{"Close Defect", kCloseLabels,
                                "Please enter the date this defect was closed.",
                                "Please select the user who closed this defect."};
  static const KindTexts kReOpen{"Re-open Defect", kReOpenLabels,
                                 "Please enter the date this defect was re-opened.",
                                 "Please select the user who re-opened this defect."};
  static const KindTexts kEstimate{
      "Estimate to Fix Problem", kEstimateLabels,
      "Please enter the date this estimate was created.",
      "Please select the user who estimated the resolution to the problem."};
  static const KindTexts kComment{"Defect Comments", kCommentLabels,
                                  "Please enter the date this comment was entered.",
                                  "Please select the user who entered this comment."};
  static const KindTexts kReleaseNotes{"Release Fix or Feature", kReleaseNotesLabels,
                                       "Please enter the date these release notes were entered.",
                                       "Please select the user who entered these notes."};
  switch (kind) {
    case EventKind::kAssign:
      return kAssign;
    case EventKind::kFix:
      return kFix;
    case EventKind::kVerify:
      return kVerify;
    case EventKind::kClose:
      return kClose;
    case EventKind::kReOpen:
      return kReOpen;
    case EventKind::kEstimate:
      return kEstimate;
    case EventKind::kComment:
      return kComment;
    case EventKind::kReleaseNotes:
      break;
  }
  return kReleaseNotes;
}

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// The whole text, blanks around it aside, as one finite number; nothing for any other
// text. from_chars reads the same in every locale, as the stored hours must.
std::optional<double> WholeNumber(std::string_view text) {
  text = Trim(text);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

// Reads up to `maxDigits` digits at the start of `text`; answers how many it took.
std::size_t TakeNumber(std::string_view& text, std::size_t maxDigits, int& value) {
  std::size_t digits = 0;
  value = 0;
  while (digits < text.size() && digits < maxDigits && text[digits] >= '0' && text[digits] <= '9') {
    value = value * 10 + (text[digits] - '0');
    ++digits;
  }
  text.remove_prefix(digits);
  return digits;
}

bool TakeChar(std::string_view& text, char c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

int DaysInMonth(int year, int month) {
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

}  // namespace

std::optional<std::uint32_t> ParseDate(std::string_view text) {
  text = Trim(text);
  int year = 0;
  int month = 0;
  int day = 0;
  int first = 0;
  const std::size_t firstDigits = TakeNumber(text, 4, first);
  if (firstDigits == 4 && TakeChar(text, '-')) {
    year = first;
    if (TakeNumber(text, 2, month) == 0 || !TakeChar(text, '-') || TakeNumber(text, 2, day) == 0)
      return std::nullopt;
  } else {
    month = first;
    if (firstDigits == 0 || firstDigits > 2 || !TakeChar(text, '/') ||
        TakeNumber(text, 2, day) == 0 || !TakeChar(text, '/'))
      return std::nullopt;
    const std::size_t yearDigits = TakeNumber(text, 4, year);
    if (yearDigits == 2) {
      year += year >= 40 ? 1900 : 2000;
    } else if (yearDigits != 4) {
      return std::nullopt;
    }
  }
  if (!text.empty() || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month))
    return std::nullopt;
  const std::uint32_t stamp = platform::StampFromCivil({year, month, day, 0, 0, 0});
  // The clock answers 0 for a day it cannot hold; only 1 January 1904 is 0 itself.
  if (stamp == 0 && !(year == 1904 && month == 1 && day == 1)) return std::nullopt;
  return stamp;
}

EventDialog::EventDialog(CDefectEvent& event, EventDialogMode mode, std::uint32_t loggedInUserId,
                         bool mayAssign)
    : event_(event), mode_(mode), mayAssign_(mayAssign) {
  userId = event.userId;
  if (userId == 0 && event.kind() != EventKind::kAssign) userId = loggedInUserId;
  dateText = FormatDate(event.date);
  notes = CrToCrLf(event.notes);
  switch (event.kind()) {
    case EventKind::kFix: {
      const auto& fix = static_cast<const CFixEvent&>(event);
      versionText = fix.fixVersion;
      resolutionId = fix.resolutionId;
      hoursText = GivenHours(fix.hours);
      affectsDocs = fix.affectsDocs;
      affectsTestPlan = fix.affectsTestPlan;
      break;
    }
    case EventKind::kVerify:
      passed = static_cast<const CVerifyEvent&>(event).passed;
      break;
    case EventKind::kClose:
      resolutionId = static_cast<const CCloseEvent&>(event).resolutionId;
      break;
    case EventKind::kEstimate: {
      const auto& estimate = static_cast<const CEstimateEvent&>(event);
      hoursText = GivenHours(estimate.hours);
      estimatedDateText = FormatDate(estimate.estimatedDate);
      versionText = estimate.estimatedVersion;
      break;
    }
    case EventKind::kReleaseNotes:
      versionText = static_cast<const CReleaseNotesEvent&>(event).releaseVersion;
      break;
    case EventKind::kAssign:
    case EventKind::kReOpen:
    case EventKind::kComment:
      break;
  }
}

std::string_view EventDialog::Title() const { return TextsOf(kind()).title; }

std::span<const std::string_view> EventDialog::Labels() const { return TextsOf(kind()).labels; }

bool EventDialog::saveAndAssignVisible() const {
  if (mode_ != EventDialogMode::kEdit) return false;
  switch (kind()) {
    case EventKind::kFix:
    case EventKind::kEstimate:
    case EventKind::kReOpen:
      return mayAssign_;
    case EventKind::kVerify:
      // Shown whatever the user's rights, unlike the others.
      return true;
    default:
      return false;
  }
}

bool EventDialog::saveAndAssignEnabled() const {
  return saveAndAssignVisible() && (kind() != EventKind::kVerify || !passed);
}

bool EventDialog::saveAndReleaseVisible() const {
  return mode_ == EventDialogMode::kEdit && kind() == EventKind::kVerify;
}

bool EventDialog::saveAndReleaseEnabled() const { return saveAndReleaseVisible() && passed; }

std::optional<EventDialogRefusal> EventDialog::Validate() const {
  const KindTexts& texts = TextsOf(kind());
  if (!ParseDate(dateText)) return EventDialogRefusal{texts.dateMessage, EventField::kDate, true};
  if (userId == 0) return EventDialogRefusal{texts.userMessage, EventField::kUser, false};
  switch (kind()) {
    case EventKind::kFix:
      if (resolutionId == 0)
        return EventDialogRefusal{kResolutionMessage, EventField::kResolution, false};
      // Any hours of 0 or more, where an estimate needs more than 0.
      if (const std::optional<double> hours = WholeNumber(hoursText);
          !Trim(hoursText).empty() && !(hours && *hours >= 0))
        return EventDialogRefusal{kFixHoursMessage, EventField::kHours, false};
      break;
    case EventKind::kClose:
      if (resolutionId == 0)
        return EventDialogRefusal{kResolutionMessage, EventField::kResolution, false};
      break;
    case EventKind::kEstimate: {
      const bool noHours = Trim(hoursText).empty();
      const bool noDate = Trim(estimatedDateText).empty();
      if (const std::optional<double> hours = WholeNumber(hoursText);
          !noHours && !(hours && *hours > 0))
        return EventDialogRefusal{kHoursMessage, EventField::kHours, false};
      if (!noDate && !ParseDate(estimatedDateText))
        return EventDialogRefusal{kCompletionDateMessage, EventField::kEstimatedDate, true};
      if (noHours && noDate && Trim(versionText).empty())
        return EventDialogRefusal{kNothingEstimatedMessage, EventField::kHours, false};
      break;
    }
    case EventKind::kComment:
      if (notes.find_first_not_of(" \t\r\n") == std::string::npos)
        return EventDialogRefusal{kCommentMessage, EventField::kNotes, false};
      break;
    default:
      break;
  }
  return std::nullopt;
}

std::variant<EventDialogResult, EventDialogRefusal> EventDialog::Accept(EventDialogResult button) {
  if (mode_ == EventDialogMode::kView) return EventDialogResult::kOk;
  if (std::optional<EventDialogRefusal> refusal = Validate()) return *refusal;
  Store();
  return button;
}

void EventDialog::Store() {
  event_.userId = userId;
  event_.date = *ParseDate(dateText);
  event_.notes = CutToCapacity(CrLfToCr(notes), CDefectEvent::kNotesCapacity);
  const std::string version(CutToCapacity(versionText, kVersionCapacity));
  const bool noHours = Trim(hoursText).empty();
  switch (kind()) {
    case EventKind::kFix: {
      auto& fix = static_cast<CFixEvent&>(event_);
      fix.fixVersion = version;
      fix.resolutionId = resolutionId;
      // Adding 0.0 makes a typed "-0" the 0 hours it means.
      fix.hours = noHours ? -1.0 : *WholeNumber(hoursText) + 0.0;
      fix.affectsDocs = affectsDocs;
      fix.affectsTestPlan = affectsTestPlan;
      break;
    }
    case EventKind::kVerify:
      static_cast<CVerifyEvent&>(event_).passed = passed;
      break;
    case EventKind::kClose:
      static_cast<CCloseEvent&>(event_).resolutionId = resolutionId;
      break;
    case EventKind::kEstimate: {
      auto& estimate = static_cast<CEstimateEvent&>(event_);
      estimate.hours = noHours ? -1.0 : *WholeNumber(hoursText);
      estimate.estimatedDate = ParseDate(estimatedDateText).value_or(platform::kNoStamp);
      estimate.estimatedVersion = version;
      break;
    }
    case EventKind::kReleaseNotes:
      static_cast<CReleaseNotesEvent&>(event_).releaseVersion = version;
      break;
    case EventKind::kAssign:
    case EventKind::kReOpen:
    case EventKind::kComment:
      break;
  }
}

}  // namespace qm
