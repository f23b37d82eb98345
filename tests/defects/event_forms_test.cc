// The text, HTML and page forms of events and reported-by rows, whole, against texts
// written out by hand.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "defects/defect_event.h"
#include "defects/fake_lookups.h"
#include "defects/reported_by.h"
#include "session/page_form.h"

namespace qm {

// Print rows in a failure message as their fields, not their bytes.
void PrintTo(const PrintRow& row, std::ostream* os) {
  *os << "{x " << row.x << ", line " << row.line << ", style " << row.style << ", \"" << row.text
      << "\"}";
}

namespace test {
namespace {

// Made on use: the clock's calendar is not ready while statics are set up.
std::uint32_t Dec31() { return platform::StampFromCivil({.year = 1999, .month = 12, .day = 31}); }
std::uint32_t Jan5() { return platform::StampFromCivil({.year = 2000, .month = 1, .day = 5}); }
constexpr std::uint32_t kAnn = 7;
constexpr std::uint32_t kBo = 9;
constexpr std::uint32_t kGone = 99;

const std::string kTable = "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n";
const std::string kRow = "<TR BGCOLOR=#FFFFFF>";
const std::string kEnd = "</TR>\n";

class Forms : public ::testing::Test {
 protected:
  Forms() {
    lookups.users[kAnn].SetFirstName("Ann");
    lookups.users[kAnn].SetLastName("Lee");
    lookups.users[kBo].SetFirstName("Bo");
    lookups.users[kBo].SetLastName("Ray");
    lookups.values.try_emplace({MakeTag("reso"), 3}, "As \"designed\" <x> & y", 1);
    lookups.values.try_emplace({MakeTag("rpro"), 2}, "Always", 1);
    lookups.configs[5].name = "Lab <PC>";
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
    add(new CAssignEvent, kAnn, Dec31(), "Take it\rplease");
    auto& fix = add(new CFixEvent, kBo, Jan5(), "a\r\nb\rc");
    fix.fixVersion = "2.1";
    fix.resolutionId = 3;
    fix.affectsDocs = true;
    add(new CVerifyEvent, kAnn, Dec31(), "").passed = false;
    add(new CCloseEvent, kGone, Jan5(), "done").resolutionId = 4;
    add(new CReOpenEvent, kBo, Dec31(), "again");
    events.push_back(Estimate());
    add(new CCommentEvent, kBo, platform::kNoStamp, "Say \"hi\" <b>");
    add(new CReleaseNotesEvent, kAnn, Jan5(), "x > y").releaseVersion = "3.1";
    return events;
  }

  static std::unique_ptr<CEstimateEvent> Estimate() {
    auto estimate = std::make_unique<CEstimateEvent>();
    estimate->userId = kAnn;
    estimate->date = Dec31();
    estimate->hours = 2.5;
    estimate->estimatedDate = Jan5();
    estimate->estimatedVersion = "3.0";
    estimate->notes = "guess";
    return estimate;
  }

  // Kind 2 with two attachments, and notes of its own lines.
  static CReportedBy& StoredRow(CReportedBy& row) {
    row.foundById = kAnn;
    row.dateFound = Dec31();
    row.contact = "Acme";
    row.versionFound = "2.0";
    row.description = "It crashes\rat once";
    row.reproducedId = 2;
    row.SetConfigKind(CReportedBy::kStoredConfig);
    row.SetTestConfigId(5);
    row.otherHardware = "16 MB";
    for (const char* name : {"log.txt", "shot.png"}) {
      auto attachment = std::make_unique<CFileAttachment>();
      attachment->fileName = name;
      row.AddAttachment(std::move(attachment));
    }
    return row;
  }

  // Kind 3, everything else left empty or gone.
  static CReportedBy& CustomRow(CReportedBy& row) {
    row.foundById = kGone;
    row.contact = "Acme";
    row.SetConfigKind(CReportedBy::kCustomConfig);
    return row;
  }

