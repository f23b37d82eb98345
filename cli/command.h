// One row per command of quillmark-cli: the words typed, the options taken, what it does,
// and the function that carries it out. The command line is checked against its row before
// anything is opened, so an option or a word the command does not take changes nothing.
#pragma once

#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

#include "args.h"
#include "people/record_fields.h"
#include "session/rights.h"
#include "shell/app_preferences.h"
#include "ui/ui.h"

namespace qm {
class CDBDoc;
class CProjectStore;
class CRecordListView;
class ItemTable;
class RecordItem;
}  // namespace qm

namespace qm::cli {

// What a command works with besides the file it opens.
struct Context {
  const Args& args;
  ui::Ui& ui;
  std::ostream& out;
  std::ostream& err;
  CAppPreferences& preferences;
};

// The command could not be done as asked; what was shown says why. Exit 1.
struct Refused {};

// A command that opens nothing itself, one that works on a project opened and logged in
// to as the program does, and one that works on the file record by record.
using PlainRun = int (*)(Context&);
using ProjectRun = int (*)(CDBDoc&, Context&);
using StoreRun = int (*)(CProjectStore&, Context&);

// The right a command line asks of the user logged in, known from its words and options
// before the command runs; a group that denies it refuses the command with its name.
using RightOf = Right (*)(const Args&);
template <Right right>
Right Needs(const Args& /*args*/) {
  return right;
}

struct Command {
  // The words in order. A lower-case word is typed as it stands ("up|down": either); an
  // upper-case one stands for what the person gives ("FILE" names the file opened).
  std::string words;
  // The options, as the help shows them: "--id N [--from PATH]". An option followed by an
  // upper-case word takes a value; one outside brackets must be given.
  std::string options;
  // What it does, for the help; lines end in '\n'. Empty for a form another row explains.
  std::string help;
  std::variant<PlainRun, ProjectRun, StoreRun> run;
  // For a command on a project; none for one that any user may run.
  RightOf right = nullptr;
};

// Refuses, with the words the window uses, what the user's group does not allow.
void Require(const CDBDoc& doc, Context& context, Right right);

// The item of `table` named `name`, ignoring case, that is not deleted; a UsageError that
// says "There is no <what> "NAME"." when there is none.
// The rows that `list` shows of `table`, in the table's order, under a line of column
// titles; tab-separated.
void WriteList(CRecordListView& list, const ItemTable& table, std::ostream& out);

RecordItem& FindNamed(ItemTable& table, const std::string& name, const std::string& what);

// `text` whole, or a refusal of text that a field of `capacity` bytes would cut: what is
// given is what is kept. `what` names it for the message: "A user group's name", "--first".
std::string Whole(const std::string& text, std::size_t capacity, const std::string& what);
template <std::size_t Capacity>
void SetWhole(BoundedText<Capacity>& field, const std::string& text, const std::string& what) {
  field = Whole(text, Capacity, what);
}

// The rows of each family of commands, in the order the help lists them.
const std::vector<Command>& ProjectCommands();
const std::vector<Command>& DefectCommands();
const std::vector<Command>& PeopleCommands();
const std::vector<Command>& GroupCommands();
const std::vector<Command>& ConfigCommands();
const std::vector<Command>& StoreCommands();

}  // namespace qm::cli
