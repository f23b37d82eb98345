// A Ui that records every message shown and answers from a script, so tests can assert
// each text word for word without a display.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "ui/ui.h"

namespace qm::test {

class ScriptedUi : public ui::Ui {
 public:
  // Answers the next Ask calls in order; when the script is empty, a message with an
  // OK button gets kOk and any other message fails the test.
  void Script(std::vector<ui::Answer> answers);
  void HoldModifiers(ui::Modifiers m) { modifiers_ = m; }
  // Answers of the next login and password dialogs; nothing stands for Cancel.
  void ScriptLogin(std::optional<ui::LoginEntry> entry) { logins_.push_back(std::move(entry)); }
  void ScriptPassword(std::optional<std::string> text) { passwords_.push_back(std::move(text)); }

  ui::Answer Ask(const ui::Message& message) override;
  // No test chooses a file: a file dialog fails the test.
  std::optional<std::string> ChooseFile(const ui::FileChoice& choice) override;
  void SetStatusText(const std::string& text) override { statusTexts.push_back(text); }
  void BeginProgress(const std::string& title) override { progress.push_back("[" + title + "]"); }
  void ProgressStep(const std::string& line) override { progress.push_back(line); }
  void EndProgress() override { progress.push_back("[end]"); }
  ui::Modifiers HeldModifiers() override { return modifiers_; }
  std::optional<ui::LoginEntry> AskLogin(const std::string& text,
                                         const ui::LoginEntry& start) override;
  std::optional<std::string> AskPassword(const std::string& text) override;

  std::vector<ui::Message> shown;  // every message, in order
  std::vector<std::string> statusTexts;
  std::vector<std::string> progress;
  std::vector<std::string> loginTexts;     // the text of each login dialog shown
  std::vector<std::string> passwordTexts;  // the text of each password dialog shown

  // The texts of the messages shown, in order.
  std::vector<std::string> Texts() const;

 private:
  std::deque<ui::Answer> answers_;
  std::deque<std::optional<ui::LoginEntry>> logins_;
  std::deque<std::optional<std::string>> passwords_;
  ui::Modifiers modifiers_;
};

}  // namespace qm::test
