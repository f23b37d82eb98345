// The defect commands: the statuses that offer each, and a command run on a selection of
// a real project, with records locked by another process and notices read by another
// client; duplicate, delete, the clipboard block and the reply to submitters.
#include "defects/defect_actions.h"

#include <gtest/gtest.h>

#include "defects/fixtures.h"
#include "defects/selection_commands.h"
#include "defects/text_forms.h"
#include "support/fake_files.h"
#include "support/item_bytes.h"

namespace qm::test {
namespace {

// Statuses 1 to 6, 'x' where the command is offered.
std::string Offered(DefectCommand command, bool inWindow, bool multipleFixes) {
  std::string row;
  for (std::uint16_t status = 1; status <= 6; ++status) {
    const std::uint16_t one[] = {status};
    const bool offered = inWindow ? AllowedInWindow(command, status, multipleFixes)
                                  : AllowedOnSelection(command, one, multipleFixes);
    row += offered ? 'x' : '.';
  }
  return row;
}

TEST(DefectCommands, OfferedByStatusAsTheCommandTableSays) {
  struct Expected {
    EventKind kind;
    std::string_view menu;
    std::uint32_t right;
    std::string window;          // statuses 1 to 6
    std::string windowMultiple;  // the same with allowMultipleFixes
  };
  const Expected table[] = {
      {EventKind::kAssign, "&Assign...", 31, "xxx..x", "xxx..x"},
      {EventKind::kEstimate, "&Estimate...", 40, "x.x..x", "x.x..x"},
      {EventKind::kFix, "&Fix...", 32, "x.x..x", "xxx..x"},
      {EventKind::kVerify, "&Verify...", 33, ".x....", ".x...."},
      {EventKind::kClose, "&Close...", 34, "xxx..x", "xxx..x"},
      {EventKind::kReOpen, "Re-&Open...", 35, "...xx.", "...xx."},
      {EventKind::kReleaseNotes, "&Release Notes...", 46, "xxxxxx", "xxxxxx"},
      {EventKind::kComment, "Co&mment...", 41, "xxxxxx", "xxxxxx"},
  };
  for (std::size_t c = 0; c < std::size(kDefectCommands); ++c) {
    const DefectCommand command = kDefectCommands[c];
    const Expected& e = table[c];
    SCOPED_TRACE(e.menu);
    EXPECT_EQ(CommandInfo(command).kind, e.kind);
    EXPECT_EQ(CommandInfo(command).menuText, e.menu);
    EXPECT_EQ(RightNumber(CommandInfo(command).right), e.right);
    EXPECT_EQ(Offered(command, true, false), e.window);
    EXPECT_EQ(Offered(command, true, true), e.windowMultiple);
    EXPECT_EQ(Offered(command, false, false), e.window);
    EXPECT_EQ(Offered(command, false, true), e.windowMultiple);
    EXPECT_FALSE(AllowedOnSelection(command, {}, true)) << "nothing selected";
  }

  const std::uint16_t openAndClosed[] = {1, 5};
  EXPECT_FALSE(AllowedOnSelection(DefectCommand::kClose, openAndClosed, false));
  EXPECT_FALSE(AllowedOnSelection(DefectCommand::kReOpen, openAndClosed, false));
  EXPECT_TRUE(AllowedOnSelection(DefectCommand::kComment, openAndClosed, false));
  const std::uint16_t openAndFixed[] = {1, 2, 6};
  EXPECT_FALSE(AllowedOnSelection(DefectCommand::kFix, openAndFixed, false));
  EXPECT_TRUE(AllowedOnSelection(DefectCommand::kFix, openAndFixed, true));
}

// A second user, three open defects and another client of the file watching for notices.
class SelectionActions : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    auto user = std::make_unique<CUser>();
    user->SetFirstName("Tess");
    user->SetLastName("Ng");
    user->SetGroupId(1);
    const CUser* tess = user.get();
    std::unique_ptr<RecordItem> item = std::move(user);
    ASSERT_EQ(doc.GetTable(kUserTag)->AddItem(item), DBStatus::kOk);
    tessId = tess->GetId();
    for (const char* summary : {"One", "Two", "Three"}) AddDefect(summary);
    ASSERT_EQ(watcher.Open(path), DBStatus::kOk);
    ui.shown.clear();
  }

