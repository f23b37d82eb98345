// Writes the seed files of the fuzz targets: into the first folder named on the command
// line a new project file, two tables with records, a single-user file and a version-352
// file; into the second, item records of each kind, led by the byte that picks the kind.
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
#include "support/fake_files.h"
#include "support/quiet_host.h"

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

// Two tables with a few records each, an update that moves a record, a delete, and a
// change notice waiting in msgs.
void FillTwoTables(CProjectStore& store) {
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
}

void SaveBytes(const std::vector<std::uint8_t>& bytes, const std::string& path) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  if (!out) {
    std::fprintf(stderr, "make_corpus: cannot write %s\n", path.c_str());
    std::exit(1);
  }
}

void Save(test::MemoryFileSystem& files, const std::string& name, const std::string& folder) {
  SaveBytes(files.Bytes(name), folder + "/" + name);
}

void SaveRecord(std::uint8_t kind, std::vector<std::uint8_t> bytes, const std::string& path) {
  bytes.insert(bytes.begin(), kind);
  SaveBytes(bytes, path);
}

// A defect list's saved values: the defaults, and columns changed and sorted.
void WriteListSeeds(const std::string& folder) {
  bench::SilentUi ui;
  CDefectTable table(nullptr, ui, static_cast<const DefectLookups*>(nullptr));
  CDefectListView list(table, ui);
  const WindowPlacement placement{true, WindowPlacement::kNormal, {10, 20, 640, 480}};
  SaveBytes(list.SavePlacement(placement), folder + "/defaults");
  list.ColumnCommand(3, CRecordListView::kInsertColumn);
  list.ColumnCommand(3, 33);
  list.ColumnCommand(5, CRecordListView::kRemoveColumn);
  SaveBytes(list.SavePlacement({false, WindowPlacement::kIconic, {-5, 0, 300, 200}}),
            folder + "/changed");
}

void SaveItem(std::uint8_t kind, const RecordItem& item, const std::string& path) {
  SaveRecord(kind, item.Pack(), path);
}

void WriteItemSeeds(const std::string& folder) {
  CUser user;
  user.SetFirstName("Ada");
  user.SetLastName("Lindqvist");
  user.SetLogin("ada");
  user.SetEmail("ada@example.org");
  SaveItem(0, user, folder + "/user");
  CUserGroup group;
  group.name = "Administration";
  group.AddUser(1);
  group.SetCommandDisabled(4, true);
  SaveItem(1, group, folder + "/group");
  CTestConfig config;
  config.name = "Build machine";
  SaveItem(2, config, folder + "/config");
  ValueItem value;
  value.name = "Crash - Data Loss";
  value.order = 1;
  SaveItem(3, value, folder + "/value");
  CDefect defect;
  defect.summary = "Crash when saving an empty report";
  defect.number = 12;
  defect.workaround = "Add one line first";
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
  SaveItem(7, defect, folder + "/defect");
  CTask task;
  task.toDo = "Call the customer back";
  task.description = "About the report\rthat crashed.";
  task.dateNeeded = 3'100'000'000u;
  task.versionNeeded = "2.1";
  task.ownerId = 1;
  SaveItem(8, task, folder + "/task");
  ProjectSecurity security;
  security.securityMode = 1;
  security.projectPassword = "Open";
  SaveRecord(4, security.Encode(), folder + "/security");
  ProjectInfo info;
  info.projectName = "Atlas";
  info.description = "Flight software";
  SaveRecord(5, info.Encode(3'000'000'000u), folder + "/info");
  PreferenceBlock preferences{};
  preferences[5] = 1;
  SaveRecord(6, EncodePreferences(preferences), folder + "/preferences");
  SaveRecord(6, std::vector<std::uint8_t>(76, 2), folder + "/old_preferences");
}

// New projects of both kinds, as the opening finds them.
void WriteProjectSeeds(test::MemoryFileSystem& files, const std::string& folder) {
  bench::SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  for (const bool multiUser : {true, false}) {
    const std::string name = multiUser ? "project_multi.qmk" : "project_single.qmk";
    CDBDoc doc(ui, kinds, host, files);
    doc.NewProject(name, multiUser);
    doc.CloseProject();
    Save(files, name, folder);
  }
}

}  // namespace
}  // namespace qm

int main(int argc, char** argv) {
  using namespace qm;
  if (argc != 5) {
    std::fprintf(stderr,
                 "usage: make_corpus STORE-FOLDER ITEM-FOLDER PROJECT-FOLDER LIST-FOLDER\n");
    return 64;
  }
  WriteItemSeeds(argv[2]);
  const std::string folder = argv[1];
  test::MemoryFileSystem files;
  bench::SilentUi ui;
  CProjectStore store(ui, files);

  Check(store.Create("new.qmk", 1), "create");
  Check(store.Close(), "close");

  Check(store.Create("two_tables.qmk", 1), "create");
  FillTwoTables(store);
  Check(store.Close(), "close");

  Check(store.Create("single_user.qmk", 0), "create");
  Check(store.AddTable(kDfct, "Defects"), "add table");
  Check(store.AddRecord(kDfct, Text("Alone with the file"), nullptr), "add");
  Check(store.Close(), "close");

  // Version 352 has record headers and the short user block; the field is at offset 4.
  files.Bytes("version_352.qmk") = files.Bytes("two_tables.qmk");
  files.Bytes("version_352.qmk")[4] = 352 >> 8;
  files.Bytes("version_352.qmk")[5] = 352 & 0xFF;

  for (const char* name : {"new.qmk", "two_tables.qmk", "single_user.qmk", "version_352.qmk"}) {
    Save(files, name, folder);
  }
  WriteProjectSeeds(files, argv[3]);
  WriteListSeeds(argv[4]);
  return 0;
}
