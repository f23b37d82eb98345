// The workbook's tasks: the record against bytes built by hand, the text form, the order of
// the table, the rebuild at login, which tasks a list shows, and delete on a real
// multi-user project with a second client.
#include "defects/task.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "defects/fixtures.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr Tag kPrio = MakeTag("prio");

std::vector<std::uint8_t> Record(std::uint16_t version) {
  Bytes b;
  b.u16(version).u8(1).u16(3).u16(1).u32(0x01020304).str8("Write the manual").str8("2.1");
  return b.u32(Day(3, 7)).u32(kNone).u32(12).u32(99).u16(1).str16("two\rlines").b;
}

TEST(TaskRecord, TheBytesBothWaysAndOnlyVersionOne) {
  const auto task = ReadItem<CTask>(Record(1));
  EXPECT_EQ(std::tuple(task->deleted, task->kind, task->status, task->priorityId, task->toDo.str(),
                       task->versionNeeded.str(), task->dateNeeded, task->dateEntered,
                       task->ownerId, task->reservedId, task->access, task->description),
            std::tuple(true, kTaskNotification, kTaskOnHold, 0x01020304u, "Write the manual", "2.1",
                       Day(3, 7), kNone, 12u, 99u, 1, "two\rlines"));
  EXPECT_EQ(task->Pack(), Record(1));

  // A new task: open, a reminder, private, nobody's; the version needed keeps 35 bytes.
  CTask fresh;
  fresh.versionNeeded = std::string(40, 'v');
  Bytes b;
  b.u16(1).u8(0).u16(2).u16(2).u32(0).str8("").str8(std::string(35, 'v'));
  EXPECT_EQ(fresh.Pack(), b.u32(kNone).u32(kNone).u32(0).u32(0).u16(3).u16(0).b);

  for (const int version : {0, 2, 0x100}) {
    const auto bytes = Record(static_cast<std::uint16_t>(version));
    EXPECT_EQ(ThrownCode([&] { ReadItem<CTask>(bytes); }), kItemFailed) << version;
  }
}

// Sample defect 7 assigned to Smith, Ann; priorities Immediate and Low in that order.
class TaskForms : public SampleDefect {
 protected:
  void SetUp() override {
    lookups.AddValues({{kPrio, 6, "Low"}});
    lookups.positions[{kPrio, 4}] = 1;
    lookups.positions[{kPrio, 6}] = 2;
    Add<CAssignEvent>(1, 2, "");
  }
  std::unique_ptr<CTask> Task(std::uint16_t kind, const char* toDo) {
    std::unique_ptr<RecordItem> item = table.NewItem();
    auto task = std::unique_ptr<CTask>(static_cast<CTask*>(item.release()));
    task->kind = kind;
    task->toDo = toDo;
    if (kind == kTaskDefect) task->defect = &d;
    return task;
  }
  std::vector<std::string> Sorted(std::vector<CTask*> tasks, std::int16_t field,
                                  std::int16_t direction = 1) {
    std::stable_sort(tasks.begin(), tasks.end(), [&](const CTask* a, const CTask* b) {
      return table.CompareItems(*a, *b, {field, direction}) < 0;
    });
    std::vector<std::string> names;
    for (const CTask* t : tasks) names.push_back(t->toDo.str());
    return names;
  }

  ScriptedUi ui;
  CTaskTable table{nullptr, ui, &lookups};
};

TEST_F(TaskForms, TextFormNamesAndColumns) {
  auto task = Task(kTaskReminder, "Call the printer people");
  task->priorityId = 6;
  task->status = kTaskDone;
  task->dateEntered = Day(2, 3, 15);
  task->versionNeeded = "3.0";
  task->description = "First\rSecond";
  std::string text;
  task->WriteText(text);
  EXPECT_EQ(text,
            "To Do: Call the printer people\r\n"
            "Priority: Low\r\n"
            "Date Entered: 2/3/2025\r\n"
            "Status: Done\r\n"
            "Date Needed: \r\n"
            "Version Needed: 3.0\r\n"
            "Description: First\r\nSecond\r\n");
  EXPECT_EQ(task->GetName(), "Call the printer people");
  auto derived = Task(kTaskDefect, "");
  EXPECT_EQ(derived->GetName(), "#7 - Crash <on> save");
  EXPECT_EQ(derived->OwnerId(), 2u) << "the defect's assignee, whatever ownerId says";
  task->ownerId = 3;
  EXPECT_EQ(task->OwnerId(), 3u);

  // The columns 1 to 8, "?" where there is none; a priority that is gone is not set.
  task->priorityId = 77;
  std::string cells;
  for (std::uint16_t column = 1; column <= 8; ++column) {
    std::string cell;
    cells += (task->GetColumnText(column, cell) ? cell : "?") + "|";
  }
  EXPECT_EQ(cells, "Done|Reminder|<not set>|Call the printer people||2/3/2025|Lee|?|");
  std::string cell;
  EXPECT_TRUE(derived->GetColumnText(7, cell));
  EXPECT_EQ(cell, "Smith, Ann");
  EXPECT_EQ(TaskKindText(3), "Notification");
  EXPECT_EQ(TaskStatusText(1), "On Hold");
  EXPECT_EQ(TaskStatusText(4), "");
}

