// The defect window over a multi-user project: actions taken before saving, the commands
// each status and right offers, edit, view and delete of events, the notification list and
// reported-by rows, adding a defect, and a selection action of another process meeting an
// open window.
#include "shell/defect_window.h"

#include <gtest/gtest.h>

#include "people/user_group.h"
#include "session/numbering.h"
#include "session/record_notice.h"
#include "shell_project.h"
#include "support/child_process.h"

namespace qm::test {
namespace {

// A closing button for the dialog of each kind, and what the dialog writes.
struct DialogStep {
  EventKind kind;
  std::optional<EventDialogResult> button;
  std::function<void(CDefectEvent&)> fill;
};

// A multi-user project with three defects, each with its report; closed again so that a
// child process can be forked without sharing its locks.
class DefectWindowTest : public ShellProject {
 protected:
  void SetUp() override {
    MakeProject(path);
    Open();
    for (const char* summary : {"Crash on save", "Slow start", "Typo in help"}) {
      std::unique_ptr<RecordItem> d = defects().NewItem();
      auto& defect = static_cast<CDefect&>(*d);
      defect.summary = summary;
      ASSERT_EQ(doc->NextCounter(kMiscTag, kDefectCounterRecord, defect.number), DBStatus::kOk);
      auto report = std::make_unique<CReportedBy>();
      report->description = std::string(summary) + " happens\revery time";
      report->dateFound = 3'000'000'000u;
      defect.AddReportedBy(std::move(report));
      ASSERT_EQ(defects().AddItem(d), DBStatus::kOk);
    }
    doc->CloseProject();
    clock.now = 3'100'000'000u;
  }

  CDefectTable& defects() { return table<CDefectTable>(kDefectTag); }
  CDefect& Defect(std::uint32_t position) { return *defects().DefectAt(position); }

  // A window whose dialogs follow `steps` in order, each checked for its kind.
  std::unique_ptr<CDefectWindow> Window() {
    return std::make_unique<CDefectWindow>(
        *doc, defects(), ui, marks,
        [this](CDefectEvent& event, EventDialogMode mode) -> std::optional<EventDialogResult> {
          dialogModes.push_back(mode);
          if (steps.empty()) {
            ADD_FAILURE() << "a dialog nobody expected";
            return std::nullopt;
          }
          DialogStep step = std::move(steps.front());
          steps.erase(steps.begin());
          EXPECT_EQ(event.kind(), step.kind);
          if (step.fill) step.fill(event);
          return step.button;
        },
        clock);
  }
  std::vector<RecordItem*> All() { return {&Defect(1), &Defect(2), &Defect(3)}; }

  // Which commands the window offers, as "AEFVCORM" with '.' for the ones it does not.
  static std::string Offered(const CDefectWindow& window) {
    std::string letters = "AEFVCORM";
    for (std::size_t c = 0; c < std::size(kDefectCommands); ++c) {
      if (!window.CommandEnabled(kDefectCommands[c])) letters[c] = '.';
    }
    return letters;
  }

  std::vector<DialogStep> steps;
  std::vector<EventDialogMode> dialogModes;
};

std::string Action(EventKind kind) {
  return std::string(CDefectEvent::Make(static_cast<std::int16_t>(kind))->ActionText());
}

auto Dated(std::uint32_t date, std::string notes = {}) {
  return [date, notes](CDefectEvent& e) {
    e.date = date;
    e.notes = notes;
  };
}

TEST_F(DefectWindowTest, ActionsWaitForTheSaveAndTheWindowShowsTheStatusTheyWouldGive) {
  Open();
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 1);
  EXPECT_EQ(window->title(), "Edit Defect #1");
  doc->options().allowMultipleFixes = false;
  EXPECT_EQ(Offered(*window), "AEF.C.RM") << "an open defect";

