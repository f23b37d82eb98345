// quillmark-cli defects and defect: the defect list and the commands run on a selection of
// it, one defect's forms and events, and new defects.
#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>
#include <variant>

#include "command.h"
#include "defects/defect_actions.h"
#include "defects/defect_fields.h"
#include "defects/defect_table.h"
#include "defects/event_dialogs.h"
#include "defects/project_defects.h"
#include "defects/selection_commands.h"
#include "json.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "session/value_item.h"
#include "shell/custom_values.h"
#include "shell/defect_window.h"
#include "shell/group_window.h"
#include "store/store_error.h"

namespace qm::cli {

namespace {

// The columns of a new defect list window.
constexpr std::uint16_t kListColumns[] = {1, 2, 4, 5, 6};

CDefectTable& Defects(CDBDoc& doc) { return static_cast<CDefectTable&>(*doc.GetTable(kDefectTag)); }

// Whether the user logged in sees the defect: not deleted, and assigned to the user when the
// user's group shows its members only their own.
bool Visible(const CDBDoc& doc, const CDefect& d) {
  const std::uint32_t only = OnlyAssignedUser(doc);
  return !d.deleted && (only == 0 || d.copies().assignedToId == only);
}

// A field by its number or its short label ("summary", "No.").
std::uint16_t FieldArgument(const std::string& word) {
  for (const DefectField& f : DefectFields()) {
    if (std::to_string(f.number) == word || SameLoginText(f.label, word) ||
        (!f.tag.empty() && SameLoginText(f.tag, word))) {
      return f.number;
    }
  }
  throw UsageError{"There is no defect field \"" + word + "\"."};
}

int List(CDBDoc& doc, Context& c) {
  const Args& args = c.args;
  std::ostream& out = c.out;
  CDefectTable& table = Defects(doc);
  SortOrder order{1, args.Flag("desc") ? std::int16_t{2} : std::int16_t{1}};
  std::int16_t secondary = kNoSortField;
  if (const auto sort = args.Value("sort")) {
    const auto comma = sort->find(',');
    order.field = static_cast<std::int16_t>(FieldArgument(sort->substr(0, comma)));
    if (comma != std::string::npos) {
      secondary = static_cast<std::int16_t>(FieldArgument(sort->substr(comma + 1)));
    }
  }
  table.SetSecondaryField(secondary);
  table.SetSortOrder(order);
  table.Sort();
  if (args.Flag("json")) {
    Json j;
    j.Open('[');
    for (std::uint32_t p = 1; p <= table.count(); ++p) {
      const CDefect& d = *table.DefectAt(p);
      if (!Visible(doc, d)) continue;
      j.Open('{');
      for (const DefectField& f : DefectFields()) {
        j.Key(std::to_string(f.number)).String(d.FieldText(f.number));
      }
      j.Close('}');
    }
    j.Close(']');
    out << j.text() << "\n";
    return 0;
  }
  for (const std::uint16_t field : kListColumns) {
    out << (field == kListColumns[0] ? "" : "\t") << DefectFieldLabel(field);
  }
  out << "\n";
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    const CDefect& d = *table.DefectAt(p);
    if (!Visible(doc, d)) continue;
    for (const std::uint16_t field : kListColumns) {
      out << (field == kListColumns[0] ? "" : "\t") << d.FieldText(field);
    }
    out << "\n";
  }
  return 0;
}

CDefect* FindDefect(CDBDoc& doc, const std::string& word, std::ostream& err) {
  std::uint32_t number = 0;
  const char* end = word.data() + word.size();
  if (const auto [ptr, ec] = std::from_chars(word.data(), end, number);
      word.empty() || ec != std::errc() || ptr != end) {
    throw UsageError{"A defect is named by its number, not \"" + word + "\"."};
  }
  const CDefectTable& table = Defects(doc);
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    CDefect* d = table.DefectAt(p);
    if (Visible(doc, *d) && d->number == number) return d;
  }
  err << "There is no defect number " << number << ".\n";
  return nullptr;
}

// The id of the name in a value list, in any case; 0 for none given.
std::uint32_t ValueArgument(CDBDoc& doc, const Args& args, const char* option, Tag list,
                            bool firstByDefault) {
  const ItemTable& table = *doc.GetTable(list);
  const auto name = args.Value(option);
  if (!name) return firstByDefault && table.count() > 0 ? table.ItemAt(1)->GetId() : 0;
  // A name the list lacks joins it when the user's group allows new names of the list.
  if (const auto id = ValueForTypedName(doc, list, *name)) return *id;
  throw UsageError{"The list of --" + std::string(option) + " has no name \"" + *name + "\"" +
                   (TakesTypedNames(list) ? ", and your user group does not let you add one" : "") +
                   "."};
}

