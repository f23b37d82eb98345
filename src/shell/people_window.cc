// The user and customer windows' checks, statistics, forms and list commands.
#include "shell/people_window.h"

#include <cstdio>
#include <map>

#include "defects/defect.h"
#include "defects/selection_commands.h"
#include "defects/text_forms.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "shell/group_window.h"
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

// How many defects each person has assigned now.
std::map<std::uint32_t, std::uint32_t> AssignedCounts(const CDBDoc& doc) {
  std::map<std::uint32_t, std::uint32_t> counts;
  const auto* defects = static_cast<const CDefectTable*>(doc.GetTable(kDefectTag));
  for (std::uint32_t p = 1; defects != nullptr && p <= defects->count(); ++p) {
    const CDefect& d = *defects->DefectAt(p);
    if (!d.deleted && d.copies().assignedToId != 0) ++counts[d.copies().assignedToId];
  }
  return counts;
}

std::string DefectCount(std::uint32_t n) {
  return std::to_string(n) + (n == 1 ? " defect" : " defects");
}

// The lines a question names people in, one each, the first ten of them.
std::string Lines(const std::vector<std::string>& lines) {
  constexpr std::size_t kShown = 10;
  std::string text;
  for (std::size_t n = 0; n < lines.size() && n < kShown; ++n) text += lines[n] + "\n";
  if (lines.size() > kShown) text += "And " + std::to_string(lines.size() - kShown) + " more.\n";
  return text;
}

// Whether the person is logged in to the project now, here or in another copy.
bool LoggedIn(CDBDoc& doc, const CUser& person) {
  bool loggedIn = false;
  return doc.currentUser() == &person ||
         (doc.multiUser() && doc.store() != nullptr &&
          doc.store()->IsUserLoggedIn(person.GetId(), loggedIn) == DBStatus::kOk && loggedIn);
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
                                   bool toCustomers, ui::Ui& ui) {
  std::vector<CUser*> moving;
  for (CUser* person : selection) {
    if (person->IsCustomer() != toCustomers) moving.push_back(person);
  }
  moving = LeaveOutLocked(doc, kUserTag, moving, ui,
                          "One or more users will not be transferred because they are in use by "
                          "another user.");
  if (toCustomers && !moving.empty()) {
    const std::map<std::uint32_t, std::uint32_t> assigned = AssignedCounts(doc);
    std::vector<std::string> lines;
    for (const CUser* person : moving) {
      // A login matters only where the project asks for one.
      const bool login = doc.multiUser() && !person->GetLogin().empty();
      const auto found = assigned.find(person->GetId());
      const std::uint32_t defects = found != assigned.end() ? found->second : 0;
      if (!login && defects == 0) continue;
      std::string line = person->GetName();
      if (login) line += " can log in as \"" + person->GetLogin() + "\"";
      if (login && defects != 0) line += " and";
      if (defects != 0) line += " has " + DefectCount(defects) + " assigned";
      lines.push_back(line + ".");
    }
    if (!lines.empty() &&
        ui.Ask({Lines(lines) +
                    "\nA customer keeps the login and the assigned defects.\n\nDo you want to "
                    "transfer the selected users to the customer list?",
                "", ui::Icon::kQuestion, ui::Buttons::kYesNo}) != ui::Answer::kYes) {
      return {};
    }
  }
  std::vector<CUser*> moved;
  for (CUser* person : moving) {
    person->SetCustomer(toCustomers);
    if (doc.GetTable(kUserTag)->SaveItem(*person) != DBStatus::kOk) {
      person->SetCustomer(!toCustomers);  // as its record still has it
      continue;
    }
    moved.push_back(person);
  }
  return moved;
}

std::uint32_t DeletePeople(CDBDoc& doc, const std::vector<CUser*>& selection, bool customers,
                           ui::Ui& ui) {
  std::vector<CUser*> going;
  bool self = false;
  for (CUser* person : selection) {
    // The program goes on working as the user logged in here.
    if (doc.currentUser() == person) {
      self = true;
    } else {
      going.push_back(person);
    }
  }
  if (self) ui.Tell("You cannot delete the user you are logged in as.", ui::Icon::kWarning);
  // Someone logged in elsewhere uses the record as much as a window that holds it.
  const std::size_t before = going.size();
  std::erase_if(going, [&doc](const CUser* person) {
    return LoggedIn(doc, *person) || RecordLocked(doc, kUserTag, person->GetId());
  });
  if (going.size() < before) {
    ui.Tell("One or more users will not be deleted because they are in use by another user.",
            ui::Icon::kWarning);
  }
  if (going.empty()) return 0;

  ItemTable& people = *doc.GetTable(kUserTag);
  if (!customers) {
    std::size_t users = 0;
    for (std::uint32_t p = 1; p <= people.count(); ++p) {
      const auto& person = static_cast<const CUser&>(*people.ItemAt(p));
      if (!person.deleted && !person.IsCustomer()) ++users;
    }
    if (going.size() >= users) {
      ui.Tell(
          "If you remove all users you will not be able to access the project file. "
          "Deselect one user.",
          ui::Icon::kWarning);
      return 0;
    }
  }

  const std::map<std::uint32_t, std::uint32_t> assigned = AssignedCounts(doc);
  std::vector<std::string> lines;
  for (const CUser* person : going) {
    if (const auto found = assigned.find(person->GetId()); found != assigned.end()) {
      lines.push_back(person->GetName() + " has " + DefectCount(found->second) +
                      " assigned; their \"Assigned To\" will read \"Unknown\".");
    }
  }
  const std::string question =
      going.size() == 1
          ? "Are you sure that you want to delete the selected name? There is no undo available."
          : "Are you sure that you want to delete the selected items(s)? There is no undo "
            "available.";
  if (ui.Ask({(lines.empty() ? "" : Lines(lines) + "\n") + question, "", ui::Icon::kQuestion,
              ui::Buttons::kOkCancel}) != ui::Answer::kOk) {
    return 0;
  }
  return DeleteForGood(doc, people, {going.begin(), going.end()}, [&doc](RecordItem& item) {
    auto& person = static_cast<CUser&>(item);
    if (!person.IsCustomer()) (void)PlaceInGroup(doc, person, 0);
  });
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

bool CPersonWindow::loginEditable() const {
  return editable() && (mode() != kEdit || doc().HasRight(Right::kEditUserLogin));
}

bool CPersonWindow::groupEditable() const {
  return editable() && (mode() != kEdit || doc().HasRight(Right::kEditUserGroups));
}

void CPersonWindow::KeepWhatMayNotChange() {
  const auto* stored = dynamic_cast<const CUser*>(currentItem());
  if (stored == nullptr) return;
  if (!loginEditable()) {
    shown_->SetLogin(stored->GetLogin());
    shown_->SetPassword(stored->GetPassword());
  }
  if (!groupEditable()) shown_->SetGroupId(stored->GetGroupId());
}

void CPersonWindow::StoreFields(RecordItem& item) {
  KeepWhatMayNotChange();
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
  KeepWhatMayNotChange();
  return ValidatePerson(table(), *shown_, doc().multiUser());
}

void CPersonWindow::AfterAdd(RecordItem& item) {
  auto& person = static_cast<CUser&>(item);
  if (!person.IsCustomer()) (void)PlaceInGroup(doc(), person, person.GetGroupId());
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
