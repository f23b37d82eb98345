// The open project: what a new project holds, byte for byte where it counts; every way an
// opening can end; the login at opening and the logout at closing; a project made anew
// against another process; the template; an older project brought up to date.
#include "session/db_doc.h"

#include <gtest/gtest.h>

#include "people/user.h"
#include "people/user_group.h"
#include "session/value_item.h"
#include "shell/project_item_kinds.h"
#include "store/file_bytes.h"
#include "store/store_error.h"
#include "support/child_process.h"
#include "support/made_project.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

// A host that notes what the project asked of it.
class RecordingHost : public ProjectHost {
 public:
  void ProjectLoaded(CDBDoc&) override { calls.push_back("loaded"); }
  void RememberLogin(const ui::LoginEntry& login) override {
    calls.push_back("remember " + login.name + "/" + login.password);
  }
  std::int32_t DatabaseCheckSeconds() const override { return 30; }
  void StartBackgroundWork(CDBDoc&) override { calls.push_back("background"); }
  void BeforeClose(CDBDoc&) override { calls.push_back("before close"); }
  void CloseListWindows(CDBDoc&) override { calls.push_back("close lists"); }

  std::vector<std::string> calls;
};

std::vector<std::string> Names(const ItemTable& table) {
  std::vector<std::string> names;
  for (std::uint32_t p = 1; p <= table.count(); ++p) names.push_back(table.ItemAt(p)->GetName());
  return names;
}

std::vector<std::uint8_t> Stored(CProjectStore& store, std::uint32_t id, Tag tag = kMiscTag) {
  std::vector<std::uint8_t> bytes;
  EXPECT_EQ(store.ReadRecord(tag, id, bytes), DBStatus::kOk) << TagText(tag) << " " << id;
  return bytes;
}

class Project : public ::testing::Test {
 protected:
  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  RecordingHost host;
  ProjectItemKinds kinds;
};

TEST_F(Project, NewMultiUserProjectHoldsItsTablesListsAdministratorAndCounters) {
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.NewProject(path, true), 1);
  CProjectStore& store = *doc.store();

  EXPECT_EQ(Names(*doc.GetTable(MakeTag("type"))),
            (std::vector<std::string>{"Crash - Data Loss", "Crash - No Data Loss",
                                      "Incorrect Functionality", "Cosmetic", "Feature Request"}));
  EXPECT_EQ(Names(*doc.GetTable(MakeTag("stat"))),
            (std::vector<std::string>{"Open", "Fixed", "Verify Failed", "Verify Passed", "Closed",
                                      "Re-opened"}));
  EXPECT_EQ(Names(*doc.GetTable(MakeTag("prod"))), std::vector<std::string>{"Atlas"});
  // Each name's record holds its place from 1.
  EXPECT_EQ(Stored(store, 2, MakeTag("sevr")),
            Bytes().u16(257).u8(0).str8("No Workaround").u32(2).b);

  auto& admin = dynamic_cast<CUser&>(*doc.currentUser());
  EXPECT_EQ(admin.GetNotes(),
            "Administrator for this project. Responsible for managing security and backing up "
            "this project file.");
  auto& group = dynamic_cast<CUserGroup&>(*doc.GetTable(kGroupTag)->ItemAt(1));
  EXPECT_EQ(group.GetName(), "Administration");
  EXPECT_EQ(group.description.str(), "Project file administration");
  EXPECT_EQ(group.userIds(), std::vector<std::uint32_t>{admin.GetId()});
  EXPECT_EQ(admin.GetGroupId(), group.GetId());

  EXPECT_EQ(Stored(store, 1), Bytes().u16(256).u16(1).u8(0).b);
  EXPECT_EQ(ProjectInfo::Decode(Stored(store, 2), 0).projectName, "Atlas");
  for (std::uint32_t id : {5u, 6u, 7u}) EXPECT_EQ(Stored(store, id), Bytes().u32(0).b);
  EXPECT_EQ(Stored(store, 8), Bytes().u16(1).u8(1).u8(1).u8(1).u8(1).b);
  std::uint32_t size = 0;
  EXPECT_EQ(store.GetRecordSize(kMiscTag, 3, size), DBStatus::kNoSuchRecord)
      << "a multi-user project keeps preferences with each user";
  EXPECT_EQ(host.calls, (std::vector<std::string>{"loaded", "background"}));
  EXPECT_NE(doc.nextDatabaseCheck(), platform::kNoStamp);
}

