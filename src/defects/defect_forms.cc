// The text, HTML and page forms of a defect: its own fields, then its reports and its
// history in the forms of their rows.
#include <string>

#include "defects/defect.h"
#include "defects/text_forms.h"

namespace qm {

namespace {

constexpr const char* kNoHistory = "This defect has never been assigned, fixed or closed.";
constexpr const char* kHtmlTable = "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%>\n";
constexpr const char* kHtmlRow = "<TR BGCOLOR=#FFFFFF>";
constexpr const char* kHtmlRowEnd = "</TR>\n";
constexpr const char* kHtmlRule = "<TR BGCOLOR=#FFFFFF><TD COLSPAN=3><HR></TD></TR>\n";

// Lookups that find nothing, for a defect outside any project.
class NoLookups : public DefectLookups {
 public:
  const CUser* User(std::uint32_t) const override { return nullptr; }
  const CUserGroup* Group(std::uint32_t) const override { return nullptr; }
  const CTestConfig* TestConfig(std::uint32_t) const override { return nullptr; }
  const ValueItem* Value(Tag, std::uint32_t) const override { return nullptr; }
  std::uint32_t ValuePosition(Tag, std::uint32_t) const override { return 0; }
  std::uint32_t CurrentUserId() const override { return 0; }
};

// A line of the text form whose left part takes 40 columns.
std::string TwoColumns(const std::string& left, const std::string& right) {
  std::string line = left;
  if (line.size() < 40) line.append(40 - line.size(), ' ');
  return line + right + "\r\n";
}

std::string Cell(const char* format, const std::string& value) {
  std::string cell(format);
  cell.replace(cell.find("%s"), 2, EscapeHtml(value));
  return cell;
}

}  // namespace

std::string CDefect::FieldText(std::uint16_t field) const {
  std::string text;
  GetFieldText(field, text);
  return text;
}

const DefectLookups& CDefect::Lookups() const {
  static const NoLookups none;
  return lookups_ != nullptr ? *lookups_ : none;
}

void CDefect::WriteText(std::string& out) const {
  const std::string releaseNotes =
      copies_.releaseNotes != nullptr ? *copies_.releaseNotes : std::string();
  out += "Defect No: " + FieldText(1) + "\r\n";
  // The label says found by while the value is the user who entered the defect.
  out += TwoColumns("Found by: " + FieldText(28), "Date Entered: " + FieldText(27));
  out += TwoColumns("Product: " + FieldText(3), "Component: " + FieldText(24));
  out += "\r\n";
  out += "Type: " + FieldText(4) + "\r\n";
  if (copies_.resolutionId != 0) {
    out += TwoColumns("Status: " + FieldText(6), "Resolution: " + FieldText(7));
  } else {
    out += "Status: " + FieldText(6) + "\r\n";
  }
  out += TwoColumns("Priority: " + FieldText(5), "Severity: " + FieldText(33));
  out += TwoColumns("Reference: " + FieldText(25), "Is Duplicate: " + FieldText(10));
  out += "\r\n";
  out += "Summary: " + summary + "\r\n";
  out += "Release Notes: \r\n" + CrToCrLf(releaseNotes) + "\r\n";
  out += "Work Around: \r\n" + CrToCrLf(workaround) + "\r\n";
  out += "\r\n--- Reported By ---\r\n";
  for (std::uint32_t n = 1; n <= ReportedByCount(); ++n) {
    if (n > 1) out += "\r\n";
    ReportedByAt(n)->WriteText(out, Lookups());
  }
  out += "\r\n--- History ---\r\n";
  if (EventCount() == 0) out += std::string(kNoHistory) + "\r\n";
  for (std::uint32_t n = 1; n <= EventCount(); ++n) {
    if (n > 1) out += "\r\n";
    EventAt(n)->WriteText(out, Lookups());
  }
}

void CDefect::WriteHtml(std::string& out) const {
  const std::string releaseNotes =
      copies_.releaseNotes != nullptr ? *copies_.releaseNotes : std::string();
  out += "<TABLE BORDER=0 CELLSPACING=0 CELLPADDING=4 WIDTH=100%><TR><TD>\n";
  out += kHtmlTable;
  out += std::string(kHtmlRow) + Cell("<TD><B>Defect No:</B> %s</TD>", FieldText(1)) +
         Cell("<TD><B>Date Entered:</B> %s</TD>", FieldText(27)) +
         Cell("<TD><B>Product:</B> %s</TD>", FieldText(3)) + kHtmlRowEnd;
  out += std::string(kHtmlRow) + "<TD>&nbsp;</TD>" +
         Cell("<TD><B>Entered by:</B> %s</TD>", FieldText(28)) +
         Cell("<TD><B>Component:</B> %s</TD>", FieldText(24)) + kHtmlRowEnd;
  out += kHtmlRule;
  out += std::string(kHtmlRow) + Cell("<TD COLSPAN=2><B>Status:</B> %s</TD>", FieldText(6)) +
         (copies_.resolutionId != 0 ? Cell("<TD><B>Resolution:</B> %s</TD>", FieldText(7))
                                    : std::string("<TD>&nbsp;</TD>")) +
         kHtmlRowEnd;
  out += std::string(kHtmlRow) + Cell("<TD><B>Type:</B> %s</TD>", FieldText(4)) +
         Cell("<TD><B>Priority:</B> %s</TD>", FieldText(5)) +
         Cell("<TD><B>Severity:</B> %s</TD>", FieldText(33)) + kHtmlRowEnd;
  out += std::string(kHtmlRow) + Cell("<TD COLSPAN=2><B>Reference:</B> %s</TD>", FieldText(25)) +
         Cell("<TD><B>Is Duplicate:</B> %s</TD>", FieldText(10)) + kHtmlRowEnd;
  out += kHtmlRule;
  out +=
      std::string(kHtmlRow) + Cell("<TD COLSPAN=3><B>Summary:</B> %s</TD>", summary) + kHtmlRowEnd;
  out += std::string(kHtmlRow) + "<TD COLSPAN=3><B>Release Notes:</B> " + EscapeHtml(releaseNotes) +
         "</TD>" + kHtmlRowEnd;
  out += std::string(kHtmlRow) + "<TD COLSPAN=3><B>Work Around:</B> " + EscapeHtml(workaround) +
         "</TD>" + kHtmlRowEnd;
  out += "</TABLE>\n";

  out += kHtmlTable;
  out += "<TR BGCOLOR=#FFFFFF><TD ALIGN=CENTER><HR><BR>--- Reported By ---</TD></TR>";
  out += "<TR BGCOLOR=#FFFFFF><TD>";
  for (std::uint32_t n = 1; n <= ReportedByCount(); ++n) {
    if (n > 1) out += "<HR>\n";
    ReportedByAt(n)->WriteHtml(out, Lookups());
  }
  out += "</TD></TR>\n</TABLE>\n";

  out += kHtmlTable;
  out += "<TR BGCOLOR=#FFFFFF><TD ALIGN=CENTER><HR><BR>--- History ---</TD></TR>";
  out += "<TR BGCOLOR=#FFFFFF><TD>";
  if (EventCount() == 0) out += kNoHistory;
  for (std::uint32_t n = 1; n <= EventCount(); ++n) {
    if (n > 1) out += "<HR>\n";
    EventAt(n)->WriteHtml(out, Lookups());
  }
  out += "</TD></TR>\n</TABLE>\n";
  out += "</TD></TR></TABLE>\n";
}

void CDefect::Print(std::vector<PrintRow>& rows) const {
  const auto [left, middle, right] = PageForm::kColumns;
  PageForm form(rows);
  form.Field(left, "Defect No: ", FieldText(1));
  form.Field(middle, "Date Entered: ", FieldText(27));
  form.Field(right, "Product: ", FieldText(3));
  form.NextLine();
  form.Field(middle, "Entered by: ", FieldText(28));
  form.Field(right, "Component: ", FieldText(24));
  form.NextLine();
  form.Rule();
  form.Field(left, "Status: ", FieldText(6));
  if (copies_.resolutionId != 0) form.Field(middle, "Resolution: ", FieldText(7));
  form.NextLine();
  form.Field(left, "Type: ", FieldText(4));
  form.Field(middle, "Priority: ", FieldText(5));
  form.Field(right, "Severity: ", FieldText(33));
  form.NextLine();
  form.Field(left, "Reference: ", FieldText(25));
  form.Field(right, "Is Duplicate: ", FieldText(10));
  form.NextLine();
  form.Rule();
  form.Field(left, "Summary: ", summary);
  form.NextLine();
  form.Block("Release Notes: ",
             copies_.releaseNotes != nullptr ? *copies_.releaseNotes : std::string());
  form.Block("Work Around: ", workaround);
  for (std::uint32_t n = 1; n <= ReportedByCount(); ++n) ReportedByAt(n)->Print(form, Lookups());
  for (std::uint32_t n = 1; n <= EventCount(); ++n) EventAt(n)->Print(form, Lookups());
}

}  // namespace qm