  CDefect& Defect(std::uint32_t position) { return *defects().DefectAt(position); }

  // An action on `selection` whose dialog closes with `button`, after `fill` has set the
  // event's fields; each dialog run is noted in `dialogs`.
  SelectionAction Action(std::vector<CDefect*> selection, std::optional<EventDialogResult> button,
                         std::function<void(CDefectEvent&)> fill = {}) {
    return SelectionAction(
        doc, defects(), std::move(selection), ui,
        [this, button, fill](CDefectEvent& event) {
          dialogs.push_back(event.kind());
          EXPECT_EQ(event.userId, 0u);
          EXPECT_EQ(event.date, clock.now);
          if (fill) fill(event);
          return button;
        },
        clock);
  }

  void Give(CDefect& defect, EventKind kind) {
    std::unique_ptr<CDefectEvent> event = CDefectEvent::Make(static_cast<std::int16_t>(kind));
    event->userId = tessId;
    event->date = 100;
    defect.AddEvent(std::move(event));
    ASSERT_EQ(defects().SaveItem(defect), DBStatus::kOk);
  }

  std::uint16_t StoredStatus(const CDefect& defect) {
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(watcher.ReadRecord(kDefectTag, defect.GetId(), bytes), DBStatus::kOk);
    return ReadItem<CDefect>(bytes)->status();
  }

  using Notes = std::vector<std::tuple<std::uint32_t, std::uint32_t, std::vector<std::uint8_t>>>;
  Notes Notices() {
    Notes notes;
    Notice notice;
    while (watcher.GetNextMessage(notice) == DBStatus::kOk) {
      notes.emplace_back(notice.kind, notice.sender, notice.data);
      CProjectStore::FreeMessage(notice);
    }
    return notes;
  }
  Notes::value_type Saved(const CDefect& defect) {
    return {1002, doc.currentUserId(), Bytes().u32(kDefectTag).u32(defect.GetId()).b};
  }

  FakeClock clock;
  ScriptedUi watcherUi;
  CProjectStore watcher{watcherUi};
  std::uint32_t tessId = 0;
  std::vector<EventKind> dialogs;
};

TEST_F(SelectionActions, OneDialogGivesEachEligibleDefectItsOwnEvent) {
  EXPECT_EQ(Action({&Defect(1), &Defect(2)}, EventDialogResult::kOk).Run(DefectCommand::kReOpen),
            std::nullopt);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{
                "One or more defects will not be re-opened because they are not closed."});
  EXPECT_TRUE(dialogs.empty()) << "nothing left, no dialog";
  ui.shown.clear();
  EXPECT_EQ(Action({}, EventDialogResult::kOk).Run(DefectCommand::kAssign), std::nullopt);
  EXPECT_TRUE(ui.shown.empty()) << "an empty selection shows nothing";

  Give(Defect(3), EventKind::kClose);
  clock.now = 3'100'000'000u;
  SelectionAction close = Action({&Defect(1), &Defect(2), &Defect(3)}, EventDialogResult::kOk,
                                 [](CDefectEvent& e) { e.notes = "Shipped"; });
  EXPECT_EQ(close.Run(DefectCommand::kClose), std::nullopt);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{
                            "One or more defects will not be closed because they are not open."});
  EXPECT_EQ(dialogs, std::vector<EventKind>{EventKind::kClose});
  ASSERT_EQ(close.changed().size(), 2u);
  EXPECT_EQ(close.changed()[1].defect, &Defect(2));
  for (std::uint32_t p = 1; p <= 2; ++p) {
    EXPECT_EQ(StoredStatus(Defect(p)), 5) << "saved";
    ASSERT_EQ(Defect(p).EventCount(), 1u);
    EXPECT_EQ(Defect(p).EventAt(1)->notes, "Shipped");
    EXPECT_EQ(Defect(p).dateModified, clock.now);
  }
  EXPECT_EQ(Defect(3).EventCount(), 1u) << "the closed one is left alone";
  EXPECT_EQ(Notices(), (Notes{Saved(Defect(1)), Saved(Defect(2))}));

  for (const auto button : {std::optional<EventDialogResult>(),
                            std::optional<EventDialogResult>(EventDialogResult::kSaveAndAssign)}) {
    SelectionAction comment = Action({&Defect(1)}, button);
    EXPECT_EQ(comment.Run(DefectCommand::kComment), std::nullopt);
    EXPECT_TRUE(comment.changed().empty());
  }
  EXPECT_EQ(dialogs.size(), 3u);
  EXPECT_EQ(Defect(1).EventCount(), 1u);
  EXPECT_TRUE(Notices().empty());
}

