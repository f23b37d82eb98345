// The events of a defect's life (assign, fix, verify, close, re-open, estimate, comment,
// release notes), stored inside the defect record, and what each does to the fields a
// defect copies from its events.
//
// An event in a defect record, behind its kind (u16):
//
//   order  field      form
//   1      userId     u32      for an assignment the assignee, else who did it
//   2      date       stamp
//   3      notes      text8 in a defect record below 0x102, else text; written as text
//   4      own fields, by kind:
//          fix        hours (below 0x102 an i16, -1 is none; 0x102 and 0x103 twelve
//                     bytes skipped, value 0.0; from 0x104 float64), affectsDocs u8,
//                     affectsTestPlan u8, resolutionId u32, fixVersion (33 bytes: a
//                     length byte, the text, padding)
//          verify     passed u8
//          close      resolutionId u32
//          estimate   hours float64, estimatedDate stamp, estimatedVersion (33 bytes as
//                     fixVersion)
//          release    releaseVersion string(255)
//          notes
//          assign, comment and re-open have none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "defects/session_id.h"
#include "platform/clock.h"
#include "session/payload.h"

namespace qm {

class DefectLookups;
class PageForm;

// The kinds as the record stores them; 1 is the report row of the event list only.
enum class EventKind : std::int16_t {
  kAssign = 2,
  kFix = 3,
  kVerify = 4,
  kClose = 5,
  kReOpen = 6,
  kEstimate = 7,
  kComment = 8,
  kReleaseNotes = 9,
};

// The fields of a defect that are copies worked out by replaying its events, in their
// state before any event.
struct DefectCopies {
  std::uint16_t status = 1;  // 1 open to 6 re-opened
  std::uint32_t assignedToId = 0;
  std::uint32_t dateAssigned = platform::kNoStamp;
  bool assignedToMe = false;  // the last assignee is the user logged in
  std::uint32_t resolutionId = 0;
  std::uint32_t fixedById = 0;
  std::uint32_t dateFixed = platform::kNoStamp;
  double hoursToFix = -1.0;  // below 0: not set
  bool affectsDocs = false;
  bool affectsTestPlan = false;
  std::string fixVersion;
  std::uint32_t verifiedById = 0;
  std::uint32_t dateVerified = platform::kNoStamp;
  std::uint32_t closedById = 0;
  std::uint32_t dateClosed = platform::kNoStamp;
  std::uint32_t closeResolutionId = 0;
  std::uint32_t reopenedById = 0;
  std::uint32_t dateReopened = platform::kNoStamp;
  std::uint32_t estimatedById = 0;
  std::uint32_t dateEstimated = platform::kNoStamp;
  double estimatedHours = -1.0;
  std::uint32_t estimatedFixDate = platform::kNoStamp;
  std::string estimatedVersion;
  std::string releaseVersion;
  const std::string* releaseNotes = nullptr;  // the notes of the last release event
  bool hasReleaseNotes = false;
};

class CDefectEvent {
 public:
  // Notes and texts hold at most this many bytes, as the record's text does.
  static constexpr std::size_t kNotesCapacity = 32767;

  virtual ~CDefectEvent() = default;

  // A new event of a stored kind; null for a kind outside 2 to 9.
  static std::unique_ptr<CDefectEvent> Make(std::int16_t kind);

  EventKind kind() const { return kind_; }
  // Where the kind goes among events of a date that is not set: assign 2, comment 3,
  // estimate 4, fix 5, verify 6, close 7, re-open 8, release notes 9.
  int Weight() const;
  // "Assigned", "Fixed", ...: the action of the event list.
  std::string_view ActionText() const;
  // The "Other Information" cell of the event list.
  virtual std::string GetInfoText() const { return {}; }

  // The body behind the kind, read in the form of the defect record's `recordVersion`.
  void ReadFrom(PayloadReader& in, std::uint16_t recordVersion);
  void WriteTo(PayloadWriter& out) const;

  // What the event does to the copies of its defect; `currentUserId` is the user logged
  // in, 0 for none.
  virtual void Apply(DefectCopies& copies, std::uint32_t currentUserId) const = 0;
  // The status a defect has after this event, from the status before it.
  virtual std::uint16_t StatusAfter(std::uint16_t status) const { return status; }

  // A copy with the same session id.
  virtual std::unique_ptr<CDefectEvent> Clone() const = 0;

  // The event's part of its defect's text form (each line ended by CR LF), HTML form (one
  // table) and page form (fields on the lines of `form`, then its notes). A date that is
  // not set reads empty, a user who is gone as an empty name; the text and the page leave
  // out empty notes.
  virtual void WriteText(std::string& out, const DefectLookups& lookups) const = 0;
  virtual void WriteHtml(std::string& out, const DefectLookups& lookups) const = 0;
  virtual void Print(PageForm& form, const DefectLookups& lookups) const = 0;

  std::uint32_t userId = 0;
  std::uint32_t date = platform::kNoStamp;
  std::string notes;
  std::uint16_t version = 0x100;  // the version of the record it was read from
  // A running number of this process, never stored, kept by Clone: two copies of a
  // defect pair their events by it.
  std::uint32_t sessionId = NextSessionId();