TEST_F(TaskForms, SortByColumnCode) {
  auto a = Task(kTaskReminder, "a");
  auto b = Task(kTaskNotification, "B");
  auto c = Task(kTaskDefect, "c");
  auto e = Task(kTaskReminder, "d");
  a->status = kTaskOpen;
  b->status = kTaskDone;
  c->status = kTaskOnHold;
  e->status = kTaskDone;
  const std::vector<CTask*> all = {a.get(), b.get(), c.get(), e.get()};

  using Names = std::vector<std::string>;
  EXPECT_EQ(Sorted(all, 1), (Names{"B", "d", "a", "c"})) << "status, the higher first";
  EXPECT_EQ(Sorted(all, 1, 2), (Names{"c", "a", "B", "d"}));
  EXPECT_EQ(Sorted(all, 2), (Names{"B", "a", "d", "c"})) << "kind, the higher first";
  EXPECT_EQ(Sorted(all, 4, 2), (Names{"d", "c", "B", "a"})) << "to do, ignoring case";

  // By the priority's place in its list, not by its id; none at all comes first.
  a->priorityId = 6;
  b->priorityId = 4;
  e->priorityId = 4;
  EXPECT_EQ(Sorted(all, 3), (Names{"c", "B", "d", "a"}));

  // Date needed: not set first, two not set by the version needed, set ones by day.
  a->dateNeeded = Day(4, 1, 20);
  e->dateNeeded = Day(3, 9);
  b->versionNeeded = "2.0";
  c->versionNeeded = "1.5";
  EXPECT_EQ(Sorted(all, 5), (Names{"c", "B", "d", "a"}));
  b->dateNeeded = Day(4, 1, 8);
  EXPECT_EQ(table.CompareItems(*a, *b, {5, 1}), 0) << "the same day";
  EXPECT_EQ(Sorted(all, 5, 2), (Names{"a", "B", "d", "c"}));

  // The owner by name: c's is the defect's assignee Smith, e's Lee, a and b nobody.
  e->ownerId = 3;
  EXPECT_EQ(Sorted(all, 7), (Names{"a", "B", "d", "c"}));

  c->dateEntered = Day(1, 1);
  EXPECT_EQ(Sorted(all, 6), (Names{"a", "B", "d", "c"}));
  EXPECT_EQ(Sorted(all, 9), (Names{"a", "B", "c", "d"})) << "an unknown code calls all equal";
}

TEST_F(TaskForms, WhichTasksAListShows) {
  auto mine = Task(kTaskReminder, "mine");
  mine->ownerId = 2;
  auto shared = Task(kTaskNotification, "shared");
  shared->ownerId = 1;
  shared->access = 1;
  auto nobodys = Task(kTaskReminder, "nobody's");
  auto derived = Task(kTaskDefect, "");
  derived->access = 1;  // shows to everyone, but never without a login
  auto gone = Task(kTaskReminder, "gone");
  gone->ownerId = 2;
  gone->deleted = true;

  // Shown to users 2 and 1 and to nobody logged in.
  const std::pair<const CTask*, const char*> cases[] = {{mine.get(), "x.."},
                                                        {shared.get(), "xxx"},
                                                        {nobodys.get(), "..x"},
                                                        {derived.get(), "xx."},
                                                        {gone.get(), "..."}};
  for (const auto& [task, expected] : cases) {
    std::string shown;
    for (const std::uint32_t user : {2u, 1u, 0u}) shown += ShownInWorkbook(*task, user) ? 'x' : '.';
    EXPECT_EQ(shown, expected) << task->GetName();
  }
}