  // A fix dated before the comment goes in above it.
  steps = {{EventKind::kComment, EventDialogResult::kOk, Dated(3'100'000'000u, "Seen")},
           {EventKind::kFix, EventDialogResult::kOk, Dated(3'050'000'000u)}};
  EXPECT_TRUE(window->RunCommand(DefectCommand::kComment));
  EXPECT_TRUE(window->RunCommand(DefectCommand::kFix));
  const std::vector<EventRow> rows = window->EventRows();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].action, "Reported");
  EXPECT_EQ(rows[0].info, "Crash on save happens") << "the first line of the description";
  EXPECT_EQ(rows[1].action, Action(EventKind::kFix));
  EXPECT_EQ(rows[1].date, FormatDate(3'050'000'000u));
  EXPECT_EQ(rows[2].action, Action(EventKind::kComment));
  EXPECT_EQ(window->defect().status(), 2);
  EXPECT_EQ(Defect(1).status(), 1) << "the stored defect waits for the save";
  EXPECT_EQ(Offered(*window), "A..VC.RM") << "a fixed defect, without multiple fixes";
  doc->options().allowMultipleFixes = true;
  EXPECT_EQ(Offered(*window), "A.FVC.RM");

  // A cancelled dialog and a button the kind does not take add nothing.
  steps = {{EventKind::kClose, std::nullopt, {}},
           {EventKind::kComment, EventDialogResult::kSaveAndAssign, {}}};
  EXPECT_FALSE(window->RunCommand(DefectCommand::kClose));
  EXPECT_FALSE(window->RunCommand(DefectCommand::kComment));
  EXPECT_EQ(window->defect().EventCount(), 2u);

  // Verify with Fail and "Save && Assign": status 3, then the assignment's dialog.
  steps = {{EventKind::kVerify, EventDialogResult::kSaveAndAssign,
            [](CDefectEvent& e) { static_cast<CVerifyEvent&>(e).passed = false; }},
           {EventKind::kAssign, EventDialogResult::kOk,
            [this](CDefectEvent& e) { e.userId = doc->currentUserId(); }}};
  ASSERT_TRUE(window->RunCommand(DefectCommand::kVerify));
  EXPECT_TRUE(steps.empty());
  EXPECT_EQ(window->defect().status(), 3);
  EXPECT_EQ(window->defect().copies().assignedToId, doc->currentUserId());
  EXPECT_EQ(Offered(*window), "AEF.C.RM") << "a failed fix may be fixed again";

  // A passed verify with "Save && Release" goes on to the release notes.
  steps = {{EventKind::kFix, EventDialogResult::kOk, {}},
           {EventKind::kVerify, EventDialogResult::kSaveAndRelease, {}},
           {EventKind::kReleaseNotes, EventDialogResult::kOk, {}}};
  ASSERT_TRUE(window->RunCommand(DefectCommand::kFix));
  ASSERT_TRUE(window->RunCommand(DefectCommand::kVerify));
  EXPECT_TRUE(steps.empty());
  EXPECT_EQ(window->defect().status(), 4);
  EXPECT_EQ(Offered(*window), ".....ORM");

  const std::string pending = window->PendingChangeText();
  EXPECT_FALSE(pending.empty());
  EXPECT_TRUE(window->OnAcceptButton());
  EXPECT_EQ(window->changeText(), pending) << "what saving wrote is what it would write";
  EXPECT_EQ(Defect(1).status(), 4);
  EXPECT_EQ(Defect(1).EventCount(), 7u);
  EXPECT_EQ(Defect(1).dateModified, clock.now);
  EXPECT_TRUE(ui.shown.empty());
}

// After work the defect keeps its assignee; a new one goes to the user who entered it and
// takes the project's next number.
TEST_F(DefectWindowTest, TheProjectsRulesAssignByThemselvesAndAnAddedDefectIsNumbered) {
  Open();
  ASSERT_TRUE(doc->SetAssignRules({1, 0, 1, 0}));
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 1);
  steps = {{EventKind::kAssign, EventDialogResult::kOk,
            [this](CDefectEvent& e) { e.userId = doc->currentUserId(); }},
           {EventKind::kFix, EventDialogResult::kOk, {}}};
  ASSERT_TRUE(window->RunCommand(DefectCommand::kAssign));
  ASSERT_TRUE(window->RunCommand(DefectCommand::kFix));
  EXPECT_EQ(window->defect().status(), 2);
  EXPECT_EQ(window->defect().copies().assignedToId, doc->currentUserId()) << "kept";
  EXPECT_EQ(window->defect().EventCount(), 3u) << "an assignment after the fix";
  window->OnCancelButton();
  EXPECT_EQ(Defect(1).EventCount(), 0u) << "cancel saves nothing";

  auto adding = Window();
  adding->Open(CRecordWindow::kAddClose);
  EXPECT_EQ(adding->title(), "Add Defect");
  EXPECT_EQ(adding->ReportCounter(), "1 of 1");
  EXPECT_EQ(adding->defect().enteredById, doc->currentUserId());
  EXPECT_EQ(adding->defect().dateEntered, clock.now);
  EXPECT_FALSE(adding->OnAcceptButton()) << "no summary";
  adding->defect().summary = "Menu overlaps the toolbar";
  adding->defect().ReportedByAt(1)->description = "Written into the row";
  ASSERT_TRUE(adding->OnAcceptButton());
  const CDefect& added = Defect(defects().count());
  EXPECT_EQ(added.summary, "Menu overlaps the toolbar");
  EXPECT_EQ(added.ReportedByAt(1)->description, "Written into the row") << "no pane waited";
  EXPECT_EQ(added.number, 4u) << "the next number of the project";
  EXPECT_EQ(added.copies().assignedToId, doc->currentUserId());
  EXPECT_NE(added.GetId(), 0u);
}

TEST_F(DefectWindowTest, EachCommandNeedsItsRightAndAWindowThatMayChange) {
  Open();
  auto& group = static_cast<CUserGroup&>(*doc->GetTable(kGroupTag)->ItemAt(1));  // tess's
  for (std::size_t c = 0; c < std::size(kDefectCommands); ++c) {
    const std::uint32_t right = RightNumber(CommandInfo(kDefectCommands[c]).right);
    SCOPED_TRACE(right);
    group.SetCommandDisabled(right, true);
    ASSERT_EQ(doc->GetTable(kGroupTag)->SaveItem(group), DBStatus::kOk);
    ASSERT_GE(doc->LogInUser(ui::LoginEntry{"tess", ""}), 0);
    auto window = Window();
    window->Open(CRecordWindow::kEdit, All(), 1);
    std::string expected = "AEF.C.RM";
    expected[c] = '.';
    EXPECT_EQ(Offered(*window), expected);
    window->OnCancelButton();
    group.SetCommandDisabled(right, false);
    ASSERT_GE(doc->LogInUser(ui::LoginEntry{"admin", ""}), 0);
  }
  // A closed defect opens as in a view to one whose group keeps closed defects from them,
  // and its lock stays free; the next defect, still open, is theirs to edit.
  Defect(2).AddEvent(CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kClose)));
  ASSERT_EQ(defects().SaveItem(Defect(2)), DBStatus::kOk);
  for (const bool denied : {true, false}) {
    SCOPED_TRACE(denied);
    group.SetCommandDisabled(RightNumber(Right::kEditClosedDefects), denied);
    ASSERT_EQ(doc->GetTable(kGroupTag)->SaveItem(group), DBStatus::kOk);
    ASSERT_GE(doc->LogInUser(ui::LoginEntry{"tess", ""}), 0);
    auto window = Window();
    window->Open(CRecordWindow::kEdit, All(), 2);
    EXPECT_EQ(window->editable(), !denied);
    EXPECT_EQ(window->lockHeld(), !denied);
    EXPECT_EQ(window->title().substr(0, 5), denied ? "View " : "Edit ");
    ASSERT_TRUE(window->OnNextRecord());
    EXPECT_TRUE(window->editable());
    window->OnCancelButton();
    ASSERT_GE(doc->LogInUser(ui::LoginEntry{"admin", ""}), 0);
  }

  auto viewing = Window();
  viewing->Open(CRecordWindow::kView, All(), 1);
  EXPECT_EQ(Offered(*viewing), "........");
  auto readOnly = Window();
  readOnly->Open(CRecordWindow::kEdit, All(), 1, true);
  EXPECT_EQ(Offered(*readOnly), "........");
  readOnly->defect().summary = "Changed anyway";
  EXPECT_TRUE(readOnly->OnAcceptButton());
  EXPECT_EQ(Defect(1).summary, "Crash on save") << "a read-only window saves nothing";
}

TEST_F(DefectWindowTest, EventsAreEditedViewedAndDeletedOnTheirRows) {
  Open();
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 3);
  steps = {{EventKind::kComment, EventDialogResult::kOk, Dated(3'100'000'000u, "first")},
           {EventKind::kComment, EventDialogResult::kOk, Dated(3'200'000'000u, "second")}};
  ASSERT_TRUE(window->RunCommand(DefectCommand::kComment));
  ASSERT_TRUE(window->RunCommand(DefectCommand::kComment));
  ASSERT_TRUE(window->OnAcceptButton());
  window->Open(CRecordWindow::kEdit, All(), 3);
  EXPECT_FALSE(window->EventEditable(1)) << "the report row";
  EXPECT_FALSE(window->EventEditable(4)) << "past the last event";

  // A cancelled edit leaves the event; an edit that moves its date moves its row.
  steps = {{EventKind::kComment, std::nullopt, Dated(1)},
           {EventKind::kComment, EventDialogResult::kOk, Dated(3'300'000'000u, "first")},
           {EventKind::kComment, EventDialogResult::kOk, {}}};
  EXPECT_FALSE(window->EditEvent(2));
  EXPECT_EQ(window->defect().EventAt(1)->date, 3'100'000'000u);
  EXPECT_TRUE(window->EditEvent(2));
  EXPECT_EQ(window->defect().EventAt(2)->notes, "first") << "now after the second";
  EXPECT_TRUE(window->ViewEvent(2));
  EXPECT_EQ(dialogModes.back(), EventDialogMode::kView);

  ui.Script({ui::Answer::kNo, ui::Answer::kYes});
  EXPECT_FALSE(window->DeleteEvent(2));
  EXPECT_TRUE(window->DeleteEvent(2));
  EXPECT_EQ(ui.Texts(), std::vector<std::string>(2,
                                                 "Are you sure that you want to delete the "
                                                 "selected action? There is no undo available."));
  ASSERT_EQ(window->defect().EventCount(), 1u);
  EXPECT_EQ(window->defect().EventAt(1)->notes, "first");
  EXPECT_TRUE(window->OnAcceptButton());
  EXPECT_EQ(Defect(3).EventCount(), 1u);
}

TEST_F(DefectWindowTest, NotifyListAndReportedByRowsAreChangesOfTheDefect) {
  Open();
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 1);
  EXPECT_EQ(window->ReportCounter(), "1 of 1");
  ASSERT_TRUE(window->NewReportedBy());
  EXPECT_EQ(window->ReportCounter(), "2 of 2");
  EXPECT_EQ(window->defect().ReportedByAt(2)->foundById, doc->currentUserId());
  EXPECT_EQ(window->defect().ReportedByAt(2)->dateFound, clock.now);
  EXPECT_EQ(window->reportPane().dateText, FormatDate(clock.now)) << "the pane shows the new row";
  ASSERT_TRUE(window->ShowReport(1));
  window->SetFinder(0);
  const SubmitterReply reply = window->ReplyToSubmitter();
  EXPECT_EQ(reply.recipients, std::vector<std::uint32_t>{doc->currentUserId()})
      << "the finders of the rows the window shows";
  EXPECT_EQ(reply.subject, "Re: Crash on save");
  window->DeleteReportedBy();
  EXPECT_EQ(window->ReportCounter(), "1 of 1");
  EXPECT_EQ(window->EventRows()[0].who, "Project Admin") << "the new row is the first now";
  window->DeleteReportedBy();
  EXPECT_EQ(window->ReportCounter(), "0 of 0");
  EXPECT_TRUE(window->EventRows().empty());
  EXPECT_EQ(window->reportPane(), ReportPane{}) << "blank panes";

  window->AddToNotify(doc->currentUserId());
  window->AddToNotify(doc->currentUserId());
  EXPECT_EQ(window->defect().notifyList().size(), 1u);
  const std::string change = window->PendingChangeText();
  EXPECT_NE(change.find("added the notification list: Project Admin"), std::string::npos) << change;
  ASSERT_TRUE(window->OnAcceptButton());
  EXPECT_EQ(Defect(1).ReportedByCount(), 0u);
  EXPECT_EQ(Defect(1).notifyList(), std::vector<std::uint32_t>{doc->currentUserId()});
}

TEST(ReportPaneTest, ChecksRefuseADateNotReadAndAStandardKindWithoutItsConfiguration) {
  struct Case {
    const char* date;
    std::uint16_t kind;
    std::uint32_t configId;
    std::optional<ReportField> refused;
  };
  const Case cases[] = {
      {"", CReportedBy::kNoConfig, 0, std::nullopt},
      {"  ", CReportedBy::kNoConfig, 0, std::nullopt},
      {"3/7/2024", CReportedBy::kNoConfig, 0, std::nullopt},
      {"2024-03-07", CReportedBy::kCustomConfig, 0, std::nullopt},
      {"yesterday", CReportedBy::kNoConfig, 0, ReportField::kDateFound},
      {"2/29/2023", CReportedBy::kNoConfig, 0, ReportField::kDateFound},
      {"3/7/2024", CReportedBy::kStoredConfig, 0, ReportField::kStoredConfig},
      {"3/7/2024", CReportedBy::kStoredConfig, 9, std::nullopt},
      {"13/1/2024", CReportedBy::kStoredConfig, 0, ReportField::kDateFound},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.date);
    ReportPane pane;
    pane.dateText = c.date;
    pane.configKind = c.kind;
    pane.testConfigId = c.configId;
    const std::optional<ReportRefusal> refusal = CheckPane(pane);
    EXPECT_EQ(refusal ? std::optional(refusal->focus) : std::nullopt, c.refused);
  }
}

TEST_F(DefectWindowTest, EveryFieldOfAReportIsSavedAndABadOneKeepsTheWindowOnIt) {
  Open();
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 1);
  ReportPane pane = window->reportPane();
  EXPECT_EQ(pane.description, "Crash on save happens\revery time");
  EXPECT_EQ(pane.dateText, FormatDate(3'000'000'000u));
  pane.description = "Crash on save, always";
  window->EditReport(pane);
  EXPECT_EQ(window->defect().ReportedByAt(1)->dateFound, 3'000'000'000u)
      << "an unchanged day keeps the time of the report";

  pane.dateText = "2/30/2024";
  pane.contact = "Corvane QA";
  window->EditReport(pane);
  const std::string dateMessage =
      "Please enter the date this defect was found as M/D/YYYY, or leave it empty.";
  EXPECT_FALSE(window->NewReportedBy());
  EXPECT_EQ(window->ReportCounter(), "1 of 1");
  EXPECT_FALSE(window->OnAcceptButton());
  EXPECT_EQ(ui.Texts(), std::vector<std::string>(2, dateMessage));
  EXPECT_EQ(window->refusedField(), ReportField::kDateFound);
  EXPECT_EQ(window->reportPane().contact, "Corvane QA") << "what was typed stays";

  pane.dateText = "3/7/2024";
  pane.versionFound =
      std::string(17, 'v') + "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9";
  pane.reproducedId = doc->GetTable(MakeTag("rpro"))->ItemAt(2)->GetId();
  pane.steps = "Open\rSave";
  pane.otherHardware = "Two mice";
  window->EditReport(pane);
  EXPECT_FALSE(window->refusedField());
  // A second row gets its own computer, edited in its dialog.
  ASSERT_TRUE(window->NewReportedBy());
  auto config = window->CustomConfigCopy();
  ASSERT_NE(config, nullptr);
  config->model = "Vectra";
  window->SetCustomConfig(std::move(config));
  EXPECT_EQ(window->reportPane().configKind, CReportedBy::kCustomConfig);
  ASSERT_TRUE(window->OnAcceptButton());

  const CReportedBy& first = *Defect(1).ReportedByAt(1);
  EXPECT_EQ(first.dateFound, *ParseDate("3/7/2024"));
  EXPECT_EQ(Defect(1).dateFound, first.dateFound) << "the defect's copy of the first row";
  EXPECT_EQ(first.contact.str(), "Corvane QA");
  EXPECT_EQ(first.versionFound,
            std::string(17, 'v') + "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9")
      << "32 bytes, no character cut in half";
  EXPECT_EQ(Defect(1).reproducedId, first.reproducedId);
  EXPECT_EQ(first.steps, "Open\rSave");
  EXPECT_EQ(first.otherHardware, "Two mice");
  ASSERT_EQ(Defect(1).ReportedByCount(), 2u);
  const CReportedBy& added = *Defect(1).ReportedByAt(2);
  ASSERT_EQ(added.configKind(), CReportedBy::kCustomConfig);
  EXPECT_EQ(added.customConfig()->model.str(), "Vectra");

  // Given up for the finder's own computer.
  window->Open(CRecordWindow::kEdit, All(), 1);
  ASSERT_TRUE(window->ShowReport(2));
  ReportPane own = window->reportPane();
  own.configKind = CReportedBy::kNoConfig;
  window->EditReport(own);
  EXPECT_EQ(window->defect().ReportedByAt(2)->customConfig(), nullptr);
  window->OnCancelButton();

  auto viewing = Window();
  viewing->Open(CRecordWindow::kView, All(), 1);
  ReportPane changed = viewing->reportPane();
  changed.steps = "Changed in a view";
  viewing->EditReport(changed);
  EXPECT_FALSE(viewing->NewReportedBy());
  EXPECT_FALSE(viewing->DeleteReportedBy());
  EXPECT_EQ(viewing->defect().ReportedByAt(1)->steps, "Open\rSave");
}

TEST_F(DefectWindowTest, AClosedDefectShowsItsResolutionAndTheCloseRowGivesIt) {
  Open();
  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 1);
  EXPECT_EQ(window->ResolutionText(), "");
  const std::uint32_t notABug = doc->GetTable(MakeTag("reso"))->ItemAt(5)->GetId();
  steps.push_back({EventKind::kClose, EventDialogResult::kOk, [notABug](CDefectEvent& e) {
                     e.date = 3'100'000'000u;
                     static_cast<CCloseEvent&>(e).resolutionId = notABug;
                   }});
  ASSERT_TRUE(window->RunCommand(DefectCommand::kClose));
  EXPECT_EQ(window->ResolutionText(), "Not a Bug");
  EXPECT_EQ(window->EventRows().back().info, "Resolution: Not a Bug");
  steps.push_back({EventKind::kReOpen, EventDialogResult::kOk, Dated(3'200'000'000u)});
  ASSERT_TRUE(window->RunCommand(DefectCommand::kReOpen));
  EXPECT_EQ(window->ResolutionText(), "") << "a re-opened defect has none";
  EXPECT_EQ(window->EventRows()[1].info, "Resolution: Not a Bug") << "the close row keeps it";
  window->OnCancelButton();
}

// One process holds a defect in an open edit window; the other runs Close on a selection
// that holds it, which leaves it out with the message and closes the rest. The second then
// opens the held defect: read-only, naming who holds it, until ten seconds after the first
// saved and let go, when its retry takes the lock and shows what the first saved.
TEST_F(DefectWindowTest, ASelectionActionLeavesOutTheDefectAnOpenWindowHolds) {
  // The child works on its own copies of this test's objects.
  Child first([this](Child::Channel& c) {
    CDBDoc mine(ui, kinds, host);
    if (mine.OpenProject(path, ui::LoginEntry{"tess", ""}) != 1) return 1;
    auto& table = static_cast<CDefectTable&>(*mine.GetTable(kDefectTag));
    CDefectWindow window(
        mine, table, ui, marks,
        [](CDefectEvent& e, EventDialogMode) -> std::optional<EventDialogResult> {
          e.notes = "Only with a full disk";
          return EventDialogResult::kOk;
        },
        clock);
    window.Open(CRecordWindow::kEdit, {table.DefectAt(2)}, 1);
    if (!window.lockHeld()) return 2;
    if (!window.RunCommand(DefectCommand::kComment)) return 3;
    c.Send("editing");
    c.Receive();
    if (!window.OnAcceptButton()) return 4;
    c.Send("saved");
    c.Receive();
    return 0;
  });
  ASSERT_EQ(first.Receive(), "editing");
  Open();
  SelectionAction close(
      *doc, defects(), {&Defect(1), &Defect(2), &Defect(3)}, ui,
      [](CDefectEvent&) { return EventDialogResult::kOk; }, clock);
  EXPECT_EQ(close.Run(DefectCommand::kClose), std::nullopt);
  EXPECT_EQ(ui.shown.size(), 1u) << "the selection action's message";
  EXPECT_EQ(Defect(1).status(), 5);
  EXPECT_EQ(Defect(2).status(), 1);
  EXPECT_EQ(Defect(3).status(), 5);

  auto window = Window();
  window->Open(CRecordWindow::kEdit, All(), 2);
  EXPECT_TRUE(window->lockFailed());
  EXPECT_TRUE(window->lockedByButton().visible);
  EXPECT_EQ(Offered(*window), "........") << "read-only while the other holds it";
  std::string holder;
  window->showLockHolder = [&holder](const std::string& name) { holder = name; };
  EXPECT_EQ(window->OnLockedBy(), nullptr);
  EXPECT_EQ(holder, "Tess");

  first.Send("save");
  ASSERT_EQ(first.Receive(), "saved");
  Notice notice;
  ASSERT_EQ(doc->store()->GetNextMessage(notice), DBStatus::kOk) << "the save was told";
  EXPECT_EQ(notice.kind, kNoticeChanged);
  EXPECT_EQ(notice.data, (std::vector<std::uint8_t>{'d', 'f', 'c', 't', 0, 0, 0,
                                                    static_cast<std::uint8_t>(Defect(2).GetId())}));
  CProjectStore::FreeMessage(notice);
  clock.now += CRecordWindow::kRetrySeconds - 1;
  window->OnIdle();
  EXPECT_TRUE(window->lockFailed()) << "no retry before 10 seconds";
  clock.now += 1;
  window->OnIdle();
  EXPECT_TRUE(window->lockHeld());
  EXPECT_FALSE(window->retryActive());
  EXPECT_FALSE(window->lockedByButton().visible);
  ASSERT_EQ(window->defect().EventCount(), 1u);
  EXPECT_EQ(window->defect().EventAt(1)->notes, "Only with a full disk");
  EXPECT_EQ(Offered(*window), "AEF.C.RM");
  window->OnCancelButton();
  first.Send("end");
  EXPECT_EQ(first.Wait(), 0);
}

}  // namespace
}  // namespace qm::test