TEST_F(SelectionActions, SaveAndAssignAsksForTheNextCommandAndTheProjectsRuleAssigns) {
  ASSERT_EQ(
      Action({&Defect(1), &Defect(2)}, EventDialogResult::kSaveAndAssign).Run(DefectCommand::kFix),
      DefectCommand::kAssign);
  EXPECT_EQ(StoredStatus(Defect(2)), 2);

  ASSERT_TRUE(doc.SetAssignRules({0, 0, 3, tessId}));  // "Assign it to the following user:"
  EXPECT_EQ(Action({&Defect(3)}, EventDialogResult::kOk).Run(DefectCommand::kComment),
            std::nullopt);
  EXPECT_EQ(Defect(3).copies().assignedToId, 0u) << "a comment is no work on the defect";
  EXPECT_EQ(Action({&Defect(3)}, EventDialogResult::kOk).Run(DefectCommand::kFix), std::nullopt);
  EXPECT_EQ(Defect(3).copies().assignedToId, tessId);
}

TEST_F(SelectionActions, DefectsLockedByAnotherClientAreLeftOut) {
  const auto other = LockingClient(kDefectTag, {Defect(1).GetId(), Defect(2).GetId()});
  SelectionAction assign = Action({&Defect(1), &Defect(2), &Defect(3)}, EventDialogResult::kOk,
                                  [this](CDefectEvent& e) { e.userId = tessId; });
  EXPECT_EQ(assign.Run(DefectCommand::kAssign), std::nullopt);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"One or more defects will not be assigned "
                                                 "because they are in use by another user."})
      << "once for the whole selection";
  EXPECT_EQ(Defect(1).EventCount(), 0u);
  ASSERT_EQ(assign.changed().size(), 1u);
  EXPECT_EQ(assign.changed()[0].defect, &Defect(3));
  ui.shown.clear();
  EXPECT_EQ(DeleteDefects(doc, defects(), {&Defect(1)}, ui), 0u);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"One or more defects will not be deleted "
                                                 "because they are in use by another user."});

  other->Kill();
  ui.shown.clear();
  const std::uint32_t admin = doc.currentUserId();
  SelectionAction again = Action({&Defect(1), &Defect(3)}, EventDialogResult::kOk,
                                 [admin](CDefectEvent& e) { e.userId = admin; });
  EXPECT_EQ(again.Run(DefectCommand::kAssign), std::nullopt);
  ASSERT_EQ(again.changed().size(), 2u);
  EXPECT_EQ(again.changed()[1].changeText,
            "The following fields changed:\r\rDefect assignment:  [Ng, Tess] to [Project Admin]");

  ui.Script({ui::Answer::kCancel, ui::Answer::kOk});
  EXPECT_EQ(DeleteDefects(doc, defects(), {&Defect(1)}, ui), 0u);
  const std::uint32_t gone = Defect(1).GetId();
  EXPECT_EQ(DeleteDefects(doc, defects(), {&Defect(1)}, ui), 1u);
  EXPECT_EQ(defects().count(), 2u);
  EXPECT_EQ(Notices().back(), Notes::value_type(kNoticeDeleted, doc.currentUserId(),
                                                Bytes().u32(kDefectTag).u32(gone).b));
}

