// Duplicate, delete, the clipboard block and the reply to submitters, on a real project
// with a second client where one is needed.
#include "defects/selection_commands.h"

#include <gtest/gtest.h>

#include "defects/text_forms.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "store/file_bytes.h"
#include "support/child_process.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

class SelectionCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(doc.NewProject(path, true), 1);
    table = static_cast<CDefectTable*>(doc.GetTable(kDefectTag));
  }
  CDefect* Add(const char* summary, std::uint32_t number, std::uint32_t foundBy,
               const char* description) {
    std::unique_ptr<RecordItem> item = table->NewItem();
    auto& d = static_cast<CDefect&>(*item);
    d.summary = summary;
    d.number = number;
    auto row = std::make_unique<CReportedBy>();
    row->foundById = foundBy;
    row->description = description;
    d.AddReportedBy(std::move(row));
    EXPECT_EQ(table->AddItem(item), DBStatus::kOk);
    return &d;
  }

  TempDir dir;
  std::string path = dir.File("p.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc{ui, kinds, host};
  CDefectTable* table = nullptr;
};

TEST_F(SelectionCommands, DuplicatesTakeTheNextNumberOnlyWhenTheSourceHasOne) {
  ASSERT_EQ(doc.SetCounter(kMiscTag, 7, 40), DBStatus::kOk);
  CDefect* numbered = Add("Numbered", 40, 1, "one");
  CDefect* unnumbered = Add("Not yet", 0, 1, "two");
  auto assign = std::make_unique<CAssignEvent>();
  assign->userId = 1;
  assign->date = 3'000'000'000u;
  numbered->AddEvent(std::move(assign));
  const auto copies = DuplicateDefects(doc, *table, {numbered, unnumbered}, ui);
  ASSERT_EQ(copies.size(), 2u);
  EXPECT_EQ(copies[0]->number, 41u);
  EXPECT_EQ(copies[1]->number, 0u) << "an un-numbered defect stays so";
  EXPECT_EQ(copies[0]->EventCount(), 1u);
  EXPECT_NE(copies[0]->GetId(), numbered->GetId());
  EXPECT_EQ(table->count(), 4u);
  EXPECT_TRUE(ui.shown.empty());
}

// Another client holds the first defect locked: it is left out, once said, and the rest go
// after the question; the other client hears of each deletion.
TEST_F(SelectionCommands, DeleteLeavesOutLockedDefectsAndTellsTheOthers) {
  CDefect* held = Add("Held", 1, 1, "");
  CDefect* free1 = Add("Free", 2, 1, "");
  CDefect* free2 = Add("Also free", 3, 1, "");
  const std::uint32_t heldId = held->GetId();
  const std::uint32_t freeId = free1->GetId();
  const std::string file = path;
  Child other([file, heldId, freeId](Child::Channel& c) {
    ScriptedUi childUi;
    CProjectStore store(childUi);
    if (store.Open(file) != DBStatus::kOk || store.LoginUser(77) != DBStatus::kOk ||
        store.LockRecord(kDefectTag, heldId, 77) != DBStatus::kOk) {
      return 1;
    }
    c.Send("locked");
    c.Receive();
    Notice notice;
    if (store.GetNextMessage(notice) != DBStatus::kOk) return 2;
    std::vector<std::uint8_t> expected(8);
    BeWriter out(expected.data());
    out.U32(kDefectTag);
    out.U32(freeId);
    return notice.kind == kNoticeDeleted && notice.data == expected ? 0 : 3;
  });
  ASSERT_EQ(other.Receive(), "locked");

  // The first answer closes the message on the locked defect.
  ui.Script({ui::Answer::kOk, ui::Answer::kCancel});
  EXPECT_EQ(DeleteDefects(doc, *table, {held, free1, free2}, ui), 0u);
  EXPECT_EQ(table->count(), 3u) << "Cancel deletes nothing";
  ui.shown.clear();
  ui.Script({ui::Answer::kOk, ui::Answer::kOk});
  EXPECT_EQ(DeleteDefects(doc, *table, {held, free1, free2}, ui), 2u);
  EXPECT_EQ(ui.Texts(),
            (std::vector<std::string>{
                "One or more defects will not be deleted because they are in use by another "
                "user.",
                "Are you sure that you want to delete the selected items(s)? There is no undo "
                "available."}));
  EXPECT_EQ(table->count(), 1u);
  EXPECT_EQ(table->DefectAt(1)->GetId(), heldId);
  other.Send("look");
  EXPECT_EQ(other.Wait(), 0);
}

TEST_F(SelectionCommands, ClipboardAndReply) {
  CDefect* first = Add("Crash on save", 1, 1, "It crashes\rwhen saving");
  CDefect* second = Add("Slow list", 2, 1, "");
  second->AddReportedBy(std::make_unique<CReportedBy>());
  second->ReportedByAt(2)->foundById = 9;

  const SubmitterReply reply = ReplyToSubmitters({first, second});
  EXPECT_EQ(reply.recipients, (std::vector<std::uint32_t>{1, 9})) << "each person once";
  EXPECT_EQ(reply.subject, "Re: Crash on save, etc.");
  EXPECT_EQ(reply.body, ">It crashes\r\n>when saving\r\n>\r\n\r\n>\r\n");
  EXPECT_EQ(ReplyToSubmitters({second}).subject, "Re: Slow list");
  EXPECT_EQ(QuoteText(""), "");
  EXPECT_EQ(QuoteText("a\rb\r\n"), ">a\r>b\r\n");

  Bytes expected;
  expected.u16(1).u32(1);
  for (const char* text : {"Crash on save", "Crash - Data Loss"}) {
    expected.u16(static_cast<std::uint16_t>(std::string(text).size())).text(text);
  }
  first->typeId = doc.GetTable(MakeTag("type"))->ItemAt(1)->GetId();
  const std::vector<std::uint8_t> block = ClipboardBlock({first});
  ASSERT_GE(block.size(), expected.size());
  EXPECT_EQ(std::vector<std::uint8_t>(block.begin(),
                                      block.begin() + static_cast<std::ptrdiff_t>(expected.size())),
            expected.b);
}

}  // namespace
}  // namespace qm::test
