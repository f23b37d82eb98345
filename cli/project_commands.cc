// The project commands of quillmark-cli: new, info and values.
#include "project_commands.h"

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <ostream>
#include <set>

#include "args.h"
#include "cli_host.h"
#include "defect_commands.h"
#include "defects/project_defects.h"
#include "people_commands.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "session/value_lists.h"
#include "session/value_setup.h"
#include "shell/project_item_kinds.h"
#include "store/store_error.h"

namespace qm::cli {

namespace {

// The command could not be done as asked; what was shown says why.
struct Refused {};

bool SameText(std::string_view a, std::string_view b) { return SameLoginText(a, b); }

// The list of a value list's menu name ("Type", "Severity") or table tag ("type", "sevr").
// The Status list has no set-up command: it can be shown but not changed.
Tag ListTag(const std::string& word) {
  for (const ValueListSettings& list : kValueLists) {
    const std::string_view title = list.titleWord;
    const std::string_view menu =
        title.starts_with("Defect ") ? title.substr(std::string_view("Defect ").size()) : title;
    if (SameText(word, menu) || SameText(word, title) || SameText(word, TagText(list.tag))) {
      return list.tag;
    }
  }
  if (SameText(word, "Status") || SameText(word, "stat")) return MakeTag("stat");
  throw UsageError{"There is no value list \"" + word +
                   "\". The lists are Type, Resolution, Priority, Product, Reproducible, "
                   "Severity, Component, Disposition and Status."};
}

// The row of the list box that shows `name`, from 1, in any case.
std::uint32_t RowOf(const std::vector<std::string>& names, const std::string& name,
                    const std::string& listWord, std::ostream& err) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (SameText(names[i], name)) return static_cast<std::uint32_t>(i + 1);
  }
  err << "The " << listWord << " list has no name \"" << name << "\".\n";
  throw Refused{};
}

void PrintNames(const std::vector<std::string>& names, std::ostream& out) {
  for (const std::string& name : names) out << name << "\n";
}

int Values(CDBDoc& doc, const Args& args, ui::Ui& ui, std::ostream& out, std::ostream& err) {
  const auto& pos = args.positional();
  if (pos.size() < 3) {
    throw UsageError{
        "usage: quillmark-cli values FILE LIST [add NAME | rename OLD NEW | delete "
        "NAME [--replace-with NAME] | move NAME up|down]"};
  }
  const Tag tag = ListTag(pos[2]);
  auto& table = static_cast<CValueTable&>(*doc.GetTable(tag));
  const ValueListSettings* list = FindValueList(tag);
  if (pos.size() == 3) {
    std::vector<std::string> names;
    for (std::uint32_t p = 1; p <= table.count(); ++p) names.push_back(table.ValueAt(p)->name);
    PrintNames(names, out);
    return 0;
  }
  if (list == nullptr) {
    err << "The Status names are fixed.\n";
    return 1;
  }
  auto* defects = dynamic_cast<CDefectTable*>(doc.GetTable(kDefectTag));
  std::optional<DefectValueAccess> access;
  if (defects != nullptr) access.emplace(*defects);
  ValueSetup setup(table, *list, access ? &*access : nullptr, ui, doc.currentUserId());
  if (!setup.Open()) return 1;
  const std::string& verb = pos[3];
  const std::string listWord(list->titleWord);
  const std::vector<std::string> before = setup.Names();
  if (verb == "add") {
    args.ExpectPositional(5, "values FILE LIST add NAME");
    if (!setup.Add(pos[4])) throw Refused{};
  } else if (verb == "rename") {
    args.ExpectPositional(6, "values FILE LIST rename OLD NEW");
    setup.Select(RowOf(before, pos[4], listWord, err));
    if (!setup.Edit(pos[5])) throw Refused{};
  } else if (verb == "delete") {
    args.ExpectPositional(5, "values FILE LIST delete NAME [--replace-with NAME]");
    setup.Select(RowOf(before, pos[4], listWord, err));
    if (setup.Delete() == ValueSetup::DeleteStep::kChooseReplacement) {
      const ReplacementQuestion& question = setup.replacementQuestion();
      err << question.text << "\n";
      const auto replacement = args.Value("replace-with");
      if (!replacement) {
        err << question.label << " give one of the other names with --replace-with.\n";
        setup.ChooseReplacement(std::nullopt);
        throw Refused{};
      }
      setup.ChooseReplacement(RowOf(question.names, *replacement, listWord, err));
    }
  } else if (verb == "move") {
    args.ExpectPositional(6, "values FILE LIST move NAME up|down");
    setup.Select(RowOf(before, pos[4], listWord, err));
    if (pos[5] == "up") {
      setup.MoveUp();
    } else if (pos[5] == "down") {
      setup.MoveDown();
    } else {
      throw UsageError{"A name moves up or down, not \"" + pos[5] + "\"."};
    }
  } else {
    throw UsageError{"Unknown values command \"" + verb +
                     "\"; the commands are add, rename, delete and move."};
  }
  const std::vector<std::string> after = setup.Names();
  PrintNames(after, out);
  // A question answered Cancel, or a move at the end of the list, changes nothing.
  return after != before ? 0 : 1;
}

