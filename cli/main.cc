// quillmark-cli: the Quillmark core without a window, for administrators and scripts.
#include <iostream>
#include <string>
#include <vector>

#include "console_ui.h"
#include "store_commands.h"

namespace {

void Usage(std::ostream& out) {
  out << "quillmark-cli: Quillmark project files from the command line.\n\n"
         "usage: quillmark-cli COMMAND ...\n\n"
         "The administrator's view of a project file:\n"
      << qm::cli::StoreUsage()
      << "\nExit codes: 0 done; 1 an operation failed or damage was found; 2 the file could\n"
         "not be opened; 64 the command line was wrong.\n";
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
    Usage(std::cout);
    return words.empty() ? 64 : 0;
  }
  qm::cli::ConsoleUi ui;
  if (words[0] == "store") {
    words.erase(words.begin());
    return qm::cli::RunStore(words, ui, std::cout, std::cerr);
  }
  std::cerr << "Unknown command \"" << words[0] << "\".\n\n";
  Usage(std::cerr);
  return 64;
}
