// quillmark-cli users and user: the user and customer lists as their windows show them,
// one person's text or HTML form with the statistics, and a new person added as the person
// window adds one, under its checks.
#include <ostream>

#include "command.h"

#include "defects/defect_table.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "shell/people_window.h"
#include "shell/record_list.h"

namespace qm::cli {
namespace {

int List(CDBDoc& doc, Context& context) {
  const Args& args = context.args;
  ui::Ui& ui = context.ui;
  ItemTable& people = *doc.GetTable(kUserTag);
  const ItemTable* defects = doc.GetTable(kDefectTag);
  std::unique_ptr<CUserListView> list;
  if (args.Flag("customers")) {
    list = std::make_unique<CCustomerListView>(people, ui, defects);
  } else {
    list = std::make_unique<CUserListView>(people, ui, doc.GetTable(kGroupTag), defects);
  }
  WriteList(*list, people, context.out);
  return 0;
}

// An option's text, refused when its field would cut it: a password cut short would lock
// the person out.
std::string Fitting(const Args& args, const char* option, std::size_t capacity) {
  return Whole(args.Value(option).value_or(""), capacity, "--" + std::string(option));
}

int Add(CDBDoc& doc, Context& c) {
  const Args& args = c.args;
  EditMarks marks;
  CPersonWindow window(doc, *doc.GetTable(kUserTag), c.ui, marks, args.Flag("customer"));
  window.Open(CRecordWindow::kAddClose);
  CUser& person = window.person();
  person.SetFirstName(Fitting(args, "first", 32));
  person.SetLastName(Fitting(args, "last", 32));
  person.SetLogin(Fitting(args, "login", 32));
  person.SetPassword(Fitting(args, "user-password", 32));
  if (const auto group = args.Value("group")) {
    person.SetGroupId(FindNamed(*doc.GetTable(kGroupTag), *group, "user group").GetId());
  }
  person.SetCompany(Fitting(args, "company", 63));
  person.SetEmail(Fitting(args, "email", 63));
  // A refusal has been told through the Ui, in the window's words.
  if (!window.OnAcceptButton()) return 1;
  c.out << person.GetName() << "\n";
  return 0;
}

int Show(CDBDoc& doc, Context& c) {
  const std::string& wanted = c.args.positional()[2];
  const ItemTable& people = *doc.GetTable(kUserTag);
  for (std::uint32_t p = 1; p <= people.count(); ++p) {
    const auto& person = static_cast<const CUser&>(*people.ItemAt(p));
    if (person.deleted ||
        (!SameLoginText(person.GetName(), wanted) &&
         (person.GetLogin().empty() || !SameLoginText(person.GetLogin(), wanted)))) {
      continue;
    }
    Require(doc, c, person.IsCustomer() ? Right::kViewCustomers : Right::kViewUsers);
    const PersonStatistics stats = GatherStatistics(
        static_cast<const CDefectTable&>(*doc.GetTable(kDefectTag)), person.GetId());
    std::string form;
    if (c.args.Flag("html")) {
      WritePersonHtml(doc, person, stats, form);
    } else {
      WritePersonText(doc, person, stats, form);
    }
    c.out << form;
    return 0;
  }
  c.err << "There is no person \"" << wanted << "\".\n";
  return 1;
}

Right ListRight(const Args& args) {
  return args.Flag("customers") ? Right::kViewCustomers : Right::kViewUsers;
}

Right AddRight(const Args& args) {
  return args.Flag("customer") ? Right::kAddCustomers : Right::kAddUsers;
}

}  // namespace

const std::vector<Command>& PeopleCommands() {
  static const std::vector<Command> kRows = {
      {"users FILE", "[--customers]", "the user list, or the customer list", List, ListRight},
      {"user FILE NAME|LOGIN", "[--html]", "one person's text or HTML form, with statistics", Show},
      {"user FILE add",
       "--last NAME [--first NAME] [--login LOGIN --user-password TEXT --group NAME] "
       "[--customer [--company NAME]] [--email ADDRESS]",
       "a new person, checked as the person window\nchecks one", Add, AddRight},
  };
  return kRows;
}

}  // namespace qm::cli