class Workbook : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    tasks = dynamic_cast<CTaskTable*>(doc.GetTable(kTasksTag));
    ASSERT_NE(tasks, nullptr) << "the project makes the task table";
    me = doc.currentUserId();
  }
  CTask* AddTask(const char* toDo) {
    std::unique_ptr<RecordItem> item = tasks->NewItem();
    auto& t = static_cast<CTask&>(*item);
    t.toDo = toDo;
    t.ownerId = me;
    EXPECT_EQ(tasks->AddItem(item), DBStatus::kOk);
    return &t;
  }
  std::string Names() const {
    std::string rows;
    for (std::uint32_t p = 1; p <= tasks->count(); ++p) rows += tasks->TaskAt(p)->GetName() + "|";
    return rows;
  }

  CTaskTable* tasks = nullptr;
  std::uint32_t me = 0;
};

// The rows of the user's defects are made at login and never stored; the user's own tasks
// are stored and load with the project.
TEST_F(Workbook, RebuildAtLoginAndStoredTasks) {
  CTask* own = AddTask("Own reminder");
  own->description = "weekly";
  ASSERT_EQ(tasks->SaveItem(*own), DBStatus::kOk);
  AddDefect("Mine", 7, me);
  AddDefect("Someone else's", 8, me + 100);
  AddDefect("Nobody's", 9, 0);
  AddDefect("Marked deleted", 10, me).deleted = true;
  CDefect& second = AddDefect("Also mine", 11, me);

  RebuildWorkbook(*tasks, defects(), me);
  EXPECT_EQ(Names(), "Own reminder|#7 - Mine|#11 - Also mine|");
  RebuildWorkbook(*tasks, defects(), me);
  EXPECT_EQ(Names(), "Own reminder|#7 - Mine|#11 - Also mine|") << "no double rows";
  EXPECT_EQ(tasks->TaskAt(2)->GetId(), 0u) << "never stored";
  EXPECT_EQ(DropDefectTasks(*tasks, second), 1u);
  EXPECT_EQ(Names(), "Own reminder|#7 - Mine|");
  RebuildWorkbook(*tasks, defects(), 0);
  EXPECT_EQ(Names(), "Own reminder|");

  doc.CloseProject();
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  tasks = dynamic_cast<CTaskTable*>(doc.GetTable(kTasksTag));
  ASSERT_NE(tasks, nullptr);
  EXPECT_EQ(tasks->TaskAt(1)->description, "weekly");
  EXPECT_NE(tasks->TaskAt(1)->lookups(), nullptr);
}

// Another client holds one task locked: the task of a defect and the locked one are left
// out, each said once, and the other client hears of the deletion.
TEST_F(Workbook, DeleteLeavesOutDefectsAndLockedTasks) {
  CTask* held = AddTask("Held");
  CTask* free = AddTask("Free");
  AddDefect("Mine", 7, me);
  RebuildWorkbook(*tasks, defects(), me);
  CTask* derived = tasks->TaskAt(3);
  ASSERT_EQ(derived->kind, kTaskDefect);
  const std::uint32_t freeId = free->GetId();
  const auto other = LockingClient(kTasksTag, {held->GetId()}, freeId);

  ui.Script({ui::Answer::kOk, ui::Answer::kOk, ui::Answer::kCancel});
  EXPECT_EQ(DeleteTasks(doc, *tasks, {derived, held, free}, ui), 0u);
  EXPECT_EQ(tasks->count(), 3u) << "Cancel deletes nothing";
  EXPECT_EQ(DeleteTasks(doc, *tasks, {derived}, ui), 0u) << "nothing left to ask about";
  ui.shown.clear();

  ui.Script({ui::Answer::kOk, ui::Answer::kOk, ui::Answer::kOk});
  EXPECT_EQ(DeleteTasks(doc, *tasks, {derived, held, free}, ui), 1u);
  EXPECT_EQ(ui.Texts(),
            (std::vector<std::string>{
                "One or more tasks will not be deleted because they are defects. You must "
                "delete defects from the defect list window.",
                "One or more tasks will not be deleted because they are in use by another user.",
                "Are you sure that you want to delete the selected items(s)? There is no undo "
                "available."}));
  EXPECT_EQ(ui.shown.back().buttons, ui::Buttons::kOkCancel);
  EXPECT_EQ(tasks->count(), 2u);
  EXPECT_EQ(tasks->ItemById(freeId), nullptr);
  other->Send("look");
  EXPECT_EQ(other->Wait(), 0);
}

}  // namespace
}  // namespace qm::test
