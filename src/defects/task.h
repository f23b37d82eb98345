// CTask, one entry of a user's workbook: an item of the 'task' table. Some tasks a user
// writes; the others stand for the defects assigned to the logged-in user, are made in
// memory at login and never stored.
//
// Payload (version 1 written and read; any other version is refused):
//
//   order  field          form
//   1      version        u16, exactly 1
//   2      deleted        u8
//   3      kind           u16
//   4      status         u16
//   5      priorityId     u32
//   6      toDo           string(255), at most 255 bytes
//   7      versionNeeded  string(255), at most 35 bytes
//   8      dateNeeded     stamp
//   9      dateEntered    stamp
//   10     ownerId        u32
//   11     reservedId     u32
//   12     access         u16
//   13     description    text
//
// Note that kind comes before status in the record, the other way round from the class.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_lookups.h"
#include "defects/defect_table.h"
#include "people/record_fields.h"
#include "session/db_doc.h"
#include "session/item_table.h"
#include "session/record_item.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

// What a task is.
inline constexpr std::uint16_t kTaskDefect = 1;  // stands for a defect; made at login
inline constexpr std::uint16_t kTaskReminder = 2;
inline constexpr std::uint16_t kTaskNotification = 3;

// Where a task stands.
inline constexpr std::uint16_t kTaskOnHold = 1;
inline constexpr std::uint16_t kTaskOpen = 2;
inline constexpr std::uint16_t kTaskDone = 3;

// The access of a task that only its owner sees; any other value shows it to everyone.
inline constexpr std::uint16_t kTaskPrivate = 3;

// "Defect", "Reminder", "Notification"; empty for another kind.
std::string TaskKindText(std::uint16_t kind);
// "On Hold", "Open", "Done"; empty for another status.
std::string TaskStatusText(std::uint16_t status);

class CTask : public RecordItem {
 public:
  static constexpr std::uint16_t kVersion = 1;

  explicit CTask(const DefectLookups* lookups = nullptr) : lookups_(lookups) {}

  void WriteTo(PayloadWriter& out) const override;
  // Reads a record of version 1; throws ItemError(kItemFailed) for any other.
  void ReadFrom(PayloadReader& in) override;

  // The summary of a row: "#", the defect's number, " - " and its summary for a task that
  // stands for a defect; `toDo` for any other.
  std::string GetName() const override;
  // The workbook's columns: 1 status, 2 kind, 3 priority, 4 the summary of the row,
  // 5 date needed, 6 date entered, 7 the owner's name. False for any other.
  bool GetColumnText(std::uint16_t column, std::string& out) const override;

  // The user whose task this is: for a task that stands for a defect the user assigned to
  // the defect, else `ownerId`. 0 for nobody.
  std::uint32_t OwnerId() const;

  // The text form, each line ended by CR LF: to do, priority, date entered, status, date
  // needed, version needed, description.
  void WriteText(std::string& out) const;

  void SetLookups(const DefectLookups* lookups) { lookups_ = lookups; }
  const DefectLookups* lookups() const { return lookups_; }

  // `deleted`, the soft-deletion mark, is the item base's.
  std::uint16_t status = kTaskOpen;
  std::uint16_t kind = kTaskReminder;
  std::uint32_t priorityId = 0;  // a value of the priority list
  BoundedText<255> toDo;
  std::string description;  // at most 32,767 bytes when stored
  std::uint32_t dateNeeded = platform::kNoStamp;
  std::uint32_t dateEntered = platform::kNoStamp;
  BoundedText<35> versionNeeded;
  std::uint32_t ownerId = 0;  // a user's record id; 0 for nobody
  std::uint32_t reservedId = 0;
  std::uint16_t access = kTaskPrivate;
  // The defect that a task of kind 1 stands for; not owned and never stored. The
  // workbook drops the task before the defect goes.
  const CDefect* defect = nullptr;

 private:
  const DefectLookups* lookups_;
};

// The 'task' table: the tasks of every user, those of the defects assigned to the
// logged-in user among them. Sorted by the workbook's column codes (see CompareItems).
class CTaskTable : public ItemTable {
 public:
  CTaskTable(CProjectStore* store, ui::Ui& ui, const DefectLookups* lookups);
  // The same, keeping its lookups for as long as it lives.
  CTaskTable(CProjectStore* store, ui::Ui& ui, std::unique_ptr<DefectLookups> lookups);

  // By column code: 1 status and 2 kind, the higher value first; 3 the priority's place
  // in its list; 4 `toDo`, ignoring case; 5 date needed, a date not set before a set one
  // and two not set by `versionNeeded`; 6 date entered; 7 the owner, by CUser::Compare.
  // Dates go by day. Direction 2 reverses the order; any other code calls all equal.
  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;
  // Lets the ItemError of a record of another version through.
  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                             std::uint32_t id = 0) const override;
  std::unique_ptr<RecordItem> NewItem() const override;

  const DefectLookups* lookups() const { return lookups_; }
  CTask* TaskAt(std::uint32_t position) const { return static_cast<CTask*>(ItemAt(position)); }

 private:
  std::unique_ptr<DefectLookups> ownedLookups_;
  const DefectLookups* lookups_;
};

// The workbook after a login: every task of kind 1 leaves the table, walking from its end,
// then a task of kind 1 is made in memory for each defect (not marked deleted) that is
// assigned to `userId`, in the order of the defect table. Nothing is stored, so logging in
// again makes no second row. `tasks` must be a project's own table, which owns its items.
void RebuildWorkbook(CTaskTable& tasks, const CDefectTable& defects, std::uint32_t userId);

// A task of kind 1 for `defect`, in memory only, in its sorted place.
void AddDefectTask(CTaskTable& tasks, const CDefect& defect);

// Takes the tasks that stand for `defect` out of the workbook, as a defect that is deleted
// or merged away must not leave a task pointing at it. Answers how many went.
std::uint32_t DropDefectTasks(CTaskTable& tasks, const CDefect& defect);

// Whether a workbook list shows the task to the user `currentUserId` (0: nobody logged
// in). A deleted task never shows, nor a private one of another owner; with nobody logged
// in no task of kind 1 shows.
bool ShownInWorkbook(const CTask& task, std::uint32_t currentUserId);

// What delete in the task list says of the tasks it leaves out.
inline constexpr std::string_view kTasksAreDefects =
    "One or more tasks will not be deleted because they are defects. You must delete defects "
    "from the defect list window.";
inline constexpr std::string_view kTasksInUse =
    "One or more tasks will not be deleted because they are in use by another user.";

// Deletes the selected tasks for good after asking. Tasks of kind 1 and tasks whose record
// is locked are left out, each reason said once; other clients of a multi-user project hear
// of each deletion. Answers how many went.
std::uint32_t DeleteTasks(CDBDoc& doc, CTaskTable& table, const std::vector<CTask*>& selection,
                          ui::Ui& ui);

}  // namespace qm
