// The change text of a saved defect, compared whole: field lines, changed, deleted and
// added reported-by rows, the notification list, and changed, deleted and added events.
#include <gtest/gtest.h>

#include "defects/change_history.h"
#include "defects/fixtures.h"

namespace qm::test {
namespace {

class ChangeHistory : public SampleDefect {
 protected:
  template <class Event>
  Event& NewEvent(std::uint32_t n) {
    return dynamic_cast<Event&>(*edited->EventAt(n));
  }
  void Edit() { edited = d.Clone(); }
  std::string Changes() {
    std::string text = "left from before";
    const bool any = BuildChangeText(lookups, d, *edited, text);
    EXPECT_EQ(any, !text.empty());
    return text;
  }

  std::unique_ptr<CDefect> edited;
};

TEST_F(ChangeHistory, ChangesThatAreNoneLogNothing) {
  Add<CAssignEvent>(1, 3, "look");
  auto& estimate = Add<CEstimateEvent>(2, 3, "");
  estimate.estimatedDate = Day(3, 1);
  estimate.estimatedVersion = "v1";
  d.ReportedByAt(1)->versionFound = "v1";
  Edit();
  EXPECT_EQ(Changes(), "") << "a plain copy";

  edited->summary = "CRASH <ON> SAVE";
  edited->reference = "r-1";
  edited->workaround = "save\rTWICE";
  edited->dateEntered = Day(1, 2, 17);
  edited->ReportedByAt(1)->versionFound = "V1";
  edited->ReportedByAt(1)->description = "it CRASHES";
  edited->ReportedByAt(1)->dateFound = Day(1, 2, 9);
  NewEvent<CAssignEvent>(1).date = Day(2, 1, 15);
  NewEvent<CEstimateEvent>(2).estimatedDate = Day(3, 1, 12);
  NewEvent<CEstimateEvent>(2).estimatedVersion = "V1";
  EXPECT_EQ(Changes(), "") << "case and the time of day are no change";
}

// The field lines in their order, the changed reported-by rows, then the notification list.
TEST_F(ChangeHistory, ChangedFieldsAndReportedByRows) {
  d.AddReportedBy(Row(3, Day(1, 5)));
  d.AddReportedBy(Row(3, Day(1, 6)));
  d.ReportedByAt(2)->AddAttachment(std::make_unique<CFileAttachment>());
  Edit();
  edited->typeId = 13;
  edited->priorityId = 99;
  edited->productId = 11;
  edited->componentId = 12;
  edited->reference = "R-2";
  edited->severityId = 0;
  edited->enteredById = 44;
  edited->dateEntered = platform::kNoStamp;
  edited->summary = "Crash on load";
  edited->workaround = "Reload";
  edited->SetNotifyList({3});
  CReportedBy& first = *edited->ReportedByAt(1);
  first.dateFound = Day(1, 3);
  first.foundById = 3;
  first.versionFound = "1.1";
  first.description = "It hangs";
  first.reproducedId = 17;
  first.steps = "Open\rSave";
  first.otherHardware = "8 GB";
  first.AddAttachment(std::make_unique<CFileAttachment>());
  first.AddAttachment(std::make_unique<CFileAttachment>());
  CReportedBy& second = *edited->ReportedByAt(2);
  second.RemoveAttachment(second.AttachmentAt(1));
  edited->ReportedByAt(3)->contact = "not compared";
  EXPECT_EQ(Changes(),
            "Type: [Cosmetic] to [Crash]\r"
            "Priority: [Immediate] to [<not set>]\r"
            "Product: [Atlas] to [Beacon]\r"
            "Component: [Parser] to [Lexer]\r"
            "Reference: [R-1] to [R-2]\r"
            "Severity: [Workaround] to [<not set>]\r"
            "Entered by: [Smith, Ann] to [Unknown]\r"
            "Date Entered: [1/2/2025] to [<not set>]\r"
            "Summary: [Crash <on> save] to [Crash on load]\r"
            "Workaround: [Save\rtwice] to [Reload]\r"
            "**** Changed reported by dated 1/2/2025 ****\r"
            "Date found changed from [1/2/2025] to [1/3/2025]\r"
            "Found by changed from [Smith, Ann] to [Lee]\r"
            "Version found in changed from [1.0] to [1.1]\r"
            "Description changed from...\r[It crashes]\r to...\r[It hangs]\r"
            "Reproduced changed from [Always] to [Sometimes]\r\r"
            "Steps to Reproduce changed from...\r[]\r to...\r[Open\rSave]\r"
            "Other Hardware and Software changed from...\r[]\r to...\r[8 GB]\r"
            "Added 2 attachments\r"
            "\r"
            "**** Changed reported by dated 1/5/2025 ****\r"
            "Removed 1 attachments\r"
            "\r"
            "1 name added the notification list: Lee\r");
}

TEST_F(ChangeHistory, DeletedAndAddedReportedByRows) {
  // The block of a deleted or added row: its header, its text form in CR lines, a CR.
  const auto block = [this](const std::string& header, std::uint32_t who, int day) {
    std::string text;
    Row(who, Day(1, day))->WriteText(text, lookups);
    for (std::size_t at; (at = text.find("\r\n")) != std::string::npos;) text.erase(at + 1, 1);
    return "**** " + header + " reported by dated 1/" + std::to_string(day) + "/2025 ****\r" +
           text + "\r";
  };
  Edit();
  edited->RemoveReportedBy(edited->ReportedByAt(1));
  EXPECT_EQ(Changes(), block("Deleted", 2, 2)) << "the only row deleted";

  Edit();
  edited->AddReportedBy(Row(3, Day(1, 9)));
  EXPECT_EQ(Changes(), "") << "a row behind the old count is not looked at";

  Edit();
  edited->RemoveReportedBy(edited->ReportedByAt(1));
  edited->AddReportedBy(Row(3, Day(1, 9)));
  EXPECT_EQ(Changes(), block("Deleted", 2, 2) + block("Added", 3, 9)) << "the row replaced";

  d.AddReportedBy(Row(3, Day(1, 5)));
  Edit();
  edited->RemoveReportedBy(edited->ReportedByAt(1));
  EXPECT_EQ(Changes(), block("Deleted", 2, 2) + block("Added", 3, 5))
      << "the second row, now first, is looked for among as many old rows as are left";
}

TEST_F(ChangeHistory, ChangedEventsOfEveryKind) {
  Add<CAssignEvent>(1, 3, "look");
  auto& estimate = Add<CEstimateEvent>(2, 3, "");
  estimate.hours = 4;
  estimate.estimatedDate = Day(3, 1);
  estimate.estimatedVersion = "1.1";
  auto& fix = Add<CFixEvent>(3, 3, "");
  fix.fixVersion = "1.1";
  fix.resolutionId = 6;
  Add<CVerifyEvent>(4, 2, "");
  Add<CCloseEvent>(5, 2, "");
  Add<CReOpenEvent>(6, 2, "");
  Add<CCommentEvent>(7, 3, "a\rb");
  Add<CReleaseNotesEvent>(8, 2, "").releaseVersion = "1.2";
  Edit();
  auto& assign = NewEvent<CAssignEvent>(1);
  assign.date = Day(2, 1, 15);
  assign.userId = 2;
  assign.notes = "Look";
  auto& newEstimate = NewEvent<CEstimateEvent>(2);
  newEstimate.estimatedDate = Day(3, 2);
  newEstimate.hours = -1;
  newEstimate.estimatedVersion = "1.2";
  auto& newFix = NewEvent<CFixEvent>(3);
  newFix.date = Day(2, 10);
  newFix.hours = 2.5;
  newFix.fixVersion = "1.2";
  newFix.resolutionId = 0;
  newFix.affectsDocs = true;
  newFix.affectsTestPlan = true;
  NewEvent<CVerifyEvent>(4).passed = false;
  NewEvent<CCloseEvent>(5).resolutionId = 6;
  NewEvent<CReOpenEvent>(6).userId = 44;
  NewEvent<CCommentEvent>(7).notes = "a\rc";
  NewEvent<CReleaseNotesEvent>(8).releaseVersion = "1.3";
  EXPECT_EQ(Changes(),
            "**** Changed Assignment dated 2/1/2025 ****\r"
            "Assigned to changed from [Lee] to [Smith, Ann]\r"
            "Notes changed from...\r[look]\r to...\r[Look]\r"
            "\r"
            "**** Changed Estimate dated 2/2/2025 ****\r"
            "Estimated fix date changed from [2/2/2025] to [2/2/2025]\r"
            "Estimated hours to fix changed from [ 4.00] to [ 0.00]\r"
            "Estimated version fixed in changed from [1.1] to [1.2]\r"
            "\r"
            "**** Changed Fix dated 2/3/2025 ****\r"
            "Date changed from [2/3/2025] to [2/10/2025]\r"
            "Hours to fix changed from [ 0.00] to [ 2.50]\r"
            "Version fixed in changed from [1.1] to [1.2]\r"
            "Close resolution changed from [Code Change] to [<not set>]\r"
            "Affects documentation changed from [No] to [Yes]\r"
            "Affects test plan changed from [No] to [Yes]\r"
            "\r"
            "**** Changed Verification dated 2/4/2025 ****\r"
            "Verification changed from [Passed] to [Failed]\r"
            "\r"
            "**** Changed Closed dated 2/5/2025 ****\r"
            "Close resolution changed from [<not set>] to [Code Change]\r"
            "\r"
            "**** Changed Re-open dated 2/6/2025 ****\r"
            "Re-opened by changed from [Smith, Ann] to []\r"
            "\r"
            "**** Changed Comment dated 2/7/2025 ****\r"
            "Notes changed from...\r[a\rb]\r to...\r[a\rc]\r"
            "\r"
            "**** Changed Release Notes dated 2/8/2025 ****\r"
            "Release Notes version changed from [1.2] to [1.3]\r"
            "\r");
}

TEST_F(ChangeHistory, DeletedAndAddedEventsComeLastInTheText) {
  Add<CAssignEvent>(1, 3, "look");
  Add<CCommentEvent>(7, 3, "a\rb");
  Edit();
  edited->RemoveEvent(edited->EventAt(2));
  auto verify = std::make_unique<CVerifyEvent>();
  verify->date = Day(2, 3);
  verify->userId = 3;
  edited->AddEvent(std::move(verify));
  // An id without a user gives no name but counts for the count and the separator.
  d.SetNotifyList({44, 2});
  edited->SetNotifyList({3, 55});
  edited->summary = "Crash on load";
  EXPECT_EQ(Changes(),
            "Summary: [Crash <on> save] to [Crash on load]\r"
            "2 names added the notification list: Lee, \r"
            "2 names removed the notification list: Smith, Ann\r"
            "**** Deleted Comment dated 2/7/2025 ****\r"
            "Comment by: Lee\r"
            "Date Entered: 2/7/2025\r"
            "Comments: a\r"
            "b\r"
            "\r"
            "**** Added Verification dated 2/3/2025 ****\r"
            "Verified by: Lee\r"
            "Date Verified: 2/3/2025\r"
            "Result: Passed\r"
            "\r");
}

}  // namespace
}  // namespace qm::test
