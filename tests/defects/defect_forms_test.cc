// A defect's field texts as its events change them, and its text and HTML forms whole.
#include <gtest/gtest.h>

#include "defects/defect.h"
#include "defects/defect_fields.h"
#include "defects/fake_lookups.h"

namespace qm::test {
namespace {

std::uint32_t Day(int month, int day) { return platform::StampFromCivil({2025, month, day}); }

class DefectForms : public ::testing::Test {
 protected:
  void SetUp() override {
    lookups.users[2].SetLastName("Smith");
    lookups.users[2].SetFirstName("Ann");
    lookups.users[2].SetCompany("Acme");
    lookups.users[3].SetLastName("Lee");
    lookups.AddValues({{MakeTag("prod"), 1, "Atlas"},
                       {MakeTag("comp"), 2, "Parser"},
                       {MakeTag("type"), 3, "Cosmetic"},
                       {MakeTag("prio"), 4, "Immediate"},
                       {MakeTag("sevr"), 5, "Workaround"},
                       {MakeTag("reso"), 6, "Code Change"},
                       {MakeTag("rpro"), 7, "Always"}});
    d.number = 7;
    d.summary = "Crash <on> save";
    d.productId = 1;
    d.componentId = 2;
    d.typeId = 3;
    d.priorityId = 4;
    d.severityId = 5;
    d.reference = "R-1";
    d.enteredById = 2;
    d.dateEntered = Day(1, 2);
    d.workaround = "Save\rtwice";
    for (std::uint32_t who : {2u, 9u}) {
      auto row = std::make_unique<CReportedBy>();
      row->foundById = who;
      row->dateFound = Day(1, 2);
      row->versionFound = "1.0";
      row->description = "It \"crashes\"";
      row->reproducedId = 7;
      d.AddReportedBy(std::move(row));
    }
    d.RefreshFromFirstReport();
  }
  template <class Event>
  Event& Add(int day, std::uint32_t user, const char* notes) {
    auto e = std::make_unique<Event>();
    e->date = Day(2, day);
    e->userId = user;
    e->notes = notes;
    Event& raw = *e;
    d.AddEvent(std::move(e));
    return raw;
  }
  std::string Field(std::uint16_t n) {
    std::string text;
    EXPECT_TRUE(d.GetFieldText(n, text)) << n;
    return text;
  }

