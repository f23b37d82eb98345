// quillmark-cli: the Quillmark core without a window, for administrators and scripts.
#include <iostream>
#include <string>
#include <vector>

#include <algorithm>

#include "console_ui.h"
#include "platform/preference_file.h"
#include "project_commands.h"
#include "shell/app_preferences.h"
#include "store_commands.h"

namespace {

void Usage(std::ostream& out) {
  out << "quillmark-cli: Quillmark project files from the command line.\n\n"
         "usage: quillmark-cli COMMAND ...\n\n"
         "A project as its users see it:\n"
      << qm::cli::ProjectUsage()
      << "\nThe administrator's view of a project file, record by record:\n"
      << qm::cli::StoreUsage()
      << "\nExit codes: 0 done; 1 an operation failed or damage was found; 2 the file could\n"
         "not be opened; 64 the command line was wrong.\n";
}

// The command: the first word that is neither a global option nor its value.
std::string CommandWord(const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--user" || words[i] == "--password") {
      ++i;
    } else if (words[i] != "--yes" && words[i] != "--remember") {
      return words[i];
    }
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  const std::string command = CommandWord(words);
  if (command.empty() || command == "--help" || command == "-h" || command == "help") {
    Usage(std::cout);
    return command.empty() ? 64 : 0;
  }
  const bool assumeYes = std::find(words.begin(), words.end(), "--yes") != words.end();
  qm::cli::ConsoleUi ui(assumeYes);
  if (qm::cli::IsProjectCommand(command)) {
    qm::CAppPreferences preferences(qm::platform::PreferenceFile::DefaultPath());
    preferences.Load();
    return qm::cli::RunProject(words, ui, preferences, std::cout, std::cerr);
  }
  if (command == "store") {
    // The store works below logins: the global options have nothing to say to it.
    words.erase(words.begin(), std::find(words.begin(), words.end(), "store") + 1);
    return qm::cli::RunStore(words, ui, std::cout, std::cerr);
  }
  std::cerr << "Unknown command \"" << command << "\".\n\n";
  Usage(std::cerr);
  return 64;
}
