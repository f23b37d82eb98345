// The seam through which the core speaks to a person: message boxes, file choices,
// status text, progress and the modifier keys. The window program implements it with
// dialogs, quillmark-cli with the terminal, the tests with a script.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qm::ui {

enum class Icon { kNone, kInformation, kWarning, kError, kQuestion };

enum class Buttons { kOk, kOkCancel, kYesNo, kRetryCancel, kYesNoCancel };

enum class Answer { kOk, kCancel, kYes, kNo, kRetry };

struct Message {
  std::string text;
  std::string caption;  // empty: the program's name
  Icon icon = Icon::kNone;
  Buttons buttons = Buttons::kOk;
  // No is the default of a Yes/No question that destroys something; Yes otherwise.
  bool noByDefault = false;
};

// A file dialog: what it is for and which names it offers.
struct FileChoice {
  std::string title;
  std::vector<std::string> filters;  // "Project Files (*.qmk)"
  std::string defaultName;
  bool forSaving = false;
  bool folder = false;
};

// What the login dialog holds: a user name and a password.
struct LoginEntry {
  std::string name;
  std::string password;
};

struct Modifiers {
  bool ctrl = false;
  bool alt = false;
  bool shift = false;
};

class Ui {
 public:
  virtual ~Ui() = default;

  // Shows a message and waits for the person's answer.
  virtual Answer Ask(const Message& message) = 0;
  // A path, or nothing when the person cancels.
  virtual std::optional<std::string> ChooseFile(const FileChoice& choice) = 0;
  virtual void SetStatusText(const std::string& text) = 0;
  // A progress window: opened with a title, one line per step, closed at the end.
  virtual void BeginProgress(const std::string& title) = 0;
  virtual void ProgressStep(const std::string& line) = 0;
  virtual void EndProgress() = 0;
  // The modifier keys held at this moment.
  virtual Modifiers HeldModifiers() = 0;
  // The login dialog: its text, and the fields as they start. Nothing when cancelled.
  virtual std::optional<LoginEntry> AskLogin(const std::string& text, const LoginEntry& start) = 0;
  // A dialog with a text and one password field. Nothing when cancelled.
  virtual std::optional<std::string> AskPassword(const std::string& text) = 0;

  // A message with only an OK button.
  void Tell(std::string text, Icon icon = Icon::kNone, std::string caption = {});
};

// Notes meant for the developer, not the user (the debug output of the program). They
// never stop the program. Quiet unless a sink is set.
void DebugOutput(std::string_view text);
// Sets where debug notes go; an empty function makes them quiet again. Returns the old sink.
std::function<void(std::string_view)> SetDebugSink(std::function<void(std::string_view)> sink);

}  // namespace qm::ui