TEST_F(SelectionActions, AFailedSaveLeavesThatDefectAsStored) {
  ASSERT_EQ(watcher.DeleteRecord(kDefectTag, Defect(1).GetId()), DBStatus::kOk);
  const std::uint32_t modified = Defect(1).dateModified;
  SelectionAction comment = Action({&Defect(1), &Defect(2)}, EventDialogResult::kOk);
  EXPECT_EQ(comment.Run(DefectCommand::kComment), std::nullopt);
  EXPECT_EQ(Defect(1).EventCount(), 0u);
  EXPECT_EQ(Defect(1).dateModified, modified);
  ASSERT_EQ(comment.changed().size(), 1u);
  EXPECT_EQ(comment.changed()[0].defect, &Defect(2));
  EXPECT_EQ(Notices(), Notes{Saved(Defect(2))}) << "the next one goes on";
}

TEST_F(SelectionActions, DuplicatesTakeTheNextNumberOnlyWhenTheSourceHasOne) {
  ASSERT_EQ(doc.SetCounter(kMiscTag, 7, 40), DBStatus::kOk);
  Defect(1).number = 40;
  Give(Defect(1), EventKind::kAssign);
  const auto copies = DuplicateDefects(doc, defects(), {&Defect(1), &Defect(2)}, ui);
  ASSERT_EQ(copies.size(), 2u);
  EXPECT_EQ(copies[0]->number, 41u);
  EXPECT_EQ(copies[1]->number, 0u) << "an un-numbered defect stays so";
  EXPECT_EQ(copies[0]->EventCount(), 1u);
  EXPECT_TRUE(ui.shown.empty());
}

TEST_F(SelectionActions, ClipboardAndReply) {
  for (const auto& [p, who, description] : {std::tuple(1u, 1u, "It crashes\rwhen saving"),
                                            std::tuple(2u, 1u, ""), std::tuple(2u, 9u, "")}) {
    auto row = std::make_unique<CReportedBy>();
    row->foundById = who;
    row->description = description;
    Defect(p).AddReportedBy(std::move(row));
  }
  const SubmitterReply reply = ReplyToSubmitters({&Defect(1), &Defect(2)});
  EXPECT_EQ(reply.recipients, (std::vector<std::uint32_t>{1, 9})) << "each person once";
  EXPECT_EQ(reply.subject, "Re: " + Defect(1).summary + ", etc.");
  EXPECT_EQ(reply.body, ">It crashes\r\n>when saving\r\n>\r\n\r\n>\r\n");
  EXPECT_EQ(ReplyToSubmitters({&Defect(2)}).subject, "Re: " + Defect(2).summary);
  EXPECT_EQ(QuoteText("a\rb\r\n"), ">a\r>b\r\n");

  Bytes expected;
  expected.u16(1).u32(1);
  for (const std::string& text : {Defect(1).summary, std::string("Crash - Data Loss")}) {
    expected.u16(static_cast<std::uint16_t>(text.size())).text(text);
  }
  Defect(1).number = 1;
  Defect(1).typeId = doc.GetTable(MakeTag("type"))->ItemAt(1)->GetId();
  const std::vector<std::uint8_t> block = ClipboardBlock({&Defect(1)});
  ASSERT_GE(block.size(), expected.size());
  EXPECT_EQ(std::vector<std::uint8_t>(block.begin(),
                                      block.begin() + static_cast<std::ptrdiff_t>(expected.size())),
            expected.b);
}

}  // namespace
}  // namespace qm::test
