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

std::string Cell(const std::string& label, const std::string& value) {
  return "<TD><B>" + label + "</B> " + value + "</TD>";
}
std::string Wide(int columns, const std::string& label, const std::string& value) {
  return "<TD COLSPAN=" + std::to_string(columns) + "><B>" + label + "</B> " + value + "</TD>";
}

class DefectForms : public SampleDefect {
 protected:
  std::string Field(std::uint16_t n) {
    std::string text;
    EXPECT_TRUE(d.GetFieldText(n, text)) << n;
    return text;
  }
  std::string Fields(std::initializer_list<std::uint16_t> numbers) {
    std::string texts;
    for (const std::uint16_t n : numbers) texts += Field(n) + "|";
    return texts;
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
  EXPECT_EQ(Fields({6, 3, 11, 9, 39, 26, 8}),
            "Open, not assigned|Atlas|Always|Smith, Ann|Acme|2|1/2/2025|");
  d.number = 0;
  d.productId = 99;
  EXPECT_EQ(Fields({1, 3}), "-|<not set>|");
  Add<CAssignEvent>(1, 3, "look");
  EXPECT_EQ(Field(6), "Open, assigned to Lee");
  Add<CAssignEvent>(2, 44, "");
  EXPECT_EQ(Fields({6, 15}), "Open, assigned to Unknown|Unknown|");
  auto& fix = Add<CFixEvent>(3, 2, "done");
  fix.hours = 2;
  fix.resolutionId = 6;
  d.Replay();
  EXPECT_EQ(Fields({6, 7, 19}), "Fixed, not assigned|Code Change| 2.00|");
  Add<CVerifyEvent>(4, 3, "");
  // No assignment tail, and a passed verification gives no close resolution.
  EXPECT_EQ(Fields({6, 41, 42, 22, 34}), "Passed verification, closed|Lee||2/4/2025|Yes|");
  EXPECT_EQ(Fields({35, 36}), "No||");
  Add<CReleaseNotesEvent>(4, 2, "").releaseVersion = "1.2";
  d.Replay();
  EXPECT_EQ(Fields({35, 36}), "Yes|1.2|");
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
  // The mail templates' tags: a short field is copied to the block, ASSN is the newest
  // assignment's notes.
  ASSERT_TRUE(d.GetFieldByTag(MakeTag("SUMM"), text, &block));
  EXPECT_EQ(block, "Crash <on> save");
  ASSERT_TRUE(d.GetFieldByTag(MakeTag("ASSN"), text, &block));
  EXPECT_EQ(block, "");
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
  std::string html;
  d.WriteHtml(html);
  EXPECT_EQ(
      html,
      "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>\n" + kTable + kRow +
          Cell("Defect No:", "7") + Cell("Date Entered:", "1/2/2025") + Cell("Product:", "Atlas") +
          kEnd + kRow + "<TD>&nbsp;</TD>" + Cell("Entered by:", "Smith, Ann") +
          Cell("Component:", "Parser") + kEnd + kRow + "<TD COLSPAN=3><HR></TD>" + kEnd + kRow +
          Wide(2, "Status:", "Open, not assigned") + "<TD>&nbsp;</TD>" + kEnd + kRow +
          Cell("Type:", "Cosmetic") + Cell("Priority:", "Immediate") +
          Cell("Severity:", "Workaround") + kEnd + kRow + Wide(2, "Reference:", "R-1") +
          Cell("Is Duplicate:", "No") + kEnd + kRow + "<TD COLSPAN=3><HR></TD>" + kEnd + kRow +
          Wide(3, "Summary:", "Crash &lt;on&gt; save") + kEnd + kRow +
          Wide(3, "Release Notes:", "Fixed &lt;it&gt;") + kEnd + kRow +
          Wide(3, "Work Around:", "Save\rtwice") + kEnd + "</TABLE>\n" + kTable + kRow +
          "<TD ALIGN=CENTER><HR><BR>--- Reported By ---</TD></TR>" + kRow + "<TD>" + kTable + kRow +
          Cell("Reported by:", "Smith, Ann") + Cell("Date Reported:", "1/2/2025") + kEnd + kRow +
          Cell("Found in Version:", "1.0") + kEnd + kRow +
          Wide(2, "Comments:", "It &quot;crashes&quot;\rat once") + kEnd + kRow +
          Wide(2, "Reproduced:", "Always") + kEnd + kRow +
          Wide(2, "Steps to Reproduce:", "&nbsp;") + kEnd + kRow +
          Wide(2, "Standard Test Configuration:", "Lab &lt;PC&gt;") + kEnd + kRow +
          Wide(2, "Other Hardware and Software:", "16 MB") + kEnd + kRow +
          Wide(2, "Attachments:", "<BR>&nbsp;&nbsp;log.txt<BR>&nbsp;&nbsp;shot.png") + kEnd +
          "</TABLE>\n<HR>\n" + kTable + kRow + Cell("Reported by:", "") +
          Cell("Date Reported:", "1/3/2025") + kEnd + kRow + Cell("Found in Version:", "1.0") +
          kEnd + kRow + Wide(2, "Comments:", "It crashes") + kEnd + kRow +
          Wide(2, "Reproduced:", "Always") + kEnd + kRow +
          Wide(2, "Steps to Reproduce:", "&nbsp;") + kEnd + kRow +
          "<TD COLSPAN=2><B>Custom Computer Configuration</B></TD>" + kEnd + kRow +
          Wide(2, "Other Hardware and Software:", "&nbsp;") + kEnd + kRow +
          Wide(2, "Attachments:", "<BR>&nbsp;&nbsp;none") + kEnd + "</TABLE>\n" +
          "</TD></TR>\n</TABLE>\n" + history + "</TD></TR>\n</TABLE>\n</TD></TR></TABLE>\n");

  first.SetTestConfigId(6);
  text.clear();
  first.WriteText(text, lookups);
  EXPECT_NE(text.find("\r\nStandard Test Configuration: <not set>\r\n"), std::string::npos);
}

// Each kind's text appends to what is there; its HTML is a table of its own, where the
// notes row stands even without notes, and notes keep their lone CRs.
TEST_F(DefectForms, TextAndHtmlOfEachEventKind) {
  const std::pair<std::string, std::string> expected[] = {
      {"Assigned to: Lee\r\nDate Assigned: 12/31/2025\r\nComments: Take it\r\nplease\r\n",
       kRow + Cell("Assigned to:", "Lee") + Cell("Date Assigned:", "12/31/2025") + kEnd + kRow +
           Wide(2, "Comments:", "Take it\rplease") + kEnd},
      {"Fixed by: Smith, Ann\r\nDate Fixed: 1/5/2025\r\nVersion: 2.1\r\n"
       "Resolution: As \"designed\" <x> & y\r\n"
       "Affects Documentation: Yes\r\nAffects Test Plan: No\r\nNotes: a\r\nb\r\nc\r\n",
       kRow + Cell("Fixed by:", "Smith, Ann") + Wide(2, "Date Fixed:", "1/5/2025") + kEnd + kRow +
           Cell("Version:", "2.1") + Cell("Resolution:", "As &quot;designed&quot; &lt;x&gt; & y") +
           Cell("Hours to Fix:", "") + kEnd + kRow + Cell("Affects Documentation:", "Yes") +
           Wide(2, "Affects Test Plan:", "No") + kEnd + kRow + Wide(3, "Notes:", "a\r\nb\rc") +
           kEnd},
      {"Verified by: Lee\r\nDate Verified: 12/31/2025\r\nResult: Failed\r\n",
       kRow + Cell("Verified by:", "Lee") + Cell("Date Verified:", "12/31/2025") +
           Cell("Result:", "Failed") + kEnd + kRow + Wide(3, "Notes:", "") + kEnd},
      {"Closed by: \r\nDate Closed: 1/5/2025\r\nResolution: <not set>\r\nNotes: done\r\n",
       kRow + Cell("Closed by:", "") + Cell("Date Closed:", "1/5/2025") +
           Cell("Resolution:", "&lt;not set&gt;") + kEnd + kRow + Wide(3, "Comments:", "done") +
           kEnd},
      {"Re-opened by:Smith, Ann\r\nDate Re-opened:12/31/2025\r\nNotes: again\r\n",
       kRow + Cell("Re-opened by:", "Smith, Ann") + Cell("Date Re-opened:", "12/31/2025") + kEnd +
           kRow + Wide(2, "Notes:", "again") + kEnd},
      {"Estimated by: Lee\r\nDate Estimated: 12/31/2025\r\nHours to Fix:  2.50\r\n"
       "Estimated completion date: 1/5/2025  or version: 3.0\r\nEstimate Notes: guess\r\n",
       kRow + Cell("Estimated by:", "Lee") + Cell("Date Estimated:", "12/31/2025") + kEnd + kRow +
           Cell("Hours to Fix:", " 2.50") +
           Cell("Estimated completion date:", "1/5/2025 or version: 3.0") + kEnd + kRow +
           Wide(2, "Notes:", "guess") + kEnd},
      {"Comment by: Smith, Ann\r\nDate Entered: \r\nComments: Say \"hi\" <b>\r\n",
       kRow + Cell("Comment by:", "Smith, Ann") + Cell("Date Entered:", "") + kEnd + kRow +
           Wide(2, "Comments:", "Say &quot;hi&quot; &lt;b&gt;") + kEnd},
      {"Entered by: Lee\r\nDate Entered: 1/5/2025\r\nReleased in Version: 3.1\r\n"
       "Release Notes: x > y\r\n",
       kRow + Cell("Entered by:", "Lee") + Cell("Date Released:", "1/5/2025") +
           Cell("Released in Version:", "3.1") + kEnd + kRow +
           Wide(3, "Release Notes:", "x &gt; y") + kEnd},
  };
  const auto events = Events();
  ASSERT_EQ(events.size(), std::size(expected));
  for (std::size_t i = 0; i < events.size(); ++i) {
    SCOPED_TRACE(events[i]->ActionText());
    std::string text = "before\r\n";
    events[i]->WriteText(text, lookups);
    EXPECT_EQ(text, "before\r\n" + expected[i].first);
    std::string html;
    events[i]->WriteHtml(html, lookups);
    EXPECT_EQ(html, kTable + expected[i].second + "</TABLE>\n");
  }

  auto estimate = Estimate();
  estimate->hours = -1.0;
  std::string out;
  estimate->WriteText(out, lookups);
  EXPECT_EQ(out,
            "Estimated by: Lee\r\nDate Estimated: 12/31/2025\r\n"
            "Estimated completion date: 1/5/2025  or version: 3.0\r\nEstimate Notes: guess\r\n");
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