// A single-user project has no users and keeps its preferences in misc 3. Its password is
// the session commands' test.
TEST_F(Project, NewSingleUserProjectHasNoUsers) {
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.NewProject(path, false), 1);
  EXPECT_EQ(doc.GetTable(kUserTag)->count(), 0u);
  EXPECT_EQ(doc.GetTable(kGroupTag)->count(), 0u);
  EXPECT_EQ(doc.currentUser(), nullptr);
  EXPECT_TRUE(doc.HasRight(Right::kSaveProjectTemplate));
  EXPECT_EQ(Stored(*doc.store(), 3), Bytes().u16(258).zeros(88).b);
  EXPECT_EQ(Stored(*doc.store(), 1), Bytes().u16(256).u16(0).u8(0).b);
  EXPECT_EQ(ui.statusTexts.back(), "Ready");
}

// A remembered login that fails ends the opening with nothing open; the dialog's login is
// remembered; the closing logs out and notes the time of leaving.
TEST_F(Project, OpeningLogsInAndClosingLogsOut) {
  MakeProject(path, true, {}, "Secret");
  {
    CDBDoc doc(ui, kinds, host);
    EXPECT_EQ(doc.OpenProject(path, ui::LoginEntry{"tess", "wrong"}), 0);
    EXPECT_EQ(ui.Texts(), std::vector<std::string>{"The user name or password you last used for "
                                                   "this project file is not valid."});
    EXPECT_EQ(doc.store(), nullptr);
    EXPECT_EQ(ui.statusTexts.back(), "");
  }
  ui.shown.clear();
  CDBDoc doc(ui, kinds, host);
  ui.ScriptLogin(ui::LoginEntry{"TESS", "secret"});
  ASSERT_EQ(doc.OpenProject(path), 1);
  EXPECT_TRUE(ui.shown.empty());
  EXPECT_EQ(doc.currentUser()->GetName(), "Tess");
  EXPECT_EQ(ui.statusTexts.front(), "Opening the project file...");
  EXPECT_EQ(host.calls, (std::vector<std::string>{"loaded", "background", "remember tess/Secret"}));
  doc.CloseProject();
  EXPECT_EQ(host.calls.back(), "close lists");
  EXPECT_EQ(doc.store(), nullptr);
  EXPECT_EQ(doc.GetTable(kUserTag), nullptr);

  // No login is left in the user block, even before an opening clears dead ones.
  const auto f = ReadFileBytes(path);
  EXPECT_EQ(BeU32(f, BeU32(f, 20) + 8), 0u) << "logged in";
  EXPECT_EQ(BeU32(f, BeU32(f, 20) + 20), 0u) << "the first slot's user";
  CProjectStore store(ui);
  ASSERT_EQ(store.Open(path), DBStatus::kOk);
  CUser tess;
  std::vector<std::uint8_t> record;
  ASSERT_EQ(store.ReadRecord(kUserTag, 2, record), DBStatus::kOk);
  PayloadReader reader(record);
  tess.ReadFrom(reader);
  EXPECT_NE(tess.GetDateLastLogin(), platform::kNoStamp);
}