  FakeLookups lookups;
};

TEST_F(Forms, TextOfEachEventKind) {
  const std::vector<std::string> expected = {
      "Assigned to: Lee, Ann\r\nDate Assigned: 12/31/1999\r\nComments: Take it\r\nplease\r\n",
      "Fixed by: Ray, Bo\r\nDate Fixed: 1/5/2000\r\nVersion: 2.1\r\n"
      "Resolution: As \"designed\" <x> & y\r\n"
      "Affects Documentation: Yes\r\nAffects Test Plan: No\r\nNotes: a\r\nb\r\nc\r\n",
      "Verified by: Lee, Ann\r\nDate Verified: 12/31/1999\r\nResult: Failed\r\n",
      "Closed by: \r\nDate Closed: 1/5/2000\r\nResolution: <not set>\r\nNotes: done\r\n",
      "Re-opened by:Ray, Bo\r\nDate Re-opened:12/31/1999\r\nNotes: again\r\n",
      "Estimated by: Lee, Ann\r\nDate Estimated: 12/31/1999\r\nHours to Fix:  2.50\r\n"
      "Estimated completion date: 1/5/2000  or version: 3.0\r\nEstimate Notes: guess\r\n",
      "Comment by: Ray, Bo\r\nDate Entered: \r\nComments: Say \"hi\" <b>\r\n",
      "Entered by: Lee, Ann\r\nDate Entered: 1/5/2000\r\nReleased in Version: 3.1\r\n"
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
            "Estimated by: Lee, Ann\r\nDate Estimated: 12/31/1999\r\n"
            "Estimated completion date: 1/5/2000  or version: 3.0\r\nEstimate Notes: guess\r\n");
}

TEST_F(Forms, HtmlOfEachEventKind) {
  const auto cell = [](const std::string& label, const std::string& value) {
    return "<TD><B>" + label + "</B> " + value + "</TD>";
  };
  const auto wide = [](int columns, const std::string& label, const std::string& value) {
    return "<TD COLSPAN=" + std::to_string(columns) + "><B>" + label + "</B> " + value + "</TD>";
  };
  // The notes row stands there even without notes, and notes keep their lone CRs.
  const std::vector<std::string> expected = {
      kRow + cell("Assigned to:", "Lee, Ann") + cell("Date Assigned:", "12/31/1999") + kEnd + kRow +
          wide(2, "Comments:", "Take it\rplease") + kEnd,
      kRow + cell("Fixed by:", "Ray, Bo") + wide(2, "Date Fixed:", "1/5/2000") + kEnd + kRow +
          cell("Version:", "2.1") + cell("Resolution:", "As &quot;designed&quot; &lt;x&gt; & y") +
          cell("Hours to Fix:", "") + kEnd + kRow + cell("Affects Documentation:", "Yes") +
          wide(2, "Affects Test Plan:", "No") + kEnd + kRow + wide(3, "Notes:", "a\r\nb\rc") + kEnd,
      kRow + cell("Verified by:", "Lee, Ann") + cell("Date Verified:", "12/31/1999") +
          cell("Result:", "Failed") + kEnd + kRow + wide(3, "Notes:", "") + kEnd,
      kRow + cell("Closed by:", "") + cell("Date Closed:", "1/5/2000") +
          cell("Resolution:", "&lt;not set&gt;") + kEnd + kRow + wide(3, "Comments:", "done") +
          kEnd,
      kRow + cell("Re-opened by:", "Ray, Bo") + cell("Date Re-opened:", "12/31/1999") + kEnd +
          kRow + wide(2, "Notes:", "again") + kEnd,
      kRow + cell("Estimated by:", "Lee, Ann") + cell("Date Estimated:", "12/31/1999") + kEnd +
          kRow + cell("Hours to Fix:", " 2.50") +
          cell("Estimated completion date:", "1/5/2000 or version: 3.0") + kEnd + kRow +
          wide(2, "Notes:", "guess") + kEnd,
      kRow + cell("Comment by:", "Ray, Bo") + cell("Date Entered:", "") + kEnd + kRow +
          wide(2, "Comments:", "Say &quot;hi&quot; &lt;b&gt;") + kEnd,
      kRow + cell("Entered by:", "Lee, Ann") + cell("Date Released:", "1/5/2000") +
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

TEST_F(Forms, TextAndHtmlOfReportedByRows) {
  CReportedBy stored;
  StoredRow(stored);
  std::string text;
  stored.WriteText(text, lookups);
  EXPECT_EQ(text,
            "Reported by: Lee, Ann\r\n"
            "Date Found: 12/31/1999\r\n"
            "Found in Version: 2.0\r\n"
            "Comments: It crashes\r\nat once\r\n"
            "Reproduced: Always\r\n"
            "Steps to Reproduce: none\r\n"
            "Standard Test Configuration: Lab <PC>\r\n"
            "Other Hardware and Software: 16 MB\r\n"
            "Attachments: \r\nlog.txt\r\nshot.png\r\n");
  std::string html;
  stored.WriteHtml(html, lookups);
  EXPECT_EQ(html, kTable + kRow +
                      "<TD><B>Reported by:</B> Lee, Ann</TD>"
                      "<TD><B>Date Reported:</B> 12/31/1999</TD>" +
                      kEnd + kRow + "<TD><B>Found in Version:</B> 2.0</TD>" + kEnd + kRow +
                      "<TD COLSPAN=2><B>Comments:</B> It crashes\rat once</TD>" + kEnd + kRow +
                      "<TD COLSPAN=2><B>Reproduced:</B> Always</TD>" + kEnd + kRow +
                      "<TD COLSPAN=2><B>Steps to Reproduce:</B> &nbsp;</TD>" + kEnd + kRow +
                      "<TD COLSPAN=2><B>Standard Test Configuration:</B> Lab &lt;PC&gt;</TD>" +
                      kEnd + kRow + "<TD COLSPAN=2><B>Other Hardware and Software:</B> 16 MB</TD>" +
                      kEnd + kRow +
                      "<TD COLSPAN=2><B>Attachments:</B> <BR>&nbsp;&nbsp;log.txt"
                      "<BR>&nbsp;&nbsp;shot.png</TD>" +
                      kEnd + "</TABLE>\n");

  // A stored configuration that is gone.
  stored.SetTestConfigId(6);
  text.clear();
  stored.WriteText(text, lookups);
  EXPECT_NE(text.find("\r\nStandard Test Configuration: <not set>\r\n"), std::string::npos);
}

// An event and a reported-by row on one page form: the second goes on from the line the
// first ended on.
TEST_F(Forms, PageFormOfAnEventAndARow) {
  std::vector<PrintRow> rows;
  PageForm form(rows);
  Estimate()->Print(form, lookups);
  CReportedBy custom;
  CustomRow(custom).Print(form, lookups);

  using K = PrintRow::Kind;
  const auto label = [](std::int32_t x, std::uint32_t line, const char* text) {
    return PrintRow{K::kText, x, line, text, PrintRow::kBold};
  };
  const auto value = [](std::uint32_t line, const char* text) {
    return PrintRow{K::kText, PrintRow::kFollow, line, text, PrintRow::kPlain};
  };
  const auto block = [](std::uint32_t line, const char* text) {
    return PrintRow{K::kText, 0, line, text, PrintRow::kPlain};
  };
  const std::vector<PrintRow> expected = {
      label(0, 0, "Estimated by: "),
      value(0, "Lee, Ann"),
      label(0, 1, "Date Estimated: "),
      value(1, "12/31/1999"),
      label(0, 2, "Hours to Fix: "),
      value(2, " 2.50"),
      label(0, 3, "Estimated completion date: "),
      value(3, "1/5/2000"),
      label(3960, 3, "or version: "),
      value(3, "3.0"),
      label(0, 4, "Notes: "),
      block(5, "guess"),
      label(0, 6, "Reported by: "),
      value(6, ""),
      label(0, 7, "Date Found: "),
      value(7, ""),
      label(3960, 7, "Contact at: "),
      value(7, "Acme"),
      label(0, 8, "Found in Version: "),
      value(8, ""),
      label(0, 9, "Comments: "),
      block(10, "none"),
      label(0, 11, "Reproduced: "),
      value(11, "<not set>"),
      label(0, 12, "Steps to Reproduce: "),
      block(13, "none"),
      label(0, 14, "User's Computer Configuration: "),
      label(0, 15, "Other Hardware and Software: "),
      block(16, "none"),
      label(0, 17, "Attachments: "),
      block(18, "none"),
  };
  EXPECT_EQ(rows, expected);
  EXPECT_EQ(form.line(), 19u);
}

}  // namespace
}  // namespace test
}  // namespace qm
