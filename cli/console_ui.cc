// Messages and questions on the terminal.
#include "console_ui.h"

#include <termios.h>
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
    case ui::Buttons::kYesNoCancel:  // 'n' answers No, below
      return {"[y]es/[n]o/[c]ancel", ui::Answer::kYes, ui::Answer::kCancel};
    case ui::Buttons::kOk:
      break;
  }
  return {"", ui::Answer::kOk, ui::Answer::kOk};
}

// A line from the terminal; with `hidden`, typed without echo. Nothing at the end of input.
std::optional<std::string> ReadLine(const std::string& prompt, bool hidden) {
  std::cerr << prompt << std::flush;
  termios saved{};
  const bool quiet = hidden && ::tcgetattr(STDIN_FILENO, &saved) == 0;
  if (quiet) {
    termios silent = saved;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  std::string line;
  const bool got = static_cast<bool>(std::getline(std::cin, line));
  if (quiet) {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    std::cerr << "\n";
  }
  if (!got) return std::nullopt;
  return line;
}

}  // namespace

std::optional<ui::LoginEntry> ConsoleUi::AskLogin(const std::string& text,
                                                  const ui::LoginEntry& start) {
  if (!::isatty(STDIN_FILENO)) return std::nullopt;
  std::cerr << text << "\n";
  auto name =
      ReadLine(start.name.empty() ? "User name: " : "User name [" + start.name + "]: ", false);
  if (!name) return std::nullopt;
  auto password = ReadLine("Password: ", true);
  if (!password) return std::nullopt;
  return ui::LoginEntry{name->empty() ? start.name : *name, *password};
}

std::optional<std::string> ConsoleUi::AskPassword(const std::string& text) {
  if (!::isatty(STDIN_FILENO)) return std::nullopt;
  std::cerr << text << "\n";
  return ReadLine("Password: ", true);
}

ui::Answer ConsoleUi::Ask(const ui::Message& message) {
  std::cerr << (message.caption.empty() ? "" : message.caption + ": ") << message.text << "\n";
  Choice choice = ChoiceOf(message.buttons);
  if (message.buttons == ui::Buttons::kOk) return ui::Answer::kOk;
  if (assumeYes_) {
    std::cerr << choice.prompt << " (--yes)\n";
    return choice.first;
  }
  if (!::isatty(STDIN_FILENO)) return choice.second;
  for (;;) {
    std::cerr << choice.prompt << " " << std::flush;
    std::string line;
    if (!std::getline(std::cin, line)) return choice.second;
    if (line.empty()) continue;
    char c = static_cast<char>(std::tolower(static_cast<unsigned char>(line[0])));
    if (c == 'y' || c == 'r' || c == 'o') return choice.first;
    if (c == 'n' && message.buttons == ui::Buttons::kYesNoCancel) return ui::Answer::kNo;
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
