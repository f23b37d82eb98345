// Writes the seed files of the fuzz targets into the four folders named on the command line:
// project files for the store (new, two tables with records, single-user, version 352),
// item records of each kind led by the byte that picks the kind, whole new projects, and a
// defect list's saved values.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "bench/silent_ui.h"
#include "defects/defect.h"
#include "defects/defect_table.h"
#include "defects/task.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/project_records.h"
#include "session/value_item.h"
#include "shell/project_item_kinds.h"
#include "shell/record_list.h"
#include "store/project_store.h"
#include "support/quiet_host.h"
#include "support/temp_dir.h"

namespace qm {
namespace {

constexpr Tag kDfct = MakeTag("dfct");
constexpr Tag kUser = MakeTag("user");

void Check(DBStatus status, const char* what) {
  if (status == DBStatus::kOk) return;
  std::fprintf(stderr, "make_corpus: %s: %u\n", what, Code(status));
  std::exit(1);
}

std::vector<std::uint8_t> Text(const std::string& s) { return {s.begin(), s.end()}; }

// The bytes at `path`, led by the byte `kind` when one is given.
void Save(const std::string& path, std::vector<std::uint8_t> bytes, int kind = -1) {
  if (kind >= 0) bytes.insert(bytes.begin(), static_cast<std::uint8_t>(kind));
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "make_corpus: cannot write %s\n", path.c_str());
    std::exit(1);
  }
}

// New files; two tables with a few records each, an update that moves a record, a delete,
// and a change notice waiting in msgs; a single-user file; and the two tables as version
// 352, which has record headers and the short user block.
void WriteStoreSeeds(const std::string& folder) {
  bench::SilentUi ui;
  CProjectStore store(ui);
  Check(store.Create(folder + "/new.qmk", 1), "create");
  Check(store.Create(folder + "/two_tables.qmk", 1), "create");
  Check(store.AddTable(kDfct, "Defects"), "add table");
  Check(store.AddTable(kUser, "Users"), "add table");
  for (const char* summary : {"Crash on save", "Login forgets the name", "Wrong sort order"}) {
    Check(store.AddRecord(kDfct, Text(summary), nullptr), "add");
  }
  Check(store.AddRecord(kUser, Text("admin"), nullptr), "add");
  Check(store.AddRecord(kUser, {}, nullptr), "add");
  Check(store.UpdateRecord(kDfct, 2, Text("Login forgets the user name")), "update");
  Check(store.DeleteRecord(kDfct, 3), "delete");
  const std::uint8_t notice[4] = {0, 0, 0, 1};
  Check(store.PostMessage(1, 7, notice), "post");
  Check(store.Create(folder + "/single_user.qmk", 0), "create");
  Check(store.AddTable(kDfct, "Defects"), "add table");
  Check(store.AddRecord(kDfct, Text("Alone with the file"), nullptr), "add");
  Check(store.Close(), "close");
  const std::string two = test::ReadText(folder + "/two_tables.qmk");
  std::vector<std::uint8_t> old(two.begin(), two.end());
  old[4] = 352 >> 8;  // the version field
  old[5] = 352 & 0xFF;
  Save(folder + "/version_352.qmk", old);
}

void WriteItemSeeds(const std::string& folder) {
  CUser user;
  user.SetLastName("Lindqvist");
  user.SetLogin("ada");
  Save(folder + "/user", user.Pack(), 0);
  CUserGroup group;
  group.name = "Administration";
  group.AddUser(1);
  group.SetCommandDisabled(4, true);
  Save(folder + "/group", group.Pack(), 1);
  CTestConfig config;
  config.name = "Build machine";
  Save(folder + "/config", config.Pack(), 2);
  ValueItem value;
  value.name = "Crash - Data Loss";
  Save(folder + "/value", value.Pack(), 3);
  ProjectSecurity security;
  security.securityMode = 1;
  security.projectPassword = "Open";
  Save(folder + "/security", security.Encode(), 4);
  ProjectInfo info;
  info.projectName = "Atlas";
  Save(folder + "/info", info.Encode(3'000'000'000u), 5);
  PreferenceBlock preferences{};
  preferences[5] = 1;
  Save(folder + "/preferences", EncodePreferences(preferences), 6);
  Save(folder + "/old_preferences", std::vector<std::uint8_t>(76, 2), 6);
  CDefect defect;
  defect.summary = "Crash when saving an empty report";
  defect.number = 12;
  defect.SetNotifyList({1, 2});
  auto row = std::make_unique<CReportedBy>();
  row->description = "It crashes";
  auto laptop = std::make_unique<CTestConfig>();
  laptop->name = "Reporter's laptop";
  row->SetCustomConfig(std::move(laptop));
  auto attachment = std::make_unique<CFileAttachment>();
  attachment->fileName = "crash.log";
  row->AddAttachment(std::move(attachment));
  defect.AddReportedBy(std::move(row));
  std::uint32_t date = 3'000'000'000u;
  for (std::int16_t kind = 2; kind <= 9; ++kind) {
    auto event = CDefectEvent::Make(kind);
    event->userId = 1;
    event->date = date += 60;
    event->notes = "Step " + std::to_string(kind);
    defect.AddEvent(std::move(event));
  }
  Save(folder + "/defect", defect.Pack(), 7);
  CTask task;
  task.toDo = "Call the customer back";
  task.description = "About the report\rthat crashed.";
  task.dateNeeded = 3'100'000'000u;
  Save(folder + "/task", task.Pack(), 8);
}

// New projects of both kinds, as the opening finds them.
void WriteProjectSeeds(const std::string& folder) {
  bench::SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  for (const bool multiUser : {true, false}) {
    CDBDoc doc(ui, kinds, host);
    doc.NewProject(folder + (multiUser ? "/project_multi.qmk" : "/project_single.qmk"), multiUser);
    doc.CloseProject();
  }
}

// A defect list's saved values: the defaults, and columns changed and sorted.
void WriteListSeeds(const std::string& folder) {
  bench::SilentUi ui;
  CDefectTable table(nullptr, ui, static_cast<const DefectLookups*>(nullptr));
  CDefectListView list(table, ui);
  Save(folder + "/defaults",
       list.SavePlacement({true, WindowPlacement::kNormal, {10, 20, 640, 480}}));
  list.ColumnCommand(3, CRecordListView::kInsertColumn);
  list.ColumnCommand(3, 33);
  list.ColumnCommand(5, CRecordListView::kRemoveColumn);
  Save(folder + "/changed",
       list.SavePlacement({false, WindowPlacement::kIconic, {-5, 0, 300, 200}}));
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr,
                 "usage: make_corpus STORE-FOLDER ITEM-FOLDER PROJECT-FOLDER LIST-FOLDER\n");
    return 64;
  }
  qm::WriteStoreSeeds(argv[1]);
  qm::WriteItemSeeds(argv[2]);
  qm::WriteProjectSeeds(argv[3]);
  qm::WriteListSeeds(argv[4]);
  return 0;
}
