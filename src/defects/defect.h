// CDefect, one reported problem: an item of the 'dfct' table that owns its events and its
// reported-by rows. Most of its fields are copies: the record keeps them, but a load
// throws them away and works them out again by replaying the events.
//
// Payload (version 0x10B written; 0x100 to 0x10B read):
//
//   order  field                                           form         present when
//   1      version                                         u16          always
//   2      deleted                                         u8           0x103 on
//   3      dateCreated                                     stamp        always
//   4      typeId, resolutionId, priorityId                u32 each     always
//   5      summary                                         string(255)  always
//   6      isDuplicate, reservedFlag                       u8 each      always
//   7      productId                                       u32          always
//   8      foundById u32, dateFound stamp,                              below 0x105
//          legacyReproducible u8
//   8      enteredById u32, dateEntered stamp                           0x105 on
//   9      old description                                 text8        0x100
//                                                          text         0x101 to 0x105
//   10     versionFound string(32), testConfigId u32,                   below 0x105
//          old configuration text (text8 at 0x100 and 0x101, else text)
//   11     assignedToId u32, dateAssigned stamp,                        always
//          fixedById u32, dateFixed stamp
//   12     hoursToFix: below 0x102 u32 (all ones: not set);             always
//          0x102 and 0x103 twelve bytes, read as 0.0; from 0x104 float64
//   13     fixVersion                                      string(32)   always
//   14     affectsDocs, affectsTestPlan                    u8 each      always
//   15     verifiedById u32, dateVerified stamp                         always
//   16     reservedText string(32), reservedValue u32                   always
//   17     event count u16, then per event its kind u16 and its body    always
//   18     status                                          u16          always; dropped
//   19     componentId u32, reference string(32)                        0x105 on
//   20     reported-by count u16 (at most 256), then the rows           0x105 on
//   21     severityId                                      u32          0x107 on
//   22     workaround                                      text         0x108 on
//   23     dateModified                                    stamp        0x109 on
//   24     number u32, notifyList idlist                                0x10A on
//   25     dispositionId                                   u32          0x10B on, when
//                                                                       bytes remain
//   26     notifyList again                                idlist       written; never read
//
// The copies of items 4 (resolutionId), 11, 12, 13, 14, 15 and 18 are written for older
// readers and recomputed from the events on every load.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "defects/defect_event.h"
#include "defects/defect_lookups.h"
#include "defects/reported_by.h"
#include "session/item_table.h"
#include "session/page_form.h"
#include "session/record_item.h"

namespace qm {

class CDefect : public RecordItem {
 public:
  static constexpr std::uint16_t kOldestVersion = 0x100;
  static constexpr std::uint16_t kVersion = 0x10B;
  static constexpr std::uint32_t kMaxReportedBy = 0x100;
  // The number of a defect read from a record that predates numbers: SetId gives it the
  // record id.
  static constexpr std::uint32_t kNumberFromId = 0xFFFFFFFF;

  explicit CDefect(const DefectLookups* lookups = nullptr);
  ~CDefect() override;

  void WriteTo(PayloadWriter& out) const override;
  // Replaces the defect from a record of version 0x100 to 0x10B. A record that cannot be
  // read whole throws ItemError: kItemFailed for a version out of range, kNoItem for an
  // event of an unknown kind, 0 for too many reported-by rows. What was read before
  // stays, and the defect is still usable.
  void ReadFrom(PayloadReader& in) override;
  // Sets the record id, and the number too when the record had none.
  void SetId(std::uint32_t id) override;

  // A copy made through the byte form, its rows keeping their session ids.
  std::unique_ptr<CDefect> Clone() const;
  // Takes over everything `other` holds, its id and its rows' session ids too.
  void CopyFrom(const CDefect& other);

  // Events, 1-based; null out of range.
  std::uint32_t EventCount() const { return static_cast<std::uint32_t>(events_.size()); }
  CDefectEvent* EventAt(std::uint32_t n) const;
  // Inserts in order of date (of weight where a date is not set) and replays.
  void AddEvent(std::unique_ptr<CDefectEvent> event);
  // Takes an event out and replays; null when it is not this defect's.
  std::unique_ptr<CDefectEvent> RemoveEvent(const CDefectEvent* event);
  // Works the copies out again from the events, in order.
  void Replay();
  // The copies as before any event.
  void ClearDerived();

