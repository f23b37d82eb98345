// A defect's field texts as its events change them; its text and HTML forms whole, and
// the text, HTML and page forms of each kind of event and of reported-by rows.
#include <gtest/gtest.h>

#include "defects/defect_fields.h"
#include "defects/fixtures.h"
#include "session/page_form.h"

namespace qm::test {
namespace {

const std::string kTable = "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n";
const std::string kRow = "<TR BGCOLOR=#FFFFFF>";
const std::string kEnd = "</TR>\n";

class DefectForms : public SampleDefect {
 protected:
  std::string Field(std::uint16_t n) {
    std::string text;
    EXPECT_TRUE(d.GetFieldText(n, text)) << n;
    return text;
  }

  // One event of each kind, in kind order, each with some field the others lack: notes
  // with lone CRs, a user who is gone, a date not set, a resolution that is gone, values
  // to escape.
  static std::vector<std::unique_ptr<CDefectEvent>> Events() {
    std::vector<std::unique_ptr<CDefectEvent>> events;
    const auto add = [&events]<class Event>(Event* e, std::uint32_t user, std::uint32_t date,
                                            const char* notes) -> Event& {
      e->userId = user;
      e->date = date;
      e->notes = notes;
      events.emplace_back(e);
      return *e;
    };
    add(new CAssignEvent, 3, Day(12, 31), "Take it\rplease");
    auto& fix = add(new CFixEvent, 2, Day(1, 5), "a\r\nb\rc");
    fix.fixVersion = "2.1";
    fix.resolutionId = 8;
    fix.affectsDocs = true;
    add(new CVerifyEvent, 3, Day(12, 31), "").passed = false;
    add(new CCloseEvent, 99, Day(1, 5), "done").resolutionId = 4;
    add(new CReOpenEvent, 2, Day(12, 31), "again");
    events.push_back(Estimate());
    add(new CCommentEvent, 2, platform::kNoStamp, "Say \"hi\" <b>");
    add(new CReleaseNotesEvent, 3, Day(1, 5), "x > y").releaseVersion = "3.1";
    return events;
  }
  static std::unique_ptr<CEstimateEvent> Estimate() {
    auto estimate = std::make_unique<CEstimateEvent>();
    estimate->userId = 3;
    estimate->date = Day(12, 31);
    estimate->hours = 2.5;
    estimate->estimatedDate = Day(1, 5);
    estimate->estimatedVersion = "3.0";
    estimate->notes = "guess";
    return estimate;
  }
};

TEST_F(DefectForms, FieldTextsFollowTheEvents) {
  d.AddReportedBy(Row(9, Day(1, 2)));
  d.RefreshFromFirstReport();
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

// The events' own forms are compared whole below; here the head with the release notes it
// shows, two rows of the two kinds of configuration, and what stands around the events.
TEST_F(DefectForms, TextAndHtmlWhole) {
  CReportedBy& first = *d.ReportedByAt(1);
  first.description = "It \"crashes\"\rat once";
  first.SetConfigKind(CReportedBy::kStoredConfig);
  first.SetTestConfigId(5);
  first.otherHardware = "16 MB";
  for (const char* name : {"log.txt", "shot.png"}) {
    auto attachment = std::make_unique<CFileAttachment>();
    attachment->fileName = name;
    first.AddAttachment(std::move(attachment));
  }
  d.AddReportedBy(Row(9, Day(1, 3)));
  const auto& comment = Add<CCommentEvent>(6, 3, "back");
  Add<CReleaseNotesEvent>(8, 2, "Fixed <it>").releaseVersion = "1.2";
  d.Replay();

  std::string history = "--- History ---\r\n";
  comment.WriteText(history, lookups);
  history += "\r\n";
  d.EventAt(2)->WriteText(history, lookups);
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
            "Comments: It \"crashes\"\r\nat once\r\n"
            "Reproduced: Always\r\n"
            "Steps to Reproduce: none\r\n"
            "Standard Test Configuration: Lab <PC>\r\n"
            "Other Hardware and Software: 16 MB\r\n"
            "Attachments: \r\nlog.txt\r\nshot.png\r\n"
            "\r\n"
            "Reported by: \r\n"
            "Date Found: 1/3/2025\r\n"
            "Found in Version: 1.0\r\n"
            "Comments: It crashes\r\n"
            "Reproduced: Always\r\n"
            "Steps to Reproduce: none\r\n"
            "Custom Computer Configuration\r\n"
            "Other Hardware and Software: none\r\n"
            "Attachments: none\r\n"
            "\r\n" +
                history);

  history = kTable + "<TR BGCOLOR=#FFFFFF><TD ALIGN=CENTER><HR><BR>--- History ---</TD></TR>" +
            kRow + "<TD>";
  comment.WriteHtml(history, lookups);
  history += "<HR>\n";
  d.EventAt(2)->WriteHtml(history, lookups);
  const auto cell = [](const std::string& label, const std::string& value) {
    return "<TD><B>" + label + "</B> " + value + "</TD>";
  };
  const auto wide = [](int columns, const std::string& label, const std::string& value) {
    return "<TD COLSPAN=" + std::to_string(columns) + "><B>" + label + "</B> " + value + "</TD>";
  };
  std::string html;
  d.WriteHtml(html);
  EXPECT_EQ(
      html,
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>\n" + kTable + kRow +
          cell("Defect No:", "7") + cell("Date Entered:", "1/2/2025") + cell("Product:", "Atlas") +
          kEnd + kRow + "<TD>&nbsp;</TD>" + cell("Entered by:", "Smith, Ann") +
          cell("Component:", "Parser") + kEnd + kRow + "<TD COLSPAN=3><HR></TD>" + kEnd + kRow +
          wide(2, "Status:", "Open, not assigned") + "<TD>&nbsp;</TD>" + kEnd + kRow +
          cell("Type:", "Cosmetic") + cell("Priority:", "Immediate") +
          cell("Severity:", "Workaround") + kEnd + kRow + wide(2, "Reference:", "R-1") +
          cell("Is Duplicate:", "No") + kEnd + kRow + "<TD COLSPAN=3><HR></TD>" + kEnd + kRow +
          wide(3, "Summary:", "Crash &lt;on&gt; save") + kEnd + kRow +
          wide(3, "Release Notes:", "Fixed &lt;it&gt;") + kEnd + kRow +
          wide(3, "Work Around:", "Save\rtwice") + kEnd + "</TABLE>\n" + kTable + kRow +
          "<TD ALIGN=CENTER><HR><BR>--- Reported By ---</TD></TR>" + kRow + "<TD>" + kTable + kRow +
          cell("Reported by:", "Smith, Ann") + cell("Date Reported:", "1/2/2025") + kEnd + kRow +
          cell("Found in Version:", "1.0") + kEnd + kRow +
          wide(2, "Comments:", "It &quot;crashes&quot;\rat once") + kEnd + kRow +
          wide(2, "Reproduced:", "Always") + kEnd + kRow +
          wide(2, "Steps to Reproduce:", "&nbsp;") + kEnd + kRow +
          wide(2, "Standard Test Configuration:", "Lab &lt;PC&gt;") + kEnd + kRow +
          wide(2, "Other Hardware and Software:", "16 MB") + kEnd + kRow +
          wide(2, "Attachments:", "<BR>&nbsp;&nbsp;log.txt<BR>&nbsp;&nbsp;shot.png") + kEnd +
          "</TABLE>\n<HR>\n" + kTable + kRow + cell("Reported by:", "") +
          cell("Date Reported:", "1/3/2025") + kEnd + kRow + cell("Found in Version:", "1.0") +
          kEnd + kRow + wide(2, "Comments:", "It crashes") + kEnd + kRow +
          wide(2, "Reproduced:", "Always") + kEnd + kRow +
          wide(2, "Steps to Reproduce:", "&nbsp;") + kEnd + kRow +
          "<TD COLSPAN=2><B>Custom Computer Configuration</B></TD>" + kEnd + kRow +
          wide(2, "Other Hardware and Software:", "&nbsp;") + kEnd + kRow +
          wide(2, "Attachments:", "<BR>&nbsp;&nbsp;none") + kEnd + "</TABLE>\n" +
          "</TD></TR>\n</TABLE>\n" + history + "</TD></TR>\n</TABLE>\n</TD></TR></TABLE>\n");

  // A stored configuration that is gone.
  first.SetTestConfigId(6);
  text.clear();
  first.WriteText(text, lookups);
  EXPECT_NE(text.find("\r\nStandard Test Configuration: <not set>\r\n"), std::string::npos);
}

TEST_F(DefectForms, TextOfEachEventKind) {
  const std::vector<std::string> expected = {
      "Assigned to: Lee\r\nDate Assigned: 12/31/2025\r\nComments: Take it\r\nplease\r\n",
      "Fixed by: Smith, Ann\r\nDate Fixed: 1/5/2025\r\nVersion: 2.1\r\n"
      "Resolution: As \"designed\" <x> & y\r\n"
      "Affects Documentation: Yes\r\nAffects Test Plan: No\r\nNotes: a\r\nb\r\nc\r\n",
      "Verified by: Lee\r\nDate Verified: 12/31/2025\r\nResult: Failed\r\n",
      "Closed by: \r\nDate Closed: 1/5/2025\r\nResolution: <not set>\r\nNotes: done\r\n",
      "Re-opened by:Smith, Ann\r\nDate Re-opened:12/31/2025\r\nNotes: again\r\n",
      "Estimated by: Lee\r\nDate Estimated: 12/31/2025\r\nHours to Fix:  2.50\r\n"
      "Estimated completion date: 1/5/2025  or version: 3.0\r\nEstimate Notes: guess\r\n",
      "Comment by: Smith, Ann\r\nDate Entered: \r\nComments: Say \"hi\" <b>\r\n",
      "Entered by: Lee\r\nDate Entered: 1/5/2025\r\nReleased in Version: 3.1\r\n"
      "Release Notes: x > y\r\n",
  };
  const auto events = Events();
  ASSERT_EQ(events.size(), expected.size());
  for (std::size_t i = 0; i < events.size(); ++i) {
    SCOPED_TRACE(events[i]->ActionText());
    std::string out = "before\r\n";
    events[i]->WriteText(out, lookups);
    EXPECT_EQ(out, "before\r\n" + expected[i]) << "appends to what is there";
  }

  // Hours not given leave their line out.
  auto estimate = Estimate();
  estimate->hours = -1.0;
  std::string out;
  estimate->WriteText(out, lookups);
  EXPECT_EQ(out,
            "Estimated by: Lee\r\nDate Estimated: 12/31/2025\r\n"
            "Estimated completion date: 1/5/2025  or version: 3.0\r\nEstimate Notes: guess\r\n");
}

TEST_F(DefectForms, HtmlOfEachEventKind) {
  const auto cell = [](const std::string& label, const std::string& value) {
    return "<TD><B>" + label + "</B> " + value + "</TD>";
  };
  const auto wide = [](int columns, const std::string& label, const std::string& value) {
    return "<TD COLSPAN=" + std::to_string(columns) + "><B>" + label + "</B> " + value + "</TD>";
  };
  // The notes row stands there even without notes, and notes keep their lone CRs.
  const std::vector<std::string> expected = {
      kRow + cell("Assigned to:", "Lee") + cell("Date Assigned:", "12/31/2025") + kEnd + kRow +
          wide(2, "Comments:", "Take it\rplease") + kEnd,
      kRow + cell("Fixed by:", "Smith, Ann") + wide(2, "Date Fixed:", "1/5/2025") + kEnd + kRow +
          cell("Version:", "2.1") + cell("Resolution:", "As &quot;designed&quot; &lt;x&gt; & y") +
          cell("Hours to Fix:", "") + kEnd + kRow + cell("Affects Documentation:", "Yes") +
          wide(2, "Affects Test Plan:", "No") + kEnd + kRow + wide(3, "Notes:", "a\r\nb\rc") + kEnd,
      kRow + cell("Verified by:", "Lee") + cell("Date Verified:", "12/31/2025") +
          cell("Result:", "Failed") + kEnd + kRow + wide(3, "Notes:", "") + kEnd,
      kRow + cell("Closed by:", "") + cell("Date Closed:", "1/5/2025") +
          cell("Resolution:", "&lt;not set&gt;") + kEnd + kRow + wide(3, "Comments:", "done") +
          kEnd,
      kRow + cell("Re-opened by:", "Smith, Ann") + cell("Date Re-opened:", "12/31/2025") + kEnd +
          kRow + wide(2, "Notes:", "again") + kEnd,
      kRow + cell("Estimated by:", "Lee") + cell("Date Estimated:", "12/31/2025") + kEnd + kRow +
          cell("Hours to Fix:", " 2.50") +
          cell("Estimated completion date:", "1/5/2025 or version: 3.0") + kEnd + kRow +
          wide(2, "Notes:", "guess") + kEnd,
      kRow + cell("Comment by:", "Smith, Ann") + cell("Date Entered:", "") + kEnd + kRow +
          wide(2, "Comments:", "Say &quot;hi&quot; &lt;b&gt;") + kEnd,
      kRow + cell("Entered by:", "Lee") + cell("Date Released:", "1/5/2025") +
          cell("Released in Version:", "3.1") + kEnd + kRow +
          wide(3, "Release Notes:", "x &gt; y") + kEnd,
  };
  const auto events = Events();
  ASSERT_EQ(events.size(), expected.size());
  for (std::size_t i = 0; i < events.size(); ++i) {
    SCOPED_TRACE(events[i]->ActionText());
    std::string out;
    events[i]->WriteHtml(out, lookups);
    EXPECT_EQ(out, kTable + expected[i] + "</TABLE>\n");
  }
}

// An event and a reported-by row on one page form: the second goes on from the line the
// first ended on. The rows as lines of text: "<x>" where a run is placed, not behind the
// one before it, and bold runs between stars.
TEST_F(DefectForms, PageFormOfAnEventAndARow) {
  std::vector<PrintRow> rows;
  PageForm form(rows);
  Estimate()->Print(form, lookups);
  CReportedBy custom;
  custom.foundById = 99;
  custom.contact = "Acme";
  custom.SetConfigKind(CReportedBy::kCustomConfig);
  custom.Print(form, lookups);
  std::string printed;
  std::uint32_t line = 0;
  for (const PrintRow& r : rows) {
    EXPECT_EQ(r.kind, PrintRow::Kind::kText);
    for (; line < r.line; ++line) printed += '\n';
    if (r.x != PrintRow::kFollow) printed += "<" + std::to_string(r.x) + ">";
    printed += r.style == PrintRow::kBold ? "*" + r.text + "*" : r.text;
  }
  EXPECT_EQ(printed,
            "<0>*Estimated by: *Lee\n"
            "<0>*Date Estimated: *12/31/2025\n"
            "<0>*Hours to Fix: * 2.50\n"
            "<0>*Estimated completion date: *1/5/2025<3960>*or version: *3.0\n"
            "<0>*Notes: *\n"
            "<0>guess\n"
            "<0>*Reported by: *\n"
            "<0>*Date Found: *<3960>*Contact at: *Acme\n"
            "<0>*Found in Version: *\n"
            "<0>*Comments: *\n"
            "<0>none\n"
            "<0>*Reproduced: *<not set>\n"
            "<0>*Steps to Reproduce: *\n"
            "<0>none\n"
            "<0>*User's Computer Configuration: *\n"
            "<0>*Other Hardware and Software: *\n"
            "<0>none\n"
            "<0>*Attachments: *\n"
            "<0>none");
  EXPECT_EQ(form.line(), 19u);
}

}  // namespace
}  // namespace qm::test