// A new project is made over an existing file only where no other process has it open,
// single-user or logged in, and only after the person agreed to lose it.
TEST_F(Project, AProjectIsNeverMadeAnewUnderSomeoneWhoHasItOpen) {
  const std::string replace =
      " already exists. Replacing it deletes that project for good, with all its defects, "
      "users and settings.\nDo you want to replace it with a new, empty project?";
  const std::string inUse =
      ". A project file cannot be replaced while anyone has it open. Choose another name, or "
      "ask everyone to close the project first.";
  struct Case {
    const char* name;
    bool exists, multiUser;
    const char* held;   // by the other process: nothing, its "store" alone, or a "login"
    ui::Answer answer;  // to the warning, where it comes
    bool may;
    std::string shown;  // after the path
  };
  const std::string elsewhere = " is open in another copy of Quillmark";
  const Case cases[] = {
      {"none", false, true, "", ui::Answer::kNo, true, ""},
      {"single-held", true, false, "store", ui::Answer::kYes, false, elsewhere + inUse},
      {"not-logged-in", true, true, "store", ui::Answer::kYes, false, elsewhere + inUse},
      {"logged-in", true, true, "login", ui::Answer::kYes, false,
       elsewhere + " by Project Admin" + inUse},
      {"kept", true, true, "", ui::Answer::kNo, false, replace},
      {"replaced", true, false, "", ui::Answer::kYes, true, replace},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string file = dir.File(std::string(c.name) + ".qmk");
    if (c.exists) {
      CDBDoc made(ui, kinds, host);
      ASSERT_EQ(made.NewProject(file, c.multiUser), 1);
    }
    const std::string held = c.held;
    std::optional<Child> other;
    if (!held.empty()) {
      other.emplace([this, file, held](Child::Channel& channel) {
        CDBDoc doc(ui, kinds, host);  // the child's own copies
        CProjectStore store(ui);
        if (held == "login" ? doc.OpenProject(file, ui::LoginEntry{"admin", ""}) != 1
                            : store.Open(file) != DBStatus::kOk) {
          return 1;
        }
        channel.Send("open");
        channel.Receive();
        return 0;
      });
      ASSERT_EQ(other->Receive(), "open");
    }
    const std::vector<std::uint8_t> before =
        c.exists ? ReadFileBytes(file) : std::vector<std::uint8_t>();
    ui.shown.clear();
    if (c.shown == replace) ui.Script({c.answer});
    EXPECT_EQ(CDBDoc(ui, kinds, host).MayMakeProjectAt(file), c.may);
    EXPECT_EQ(ui.Texts(), c.shown.empty()
                              ? std::vector<std::string>{}
                              : std::vector<std::string>{"The project file " + file + c.shown});
    if (other) {
      // Asked again at the making itself, for whoever came in after the question.
      CDBDoc doc(ui, kinds, host);
      try {
        doc.NewProject(file, true);
        ADD_FAILURE() << "made anew under the other process";
      } catch (const StoreError& e) {
        EXPECT_EQ(e.status, DBStatus::kInUse);
      }
      EXPECT_EQ(ReadFileBytes(file), before) << "not a byte changed";
      other->Send("done");
      EXPECT_EQ(other->Wait(), 0);
    }
  }
}

