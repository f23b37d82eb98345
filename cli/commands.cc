// The command line of quillmark-cli: which row it is, whether its options and words are
// the row's, and the project or the file opened for it.
#include "commands.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <ostream>
#include <set>

#include "cli_host.h"
#include "command.h"
#include "console_ui.h"
#include "platform/preference_file.h"
#include "session/db_doc.h"
#include "session/login.h"
#include "shell/project_item_kinds.h"
#include "shell/record_list.h"
#include "store/project_store.h"
#include "store/store_error.h"

namespace qm::cli {

namespace {

constexpr std::size_t kLineWidth = 88;
constexpr std::size_t kHelpColumn = 37;

// Every row, in the order of the help.
std::vector<const Command*> AllCommands() {
  std::vector<const Command*> all;
  for (const auto* family : {&ProjectCommands(), &DefectCommands(), &PeopleCommands(),
                             &GroupCommands(), &ConfigCommands(), &StoreCommands()}) {
    for (const Command& command : *family) all.push_back(&command);
  }
  return all;
}

std::vector<std::string> Split(const std::string& text, const std::string& separators) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : text + separators.front()) {
    if (separators.find(c) == std::string::npos) {
      part += c;
    } else if (!part.empty()) {
      parts.push_back(std::move(part));
      part.clear();
    }
  }
  return parts;
}

// "FILE", "NAME|LOGIN": a word that stands for what the person types.
bool IsPlaceholder(const std::string& word) {
  return !word.empty() && std::isupper(static_cast<unsigned char>(word[0])) != 0;
}

// Whether a row's slots take `count` words: one each, and a last slot "RIGHT..." one or more.
bool SlotsTake(const std::vector<std::string>& slots, std::size_t count) {
  return slots.size() == count ||
         (count > slots.size() && !slots.empty() && slots.back().ends_with("..."));
}

bool SlotTakes(const std::string& slot, const std::string& word) {
  if (IsPlaceholder(slot)) return true;
  const std::vector<std::string> choices = Split(slot, "|");
  return std::find(choices.begin(), choices.end(), word) != choices.end();
}

struct OptionSpec {
  std::string name;
  bool valued;
  bool required;
};

// The options of a row's synopsis: "--id N [--from PATH]" gives a required --id with a value
// and an optional --from with one.
std::vector<OptionSpec> OptionsOf(const Command& command) {
  struct Token {
    std::string text;
    int depth;
  };
  std::vector<Token> tokens;
  int depth = 0;
  std::string text;
  int start = 0;
  for (const char c : command.options + ' ') {
    if (c == '[' || c == ']' || c == '|' || c == ' ') {
      if (!text.empty()) tokens.push_back({std::move(text), start});
      text.clear();
      depth += c == '[' ? 1 : c == ']' ? -1 : 0;
    } else {
      if (text.empty()) start = depth;
      text += c;
    }
  }
  std::vector<OptionSpec> options;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (!tokens[i].text.starts_with("--")) continue;
    const bool valued = i + 1 < tokens.size() && !tokens[i + 1].text.starts_with("--");
    options.push_back({tokens[i].text.substr(2), valued, tokens[i].depth == 0});
  }
  return options;
}

// "store delete", "defects act assign": the typed words of the row, naming it in messages.
std::string NameOf(const Command& command, const std::vector<std::string>& words) {
  std::string name;
  const std::vector<std::string> slots = Split(command.words, " ");
  for (std::size_t i = 0; i < slots.size() && i < words.size(); ++i) {
    if (!IsPlaceholder(slots[i])) name += (name.empty() ? "" : " ") + words[i];
  }
  return name;
}

std::string Synopsis(const Command& command) {
  return command.words + (command.options.empty() ? "" : " " + command.options);
}

std::string UsageLine(const Command& command) {
  return "usage: quillmark-cli " + Synopsis(command);
}