  // Reported-by rows, 1-based; the first is the first report.
  std::uint32_t ReportedByCount() const { return static_cast<std::uint32_t>(reportedBy_.size()); }
  CReportedBy* ReportedByAt(std::uint32_t n) const;
  void AddReportedBy(std::unique_ptr<CReportedBy> row);
  std::unique_ptr<CReportedBy> RemoveReportedBy(const CReportedBy* row);
  // Takes the found-by copies from row 1, or clears them when there is none.
  void RefreshFromFirstReport();
  // Whether any row's description holds `text`.
  bool DescriptionContains(std::string_view text) const;

  // The id fields by field number (3, 4, 5, 7, 9, 11, 15, 17, 23, 24, 28, 30, 33, 43);
  // any other field is ignored and reads 0.
  void SetIdField(std::uint16_t field, std::uint32_t value);
  std::uint32_t GetIdField(std::uint16_t field) const;

  // The text of a field of the catalogue; false for a number it does not hold. A long
  // text (200 and above) goes to `block` when one is given, else to `text`.
  bool GetFieldText(std::uint16_t field, std::string& text, std::string* block = nullptr) const;
  // The field of a template tag; ASSN, which is no field, gives the newest assignment's
  // notes. False for any other tag, which is then not the defect's.
  bool GetFieldByTag(Tag tag, std::string& text, std::string* block = nullptr) const;
  // The text of a field, the long ones included.
  std::string FieldText(std::uint16_t field) const;
  // Field 6: the status and the assignment.
  std::string GetStatusText() const;

  // The text form (lines end in CR LF), the HTML form and the page form, with the forms
  // of the reported-by rows and the events.
  void WriteText(std::string& out) const;
  void WriteHtml(std::string& out) const;
  void Print(std::vector<PrintRow>& rows) const;

  std::uint32_t GetNumber() const { return number; }
  bool IsAssignedTo(std::uint32_t userId) const override {
    return userId != 0 && copies_.assignedToId == userId;
  }
  const DefectCopies& copies() const { return copies_; }
  std::uint16_t status() const { return copies_.status; }
  // Closed, after passing verification or without it.
  bool IsClosed() const { return copies_.status == 4 || copies_.status == 5; }
  const std::vector<std::uint32_t>& notifyList() const { return notifyList_; }
  void SetNotifyList(std::vector<std::uint32_t> ids) { notifyList_ = std::move(ids); }

  void SetLookups(const DefectLookups* lookups) { lookups_ = lookups; }
  const DefectLookups* lookups() const { return lookups_; }

  std::uint32_t dateCreated = platform::kNoStamp;
  std::uint32_t dateModified = platform::kNoStamp;
  std::uint32_t number = 0;  // 0: not numbered
  std::uint32_t typeId = 0;
  std::uint32_t priorityId = 0;
  std::string summary;  // at most 255 bytes
  bool isDuplicate = false;
  bool legacyReproducible = true;  // read from old records only
  std::uint8_t reservedFlag = 0;
  std::uint32_t componentId = 0;
  std::uint32_t severityId = 0;
  std::uint32_t dispositionId = 0;
  std::string reference;  // at most 32 bytes when stored
  std::uint32_t productId = 0;
  std::uint32_t enteredById = 0;
  std::uint32_t dateEntered = platform::kNoStamp;
  std::string reservedText;  // at most 32 bytes
  std::uint32_t reservedValue = 0;
  std::string workaround;

  // Copies of the first reported-by row.
  std::uint32_t reproducedId = 0;
  std::uint32_t foundById = 0;
  std::uint32_t dateFound = platform::kNoStamp;
  std::string versionFound;
  std::uint32_t testConfigId = 0;

 private:
  // The lookups, or ones that find nothing.
  const DefectLookups& Lookups() const;
  // Puts an event in its place among the others, without replaying.
  void InsertEvent(std::unique_ptr<CDefectEvent> event);
  // A user's name, empty when there is none.
  std::string NameOf(std::uint32_t userId) const;
  // The old records' found-by fields become the first reported-by row.
  void ConvertOldReport(std::uint32_t oldConfigId, std::string oldConfigText);

  const DefectLookups* lookups_;
  DefectCopies copies_;
  std::vector<std::unique_ptr<CDefectEvent>> events_;
  std::vector<std::unique_ptr<CReportedBy>> reportedBy_;
  std::vector<std::uint32_t> notifyList_;
};

}  // namespace qm
