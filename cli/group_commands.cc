// quillmark-cli groups and group: the user group list, one group's forms, and new and
// changed groups made as the group window makes them, under its checks.
#include <ostream>

#include "command.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "shell/group_window.h"

namespace qm::cli {
namespace {

CUserGroup* FindGroup(CDBDoc& doc, const std::string& name) {
  return &static_cast<CUserGroup&>(FindNamed(*doc.GetTable(kGroupTag), name, "user group"));
}

CUser* FindUser(CDBDoc& doc, const std::string& login) {
  ItemTable& people = *doc.GetTable(kUserTag);
  for (std::uint32_t p = 1; p <= people.count(); ++p) {
    auto* person = static_cast<CUser*>(people.ItemAt(p));
    if (!person->deleted && !person->IsCustomer() &&
        ((!person->GetLogin().empty() && SameLoginText(person->GetLogin(), login)) ||
         SameLoginText(person->GetName(), login))) {
      return person;
    }
  }
  throw UsageError{"There is no user \"" + login + "\"."};
}

int List(CDBDoc& doc, Context& c) {
  const ItemTable& groups = *doc.GetTable(kGroupTag);
  c.out << "Name\tUsers\tDenied\tDescription\n";
  for (std::uint32_t p = 1; p <= groups.count(); ++p) {
    const auto& group = static_cast<const CUserGroup&>(*groups.ItemAt(p));
    if (group.deleted) continue;
    c.out << group.name.str() << "\t" << group.userIds().size() << "\t"
          << group.disabledCommands().size() << "\t" << group.description.str() << "\n";
  }
  return 0;
}

int Show(CDBDoc& doc, Context& c) {
  const CUserGroup& group = *FindGroup(doc, c.args.positional()[2]);
  std::string form;
  if (c.args.Flag("html")) {
    WriteGroupHtml(group, *doc.GetTable(kUserTag), form);
  } else {
    WriteGroupText(group, *doc.GetTable(kUserTag), form);
  }
  c.out << form;
  return 0;
}

// Saves the window's group; a refusal has been told through the Ui in the window's words.
int Accept(CGroupWindow& window, Context& c) {
  if (!window.OnAcceptButton()) return 1;
  c.out << window.group().name.str() << "\n";
  return 0;
}

int Add(CDBDoc& doc, Context& c) {
  EditMarks marks;
  CGroupWindow window(doc, *doc.GetTable(kGroupTag), c.ui, marks);
  window.Open(CRecordWindow::kAddClose);
  CUserGroup& group = window.group();
  SetWhole(group.name, c.args.positional()[3], "A user group's name");
  SetWhole(group.description, c.args.Value("description").value_or(""), "--description");
  SetWhole(group.notes, c.args.Value("notes").value_or(""), "--notes");
  group.onlyAssigned = c.args.Flag("only-assigned") ? 1 : 0;
  return Accept(window, c);
}

// Opens `group` for edit, as its window does; null when someone else holds it, after saying
// so.
std::unique_ptr<CGroupWindow> EditGroup(CDBDoc& doc, CUserGroup* group, Context& c,
                                        EditMarks& marks) {
  auto window = std::make_unique<CGroupWindow>(doc, *doc.GetTable(kGroupTag), c.ui, marks);
  window->Open(CRecordWindow::kEdit, {group}, 1);
  if (window->lockFailed()) {
    c.err << "The user group " << group->name.str()
          << " is being edited by another user; nothing was changed.\n";
    return nullptr;
  }
  return window;
}

// The users named from the sixth word on.
std::vector<CUser*> NamedUsers(CDBDoc& doc, Context& c) {
  const std::vector<std::string>& words = c.args.positional();
  std::vector<CUser*> users;
  for (std::size_t i = 5; i < words.size(); ++i) users.push_back(FindUser(doc, words[i]));
  return users;
}

// The bit of a custom-value permission named as its check box reads, ignoring case.
std::optional<std::uint16_t> CustomValueFlag(const std::string& word) {
  for (std::size_t bit = 0; bit < std::size(kCustomValueLabels); ++bit) {
    if (SameLoginText(kCustomValueLabels[bit], word)) return static_cast<std::uint16_t>(1u << bit);
  }
  return std::nullopt;
}

int DenyOrAllow(CDBDoc& doc, Context& c) {
  const std::vector<std::string>& words = c.args.positional();
  std::vector<Right> rights;
  std::uint16_t flags = 0;
  for (std::size_t i = 4; i < words.size(); ++i) {
    if (const std::optional<std::uint16_t> flag = CustomValueFlag(words[i])) {
      flags = static_cast<std::uint16_t>(flags | *flag);
    } else if (const std::optional<Right> right = FindRight(words[i])) {
      rights.push_back(*right);
    } else {
      throw UsageError{"There is no right \"" + words[i] +
                       "\": give its number, 1 to 67, or its name as the group window shows "
                       "it, such as \"Delete Defects\" or \"User can enter custom types\"."};
    }
  }
  EditMarks marks;
  const auto window = EditGroup(doc, FindGroup(doc, words[2]), c, marks);
  if (window == nullptr) return 1;
  const bool deny = words[3] == "deny";
  for (const Right right : rights) window->SetDenied(right, deny);
  std::uint16_t& custom = window->group().customFlags;
  custom = static_cast<std::uint16_t>(deny ? custom & ~flags : custom | flags);
  return Accept(*window, c);
}

int AddMembers(CDBDoc& doc, Context& c) {
  const std::vector<CUser*> users = NamedUsers(doc, c);
  EditMarks marks;
  const auto window = EditGroup(doc, FindGroup(doc, c.args.positional()[2]), c, marks);
  if (window == nullptr) return 1;
  for (const CUser* user : users) (void)window->SetMember(user->GetId(), true);
  return Accept(*window, c);
}

// Every user belongs to a group, so the users leave theirs by joining the group --to names.
int RemoveMembers(CDBDoc& doc, Context& c) {
  const CUserGroup* from = FindGroup(doc, c.args.positional()[2]);
  const std::vector<CUser*> users = NamedUsers(doc, c);
  for (const CUser* user : users) {
    if (!from->HasUser(user->GetId())) {
      throw UsageError{user->GetName() + " is not in the user group " + from->name.str() + "."};
    }
  }
  CUserGroup* to = FindGroup(doc, *c.args.Value("to"));
  if (to == from) {
    throw UsageError{
        "Every user belongs to a user group: name with --to another group that is "
        "to take the users."};
  }
  EditMarks marks;
  const auto window = EditGroup(doc, to, c, marks);
  if (window == nullptr) return 1;
  for (const CUser* user : users) (void)window->SetMember(user->GetId(), true);
  return Accept(*window, c);
}

int Delete(CDBDoc& doc, Context& c) {
  CUserGroup* group = FindGroup(doc, c.args.positional()[2]);
  const std::optional<std::string> heirName = c.args.Value("heir");
  const std::uint32_t deleted = DeleteGroups(
      doc, {group}, c.ui,
      [&](const std::vector<const CUserGroup*>& candidates) -> std::optional<std::uint32_t> {
        if (!heirName) {
          c.err << kHeirText << "\nName that group with --heir NAME.\n";
          return std::nullopt;
        }
        for (const CUserGroup* candidate : candidates) {
          if (SameLoginText(candidate->name.str(), *heirName)) return candidate->GetId();
        }
        c.err << "The users cannot go to \"" << *heirName
              << "\": name another user group that stays.\n";
        return std::nullopt;
      });
  if (deleted == 0) return 1;
  c.out << "Deleted the user group " << c.args.positional()[2] << ".\n";
  return 0;
}

}  // namespace

const std::vector<Command>& GroupCommands() {
  static const std::vector<Command> kRows = {
      {"groups FILE", "", "the user groups, with their counts of users and\ndenied rights", List,
       Needs<Right::kViewUserGroups>},
      {"group FILE NAME", "[--html]", "one group's text or HTML form", Show,
       Needs<Right::kViewUserGroups>},
      {"group FILE add NAME", "[--description TEXT] [--notes TEXT] [--only-assigned]",
       "a new group, checked as the group window checks\none", Add, Needs<Right::kAddUserGroups>},
      {"group FILE NAME deny|allow RIGHT...", "",
       "takes rights from the group's members or gives\nthem back; RIGHT by number or name, "
       "or a\ncustom-value box: \"User can enter custom types\"",
       DenyOrAllow, Needs<Right::kEditUserGroups>},
      {"group FILE NAME members add LOGIN...", "",
       "moves users into the group from the groups they\nwere in", AddMembers,
       Needs<Right::kEditUserGroups>},
      {"group FILE NAME members remove LOGIN...", "--to NAME",
       "moves users out of the group into the group --to\nnames", RemoveMembers,
       Needs<Right::kEditUserGroups>},
      {"group FILE NAME delete", "[--heir NAME]",
       "deletes a group after asking; its users go to\nthe group --heir names", Delete,
       Needs<Right::kDeleteUserGroups>},
  };
  return kRows;
}

}  // namespace qm::cli