  FakeLookups lookups;
  CDefect d{&lookups};
};

TEST_F(DefectForms, FieldTextsFollowTheEvents) {
  EXPECT_EQ(Field(6), "Open, not assigned");
  d.number = 0;
  EXPECT_EQ(Field(1), "-");
  d.number = 7;
  Add<CAssignEvent>(1, 3, "look");
  EXPECT_EQ(Field(6), "Open, assigned to Lee");
  Add<CAssignEvent>(2, 44, "");
  EXPECT_EQ(Field(6), "Open, assigned to Unknown");
  EXPECT_EQ(Field(15), "Unknown");
  auto& fix = Add<CFixEvent>(3, 2, "done");
  fix.hours = 2;
  fix.resolutionId = 6;
  d.Replay();
  EXPECT_EQ(Field(6), "Fixed, not assigned");
  EXPECT_EQ(Field(7), "Code Change");
  EXPECT_EQ(Field(19), " 2.00");
  Add<CVerifyEvent>(4, 3, "");
  EXPECT_EQ(Field(6), "Passed verification, closed") << "no assignment tail";
  EXPECT_EQ(Field(41), "Lee");
  EXPECT_EQ(Field(42), "") << "a passed verification gives no close resolution";
  EXPECT_EQ(Field(3), "Atlas");
  d.productId = 99;
  EXPECT_EQ(Field(3), "<not set>");
  EXPECT_EQ(Field(11), "Always");
  EXPECT_EQ(Field(9), "Smith, Ann");
  EXPECT_EQ(Field(39), "Acme");
  EXPECT_EQ(Field(26), "2");
  EXPECT_EQ(Field(22), "2/4/2025");
  EXPECT_EQ(Field(8), "1/2/2025");
  EXPECT_EQ(Field(34), "Yes");
  Add<CCommentEvent>(5, 2, "first");
  Add<CCommentEvent>(6, 3, "second");
  std::string text;
  std::string block;
  ASSERT_TRUE(d.GetFieldText(205, text, &block));
  EXPECT_EQ(text, "");
  EXPECT_EQ(block, "first\r\rsecond");
  EXPECT_EQ(Field(207), "Smith, Ann");
  EXPECT_EQ(Field(209), "second");
  EXPECT_FALSE(d.GetFieldText(46, text));

  ASSERT_TRUE(d.GetFieldByTag(MakeTag("SUMM"), text, &block));
  EXPECT_EQ(block, "Crash <on> save") << "a short field is copied to the block";
  ASSERT_TRUE(d.GetFieldByTag(MakeTag("ASSN"), text, &block));
  EXPECT_EQ(block, "") << "the newest assignment's notes";
  EXPECT_FALSE(d.GetFieldByTag(MakeTag("XXXX"), text, &block));
  EXPECT_EQ(DefectFieldLabel(208), "") << "labels are looked up for 1 to 45 and 200 to 207";
  EXPECT_EQ(DefectFieldLabel(207), "Comment By");
}

// The rows' and the events' own forms are compared whole with theirs; here the head with
// the release notes it shows, and the sections around one row and two events.
TEST_F(DefectForms, TextAndHtmlWhole) {
  d.RemoveReportedBy(d.ReportedByAt(2));
  Add<CCommentEvent>(6, 3, "back");
  Add<CReleaseNotesEvent>(8, 2, "Fixed <it>").releaseVersion = "1.2";
  d.Replay();

  std::string text;
  d.WriteText(text);
  EXPECT_EQ(text,
            "Defect No: 7\r\n"
            "Found by: Smith, Ann                    Date Entered: 1/2/2025\r\n"
            "Product: Atlas                          Component: Parser\r\n"
            "\r\n"
            "Type: Cosmetic\r\n"
            "Status: Open, not assigned\r\n"
            "Priority: Immediate                     Severity: Workaround\r\n"
            "Reference: R-1                          Is Duplicate: No\r\n"
            "\r\n"
            "Summary: Crash <on> save\r\n"
            "Release Notes: \r\n"
            "Fixed <it>\r\n"
            "Work Around: \r\n"
            "Save\r\n"
            "twice\r\n"
            "\r\n"
            "--- Reported By ---\r\n"
            "Reported by: Smith, Ann\r\n"
            "Date Found: 1/2/2025\r\n"
            "Found in Version: 1.0\r\n"
            "Comments: It \"crashes\"\r\n"
            "Reproduced: Always\r\n"
            "Steps to Reproduce: none\r\n"
            "Custom Computer Configuration\r\n"
            "Other Hardware and Software: none\r\n"
            "Attachments: none\r\n"
            "\r\n"
            "--- History ---\r\n"
            "Comment by: Lee\r\n"
            "Date Entered: 2/6/2025\r\n"
            "Comments: back\r\n"
            "\r\n"
            "Entered by: Smith, Ann\r\n"
            "Date Entered: 2/8/2025\r\n"
            "Released in Version: 1.2\r\n"
            "Release Notes: Fixed <it>\r\n");
  std::string html;
  d.WriteHtml(html);
  EXPECT_EQ(
      html,
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>\n"
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Defect No:</B> 7</TD><TD><B>Date Entered:</B> "
      "1/2/2025</TD><TD><B>Product:</B> Atlas</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD>&nbsp;</TD><TD><B>Entered by:</B> Smith, "
      "Ann</TD><TD><B>Component:</B> Parser</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><HR></TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Status:</B> Open, not "
      "assigned</TD><TD>&nbsp;</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Type:</B> Cosmetic</TD><TD><B>Priority:</B> "
      "Immediate</TD><TD><B>Severity:</B> Workaround</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Reference:</B> R-1</TD><TD><B>Is Duplicate:</B> "
      "No</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><HR></TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><B>Summary:</B> Crash &lt;on&gt; save</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><B>Release Notes:</B> Fixed &lt;it&gt;</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><B>Work Around:</B> Save\rtwice</TD></TR>\n"
      "</TABLE>\n"
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD ALIGN=CENTER><HR><BR>--- Reported By ---</TD></TR><TR "
      "BGCOLOR=#FFFFFF><TD><TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Reported by:</B> Smith, Ann</TD><TD><B>Date Reported:</B> "
      "1/2/2025</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Found in Version:</B> 1.0</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Comments:</B> It &quot;crashes&quot;</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Reproduced:</B> Always</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Steps to Reproduce:</B> &nbsp;</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Custom Computer Configuration</B></TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Other Hardware and Software:</B> &nbsp;</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Attachments:</B> <BR>&nbsp;&nbsp;none</TD></TR>\n"
      "</TABLE>\n"
      "</TD></TR>\n"
      "</TABLE>\n"
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD ALIGN=CENTER><HR><BR>--- History ---</TD></TR><TR "
      "BGCOLOR=#FFFFFF><TD><TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Comment by:</B> Lee</TD><TD><B>Date Entered:</B> "
      "2/6/2025</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=2><B>Comments:</B> back</TD></TR>\n"
      "</TABLE>\n"
      "<HR>\n"
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n"
      "<TR BGCOLOR=#FFFFFF><TD><B>Entered by:</B> Smith, Ann</TD><TD><B>Date Released:</B> "
      "2/8/2025</TD><TD><B>Released in Version:</B> 1.2</TD></TR>\n"
      "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><B>Release Notes:</B> Fixed &lt;it&gt;</TD></TR>\n"
      "</TABLE>\n"
      "</TD></TR>\n"
      "</TABLE>\n"
      "</TD></TR></TABLE>\n");
}

}  // namespace
}  // namespace qm::test
