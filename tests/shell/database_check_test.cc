// The check for other users' changes, against another process that adds, changes and
// deletes defects and posts notices: what reaches the open lists, the marks, the alert,
// and when the next check runs.
#include <gtest/gtest.h>

#include "defects/defect_table.h"
#include "session/record_notice.h"
#include "shell_project.h"
#include "support/child_process.h"

namespace qm::test {
namespace {

// A program with the defect list open, noting what the check tells it.
class WatchingHost : public QuietHost {
 public:
  std::int32_t DatabaseCheckSeconds() const override {
    ++schedules;
    return 10;
  }
  bool ListWindowOpen(Tag table) const override { return table == kDefectTag; }
  void ItemAdded(Tag, RecordItem& item) override { Note("added", item); }
  void ItemChanged(Tag, RecordItem& item) override { Note("changed", item); }
  void ItemRemoving(Tag, RecordItem& item) override { Note("removing", item); }
  // The alert's question lets the tick through; the idle work must not start again.
  void AlertAssignment() override {
    events.push_back("alert");
    if (doc != nullptr) doc->IdleWork();
  }

  std::vector<std::string> events;
  CDBDoc* doc = nullptr;
  mutable int schedules = 0;  // how often a check set the next one

 private:
  void Note(const char* what, const RecordItem& item) {
    events.push_back(std::string(what) + " " + static_cast<const CDefect&>(item).summary + " " +
                     (item.isNew ? "N" : "") + (item.isChanged ? "C" : "") +
                     (item.isAssigned ? "A" : ""));
  }
};

// The other user: adds a defect assigned to admin, comments on "Kept", deletes "Doomed",
// and says something to everyone.
int OtherUser(const std::string& file, Child::Channel& c) {
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc(ui, kinds, host);
  if (doc.OpenProject(file, ui::LoginEntry{"tess", ""}) != 1) return 1;
  auto& defects = static_cast<CDefectTable&>(*doc.GetTable(kDefectTag));
  const auto post = [&doc](std::uint32_t kind, std::uint32_t id) {
    return PostRecordNotice(*doc.store(), doc.currentUserId(), kind, kDefectTag, id);
  };
  CDefect* kept = defects.DefectAt(1);
  CDefect* doomed = defects.DefectAt(2);
  if (kept->summary != "Kept") std::swap(kept, doomed);

  std::unique_ptr<RecordItem> item = defects.NewItem();
  auto& yours = static_cast<CDefect&>(*item);
  yours.summary = "Yours";
  auto assign = CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kAssign));
  assign->userId = doc.GetTable(kUserTag)->ItemAt(1)->GetId();  // admin sorts first
  yours.AddEvent(std::move(assign));
  kept->AddEvent(CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kComment)));
  const std::uint32_t doomedId = doomed->GetId();
  const std::uint8_t text[] = {'L', 'u', 'n', 'c', 'h'};
  if (defects.AddItem(item) != DBStatus::kOk || defects.SaveItem(*kept) != DBStatus::kOk ||
      post(kNoticeChanged, kept->GetId()) != DBStatus::kOk ||
      defects.DeleteItem(*doomed, false) != DBStatus::kOk ||
      post(kNoticeDeleted, doomedId) != DBStatus::kOk ||
      doc.store()->PostMessage(doc.currentUserId(), kNoticeText, text) != DBStatus::kOk) {
    return 2;
  }
  c.Send("done");
  c.Receive();
  return 0;
}

using DatabaseCheckTest = ShellProject;

TEST_F(DatabaseCheckTest, AnotherUsersChangesReachTheListsWithOneAlert) {
  MakeProject(path, true, {{"Kept"}, {"Doomed"}});
  WatchingHost watching;
  CDBDoc mine(ui, kinds, watching, platform::FileSystem::Real(), clock);
  ASSERT_EQ(mine.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  ASSERT_EQ(mine.nextDatabaseCheck(), clock.now + 10);

  const std::string file = path;
  Child other([file](Child::Channel& c) { return OtherUser(file, c); });
  ASSERT_EQ(other.Receive(), "done");

  clock.now += 10;
  mine.IdleWork();
  EXPECT_TRUE(watching.events.empty()) << "the check waits until its time has passed";
  clock.now += 1;
  watching.doc = &mine;
  watching.schedules = 0;
  mine.IdleWork();
  EXPECT_EQ(watching.schedules, 1) << "one check, none nested in the alert";
  watching.doc = nullptr;
  // The notices come first, for msgs stands before dfct in the directory; then the record
  // tess added, which is assigned to admin. One alert for it all.
  EXPECT_EQ(watching.events, (std::vector<std::string>{"changed Kept C", "removing Doomed ",
                                                       "added Yours NA", "alert"}));
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Lunch"});
  ItemTable& defects = *mine.GetTable(kDefectTag);
  ASSERT_EQ(defects.count(), 2u) << "Doomed is gone from the table";
  // The workbook follows: the defect assigned to admin has its task.
  const ItemTable& workbook = *mine.GetTable(kTasksTag);
  ASSERT_EQ(workbook.count(), 1u);
  EXPECT_EQ(
      workbook.ItemAt(1)->GetName(),
      "#" + std::to_string(static_cast<const CDefect&>(*defects.ItemAt(2)).number) + " - Yours");
  EXPECT_EQ(mine.nextDatabaseCheck(), clock.now + 10);

  // Nothing new: no events, and the next check still moves on.
  watching.events.clear();
  clock.now += 20;
  EXPECT_FALSE(mine.CheckDatabase());
  EXPECT_TRUE(watching.events.empty());
  EXPECT_EQ(mine.nextDatabaseCheck(), clock.now + 10);
  other.Send("end");
  EXPECT_EQ(other.Wait(), 0);
  mine.CloseProject();
}

}  // namespace
}  // namespace qm::test
