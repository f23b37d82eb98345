// Duplicate, delete, the clipboard block and the reply to submitters, on a real project
// with a second client where one is needed.
#include "defects/selection_commands.h"

#include <gtest/gtest.h>

#include "defects/fixtures.h"
#include "defects/text_forms.h"

namespace qm::test {
namespace {

class SelectionCommands : public ProjectTest {
 protected:
  CDefect* Add(const char* summary, std::uint32_t number, const char* description = "") {
    CDefect& d = AddDefect(summary, number);
    auto row = std::make_unique<CReportedBy>();
    row->foundById = 1;
    row->description = description;
    d.AddReportedBy(std::move(row));
    return &d;
  }
};

TEST_F(SelectionCommands, DuplicatesTakeTheNextNumberOnlyWhenTheSourceHasOne) {
  ASSERT_EQ(doc.SetCounter(kMiscTag, 7, 40), DBStatus::kOk);
  CDefect& numbered = AddDefect("Numbered", 40, 1);
  const auto copies = DuplicateDefects(doc, defects(), {&numbered, &AddDefect("Not yet")}, ui);
  ASSERT_EQ(copies.size(), 2u);
  EXPECT_EQ(copies[0]->number, 41u);
  EXPECT_EQ(copies[1]->number, 0u) << "an un-numbered defect stays so";
  EXPECT_EQ(copies[0]->EventCount(), 1u);
  EXPECT_NE(copies[0]->GetId(), numbered.GetId());
  EXPECT_EQ(defects().count(), 4u);
  EXPECT_TRUE(ui.shown.empty());
}

// Another client holds the first defect locked: it is left out, once said, and the rest go
// after the question; the other client hears of each deletion.
TEST_F(SelectionCommands, DeleteLeavesOutLockedDefectsAndTellsTheOthers) {
  CDefect* held = &AddDefect("Held", 1);
  CDefect* free1 = &AddDefect("Free", 2);
  CDefect* free2 = &AddDefect("Also free", 3);
  const std::uint32_t heldId = held->GetId();
  const auto other = LockingClient(kDefectTag, {heldId}, free1->GetId());

  // The first answer closes the message on the locked defect.
  ui.Script({ui::Answer::kOk, ui::Answer::kCancel});
  EXPECT_EQ(DeleteDefects(doc, defects(), {held, free1, free2}, ui), 0u);
  EXPECT_EQ(defects().count(), 3u) << "Cancel deletes nothing";
  ui.shown.clear();
  ui.Script({ui::Answer::kOk, ui::Answer::kOk});
  EXPECT_EQ(DeleteDefects(doc, defects(), {held, free1, free2}, ui), 2u);
  EXPECT_EQ(ui.Texts(),
            (std::vector<std::string>{
                "One or more defects will not be deleted because they are in use by another "
                "user.",
                "Are you sure that you want to delete the selected items(s)? There is no undo "
                "available."}));
  EXPECT_EQ(defects().count(), 1u);
  EXPECT_EQ(defects().DefectAt(1)->GetId(), heldId);
  other->Send("look");
  EXPECT_EQ(other->Wait(), 0);
}

TEST_F(SelectionCommands, ClipboardAndReply) {
  CDefect* first = Add("Crash on save", 1, "It crashes\rwhen saving");
  CDefect* second = Add("Slow list", 2);
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