std::uint32_t UserArgument(CDBDoc& doc, const Args& args, const char* option) {
  const auto login = args.Value(option);
  if (!login) return doc.currentUserId();
  const ItemTable& users = *doc.GetTable(kUserTag);
  for (std::uint32_t p = 1; p <= users.count(); ++p) {
    const auto* user = dynamic_cast<const CUser*>(users.ItemAt(p));
    if (user != nullptr && !user->deleted && SameLoginText(user->GetLogin(), *login)) {
      return user->GetId();
    }
  }
  throw UsageError{"There is no user with the login \"" + *login + "\"."};
}

// A new defect as the defect window in its add mode makes it: entered by the user logged
// in, reported by the --found-by user, numbered when the project numbers on entry. Prints
// its number, or with --dry-run its text form, and then adds nothing.
int Add(CDBDoc& doc, Context& c) {
  const Args& args = c.args;
  std::ostream& out = c.out;
  const std::string summary = *args.Value("summary");
  if (summary.empty()) throw UsageError{"A new defect needs --summary TEXT."};
  EditMarks marks;
  CDefectWindow window(doc, Defects(doc), c.ui, marks,
                       [](CDefectEvent&, EventDialogMode) { return std::nullopt; });
  window.Open(CRecordWindow::kAddClose);
  CDefect& defect = window.defect();
  defect.summary = std::string(CutToCapacity(summary, kStringCapacity));
  defect.typeId = ValueArgument(doc, args, "type", MakeTag("type"), true);
  defect.priorityId = ValueArgument(doc, args, "priority", MakeTag("prio"), true);
  defect.severityId = ValueArgument(doc, args, "severity", MakeTag("sevr"), true);
  defect.productId = ValueArgument(doc, args, "product", MakeTag("prod"), true);
  defect.componentId = ValueArgument(doc, args, "component", MakeTag("comp"), false);
  window.SetFinder(UserArgument(doc, args, "found-by"));
  CReportedBy& row = *defect.ReportedByAt(1);
  row.versionFound = std::string(CutToCapacity(args.Value("version-found").value_or(""), 32));
  row.description = args.Value("description").value_or("");
  defect.RefreshFromFirstReport();
  if (args.Flag("dry-run")) {
    std::string form;
    defect.WriteText(form);
    out << form;
    return 0;
  }
  if (!window.OnAcceptButton() || window.added() == nullptr) return 1;
  const std::uint32_t number = window.added()->number;
  out << (number != 0 ? std::to_string(number) : "-") << "\n";
  return 0;
}

// The event kinds by the words of the command line, with the options of their dialogs.
struct EventWordRow {
  const char* word;
  EventKind kind;
  const char* options;
};
constexpr EventWordRow kEventWords[] = {
    {"assign", EventKind::kAssign, "[--to LOGIN] [--date DATE] [--notes TEXT]"},
    {"estimate", EventKind::kEstimate,
     "[--by LOGIN] [--date DATE] [--notes TEXT] [--hours H] [--completion DATE] [--version TEXT]"},
    {"fix", EventKind::kFix,
     "[--by LOGIN] [--date DATE] [--notes TEXT] [--hours H] [--version TEXT] "
     "[--resolution NAME] [--docs] [--test-plan]"},
    {"verify", EventKind::kVerify, "[--by LOGIN] [--date DATE] [--notes TEXT] [--pass|--fail]"},
    {"close", EventKind::kClose, "[--by LOGIN] [--date DATE] [--notes TEXT] [--resolution NAME]"},
    {"reopen", EventKind::kReOpen, "[--by LOGIN] [--date DATE] [--notes TEXT]"},
    {"comment", EventKind::kComment, "[--by LOGIN] [--date DATE] [--notes TEXT]"},
    {"release", EventKind::kReleaseNotes,
     "[--by LOGIN] [--date DATE] [--notes TEXT] [--version TEXT]"},
};

std::optional<EventKind> EventWord(const std::string& word) {
  for (const EventWordRow& row : kEventWords) {
    if (word == row.word) return row.kind;
  }
  return std::nullopt;
}

// Fills the dialog of `event` from the options and closes it with OK; the message of its
// refusal, or nothing when the event took the fields.
std::optional<std::string_view> FillEventDialog(CDBDoc& doc, CDefectEvent& event,
                                                const Args& args) {
  EventDialog dialog(event, EventDialogMode::kEdit, doc.currentUserId(),
                     doc.HasRight(Right::kAssignDefect));
  const char* person = event.kind() == EventKind::kAssign ? "to" : "by";
  if (args.Value(person)) dialog.userId = UserArgument(doc, args, person);
  if (const auto date = args.Value("date")) dialog.dateText = *date;
  if (const auto notes = args.Value("notes")) dialog.notes = *notes;
  if (const auto version = args.Value("version")) dialog.versionText = *version;
  if (const auto hours = args.Value("hours")) dialog.hoursText = *hours;
  if (const auto completion = args.Value("completion")) dialog.estimatedDateText = *completion;
  if (args.Value("resolution")) {
    dialog.resolutionId = ValueArgument(doc, args, "resolution", MakeTag("reso"), false);
  }
  dialog.affectsDocs = args.Flag("docs");
  dialog.affectsTestPlan = args.Flag("test-plan");
  if (args.Flag("pass") && args.Flag("fail")) throw UsageError{"Either --pass or --fail."};
  dialog.passed = !args.Flag("fail");
  const auto closed = dialog.Accept(EventDialogResult::kOk);
  if (const auto* refusal = std::get_if<EventDialogRefusal>(&closed)) return refusal->message;
  return std::nullopt;
}

