// The events of a defect: their byte forms, their cell of the event list, and what each
// kind does to the copies of its defect.
#include "defects/defect_event.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

#include "defects/defect_lookups.h"
#include "defects/text_forms.h"
#include "people/record_fields.h"
#include "session/page_form.h"

namespace qm {
namespace {

// The text bytes of a 33-byte version field.
constexpr std::size_t kFixedVersionCapacity = 32;
// What a release notes event keeps of its version when it is stored.
constexpr std::size_t kReleaseVersionCapacity = 32;

constexpr Tag kResolutions = MakeTag("reso");

// The last line of the text form, present only with notes.
void TextNotes(std::string& out, std::string_view label, std::string_view notes) {
  if (!notes.empty()) TextLine(out, label, CrToCrLf(notes));
}

// The last row of the HTML form, there with or without notes.
void HtmlNotes(std::string& out, int columns, std::string_view label, std::string_view notes) {
  out += kHtmlRowOpen;
  HtmlCell(out, columns, label, notes);
  out += kHtmlRowClose;
}

// A line of the page form that holds one field.
void PrintLine(PageForm& form, std::string_view label, std::string_view value) {
  form.Field(PageForm::kColumns[0], label, value);
  form.NextLine();
}

void PrintNotes(PageForm& form, std::string_view label, std::string_view notes) {
  if (!notes.empty()) form.Block(label, notes);
}

// Every kind but estimate, comment and release notes ends the assignment.
void EndAssignment(DefectCopies& copies) {
  copies.assignedToId = 0;
  copies.dateAssigned = platform::kNoStamp;
}

}  // namespace

std::string FormatHours(double hours) {
  // Wide enough for the largest double in fixed notation.
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%5.2lf", hours);
  return text.data();
}

std::string GivenHours(double hours) { return hours >= 0 ? FormatHours(hours) : std::string(); }

std::string FormatDate(std::uint32_t stamp) {
  if (stamp == platform::kNoStamp) return {};
  const platform::CivilTime t = platform::CivilFromStamp(stamp);
  return std::to_string(t.month) + "/" + std::to_string(t.day) + "/" + std::to_string(t.year);
}

double ReadHours(PayloadReader& in, std::uint16_t recordVersion, std::size_t oldWidth) {
  if (recordVersion < 0x102) {
    if (oldWidth == 2) {
      std::uint16_t raw = 0;
      if (!in.U16(raw)) return -1.0;
      return static_cast<std::int16_t>(raw);  // all ones is -1, not set, as it is
    }
    std::uint32_t raw = 0;
    if (!in.U32(raw) || raw == 0xFFFFFFFF) return -1.0;
    return static_cast<double>(raw);
  }
  if (recordVersion < 0x104) {
    std::array<std::uint8_t, 12> skipped{};
    return in.Raw(skipped) ? 0.0 : -1.0;
  }
  double hours = -1.0;
  in.Float64(hours);
  return hours;
}

void WriteFixedVersion(PayloadWriter& out, std::string_view text) {
  const std::string_view kept = CutToCapacity(text, kFixedVersionCapacity);
  std::array<std::uint8_t, 1 + kFixedVersionCapacity> field{};
  field[0] = static_cast<std::uint8_t>(kept.size());
  std::copy(kept.begin(), kept.end(), field.begin() + 1);
  out.Raw(field);
}

bool ReadFixedVersion(PayloadReader& in, std::string& field) {
  std::array<std::uint8_t, 1 + kFixedVersionCapacity> stored{};
  if (!in.Raw(stored)) return false;
  const std::size_t length = std::min<std::size_t>(stored[0], kFixedVersionCapacity);
  const auto text = std::span(stored).subspan(1, length);
  // The field was always used as a terminated text, so a 0 byte ends it.
  field.assign(text.begin(), std::find(text.begin(), text.end(), std::uint8_t{0}));
  return true;
}

CDefectEvent::CDefectEvent(EventKind kind) : kind_(kind) {}

std::unique_ptr<CDefectEvent> CDefectEvent::Make(std::int16_t kind) {
  switch (static_cast<EventKind>(kind)) {
    case EventKind::kAssign:
      return std::make_unique<CAssignEvent>();
    case EventKind::kFix:
      return std::make_unique<CFixEvent>();
    case EventKind::kVerify:
      return std::make_unique<CVerifyEvent>();
    case EventKind::kClose:
      return std::make_unique<CCloseEvent>();
    case EventKind::kReOpen:
      return std::make_unique<CReOpenEvent>();
    case EventKind::kEstimate:
      return std::make_unique<CEstimateEvent>();
    case EventKind::kComment:
      return std::make_unique<CCommentEvent>();
    case EventKind::kReleaseNotes:
      return std::make_unique<CReleaseNotesEvent>();
  }
  return nullptr;
}

int CDefectEvent::Weight() const {
  switch (kind_) {
    case EventKind::kAssign:
      return 2;
    case EventKind::kComment:
      return 3;
    case EventKind::kEstimate:
      return 4;
    case EventKind::kFix:
      return 5;
    case EventKind::kVerify:
      return 6;
    case EventKind::kClose:
      return 7;
    case EventKind::kReOpen:
      return 8;
    case EventKind::kReleaseNotes:
      return 9;
  }
  return 0;
}

std::string_view CDefectEvent::ActionText() const {
  switch (kind_) {
    case EventKind::kAssign:
      return "Assigned";
    case EventKind::kFix:
      return "Fixed";
    case EventKind::kVerify:
      return "Verified";
    case EventKind::kClose:
      return "Closed";
    case EventKind::kReOpen:
      return "Re-opened";
    case EventKind::kEstimate:
      return "Estimated";
    case EventKind::kComment:
      return "Comment";
    case EventKind::kReleaseNotes:
      return "Released";
  }
  return {};
}

// A read past the payload's end reads as nothing, so an event cut short keeps the
// defaults of the fields it lacks; the defect's own checks judge the record.
void CDefectEvent::ReadFrom(PayloadReader& in, std::uint16_t recordVersion) {
  version = recordVersion;
  in.U32(userId);
  in.Stamp(date);
  if (recordVersion < 0x102) {
    ReadText8(in, notes);
  } else {
    in.Text(notes, kNotesCapacity);
  }
  ReadOwn(in, recordVersion);
}

void CDefectEvent::WriteTo(PayloadWriter& out) const {
  out.U32(userId);
  out.Stamp(date);
  out.Text(notes, kNotesCapacity);
  WriteOwn(out);
}

void CAssignEvent::Apply(DefectCopies& copies, std::uint32_t currentUserId) const {
  copies.assignedToId = userId;
  copies.dateAssigned = date;
  if (currentUserId != 0) copies.assignedToMe = currentUserId == userId;
}

void CAssignEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Assigned to: ", UserName(lookups, userId));
  TextLine(out, "Date Assigned: ", FormatDate(date));
  TextNotes(out, "Comments: ", notes);
}

void CAssignEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Assigned to:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Assigned:", FormatDate(date));
  out += kHtmlRowClose;
  HtmlNotes(out, 2, "Comments:", notes);
  out += kHtmlTableClose;
}

void CAssignEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Assigned to: ", UserName(lookups, userId));
  PrintLine(form, "Date Assigned: ", FormatDate(date));
  PrintNotes(form, "Notes: ", notes);
}

std::string CFixEvent::GetInfoText() const {
  std::string text = "Effort: ";
  if (hours >= 0) {
    text += FormatHours(hours) + " hours";
    if (affectsDocs || affectsTestPlan) text += " Affects";
    if (affectsDocs) text += " Docs";
    if (affectsDocs && affectsTestPlan) text += " and";
    if (affectsTestPlan) text += " Test Plans";
  } else {
    text += "??";
  }
  return text;
}

void CFixEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  copies.fixedById = userId;
  copies.dateFixed = date;
  EndAssignment(copies);
  copies.fixVersion = fixVersion;
  copies.resolutionId = resolutionId;
  copies.affectsDocs = affectsDocs;
  copies.affectsTestPlan = affectsTestPlan;
  if (hours > 0) copies.hoursToFix = copies.hoursToFix < 0 ? hours : copies.hoursToFix + hours;
}

void CFixEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Fixed by: ", UserName(lookups, userId));
  TextLine(out, "Date Fixed: ", FormatDate(date));
  TextLine(out, "Version: ", fixVersion);
  TextLine(out, "Resolution: ", ValueName(lookups, kResolutions, resolutionId));
  if (hours >= 0) TextLine(out, "Hours to Fix: ", FormatHours(hours));
  TextLine(out, "Affects Documentation: ", YesNo(affectsDocs));
  TextLine(out, "Affects Test Plan: ", YesNo(affectsTestPlan));
  TextNotes(out, "Notes: ", notes);
}

void CFixEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Fixed by:", UserName(lookups, userId));
  HtmlCell(out, 2, "Date Fixed:", FormatDate(date));
  out += kHtmlRowClose;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Version:", fixVersion);
  HtmlCell(out, 1, "Resolution:", ValueName(lookups, kResolutions, resolutionId));
  HtmlCell(out, 1, "Hours to Fix:", GivenHours(hours));
  out += kHtmlRowClose;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Affects Documentation:", YesNo(affectsDocs));
  HtmlCell(out, 2, "Affects Test Plan:", YesNo(affectsTestPlan));
  out += kHtmlRowClose;
  HtmlNotes(out, 3, "Notes:", notes);
  out += kHtmlTableClose;
}

void CFixEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Fixed by: ", UserName(lookups, userId));
  PrintLine(form, "Date Fixed: ", FormatDate(date));
  PrintLine(form, "Version: ", fixVersion);
  PrintLine(form, "Resolution: ", ValueName(lookups, kResolutions, resolutionId));
  if (hours >= 0) PrintLine(form, "Hours to Fix: ", FormatHours(hours));
  PrintLine(form, "Affects Documentation: ", YesNo(affectsDocs));
  PrintLine(form, "Affects Test Plan: ", YesNo(affectsTestPlan));
  PrintNotes(form, "Notes: ", notes);
}

void CFixEvent::ReadOwn(PayloadReader& in, std::uint16_t recordVersion) {
  hours = ReadHours(in, recordVersion, 2);
  in.U8(affectsDocs);
  in.U8(affectsTestPlan);
  in.U32(resolutionId);
  ReadFixedVersion(in, fixVersion);
}

void CFixEvent::WriteOwn(PayloadWriter& out) const {
  out.Float64(hours);
  out.U8(affectsDocs ? 1 : 0);
  out.U8(affectsTestPlan ? 1 : 0);
  out.U32(resolutionId);
  WriteFixedVersion(out, fixVersion);
}

std::string CVerifyEvent::GetInfoText() const { return passed ? "Passed" : "Failed"; }

void CVerifyEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  copies.verifiedById = userId;
  copies.dateVerified = date;
  EndAssignment(copies);
  // A pass closes the defect without a closing resolution of its own.
  if (passed) {
    copies.closedById = userId;
    copies.dateClosed = date;
  }
}

// The result reads as in the event list: "Passed" or "Failed".
void CVerifyEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Verified by: ", UserName(lookups, userId));
  TextLine(out, "Date Verified: ", FormatDate(date));
  TextLine(out, "Result: ", GetInfoText());
  TextNotes(out, "Notes: ", notes);
}

void CVerifyEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Verified by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Verified:", FormatDate(date));
  HtmlCell(out, 1, "Result:", GetInfoText());
  out += kHtmlRowClose;
  HtmlNotes(out, 3, "Notes:", notes);
  out += kHtmlTableClose;
}

void CVerifyEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Verified by: ", UserName(lookups, userId));
  PrintLine(form, "Date Verified: ", FormatDate(date));
  PrintLine(form, "Result: ", GetInfoText());
  PrintNotes(form, "Notes: ", notes);
}

