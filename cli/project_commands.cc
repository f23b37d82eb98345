// The project commands of quillmark-cli: new, info and values.
#include <fstream>
#include <ostream>

#include "cli_host.h"
#include "command.h"
#include "defects/project_defects.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "session/value_lists.h"
#include "session/value_setup.h"
#include "shell/project_item_kinds.h"
#include "store/store_error.h"

namespace qm::cli {

namespace {

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

// A typed name as the name dialog takes it, without the blanks around it.
std::string Trimmed(const std::string& typed) {
  const std::size_t first = typed.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return typed.substr(first, typed.find_last_not_of(" \t") + 1 - first);
}

int Values(CDBDoc& doc, Context& c) {
  const auto& pos = c.args.positional();
  const Tag tag = ListTag(pos[2]);
  auto& table = static_cast<CValueTable&>(*doc.GetTable(tag));
  const ValueListSettings* list = FindValueList(tag);
  if (pos.size() == 3) {
    std::vector<std::string> names;
    for (std::uint32_t p = 1; p <= table.count(); ++p) names.push_back(table.ValueAt(p)->name);
    PrintNames(names, c.out);
    return 0;
  }
  if (list == nullptr) {
    c.err << "The Status names are fixed.\n";
    return 1;
  }
  auto* defects = dynamic_cast<CDefectTable*>(doc.GetTable(kDefectTag));
  std::optional<DefectValueAccess> access;
  if (defects != nullptr) access.emplace(*defects);
  ValueSetup setup(table, *list, access ? &*access : nullptr, c.ui, doc.currentUserId());
  if (!setup.Open()) return 1;
  const std::string& verb = pos[3];
  const std::string listWord(list->titleWord);
  const std::vector<std::string> before = setup.Names();
  // The dialogs refuse a name in use with their own message; the refusals below are those
  // the window makes without one, by disabling a button or leaving the list as it was.
  const auto refuse = [&c](const std::string& message) {
    c.err << message << "\n";
    throw Refused{};
  };
  if (verb == "add") {
    if (!setup.Add(pos[4]) && Trimmed(pos[4]).empty()) {
      refuse("A name cannot be empty; nothing was added to the " + listWord + " list.");
    }
  } else if (verb == "rename") {
    const std::uint32_t row = RowOf(before, pos[4], listWord, c.err);
    setup.Select(row);
    if (!setup.Edit(pos[5])) {
      if (Trimmed(pos[5]).empty()) {
        refuse("A name cannot be empty; \"" + before[row - 1] + "\" was kept.");
      }
      if (Trimmed(pos[5]) == before[row - 1]) {
        refuse("The name is \"" + before[row - 1] + "\" already; nothing was changed.");
      }
    }
  } else if (verb == "delete") {
    setup.Select(RowOf(before, pos[4], listWord, c.err));
    if (setup.Delete() == ValueSetup::DeleteStep::kChooseReplacement) {
      const ReplacementQuestion& question = setup.replacementQuestion();
      c.err << question.text << "\n";
      const auto replacement = c.args.Value("replace-with");
      if (!replacement) {
        c.err << question.label << " give one of the other names with --replace-with.\n";
        setup.ChooseReplacement(std::nullopt);
        throw Refused{};
      }
      setup.ChooseReplacement(RowOf(question.names, *replacement, listWord, c.err));
    }
  } else {
    const std::uint32_t row = RowOf(before, pos[4], listWord, c.err);
    setup.Select(row);
    const bool up = pos[5] == "up";
    if (up ? row == 1 : row == before.size()) {
      refuse("\"" + before[row - 1] + "\" is the " + (up ? "first" : "last") + " name of the " +
             listWord + " list already.");
    }
    up ? setup.MoveUp() : setup.MoveDown();
  }
  const std::vector<std::string> after = setup.Names();
  PrintNames(after, c.out);
  // A question answered Cancel changes nothing; the question said what was at stake.
  return after != before ? 0 : 1;
}

int Info(CDBDoc& doc, Context& c) {
  std::ostream& out = c.out;
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
  return 0;
}

int NewProject(Context& c) {
  const Args& args = c.args;
  std::ostream& out = c.out;
  std::ostream& err = c.err;
  const std::string& path = args.positional()[1];
  if (std::ifstream(path).good()) {
    err << ExistingFileText(path) << "\n";
    return 1;
  }
  const bool multiUser = !args.Flag("single-user");
  ProjectItemKinds kinds;
  CliHost host(c.preferences, false);
  CDBDoc doc(c.ui, kinds, host);
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

const std::vector<Command>& ProjectCommands() {
  static const std::vector<Command> kRows = {
      {"new FILE", "[--single-user]", "make a project with its tables, lists and\nadministrator",
       NewProject},
      {"info FILE", "", "name, version, tables and who is logged in", Info},
      {"values FILE LIST", "",
       "the names of a value list (Type, Resolution,\nPriority, Product, Reproducible, Severity,\n"
       "Component, Disposition, Status)",
       Values},
      {"values FILE LIST add NAME", "", "", Values, Needs<Right::kSetUpProjectFields>},
      {"values FILE LIST rename OLD NEW", "", "", Values, Needs<Right::kSetUpProjectFields>},
      {"values FILE LIST delete NAME", "[--replace-with NAME]", "", Values,
       Needs<Right::kSetUpProjectFields>},
      {"values FILE LIST move NAME up|down", "", "", Values, Needs<Right::kSetUpProjectFields>},
  };
  return kRows;
}

}  // namespace qm::cli