// The synopsis broken between bracketed groups so that no line passes the width.
std::vector<std::string> SynopsisLines(const Command& command) {
  std::vector<std::string> lines{"  "};
  std::string piece;
  int depth = 0;
  const auto place = [&lines](const std::string& word) {
    if (lines.back().size() > 6 && lines.back().size() + 1 + word.size() > kLineWidth) {
      lines.push_back("     ");
    }
    if (lines.back().size() > 2) lines.back() += ' ';
    lines.back() += word;
  };
  for (const char c : Synopsis(command) + ' ') {
    depth += c == '[' ? 1 : c == ']' ? -1 : 0;
    if (c == ' ' && depth == 0) {
      place(piece);
      piece.clear();
    } else {
      piece += c;
    }
  }
  return lines;
}

void Describe(const Command& command, std::ostream& out) {
  std::vector<std::string> lines = SynopsisLines(command);
  std::vector<std::string> help = Split(command.help, "\n");
  if (!help.empty() && lines.back().size() < kHelpColumn) {
    lines.back() += std::string(kHelpColumn - lines.back().size(), ' ') + help.front();
    help.erase(help.begin());
  }
  for (const std::string& line : lines) out << line << "\n";
  for (const std::string& line : help) out << std::string(kHelpColumn, ' ') << line << "\n";
}

void Help(std::ostream& out) {
  out << "quillmark-cli: Quillmark project files from the command line.\n\n"
         "usage: quillmark-cli COMMAND ...\n\n"
         "A project as its users see it:\n";
  for (const Command* command : AllCommands()) {
    if (command == &StoreCommands().front()) {
      out << "\nThe administrator's view of a project file, record by record:\n";
    }
    Describe(*command, out);
  }
  out << "\nOptions of every command that opens a project with its login:\n"
         "  --user NAME --password TEXT        log in without the dialog\n"
         "  --remember                         keep this login for the next opening of the\n"
         "                                     file (Automatically log in last user)\n"
         "Of every command:\n"
         "  --yes                              answer every question Yes or OK\n"
         "\nExit codes: 0 done; 1 an operation failed or damage was found; 2 the file could\n"
         "not be opened; 64 the command line was wrong, and nothing was changed.\n";
}

bool OpensProject(const Command& command) {
  return std::holds_alternative<ProjectRun>(command.run);
}

// The options a row takes, with the ones every command or every project command takes.
std::vector<OptionSpec> AcceptedOptions(const Command& command) {
  std::vector<OptionSpec> options = OptionsOf(command);
  options.push_back({"yes", false, false});
  if (OpensProject(command)) {
    options.push_back({"user", true, false});
    options.push_back({"password", true, false});
    options.push_back({"remember", false, false});
  }
  return options;
}

std::set<std::string> ValuedOptions() {
  std::set<std::string> valued{"user", "password"};
  for (const Command* command : AllCommands()) {
    for (const OptionSpec& option : OptionsOf(*command)) {
      if (option.valued) valued.insert(option.name);
    }
  }
  return valued;
}

std::string UsageLines(const std::vector<const Command*>& commands) {
  std::string lines;
  for (const Command* command : commands) lines += "\n" + UsageLine(*command);
  return lines;
}