TEST_F(Project, FailedOpeningsSayWhyAndLeaveNothingOpen) {
  // Not a project file: the question of recovery; No ends it quietly.
  WriteFileBytes(path, std::vector<std::uint8_t>(9000, 'x'));
  {
    CDBDoc doc(ui, kinds, host);
    ui.Script({ui::Answer::kNo});
    EXPECT_EQ(doc.OpenProject(path), 0);
    ASSERT_EQ(ui.shown.size(), 1u);
    EXPECT_EQ(ui.shown[0].text,
              "Cannot open the project file. Some key data structures are corrupt.\nDo you want "
              "to recover the records to a new file?");
    EXPECT_EQ(doc.store(), nullptr);
  }
  // A project whose content is newer than this program.
  MakeProject(path, false);
  ui.shown.clear();
  {
    CProjectStore store(ui);
    ASSERT_EQ(store.Open(path), DBStatus::kOk);
    std::vector<std::uint8_t> info = Stored(store, 2);
    PutU16(info, 0, 356);
    ASSERT_EQ(store.UpdateRecord(kMiscTag, 2, info), DBStatus::kOk);
    ASSERT_EQ(store.Close(), DBStatus::kOk);
  }
  {
    CDBDoc doc(ui, kinds, host);
    EXPECT_EQ(doc.OpenProject(path), 0);
    EXPECT_EQ(ui.Texts(), std::vector<std::string>{
                              "The project file you selected was created or updated by a newer "
                              "version of Quillmark. You must obtain the latest version of "
                              "Quillmark to open the file."});
  }
  // Ctrl held: the recovery, which never opens the project.
  ui.shown.clear();
  ui.statusTexts.clear();
  const auto before = ReadFileBytes(path);
  ui.HoldModifiers({.ctrl = true});
  CDBDoc doc(ui, kinds, host);
  EXPECT_EQ(doc.OpenProject(path), 0);
  ASSERT_EQ(ui.shown.size(), 1u);
  EXPECT_EQ(ui.statusTexts.front(), "Recovering the project file...");
  EXPECT_EQ(ReadFileBytes(path), before);
}