void CVerifyEvent::ReadOwn(PayloadReader& in, std::uint16_t) { in.U8(passed); }

void CVerifyEvent::WriteOwn(PayloadWriter& out) const { out.U8(passed ? 1 : 0); }

void CCloseEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  EndAssignment(copies);
  copies.resolutionId = resolutionId;
  copies.closeResolutionId = resolutionId;
  copies.closedById = userId;
  copies.dateClosed = date;
}

void CCloseEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Closed by: ", UserName(lookups, userId));
  TextLine(out, "Date Closed: ", FormatDate(date));
  TextLine(out, "Resolution: ", ValueName(lookups, kResolutions, resolutionId));
  TextNotes(out, "Notes: ", notes);
}

// The HTML calls the notes comments, the text and the page do not.
void CCloseEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Closed by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Closed:", FormatDate(date));
  HtmlCell(out, 1, "Resolution:", ValueName(lookups, kResolutions, resolutionId));
  out += kHtmlRowClose;
  HtmlNotes(out, 3, "Comments:", notes);
  out += kHtmlTableClose;
}

void CCloseEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Closed by: ", UserName(lookups, userId));
  PrintLine(form, "Date Closed: ", FormatDate(date));
  PrintLine(form, "Resolution: ", ValueName(lookups, kResolutions, resolutionId));
  PrintNotes(form, "Notes: ", notes);
}

void CCloseEvent::ReadOwn(PayloadReader& in, std::uint16_t) { in.U32(resolutionId); }

void CCloseEvent::WriteOwn(PayloadWriter& out) const { out.U32(resolutionId); }

// The hours spent and the estimate outlive a re-open.
void CReOpenEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  EndAssignment(copies);
  copies.resolutionId = 0;
  copies.fixedById = 0;
  copies.dateFixed = platform::kNoStamp;
  copies.verifiedById = 0;
  copies.dateVerified = platform::kNoStamp;
  copies.closedById = 0;
  copies.closeResolutionId = 0;
  copies.dateClosed = platform::kNoStamp;
  copies.reopenedById = userId;
  copies.dateReopened = date;
}

// The text form's two labels have no blank behind the colon, so the value touches it: that
// is how this form has always read. The page form's labels have the blank.
void CReOpenEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Re-opened by:", UserName(lookups, userId));
  TextLine(out, "Date Re-opened:", FormatDate(date));
  TextNotes(out, "Notes: ", notes);
}

void CReOpenEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Re-opened by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Re-opened:", FormatDate(date));
  out += kHtmlRowClose;
  HtmlNotes(out, 2, "Notes:", notes);
  out += kHtmlTableClose;
}

void CReOpenEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Re-opened by: ", UserName(lookups, userId));
  PrintLine(form, "Date Re-opened: ", FormatDate(date));
  PrintNotes(form, "Notes: ", notes);
}

std::string CEstimateEvent::GetInfoText() const {
  std::string text;
  const auto add = [&text](std::string_view part) {
    if (!text.empty()) text += ", ";
    text += part;
  };
  if (hours >= 0) add("Hours: " + FormatHours(hours));
  if (estimatedDate != platform::kNoStamp) add("Date: " + FormatDate(estimatedDate));
  if (!estimatedVersion.empty()) add("Version: " + estimatedVersion);
  return text;
}

void CEstimateEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  copies.estimatedById = userId;
  copies.dateEstimated = date;
  copies.estimatedFixDate = estimatedDate;
  copies.estimatedHours = hours;
  copies.estimatedVersion = estimatedVersion;
}

void CEstimateEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Estimated by: ", UserName(lookups, userId));
  TextLine(out, "Date Estimated: ", FormatDate(date));
  if (hours >= 0) TextLine(out, "Hours to Fix: ", FormatHours(hours));
  TextLine(out, "Estimated completion date: ",
           FormatDate(estimatedDate) + "  or version: " + estimatedVersion);
  TextNotes(out, "Estimate Notes: ", notes);
}

void CEstimateEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Estimated by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Estimated:", FormatDate(date));
  out += kHtmlRowClose;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Hours to Fix:", GivenHours(hours));
  HtmlCell(out, 1, "Estimated completion date:",
           FormatDate(estimatedDate) + " or version: " + estimatedVersion);
  out += kHtmlRowClose;
  HtmlNotes(out, 2, "Notes:", notes);
  out += kHtmlTableClose;
}

// The date and the version share a line, each a field of its own.
void CEstimateEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Estimated by: ", UserName(lookups, userId));
  PrintLine(form, "Date Estimated: ", FormatDate(date));
  if (hours >= 0) PrintLine(form, "Hours to Fix: ", FormatHours(hours));
  form.Field(PageForm::kColumns[0], "Estimated completion date: ", FormatDate(estimatedDate));
  form.Field(PageForm::kColumns[1], "or version: ", estimatedVersion);
  form.NextLine();
  PrintNotes(form, "Notes: ", notes);
}

void CEstimateEvent::ReadOwn(PayloadReader& in, std::uint16_t) {
  in.Float64(hours);
  in.Stamp(estimatedDate);
  ReadFixedVersion(in, estimatedVersion);
}

void CEstimateEvent::WriteOwn(PayloadWriter& out) const {
  out.Float64(hours);
  out.Stamp(estimatedDate);
  WriteFixedVersion(out, estimatedVersion);
}

void CCommentEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Comment by: ", UserName(lookups, userId));
  TextLine(out, "Date Entered: ", FormatDate(date));
  TextNotes(out, "Comments: ", notes);
}

void CCommentEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Comment by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Entered:", FormatDate(date));
  out += kHtmlRowClose;
  HtmlNotes(out, 2, "Comments:", notes);
  out += kHtmlTableClose;
}

void CCommentEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Comment by: ", UserName(lookups, userId));
  PrintLine(form, "Date Entered: ", FormatDate(date));
  PrintNotes(form, "Comments: ", notes);
}

std::string CReleaseNotesEvent::GetInfoText() const {
  return "Released in Version: " + (releaseVersion.empty() ? "not set" : releaseVersion);
}

void CReleaseNotesEvent::Apply(DefectCopies& copies, std::uint32_t) const {
  copies.hasReleaseNotes = true;
  copies.releaseVersion = releaseVersion;
  copies.releaseNotes = &notes;
}

void CReleaseNotesEvent::WriteText(std::string& out, const DefectLookups& lookups) const {
  TextLine(out, "Entered by: ", UserName(lookups, userId));
  TextLine(out, "Date Entered: ", FormatDate(date));
  TextLine(out, "Released in Version: ", releaseVersion);
  TextNotes(out, "Release Notes: ", notes);
}

// The HTML calls the date the release date, the text and the page the date of entry.
void CReleaseNotesEvent::WriteHtml(std::string& out, const DefectLookups& lookups) const {
  out += kHtmlTableOpen;
  out += kHtmlRowOpen;
  HtmlCell(out, 1, "Entered by:", UserName(lookups, userId));
  HtmlCell(out, 1, "Date Released:", FormatDate(date));
  HtmlCell(out, 1, "Released in Version:", releaseVersion);
  out += kHtmlRowClose;
  HtmlNotes(out, 3, "Release Notes:", notes);
  out += kHtmlTableClose;
}

void CReleaseNotesEvent::Print(PageForm& form, const DefectLookups& lookups) const {
  PrintLine(form, "Entered by: ", UserName(lookups, userId));
  PrintLine(form, "Date Entered: ", FormatDate(date));
  PrintLine(form, "Released in Version: ", releaseVersion);
  PrintNotes(form, "Release Notes: ", notes);
}

void CReleaseNotesEvent::ReadOwn(PayloadReader& in, std::uint16_t) {
  in.String(releaseVersion, kStringCapacity);
}

void CReleaseNotesEvent::WriteOwn(PayloadWriter& out) const {
  out.String(releaseVersion, kReleaseVersionCapacity);
}

}  // namespace qm
