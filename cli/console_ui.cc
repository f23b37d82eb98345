// Messages and questions on the terminal.
#include "console_ui.h"

#include <unistd.h>
#include <iostream>
#include <string>

namespace qm::cli {

namespace {

struct Choice {
  const char* prompt;
  ui::Answer first;   // answered by 'y' or 'r'
  ui::Answer second;  // the cautious answer
};

Choice ChoiceOf(ui::Buttons buttons) {
  switch (buttons) {
    case ui::Buttons::kYesNo:
      return {"[y/n]", ui::Answer::kYes, ui::Answer::kNo};
    case ui::Buttons::kRetryCancel:
      return {"[r]etry/[c]ancel", ui::Answer::kRetry, ui::Answer::kCancel};
    case ui::Buttons::kOkCancel:
      return {"[o]k/[c]ancel", ui::Answer::kOk, ui::Answer::kCancel};
    case ui::Buttons::kOk:
      break;
  }
  return {"", ui::Answer::kOk, ui::Answer::kOk};
}

}  // namespace

ui::Answer ConsoleUi::Ask(const ui::Message& message) {
  std::cerr << (message.caption.empty() ? "" : message.caption + ": ") << message.text << "\n";
  Choice choice = ChoiceOf(message.buttons);
  if (message.buttons == ui::Buttons::kOk) return ui::Answer::kOk;
  if (!::isatty(STDIN_FILENO)) return choice.second;
  for (;;) {
    std::cerr << choice.prompt << " " << std::flush;
    std::string line;
    if (!std::getline(std::cin, line)) return choice.second;
    if (line.empty()) continue;
    char c = static_cast<char>(std::tolower(static_cast<unsigned char>(line[0])));
    if (c == 'y' || c == 'r' || c == 'o') return choice.first;
    if (c == 'n' || c == 'c') return choice.second;
  }
}

std::optional<std::string> ConsoleUi::ChooseFile(const ui::FileChoice& choice) {
  if (!::isatty(STDIN_FILENO)) return std::nullopt;
  std::cerr << choice.title << " (path, empty to cancel): " << std::flush;
  std::string line;
  if (!std::getline(std::cin, line) || line.empty()) return std::nullopt;
  return line;
}

void ConsoleUi::BeginProgress(const std::string& title) { std::cerr << title << "\n"; }

void ConsoleUi::ProgressStep(const std::string& line) { std::cerr << "  " << line << "\n"; }

}  // namespace qm::cli
