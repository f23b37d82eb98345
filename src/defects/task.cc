// The workbook's tasks: their record and text forms, their table's order, the rebuild at
// login, and delete in the task list.
#include "defects/task.h"

#include <utility>

#include "defects/defect_event.h"
#include "defects/selection_commands.h"
#include "defects/text_forms.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/form_text.h"
#include "session/record_notice.h"
#include "store/project_store.h"

namespace qm {

namespace {

constexpr Tag kPriorityTag = MakeTag("prio");
constexpr std::uint32_t kSecondsPerDay = 86400;

template <class T>
int Order(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// Two dates by day; a date not set comes before any date that is set.
int CompareDays(std::uint32_t a, std::uint32_t b) {
  const bool setA = a != platform::kNoStamp;
  const bool setB = b != platform::kNoStamp;
  if (!setA || !setB) return Order(setA, setB);
  return Order(a / kSecondsPerDay, b / kSecondsPerDay);
}

std::string PriorityName(const DefectLookups* lookups, std::uint32_t id) {
  return lookups != nullptr ? ValueName(*lookups, kPriorityTag, id) : std::string("<not set>");
}

}  // namespace

std::string TaskKindText(std::uint16_t kind) {
  switch (kind) {
    case kTaskDefect:
      return "Defect";
    case kTaskReminder:
      return "Reminder";
    case kTaskNotification:
      return "Notification";
    default:
      return {};
  }
}

std::string TaskStatusText(std::uint16_t status) {
  switch (status) {
    case kTaskOnHold:
      return "On Hold";
    case kTaskOpen:
      return "Open";
    case kTaskDone:
      return "Done";
    default:
      return {};
  }
}

void CTask::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  out.U16(kind);
  out.U16(status);
  out.U32(priorityId);
  WriteString(out, toDo);
  WriteString(out, versionNeeded);
  out.Stamp(dateNeeded);
  out.Stamp(dateEntered);
  out.U32(ownerId);
  out.U32(reservedId);
  out.U16(access);
  out.Text(description);
}

void CTask::ReadFrom(PayloadReader& in) {
  ReadVersion(in, kVersion, kVersion);
  in.U8(deleted);
  in.U16(kind);
  in.U16(status);
  in.U32(priorityId);
  ReadString(in, toDo);
  ReadString(in, versionNeeded);
  in.Stamp(dateNeeded);
  in.Stamp(dateEntered);
  in.U32(ownerId);
  in.U32(reservedId);
  in.U16(access);
  in.Text(description, kTextCapacity);
}

std::string CTask::GetName() const {
  if (kind == kTaskDefect && defect != nullptr) {
    return "#" + std::to_string(defect->GetNumber()) + " - " + defect->summary;
  }
  return toDo.str();
}

bool CTask::GetColumnText(std::uint16_t column, std::string& out) const {
  switch (column) {
    case 1:
      out = TaskStatusText(status);
      return true;
    case 2:
      out = TaskKindText(kind);
      return true;
    case 3:
      out = PriorityName(lookups_, priorityId);
      return true;
    case 4:
      out = GetName();
      return true;
    case 5:
      out = FormatDate(dateNeeded);
      return true;
    case 6:
      out = FormatDate(dateEntered);
      return true;
    case 7:
      out = lookups_ != nullptr ? UserName(*lookups_, OwnerId()) : std::string();
      return true;
    default:
      out.clear();
      return false;
  }
}

std::uint32_t CTask::OwnerId() const {
  if (kind == kTaskDefect) return defect != nullptr ? defect->copies().assignedToId : 0;
  return ownerId;
}

void CTask::WriteText(std::string& out) const {
  TextLine(out, "To Do: ", toDo.str());
  TextLine(out, "Priority: ", PriorityName(lookups_, priorityId));
  TextLine(out, "Date Entered: ", FormatDate(dateEntered));
  TextLine(out, "Status: ", TaskStatusText(status));
  TextLine(out, "Date Needed: ", FormatDate(dateNeeded));
  TextLine(out, "Version Needed: ", versionNeeded.str());
  TextLine(out, "Description: ", CrToCrLf(description));
}

CTaskTable::CTaskTable(CProjectStore* store, ui::Ui& ui, const DefectLookups* lookups)
    : ItemTable(store, kTasksTag, ui), lookups_(lookups) {}

CTaskTable::CTaskTable(CProjectStore* store, ui::Ui& ui, std::unique_ptr<DefectLookups> lookups)
    : CTaskTable(store, ui, lookups.get()) {
  ownedLookups_ = std::move(lookups);
}

std::unique_ptr<RecordItem> CTaskTable::ItemFromRecord(std::span<const std::uint8_t> payload,
                                                       std::uint32_t /*id*/) const {
  auto task = std::make_unique<CTask>(lookups_);
  PayloadReader in(payload);
  task->ReadFrom(in);
  return task;
}

std::unique_ptr<RecordItem> CTaskTable::NewItem() const {
  return std::make_unique<CTask>(lookups_);
}

int CTaskTable::CompareItems(const RecordItem& a, const RecordItem& b,
                             const SortOrder& order) const {
  const auto& x = static_cast<const CTask&>(a);
  const auto& y = static_cast<const CTask&>(b);
  int c = 0;
  switch (order.field) {
    case 1:
      c = Order(y.status, x.status);
      break;
    case 2:
      c = Order(y.kind, x.kind);
      break;
    case 3:
      if (lookups_ != nullptr) {
        c = Order(lookups_->ValuePosition(kPriorityTag, x.priorityId),
                  lookups_->ValuePosition(kPriorityTag, y.priorityId));
      }
      break;
    case 4:
      c = CompareNoCase(x.toDo.str(), y.toDo.str());
      break;
    case 5:
      c = x.dateNeeded == platform::kNoStamp && y.dateNeeded == platform::kNoStamp
              ? CompareNoCase(x.versionNeeded.str(), y.versionNeeded.str())
              : CompareDays(x.dateNeeded, y.dateNeeded);
      break;
    case 6:
      c = CompareDays(x.dateEntered, y.dateEntered);
      break;
    case 7:
      if (lookups_ != nullptr) {
        c = CUser::Compare(lookups_->User(x.OwnerId()), lookups_->User(y.OwnerId()));
      }
      break;
    default:
      break;
  }
  return order.direction == 2 ? -c : c;
}

void RebuildWorkbook(CTaskTable& tasks, const CDefectTable& defects, std::uint32_t userId) {
  // From the end, so that a removal never moves a task still to be looked at.
  for (std::uint32_t p = tasks.count(); p >= 1; --p) {
    if (tasks.TaskAt(p)->kind == kTaskDefect) tasks.RemoveItem(tasks.TaskAt(p));
  }
  if (userId == 0) return;
  for (std::uint32_t p = 1; p <= defects.count(); ++p) {
    const CDefect& defect = *defects.DefectAt(p);
    if (!defect.deleted && defect.IsAssignedTo(userId)) AddDefectTask(tasks, defect);
  }
}

void AddDefectTask(CTaskTable& tasks, const CDefect& defect) {
  std::unique_ptr<RecordItem> item = tasks.NewItem();
  auto& task = static_cast<CTask&>(*item);
  task.kind = kTaskDefect;
  task.defect = &defect;
  // The defect's own priority and entry date, so that the workbook's columns and sort say
  // something of it.
  task.priorityId = defect.priorityId;
  task.dateEntered = defect.dateEntered;
  if (tasks.AddSorted(item.get()) != 0) item.release();
}

std::uint32_t DropDefectTasks(CTaskTable& tasks, const CDefect& defect) {
  std::uint32_t dropped = 0;
  for (std::uint32_t p = tasks.count(); p >= 1; --p) {
    CTask* task = tasks.TaskAt(p);
    if (task->kind != kTaskDefect || task->defect != &defect) continue;
    tasks.RemoveItem(task);
    ++dropped;
  }
  return dropped;
}

bool ShownInWorkbook(const CTask& task, std::uint32_t currentUserId) {
  if (task.deleted) return false;
  // Without a login there is nobody whose defects these are.
  if (currentUserId == 0 && task.kind == kTaskDefect) return false;
  return task.access != kTaskPrivate || task.OwnerId() == currentUserId;
}

std::uint32_t DeleteTasks(CDBDoc& doc, CTaskTable& table, const std::vector<CTask*>& selection,
                          ui::Ui& ui) {
  std::vector<CTask*> written;
  for (CTask* task : selection) {
    if (task->kind != kTaskDefect) written.push_back(task);
  }
  if (written.size() < selection.size()) ui.Tell(std::string(kTasksAreDefects), ui::Icon::kWarning);

  const std::vector<CTask*> free = LeaveOutLocked(doc, kTasksTag, written, ui, kTasksInUse);
  if (free.empty() || !ConfirmDeleteForGood(ui)) return 0;
  return DeleteForGood(doc, table, {free.begin(), free.end()});
}

}  // namespace qm