// The command of the defect list that adds events of `kind`.
DefectCommand CommandOf(EventKind kind) {
  for (const DefectCommand c : kDefectCommands) {
    if (CommandInfo(c).kind == kind) return c;
  }
  throw UsageError{"No command of the defect list adds that event."};
}

// The right of the command that the fourth word names: an event's, or duplicate or delete.
Right ActRight(const Args& args) {
  const std::string& word = args.positional()[3];
  if (const auto kind = EventWord(word)) return CommandInfo(CommandOf(*kind)).right;
  return word == "duplicate" ? Right::kDuplicateDefects : Right::kDeleteDefects;
}

// "Re-Open" of "Re-&Open...".
std::string CommandName(DefectCommand command) {
  std::string name(CommandInfo(command).menuText);
  std::erase(name, '&');
  if (name.ends_with("...")) name.resize(name.size() - 3);
  return name;
}

// A dialog filled from the options and closed with OK; a refusal is noted in `refusal` and
// closes it as Cancel would.
CDefectWindow::RunEventDialog FilledDialog(CDBDoc& doc, const Args& args,
                                           std::optional<std::string_view>& refusal) {
  return [&doc, &args, &refusal](CDefectEvent& event,
                                 EventDialogMode) -> std::optional<EventDialogResult> {
    refusal = FillEventDialog(doc, event, args);
    if (refusal) return std::nullopt;
    return EventDialogResult::kOk;
  };
}

// The change text with its CR line ends made the terminal's.
std::string Printable(std::string text) {
  std::replace(text.begin(), text.end(), '\r', '\n');
  return text;
}

// Adds an event as the defect's window does, in edit mode: under the record lock, with the
// command offered only by the status and the user's right, the options filling the
// dialog. Prints the change text saved, or with --dry-run the text saving would write.
int AddEvent(CDBDoc& doc, Context& c) {
  const Args& args = c.args;
  std::ostream& out = c.out;
  std::ostream& err = c.err;
  CDefect* found = FindDefect(doc, args.positional()[2], err);
  if (found == nullptr) return 1;
  CDefect& defect = *found;
  const EventKind kind = *EventWord(args.positional()[3]);
  ui::Ui& ui = c.ui;
  EditMarks marks;
  std::optional<std::string_view> refusal;
  CDefectWindow window(doc, Defects(doc), ui, marks, FilledDialog(doc, args, refusal));
  window.Open(CRecordWindow::kEdit, {&defect}, 1);
  const DefectCommand command = CommandOf(kind);
  const std::string name = CommandName(command);
  const std::string number = defect.FieldText(1);
  if (window.lockFailed()) {
    std::string holder;
    window.showLockHolder = [&holder](const std::string& who) { holder = who; };
    (void)window.OnLockedBy();
    err << "Defect " << number << " is being edited by " << (holder.empty() ? "someone" : holder)
        << "; nothing was changed.\n";
    return 1;
  }
  if (!window.CommandEnabled(command)) {
    err << "\"" << name << "\" is not offered for defect " << number << ", which is "
        << defect.GetStatusText() << ".\n";
    return 1;
  }
  if (!window.RunCommand(command)) {
    if (refusal) err << *refusal << "\n";
    return 1;
  }
  if (args.Flag("dry-run")) {
    out << Printable(window.PendingChangeText());
    return 0;
  }
  (void)window.OnAcceptButton();
  out << "Defect " << number << ": " << defect.GetStatusText() << "\n"
      << Printable(window.changeText());
  return 0;
}