// The row the words are, or a UsageError that says why there is none.
const Command& Match(const std::vector<std::string>& words) {
  // The rows that begin as the words do, as far as both go; each with its slots.
  std::vector<const Command*> family;
  std::vector<std::vector<std::string>> slots;
  for (const Command* command : AllCommands()) {
    std::vector<std::string> own = Split(command->words, " ");
    bool fits = true;
    for (std::size_t i = 0; i < std::min(own.size(), words.size()) && fits; ++i) {
      fits = SlotTakes(own[i], words[i]);
    }
    if (fits) {
      family.push_back(command);
      slots.push_back(std::move(own));
    }
  }
  // Of the rows the words fill exactly, the one with most typed words: "defect FILE add"
  // before "defect FILE NUMBER".
  const Command* best = nullptr;
  std::size_t bestTyped = 0;
  for (std::size_t r = 0; r < family.size(); ++r) {
    if (!SlotsTake(slots[r], words.size())) continue;
    const auto typed = static_cast<std::size_t>(
        std::count_if(slots[r].begin(), slots[r].end(),
                      [](const std::string& slot) { return !IsPlaceholder(slot); }));
    if (best == nullptr || typed > bestTyped) {
      best = family[r];
      bestTyped = typed;
    }
  }
  if (best != nullptr) return *best;

  std::vector<const Command*> sameFirst;
  for (const Command* command : AllCommands()) {
    if (SlotTakes(Split(command->words, " ").front(), words.front())) sameFirst.push_back(command);
  }
  if (sameFirst.empty()) {
    throw UsageError{"Unknown command \"" + words.front() + "\"; quillmark-cli --help lists them."};
  }
  // Words run out: what may come next, and the forms that go on from here.
  std::vector<std::string> next;
  std::vector<const Command*> longer;
  std::string typed;
  for (std::size_t r = 0; r < family.size(); ++r) {
    if (slots[r].size() <= words.size()) continue;
    longer.push_back(family[r]);
    const std::string& slot = slots[r][words.size()];
    for (const std::string& word : IsPlaceholder(slot) ? std::vector{slot} : Split(slot, "|")) {
      if (std::find(next.begin(), next.end(), word) == next.end()) next.push_back(word);
    }
    if (typed.empty()) typed = NameOf(*family[r], words);
  }
  if (!longer.empty()) {
    std::string expected;
    for (std::size_t i = 0; i < next.size(); ++i) {
      expected += (i == 0 ? "" : i + 1 == next.size() ? " or " : ", ") + next[i];
    }
    throw UsageError{"quillmark-cli " + typed + ": expected " + expected + "." +
                     UsageLines(longer)};
  }
  const Command* longest = nullptr;
  std::size_t longestSize = 0;
  for (std::size_t r = 0; r < family.size(); ++r) {
    if (slots[r].size() >= longestSize) {
      longest = family[r];
      longestSize = slots[r].size();
    }
  }
  if (longest != nullptr) {
    throw UsageError{"quillmark-cli " + NameOf(*longest, words) + ": unexpected word \"" +
                     words[longestSize] + "\"." + UsageLines(sameFirst)};
  }
  typed.clear();
  for (const std::string& word : words) typed += (typed.empty() ? "" : " ") + word;
  throw UsageError{"quillmark-cli: \"" + typed + "\" is no command." + UsageLines(sameFirst)};
}

// Refuses an option the row does not take, and a required one not given.
void CheckOptions(const Command& command, const Args& args) {
  const std::vector<OptionSpec> accepted = AcceptedOptions(command);
  for (const std::string& given : args.OptionNames()) {
    const auto it = std::find_if(accepted.begin(), accepted.end(),
                                 [&given](const OptionSpec& o) { return o.name == given; });
    if (it == accepted.end()) {
      throw UsageError{"quillmark-cli " + NameOf(command, args.positional()) +
                       ": unknown option --" + given + "\n" + UsageLine(command)};
    }
  }
  for (const OptionSpec& option : accepted) {
    const bool given = option.valued ? args.Value(option.name).has_value() : args.Flag(option.name);
    if (option.required && !given) {
      throw UsageError{"quillmark-cli " + NameOf(command, args.positional()) + ": --" +
                       option.name + " is required.\n" + UsageLine(command)};
    }
  }
}

// Runs `work`, turning what it throws into the exit code and the message.
int Guarded(const std::function<int()>& work, std::ostream& err) {
  try {
    return work();
  } catch (const Refused&) {
    return 1;
  } catch (const StoreError& e) {
    err << "Error " << Code(e.status) << ": " << StatusSentence(e.status) << "\n";
    return 1;
  } catch (const UsageError& e) {
    err << e.message << "\n";
    return 64;
  }
}

