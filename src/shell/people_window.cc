// The user and customer windows' checks, statistics, forms and list commands.
#include "shell/people_window.h"

#include <cstdio>

#include "defects/defect.h"
#include "defects/selection_commands.h"
#include "defects/text_forms.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "store/project_store.h"

namespace qm {
namespace {

// The labels of contact kinds 1 and on; a kind beyond them shows its number.
constexpr std::string_view kContactKinds[] = {"Work Phone", "Home Phone", "Fax", "Mobile", "Pager"};

std::string ContactKindName(std::uint32_t kind) {
  if (kind >= 1 && kind <= std::size(kContactKinds)) return std::string(kContactKinds[kind - 1]);
  return "Contact " + std::to_string(kind);
}

std::string Share(std::uint32_t count, std::uint32_t total) {
  char text[48];
  std::snprintf(text, sizeof text, "%ld (%ld%%)", static_cast<long>(count),
                static_cast<long>(total == 0 ? 0 : count * 100ull / total));
  return text;
}

std::string DateAndTime(std::uint32_t stamp) {
  if (stamp == platform::kNoStamp) return "Never";
  const platform::CivilTime t = platform::CivilFromStamp(stamp);
  char time[16];
  std::snprintf(time, sizeof time, "%d:%02d %s", t.hour % 12 == 0 ? 12 : t.hour % 12, t.minute,
                t.hour < 12 ? "AM" : "PM");
  return FormatDate(stamp) + " at " + time;
}

// The items of the forms, label and value, in the order of the text form.
std::vector<std::pair<std::string, std::string>> FormItems(const CDBDoc& doc, const CUser& person) {
  std::vector<std::pair<std::string, std::string>> items;
  items.emplace_back("Name: ", person.GetName());
  if (person.IsCustomer()) {
    items.emplace_back("Company: ", person.GetCompany());
    items.emplace_back("Beta Site: ", person.GetBetaSite() != 0 ? "Yes" : "No");
    items.emplace_back("Address: ", CrToCrLf(person.GetAddress()));
  } else {
    const auto* groups = static_cast<const CUserGroupTable*>(doc.GetTable(kGroupTag));
    items.emplace_back("User Group: ", groups != nullptr ? person.GetGroupName(*groups) : "None");
  }
  if (doc.multiUser() && !person.IsCustomer()) items.emplace_back("Login: ", person.GetLogin());
  for (std::size_t i = 0; i < CUser::kContactCount; ++i) {
    if (person.GetContactKind(i) != 0) {
      items.emplace_back(ContactKindName(person.GetContactKind(i)) + ": ",
                         person.GetContactText(i));
    }
  }
  items.emplace_back("e-mail: ", person.GetEmail());
  items.emplace_back("Notes: ", CrToCrLf(person.GetNotes()));
  return items;
}

}  // namespace

std::optional<std::string> ValidatePerson(const ItemTable& people, const CUser& person,
                                          bool loginsOn) {
  if (person.GetFirstName().empty() && person.GetLastName().empty()) {
    return "Please enter a unique name for this user to disinguish her or him from other users.";
  }
  const auto others = [&](auto&& same) {
    for (std::uint32_t p = 1; p <= people.count(); ++p) {
      const auto* other = static_cast<const CUser*>(people.ItemAt(p));
      // The person's own record, by its place in the table or by its id once it has one.
      const bool self =
          other == &person || (person.GetId() != 0 && other->GetId() == person.GetId());
      if (!self && !other->deleted && same(*other)) {
        return true;
      }
    }
    return false;
  };
  if (others([&](const CUser& o) {
        return SameLoginText(o.GetFirstName(), person.GetFirstName()) &&
               SameLoginText(o.GetLastName(), person.GetLastName());
      })) {
    return "A user with the same first and last name already exists, please enter a unique "
           "name.";
  }
  if (person.IsCustomer()) return std::nullopt;
  if (loginsOn) {
    if (person.GetLogin().empty()) {
      return "Please enter a unique login name for this user to disinguish her or him from "
             "other users when logging into the program.";
    }
    if (others([&](const CUser& o) { return SameLoginText(o.GetLogin(), person.GetLogin()); })) {
      return "A user with the same login name already exists, please enter a unique name.";
    }
  }
  if (person.GetGroupId() == 0) {
    return "Please select the user group to which this user belongs. The user group defines "
           "the user's security settings.";
  }
  return std::nullopt;
}

PersonStatistics GatherStatistics(const CDefectTable& defects, std::uint32_t personId) {
  PersonStatistics s;
  s.defects = defects.count();
  for (std::uint32_t p = 1; p <= defects.count(); ++p) {
    const CDefect& d = *defects.DefectAt(p);
    bool reported = false;
    for (std::uint32_t r = 1; r <= d.ReportedByCount(); ++r) {
      const CReportedBy& row = *d.ReportedByAt(r);
      if (row.foundById != personId) continue;
      reported = true;
      if (row.dateFound != platform::kNoStamp &&
          (s.lastReported == platform::kNoStamp || row.dateFound > s.lastReported)) {
        s.lastReported = row.dateFound;
      }
    }
    if (reported) ++s.reported;
    const DefectCopies& c = d.copies();
    if (c.assignedToId == personId) ++s.assigned;
    if (c.fixedById == personId) {
      ++s.fixed;
      if (c.hoursToFix > 0) s.hoursFixing += c.hoursToFix;
    }
    if (c.verifiedById == personId) ++s.verified;
    if (c.closedById == personId) ++s.closed;
    if (c.reopenedById == personId) ++s.reopened;
  }
  return s;
}

std::vector<std::pair<std::string, std::string>> StatisticsLines(const PersonStatistics& s,
                                                                 const CUser& person) {
  std::vector<std::pair<std::string, std::string>> lines;
  lines.emplace_back(
      person.IsCustomer() ? "Defects reported by customer: " : "Defects reported by user: ",
      Share(s.reported, s.defects));
  lines.emplace_back("Last reported a defect: ",
                     s.lastReported == platform::kNoStamp ? "Never" : FormatDate(s.lastReported));
  if (person.IsCustomer()) return lines;
  lines.emplace_back("Last logged in: ", DateAndTime(person.GetDateLastLogin()));
  lines.emplace_back("Defects currently assigned to user: ", Share(s.assigned, s.defects));
  lines.emplace_back("Defects fixed by user: ", Share(s.fixed, s.defects));
  char hours[32];
  std::snprintf(hours, sizeof hours, "%5.2lf hrs", s.hoursFixing);
  lines.emplace_back("Time user spent fixing defects: ", s.fixed == 0 ? "0 hrs" : hours);
  lines.emplace_back("Defects verified by user: ", Share(s.verified, s.defects));
  lines.emplace_back("Defects closed by user: ", Share(s.closed, s.defects));
  lines.emplace_back("Defects re-opened by user: ", Share(s.reopened, s.defects));
  return lines;
}

std::string StatisticsNote(const PersonStatistics& stats) {
  return "Note: Percentages represent % of total defects (" + std::to_string(stats.defects) +
         ") in the project file.";
}

void WritePersonText(const CDBDoc& doc, const CUser& person, const PersonStatistics& stats,
                     std::string& out) {
  for (const auto& [label, value] : FormItems(doc, person)) out += label + value + "\r\n";
  out += "Computer Configuration: \r\n";
  person.GetComputerConfig().WriteText(out);
  out += "Statistics: \r\n";
  for (const auto& [label, value] : StatisticsLines(stats, person)) {
    out += label + value + "\r\n";
  }
  out += StatisticsNote(stats) + "\r\n";
}

void WritePersonHtml(const CDBDoc& doc, const CUser& person, const PersonStatistics& stats,
                     std::string& out) {
  // A row of one cell, "<B>Label:</B> value", the label without the text form's blank.
  const auto row = [&out](std::string_view label, std::string_view value) {
    out += kHtmlRowOpen;
    HtmlCell(out, 1, label.substr(0, label.find_last_not_of(' ') + 1), value);
    out += kHtmlRowClose;
  };
  out += kHtmlTableOpen;
  for (const auto& [label, value] : FormItems(doc, person)) row(label, value);
  out += kHtmlRowOpen;
  out += "<TD><B>Computer Configuration:</B> ";
  person.GetComputerConfig().WriteHtml(out);
  out += "</TD>";
  out += kHtmlRowClose;
  for (const auto& [label, value] : StatisticsLines(stats, person)) row(label, value);
  out += kHtmlRowOpen;
  out += "<TD>" + EscapeHtml(StatisticsNote(stats)) + "</TD>";
  out += kHtmlRowClose;
  out += kHtmlTableClose;
}

std::vector<CUser*> TransferPeople(CDBDoc& doc, const std::vector<CUser*>& selection,
                                   bool toCustomers) {
  std::vector<CUser*> moved;
  for (CUser* person : selection) {
    if (person->IsCustomer() == toCustomers || RecordLocked(doc, kUserTag, person->GetId()))
      continue;
    person->SetCustomer(toCustomers);
    if (doc.GetTable(kUserTag)->SaveItem(*person) != DBStatus::kOk) {
      person->SetCustomer(!toCustomers);  // as its record still has it
      continue;
    }
    moved.push_back(person);
  }
  return moved;
}

std::vector<CUser*> DuplicatePeople(CDBDoc& doc, const std::vector<CUser*>& selection, ui::Ui& ui) {
  std::vector<CUser*> copies;
  bool leftOut = false;
  ItemTable& people = *doc.GetTable(kUserTag);
  for (const CUser* person : selection) {
    if (RecordLocked(doc, kUserTag, person->GetId())) {
      leftOut = true;
      continue;
    }
    auto copy = std::make_unique<CUser>();
    copy->CopyPayloadFrom(*person);
    copy->SetId(0);
    // Two people may not share a name or a login: the copy's are for the person to give.
    copy->SetFirstName("Copy of " + person->GetFirstName());
    copy->SetLogin("");
    copy->SetDateLastLogin(platform::kNoStamp);
    CUser* raw = copy.get();
    std::unique_ptr<RecordItem> item = std::move(copy);
    if (people.AddItem(item) == DBStatus::kOk) copies.push_back(raw);
  }
  if (leftOut) {
    ui.Tell("One or more users will not be duplicated because they are in use by another user.",
            ui::Icon::kWarning);
  }
  return copies;
}

// ---- the window ---------------------------------------------------------------------------

CPersonWindow::CPersonWindow(CDBDoc& doc, ItemTable& people, ui::Ui& ui, EditMarks& marks,
                             bool customers, platform::Clock& clock)
    : CRecordWindow(doc, people, ui, marks, clock),
      customers_(customers),
      shown_(std::make_unique<CUser>()) {}

std::string CPersonWindow::GetWindowTitle(std::uint16_t /*mode*/) const {
  const std::string name = shown_->GetName();
  return std::string(customers_ ? "Customer" : "User") + (name.empty() ? "" : " - " + name);
}

void CPersonWindow::LoadFields(const RecordItem& item) {
  shown_->CopyPayloadFrom(item);
  loaded_ = shown_->Pack();
  changed_ = false;
}

void CPersonWindow::StoreFields(RecordItem& item) {
  const std::uint32_t id = item.GetId();
  item.CopyPayloadFrom(*shown_);
  item.SetId(id);
  loaded_ = shown_->Pack();
  changed_ = false;
}

std::unique_ptr<RecordItem> CPersonWindow::NewItem() {
  auto person = std::make_unique<CUser>();
  person->SetCustomer(customers_);
  return person;
}

std::optional<FieldRefusal> CPersonWindow::ValidateFields() {
  return ValidatePerson(table(), *shown_, doc().multiUser());
}

bool CPersonWindow::FieldsChanged() const { return changed_ || shown_->Pack() != loaded_; }

void CPersonWindow::ResetForAdd() {
  shown_ = std::make_unique<CUser>();
  shown_->SetCustomer(customers_);
  loaded_ = shown_->Pack();
  changed_ = false;
}

PersonStatistics CPersonWindow::Statistics() const {
  const auto* defects = static_cast<const CDefectTable*>(doc().GetTable(kDefectTag));
  return defects != nullptr ? GatherStatistics(*defects, shown_->GetId()) : PersonStatistics{};
}

}  // namespace qm