// A command of the defect list on the defects of --numbers, as a person selecting them
// would run it: the messages go to the Ui, the one dialog is filled from the options, and
// closes with OK. Prints each defect changed with its status, and an assignment's change
// text, which is what the notification of that defect carries.
int Act(CDBDoc& doc, Context& c) {
  const Args& args = c.args;
  std::ostream& out = c.out;
  std::ostream& err = c.err;
  ui::Ui& ui = c.ui;
  const std::string& word = args.positional()[3];
  const auto kind = EventWord(word);
  const std::string numbers = *args.Value("numbers");
  std::vector<CDefect*> selection;
  for (std::size_t from = 0; from <= numbers.size();) {
    const std::size_t comma = std::min(numbers.find(',', from), numbers.size());
    CDefect* defect = FindDefect(doc, numbers.substr(from, comma - from), err);
    if (defect == nullptr) return 1;
    selection.push_back(defect);
    from = comma + 1;
  }
  if (args.Flag("dry-run") && !kind) {
    const bool duplicate = word == "duplicate";
    for (const CDefect* defect : LeaveOutLocked(
             doc, kDefectTag, selection, ui, duplicate ? kNotDuplicatedInUse : kNotDeletedInUse)) {
      out << "Defect " << defect->FieldText(1) << " would be "
          << (duplicate ? "duplicated" : "deleted") << ".\n";
    }
    return 0;
  }
  if (word == "duplicate") {
    for (const CDefect* copy : DuplicateDefects(doc, Defects(doc), selection, ui)) {
      out << "Defect " << copy->FieldText(1) << ": " << copy->summary << "\n";
    }
    return 0;
  }
  if (word == "delete") {
    const std::uint32_t deleted = DeleteDefects(doc, Defects(doc), selection, ui);
    out << "Deleted " << deleted << " of " << selection.size() << " defects.\n";
    return deleted > 0 ? 0 : 1;
  }
  const DefectCommand command = CommandOf(*kind);
  std::optional<std::string_view> refusal;
  const CDefectWindow::RunEventDialog dialog = FilledDialog(doc, args, refusal);
  SelectionAction action(
      doc, Defects(doc), std::move(selection), ui,
      [&dialog](CDefectEvent& event) { return dialog(event, EventDialogMode::kEdit); });
  action.SetPreview(args.Flag("dry-run"));
  // OK asks for no next command.
  (void)action.Run(command);
  if (refusal) err << *refusal << "\n";
  for (const SelectionAction::Changed& changed : action.changed()) {
    out << "Defect " << changed.defect->FieldText(1) << ": " << changed.defect->GetStatusText()
        << "\n";
    if (!changed.changeText.empty()) out << Printable(changed.changeText) << "\n";
  }
  // Nothing changed: the dialog refused, or the messages said why each defect was left out.
  return refusal || action.changed().empty() ? 1 : 0;
}

int Show(CDBDoc& doc, Context& c) {
  const CDefect* defect = FindDefect(doc, c.args.positional()[2], c.err);
  if (defect == nullptr) return 1;
  std::string form;
  if (c.args.Flag("html")) {
    defect->WriteHtml(form);
  } else {
    defect->WriteText(form);
  }
  c.out << form;
  return 0;
}

}  // namespace

const std::vector<Command>& DefectCommands() {
  static const std::vector<Command> kRows = [] {
    std::vector<Command> rows{{"defects FILE", "[--sort FIELD[,FIELD2]] [--desc] [--json]",
                               "the defect list; FIELD by number or label", List,
                               Needs<Right::kViewDefects>}};
    for (const EventWordRow& event : kEventWords) {
      rows.push_back({std::string("defects FILE act ") + event.word,
                      std::string("--numbers N[,N...] ") + event.options + " [--dry-run]",
                      &event == &kEventWords[0]
                          ? "one event for the defects that may take it, as\n"
                            "the list's command on that selection adds it;\n"
                            "prints each defect changed, with an assignment's\n"
                            "change text; --dry-run only shows them"
                          : "",
                      Act, ActRight});
    }
    rows.push_back({"defects FILE act duplicate|delete", "--numbers N[,N...] [--dry-run]",
                    "copies, or deletes for good after asking;\n"
                    "--dry-run names the defects and keeps them",
                    Act, ActRight});
    rows.push_back({"defect FILE NUMBER", "[--text|--html]", "one defect's text or HTML form", Show,
                    Needs<Right::kViewDefects>});
    rows.push_back({"defect FILE add",
                    "--summary TEXT [--type NAME] [--priority NAME] [--severity NAME] "
                    "[--product NAME] [--component NAME] [--description TEXT] [--found-by LOGIN] "
                    "[--version-found TEXT] [--dry-run]",
                    "a new defect; prints its number, or with\n"
                    "--dry-run its text form and adds nothing",
                    Add, Needs<Right::kAddDefects>});
    for (const EventWordRow& event : kEventWords) {
      rows.push_back({std::string("defect FILE NUMBER ") + event.word,
                      std::string(event.options) + " [--dry-run]",
                      &event == &kEventWords[0]
                          ? "adds an event as the defect's window does, when\n"
                            "the status and your rights offer it and nobody\n"
                            "else is editing the defect; prints the change\n"
                            "text; --dry-run prints it and saves nothing"
                          : "",
                      AddEvent, ActRight});
    }
    return rows;
  }();
  return kRows;
}

}  // namespace qm::cli
