// The scripted Ui of the tests.
#include "support/scripted_ui.h"

#include <gtest/gtest.h>

namespace qm::test {

void ScriptedUi::Script(std::vector<ui::Answer> answers) {
  answers_.insert(answers_.end(), answers.begin(), answers.end());
}

ui::Answer ScriptedUi::Ask(const ui::Message& message) {
  shown.push_back(message);
  if (!answers_.empty()) {
    ui::Answer a = answers_.front();
    answers_.pop_front();
    return a;
  }
  if (message.buttons != ui::Buttons::kOk) {
    ADD_FAILURE() << "unscripted question: " << message.text;
    return ui::Answer::kCancel;
  }
  return ui::Answer::kOk;
}

std::optional<std::string> ScriptedUi::ChooseFile(const ui::FileChoice& choice) {
  ADD_FAILURE() << "unscripted file choice: " << choice.title;
  return std::nullopt;
}

std::optional<ui::LoginEntry> ScriptedUi::AskLogin(const std::string& text, const ui::LoginEntry&) {
  loginTexts.push_back(text);
  if (logins_.empty()) {
    ADD_FAILURE() << "unscripted login dialog: " << text;
    return std::nullopt;
  }
  auto entry = logins_.front();
  logins_.pop_front();
  return entry;
}

std::optional<std::string> ScriptedUi::AskPassword(const std::string& text) {
  passwordTexts.push_back(text);
  if (passwords_.empty()) {
    ADD_FAILURE() << "unscripted password dialog: " << text;
    return std::nullopt;
  }
  auto entry = passwords_.front();
  passwords_.pop_front();
  return entry;
}

std::vector<std::string> ScriptedUi::Texts() const {
  std::vector<std::string> texts;
  for (const auto& m : shown) texts.push_back(m.text);
  return texts;
}

}  // namespace qm::test