void Info(CDBDoc& doc, std::ostream& out) {
  CProjectStore& store = *doc.store();
  const ProjectInfo& info = doc.info();
  out << "Project: " << info.projectName << "\n"
      << "Description: " << info.description << "\n"
      << "Data version: " << info.dataVersion << "\n"
      << "Access: " << (doc.multiUser() ? "multi-user" : "single-user") << "\n"
      << "Tables:\n";
  for (const Tag tag : store.TableTags()) {
    std::uint32_t count = 0;
    if (const DBStatus s = store.CountRecords(tag, count); s != DBStatus::kOk) Fail(s);
    out << "  " << TagText(tag) << "  " << count << "\n";
  }
  if (doc.multiUser()) {
    out << "Logged in:\n";
    for (const std::string& name : doc.ActiveUserNames()) out << "  " << name << "\n";
  }
}

int NewProject(const Args& args, ui::Ui& ui, CAppPreferences& preferences, std::ostream& out,
               std::ostream& err) {
  args.ExpectPositional(2, "new FILE [--single-user]");
  const std::string& path = args.positional()[1];
  if (std::ifstream(path).good()) {
    err << ExistingFileText(path) << "\n";
    return 1;
  }
  const bool multiUser = !args.Flag("single-user");
  ProjectItemKinds kinds;
  CliHost host(preferences, false);
  CDBDoc doc(ui, kinds, host);
  try {
    doc.NewProject(path, multiUser);
  } catch (const StoreError& e) {
    err << OpeningText(e.status, path) << "\n";
    return 2;
  }
  doc.CloseProject();
  out << "Created " << (multiUser ? "multi-user" : "single-user") << " project file " << path
      << "\n";
  if (multiUser) {
    out << "\nNew Project File Instructions\n"
           "You are currently logged in as user 'admin'.\n"
           "This user has no password. For security reasons, you should set one.\n"
           "The next time the project file is opened, a user name and password are asked "
           "for. Log in as admin with an empty password:\n"
        << "  quillmark-cli --user admin --password '' info " << path << "\n";
  } else {
    out << "Anyone who can open the file can work with it:\n"
        << "  quillmark-cli info " << path << "\n";
  }
  return 0;
}

}  // namespace

