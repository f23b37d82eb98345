// The workbook's list and task window on a real project: the tasks of the user's defects
// beside the ones the user writes, a new task made the user's, and what another user sees.
#include "shell/task_window.h"

#include <gtest/gtest.h>

#include "shell/record_list.h"
#include "support/fake_files.h"
#include "support/made_project.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

TEST(Workbook, TheUsersTasksAndTheTasksOfTheirDefects) {
  TempDir dir;
  const std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  FakeClock clock;
  clock.now = 3'000'000'000u;
  MakeProject(path, true, {{"Crash on save", 7, "admin"}, {"Slow start", 8, "tess"}});
  CDBDoc doc(ui, kinds, host, platform::FileSystem::Real(), clock);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  auto& tasks = static_cast<CTaskTable&>(*doc.GetTable(kTasksTag));
  CTaskListView workbook(tasks, ui, doc);
  EXPECT_EQ(workbook.Title(0), "Workbook - (1 item, 0 selected)") << "the assigned defect";
  EXPECT_EQ(tasks.ItemAt(1)->GetName(), "#7 - Crash on save");

  EditMarks marks;
  CTaskWindow window(doc, tasks, ui, marks, clock);
  window.Open(CRecordWindow::kAddClose);
  EXPECT_EQ(window.title(), "Add Task");
  EXPECT_FALSE(window.OnAcceptButton());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Please enter what is to be done."});
  window.task().toDo = "Write the release notes";
  window.dateNeededText = "12/24/2026";
  EXPECT_TRUE(window.OnAcceptButton());
  EXPECT_EQ(workbook.Title(0), "Workbook - (2 items, 0 selected)");
  const CTask* written = nullptr;
  for (std::uint32_t p = 1; p <= tasks.count(); ++p) {
    if (tasks.TaskAt(p)->kind != kTaskDefect) written = tasks.TaskAt(p);
  }
  ASSERT_NE(written, nullptr);
  EXPECT_EQ(written->ownerId, doc.currentUserId()) << "a new task is its writer's";
  EXPECT_EQ(written->dateEntered, clock.now);
  EXPECT_NE(written->GetId(), 0u) << "stored";

  // Tess sees neither admin's private task nor the task of admin's defect, but her own.
  ui.ScriptLogin(ui::LoginEntry{"TESS", ""});
  ASSERT_EQ(doc.LogInUser(), 0);
  EXPECT_EQ(workbook.Title(0), "Workbook - (1 item, 0 selected)");
  const auto defectTasks = [&tasks] {
    std::string names;
    for (std::uint32_t p = 1; p <= tasks.count(); ++p) {
      if (tasks.TaskAt(p)->kind == kTaskDefect) names += tasks.TaskAt(p)->GetName() + ";";
    }
    return names;
  };
  EXPECT_EQ(defectTasks(), "#8 - Slow start;");
  EXPECT_EQ(doc.LogInUser(ui::LoginEntry{"tess", ""}), 1) << "the same user changes nothing";
  EXPECT_EQ(defectTasks(), "#8 - Slow start;");
  doc.CloseProject();
}

}  // namespace
}  // namespace qm::test