// A single-user project of data version 257, made as that version made them: without the
// workbook, components, reproducibles, attachments, severities, dispositions and mail
// templates, with a defect counter of 3 bytes and no options record.
void MakeOldProject(const std::string& path, ui::Ui& ui) {
  CProjectStore store(ui);
  ASSERT_EQ(store.Create(path, 0), DBStatus::kOk);
  for (const Tag tag : std::span(kProjectTables).first(12)) {
    ASSERT_EQ(store.AddTable(tag, {}), DBStatus::kOk);
  }
  std::uint32_t id = 0;
  ASSERT_EQ(store.AddRecord(kMiscTag, Bytes().u16(256).u16(0).u8(0).b, &id), DBStatus::kOk);
  Bytes info;
  info.u16(257).u8(3).text("Old").u8(0).u32(3'000'000'000u).u32(0);
  ASSERT_EQ(store.AddRecord(kMiscTag, info.b, &id), DBStatus::kOk);
  ASSERT_EQ(store.AddRecord(kMiscTag, std::vector<std::uint8_t>(76, 0), &id), DBStatus::kOk);
  ASSERT_EQ(store.PutRecord(kMiscTag, std::vector<std::uint8_t>{0, 0, 9}, 7, PutMode::kReplace),
            DBStatus::kOk);
  ASSERT_EQ(store.Close(), DBStatus::kOk);
}

TEST_F(Project, AnOlderProjectGainsWhatItLacks) {
  MakeOldProject(path, ui);
  const auto bytesBefore = ReadFileBytes(path);
  {
    CDBDoc doc(ui, kinds, host);
    ui.Script({ui::Answer::kCancel});
    EXPECT_EQ(doc.OpenProject(path), 0);
    ASSERT_EQ(ui.Texts().size(), 1u) << "a cancel says nothing more";
    EXPECT_EQ(ui.Texts()[0],
              "Quillmark needs to update the database with new information. You will not be "
              "able to open this database with older versions of Quillmark. Make sure you have "
              "created a backup of the file.");
  }
  EXPECT_EQ(ReadFileBytes(path), bytesBefore) << "cancel leaves the file as it was";

  CDBDoc doc(ui, kinds, host);
  ui.Script({ui::Answer::kOk});
  ASSERT_EQ(doc.OpenProject(path), 1);
  CProjectStore& store = *doc.store();
  std::vector<Tag> tags = store.TableTags();
  EXPECT_EQ(std::vector<Tag>(tags.end() - 7, tags.end()),
            (std::vector<Tag>{MakeTag("task"), MakeTag("sevr"), MakeTag("usta"), MakeTag("etmp"),
                              MakeTag("comp"), MakeTag("rpro"), MakeTag("atch")}));
  EXPECT_EQ(doc.GetTable(MakeTag("sevr"))->count(), 4u);
  EXPECT_EQ(doc.GetTable(MakeTag("usta"))->count(), 6u);
  EXPECT_EQ(doc.GetTable(MakeTag("rpro"))->ItemAt(1)->GetName(), "Always");
  EXPECT_EQ(doc.GetTable(MakeTag("comp"))->count(), 0u);
  const ProjectInfo info = ProjectInfo::Decode(Stored(store, 2), 0);
  EXPECT_EQ(info.dataVersion, kDataVersion);
  EXPECT_EQ(info.projectName, "Old");
  EXPECT_EQ(info.createdAt, 3'000'000'000u);
  EXPECT_EQ(Stored(store, 5), Bytes().u32(0).b);
  EXPECT_EQ(Stored(store, 7), Bytes().u32(0).b) << "nextId of dfct less one replaces 3 bytes";
  EXPECT_EQ(Stored(store, 8), Bytes().u16(1).u8(1).u8(1).u8(1).u8(1).b);
  doc.CloseProject();

  // Brought up to date, it opens again without a question and without adding anything.
  ui.shown.clear();
  CDBDoc again(ui, kinds, host);
  ASSERT_EQ(again.OpenProject(path), 1);
  EXPECT_TRUE(ui.shown.empty());
  EXPECT_EQ(again.store()->TableTags(), tags);
  EXPECT_EQ(again.GetTable(MakeTag("sevr"))->count(), 4u);
}

TEST_F(Project, TheTemplateKeepsAllButDefectsAndAttachments) {
  MakeProject(path, true);
  CDBDoc doc(ui, kinds, host);
  ASSERT_EQ(doc.OpenProject(path, ui::LoginEntry{"admin", ""}), 1);
  CProjectStore& store = *doc.store();
  ASSERT_EQ(store.PutRecord(kDefectTag, std::vector<std::uint8_t>{1, 2}, 4, PutMode::kReplace),
            DBStatus::kOk);
  ASSERT_EQ(store.PutRecord(MakeTag("atch"), std::vector<std::uint8_t>{3}, 1, PutMode::kReplace),
            DBStatus::kOk);
  ASSERT_EQ(doc.SetCounter(kMiscTag, 7, 40), DBStatus::kOk);
  const std::string copyPath = dir.File("Template.qmk");
  ASSERT_EQ(doc.SaveProjectTemplate(copyPath), DBStatus::kOk);
  std::uint32_t value = 0;
  ASSERT_EQ(ReadDefectCounter(store, value), DBStatus::kOk);
  EXPECT_EQ(value, 0u) << "the open project's own counter is the one set back";

  CProjectStore copy(ui);
  ASSERT_EQ(copy.Open(copyPath), DBStatus::kOk);
  EXPECT_EQ(copy.TableTags(), store.TableTags());
  std::uint32_t count = 0;
  ASSERT_EQ(copy.CountRecords(kDefectTag, count), DBStatus::kOk);
  EXPECT_EQ(count, 0u);
  ASSERT_EQ(copy.CountRecords(MakeTag("atch"), count), DBStatus::kOk);
  EXPECT_EQ(count, 0u);
  for (const Tag tag : {kUserTag, kGroupTag, MakeTag("type"), MakeTag("prod"), kMiscTag}) {
    std::vector<IndexEntry> a;
    std::vector<IndexEntry> b;
    ASSERT_EQ(store.ReadIndex(tag, a), DBStatus::kOk);
    ASSERT_EQ(copy.ReadIndex(tag, b), DBStatus::kOk);
    ASSERT_EQ(a.size(), b.size()) << TagText(tag);
    for (std::size_t i = 0; i < a.size(); ++i) EXPECT_EQ(a[i].id, b[i].id) << TagText(tag);
  }

  ui.shown.clear();
  EXPECT_EQ(doc.SaveProjectTemplate(copyPath), DBStatus::kCancelled);
  EXPECT_EQ(ui.Texts().size(), 1u) << "the text is quillmark-cli new's refusal";
}

}  // namespace
}  // namespace qm::test