const char* ProjectUsage() {
  return "  new FILE [--single-user]           make a project with its tables, lists and\n"
         "                                     administrator\n"
         "  info FILE                          name, version, tables and who is logged in\n"
         "  values FILE LIST                   the names of a value list (Type, Resolution,\n"
         "                                     Priority, Product, Reproducible, Severity,\n"
         "                                     Component, Disposition, Status)\n"
         "  values FILE LIST add NAME\n"
         "  values FILE LIST rename OLD NEW\n"
         "  values FILE LIST delete NAME [--replace-with NAME]\n"
         "  values FILE LIST move NAME up|down\n"
         "  defects FILE [--sort FIELD[,FIELD2]] [--desc] [--json]\n"
         "                                     the defect list; FIELD by number or label\n"
         "  defects FILE act EVENT --numbers N[,N...] [the options of a defect's EVENT]\n"
         "      [--dry-run]                    one event for the defects that may take it, as\n"
         "                                     the list's command on that selection adds it;\n"
         "                                     prints each change, which --dry-run only shows\n"
         "  defects FILE act duplicate|delete --numbers N[,N...] [--dry-run]\n"
         "                                     copies, or deletes for good after asking;\n"
         "                                     --dry-run names the defects and keeps them\n"
         "  defect FILE NUMBER [--text|--html]  one defect's text or HTML form\n"
         "  defect FILE add --summary TEXT [--type NAME] [--priority NAME] [--severity NAME]\n"
         "      [--product NAME] [--component NAME] [--description TEXT] [--found-by LOGIN]\n"
         "      [--version-found TEXT] [--dry-run]\n"
         "                                     a new defect; prints its number, or with\n"
         "                                     --dry-run its text form and adds nothing\n"
         "  defect FILE NUMBER EVENT [--to LOGIN|--by LOGIN] [--date DATE] [--notes TEXT]\n"
         "      [--hours H] [--version TEXT] [--resolution NAME] [--completion DATE]\n"
         "      [--pass|--fail] [--docs] [--test-plan]\n"
         "                                     adds an event as the defect's window does:\n"
         "                                     assign, estimate, fix, verify, close, reopen,\n"
         "                                     comment or release, when the status and your\n"
         "                                     rights offer it and nobody else is editing the\n"
         "                                     defect; prints the change text; --dry-run\n"
         "                                     prints it and saves nothing\n"
         "  users FILE [--customers]           the user list, or the customer list\n"
         "  user FILE NAME|LOGIN [--html]      one person's text or HTML form, with statistics\n"
         "  user FILE add --last NAME [--first NAME] [--login LOGIN --user-password TEXT\n"
         "      --group NAME] [--customer [--company NAME]] [--email ADDRESS]\n"
         "                                     a new person, checked as the person window\n"
         "                                     checks one\n"
         "Options of the project commands:\n"
         "  --user NAME --password TEXT        log in without the dialog\n"
         "  --remember                         keep this login for the next opening of the\n"
         "                                     file (Automatically log in last user)\n"
         "  --yes                              answer every question Yes or OK\n";
}

bool IsProjectCommand(const std::string& word) {
  return word == "new" || word == "info" || word == "values" || word == "defects" ||
         word == "defect" || word == "users" || word == "user";
}

int RunProject(const std::vector<std::string>& words, ui::Ui& ui, CAppPreferences& preferences,
               std::ostream& out, std::ostream& err) {
  try {
    std::set<std::string> valued{"user", "password", "replace-with"};
    valued.insert(std::begin(kDefectValueOptions), std::end(kDefectValueOptions));
    valued.insert(std::begin(kPeopleValueOptions), std::end(kPeopleValueOptions));
    const Args args(words, valued);
    const auto& pos = args.positional();
    const std::string& command = pos.at(0);  // the options are anywhere around it
    if (command == "new") return NewProject(args, ui, preferences, out, err);
    if (pos.size() < 2) throw UsageError{"usage: quillmark-cli " + command + " FILE ..."};
    if (command == "info") args.ExpectPositional(2, "info FILE");
    const std::string& path = pos[1];

    // The login of the command line, else the remembered one when it is for this file.
    std::optional<ui::LoginEntry> login;
    if (const auto user = args.Value("user")) {
      login = ui::LoginEntry{*user, args.Value("password").value_or("")};
    } else if (std::string last; preferences.autoLogin != 0 &&
                                 preferences.GetLastOpenFile(last) == 0 && last == path) {
      login.emplace();
      preferences.GetLastUser(login->name, login->password);
    }
    ProjectItemKinds kinds;
    CliHost host(preferences, args.Flag("remember"));
    CDBDoc doc(ui, kinds, host);
    if (doc.OpenProject(path, login) != 1) {
      err << "The project " << path << " was not opened.\n";
      if (!login && !::isatty(STDIN_FILENO)) {
        err << "Without a terminal, log in with --user NAME --password TEXT.\n";
      }
      return 2;
    }
    int result = 0;
    try {
      if (command == "info") {
        Info(doc, out);
      } else if (command == "defects" || command == "defect") {
        result = RunDefectCommand(doc, args, ui, out, err);
      } else if (command == "users" || command == "user") {
        result = RunPeopleCommand(doc, args, ui, out, err);
      } else {
        result = Values(doc, args, ui, out, err);
      }
    } catch (const Refused&) {
      result = 1;
    } catch (const StoreError& e) {
      err << "Error " << Code(e.status) << ": " << StatusSentence(e.status) << "\n";
      result = 1;
    }
    doc.CloseProject();
    return result;
  } catch (const UsageError& e) {
    err << e.message << "\n";
    return 64;
  }
}

}  // namespace qm::cli