 protected:
  explicit CDefectEvent(EventKind kind);
  CDefectEvent(const CDefectEvent&) = default;

  virtual void ReadOwn(PayloadReader&, std::uint16_t /*recordVersion*/) {}
  virtual void WriteOwn(PayloadWriter&) const {}

 private:
  EventKind kind_;
};

// The base of each kind: its kind, and the copy every kind makes of itself the same way.
template <class Kind, EventKind kKind>
class EventOfKind : public CDefectEvent {
 public:
  std::unique_ptr<CDefectEvent> Clone() const override {
    return std::make_unique<Kind>(static_cast<const Kind&>(*this));
  }

 protected:
  EventOfKind() : CDefectEvent(kKind) {}
};

class CAssignEvent : public EventOfKind<CAssignEvent, EventKind::kAssign> {
 public:
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;
};

class CFixEvent : public EventOfKind<CFixEvent, EventKind::kFix> {
 public:
  std::string GetInfoText() const override;
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  std::uint16_t StatusAfter(std::uint16_t) const override { return 2; }
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;

  double hours = -1.0;  // below 0: not given
  bool affectsDocs = false;
  bool affectsTestPlan = false;
  std::uint32_t resolutionId = 0;
  std::string fixVersion;  // at most 32 bytes

 protected:
  void ReadOwn(PayloadReader& in, std::uint16_t recordVersion) override;
  void WriteOwn(PayloadWriter& out) const override;
};

class CVerifyEvent : public EventOfKind<CVerifyEvent, EventKind::kVerify> {
 public:
  std::string GetInfoText() const override;
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  std::uint16_t StatusAfter(std::uint16_t) const override { return passed ? 4 : 3; }
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;

  bool passed = true;

 protected:
  void ReadOwn(PayloadReader& in, std::uint16_t recordVersion) override;
  void WriteOwn(PayloadWriter& out) const override;
};

class CCloseEvent : public EventOfKind<CCloseEvent, EventKind::kClose> {
 public:
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  std::uint16_t StatusAfter(std::uint16_t) const override { return 5; }
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;

  std::uint32_t resolutionId = 0;

 protected:
  void ReadOwn(PayloadReader& in, std::uint16_t recordVersion) override;
  void WriteOwn(PayloadWriter& out) const override;
};

class CReOpenEvent : public EventOfKind<CReOpenEvent, EventKind::kReOpen> {
 public:
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  std::uint16_t StatusAfter(std::uint16_t) const override { return 6; }
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;
};

class CEstimateEvent : public EventOfKind<CEstimateEvent, EventKind::kEstimate> {
 public:
  std::string GetInfoText() const override;
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;

  double hours = -1.0;  // below 0: not given
  std::uint32_t estimatedDate = platform::kNoStamp;
  std::string estimatedVersion;  // at most 32 bytes

 protected:
  void ReadOwn(PayloadReader& in, std::uint16_t recordVersion) override;
  void WriteOwn(PayloadWriter& out) const override;
};

class CCommentEvent : public EventOfKind<CCommentEvent, EventKind::kComment> {
 public:
  void Apply(DefectCopies&, std::uint32_t) const override {}
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;
};

class CReleaseNotesEvent : public EventOfKind<CReleaseNotesEvent, EventKind::kReleaseNotes> {
 public:
  std::string GetInfoText() const override;
  void Apply(DefectCopies& copies, std::uint32_t currentUserId) const override;
  void WriteText(std::string& out, const DefectLookups& lookups) const override;
  void WriteHtml(std::string& out, const DefectLookups& lookups) const override;
  void Print(PageForm& form, const DefectLookups& lookups) const override;

  std::string releaseVersion;  // at most 32 bytes when stored

 protected:
  void ReadOwn(PayloadReader& in, std::uint16_t recordVersion) override;
  void WriteOwn(PayloadWriter& out) const override;
};

// A date as people read it, "M/D/YYYY"; empty for a stamp that is not set.
std::string FormatDate(std::uint32_t stamp);
// Hours as every view shows them, "%5.2lf"; GivenHours leaves hours not given (below 0)
// empty.
std::string FormatHours(double hours);
std::string GivenHours(double hours);

// The hours of a fix event and of a defect record, in the form of the record's version:
// below 0x102 a 2- or 4-byte whole number (all ones: not set), 0x102 and 0x103 twelve
// bytes that say nothing (0.0), from 0x104 a float64. `oldWidth` is 2 in an event, 4 in
// the defect itself. Hours the payload does not hold whole read as -1.0, not set.
double ReadHours(PayloadReader& in, std::uint16_t recordVersion, std::size_t oldWidth);

// The 33-byte version fields: a length byte, the text, and padding to 33 bytes. Written
// cut to 32 bytes and padded with zeros; read as at most 32 bytes of text, always taking
// all 33. On a failed read the field keeps its value.
void WriteFixedVersion(PayloadWriter& out, std::string_view text);
bool ReadFixedVersion(PayloadReader& in, std::string& field);

}  // namespace qm