// Opens the project with the login of the command line, else the remembered one when it is
// for this file, and runs the command on it.
int RunOnProject(const Command& command, const std::string& path, Context& context) {
  const Args& args = context.args;
  std::optional<ui::LoginEntry> login;
  if (const auto user = args.Value("user")) {
    login = ui::LoginEntry{*user, args.Value("password").value_or("")};
  } else if (std::string last; context.preferences.autoLogin != 0 &&
                               context.preferences.GetLastOpenFile(last) == 0 && last == path) {
    login.emplace();
    context.preferences.GetLastUser(login->name, login->password);
  }
  ProjectItemKinds kinds;
  CliHost host(context.preferences, args.Flag("remember"));
  CDBDoc doc(context.ui, kinds, host);
  if (doc.OpenProject(path, login) != 1) {
    context.err << "The project " << path << " was not opened.\n";
    if (!login && !::isatty(STDIN_FILENO)) {
      context.err << "Without a terminal, log in with --user NAME --password TEXT.\n";
    }
    return 2;
  }
  const int result = Guarded(
      [&] {
        if (command.right != nullptr) Require(doc, context, command.right(args));
        return std::get<ProjectRun>(command.run)(doc, context);
      },
      context.err);
  doc.CloseProject();
  return result;
}

int RunOnStore(StoreRun run, const std::string& path, Context& context) {
  CProjectStore store(context.ui);
  if (const DBStatus s = store.Open(path); s != DBStatus::kOk) {
    context.err << OpeningText(s, path) << "\n";
    return 2;
  }
  return Guarded([&] { return run(store, context); }, context.err);
}

}  // namespace

void Require(const CDBDoc& doc, Context& context, Right right) {
  if (doc.HasRight(right)) return;
  context.err << RightRefusal(right) << "\n";
  throw Refused{};
}

std::string Whole(const std::string& text, std::size_t capacity, const std::string& what) {
  if (text.size() > capacity) {
    throw UsageError{what + " takes at most " + std::to_string(capacity) +
                     " bytes; nothing was changed."};
  }
  return text;
}

void WriteList(CRecordListView& list, const ItemTable& table, std::ostream& out) {
  list.BeforeFill();
  const auto& columns = list.columns();
  for (std::size_t c = 0; c < columns.size(); ++c) out << (c ? "\t" : "") << columns[c].title;
  out << "\n";
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    const RecordItem& item = *table.ItemAt(p);
    if (!list.Shows(item)) continue;
    for (std::size_t c = 0; c < columns.size(); ++c) {
      std::string text;
      list.GetCellText(item, columns[c].fieldId, text);
      out << (c ? "\t" : "") << text;
    }
    out << "\n";
  }
}

RecordItem& FindNamed(ItemTable& table, const std::string& name, const std::string& what) {
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    RecordItem* item = table.ItemAt(p);
    if (!item->deleted && SameLoginText(item->GetName(), name)) return *item;
  }
  throw UsageError{"There is no " + what + " \"" + name + "\"."};
}

int RunCommandLine(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
  try {
    const Args args(words, ValuedOptions());
    const auto& pos = args.positional();
    if (args.Flag("help") || (!pos.empty() && (pos[0] == "help" || pos[0] == "-h"))) {
      Help(out);
      return 0;
    }
    if (pos.empty()) {
      Help(err);
      return 64;
    }
    const Command& command = Match(pos);
    CheckOptions(command, args);

    ConsoleUi ui(args.Flag("yes"));
    CAppPreferences preferences(platform::PreferenceFile::DefaultPath());
    // The store works below logins and preferences.
    if (!std::holds_alternative<StoreRun>(command.run)) preferences.Load();
    Context context{args, ui, out, err, preferences};
    const std::vector<std::string> slots = Split(command.words, " ");
    const std::string path = pos[static_cast<std::size_t>(
        std::find(slots.begin(), slots.end(), "FILE") - slots.begin())];
    if (std::holds_alternative<ProjectRun>(command.run))
      return RunOnProject(command, path, context);
    if (const auto* run = std::get_if<StoreRun>(&command.run)) {
      return RunOnStore(*run, path, context);
    }
    return Guarded([&] { return std::get<PlainRun>(command.run)(context); }, err);
  } catch (const UsageError& e) {
    err << e.message << "\n";
    return 64;
  }
}

}  // namespace qm::cli
