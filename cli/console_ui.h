// The Ui of quillmark-cli: messages go to standard error, questions are asked on the
// terminal, and without a terminal they get the cautious answer unless told otherwise.
#pragma once

#include "ui/ui.h"

namespace qm::cli {

class ConsoleUi : public ui::Ui {
 public:
  // With `assumeYes`, every question is shown and answered Yes, OK or Retry at once, as a
  // script that has read the questions beforehand wants.
  explicit ConsoleUi(bool assumeYes = false) : assumeYes_(assumeYes) {}

  ui::Answer Ask(const ui::Message& message) override;
  std::optional<std::string> ChooseFile(const ui::FileChoice& choice) override;
  void SetStatusText(const std::string&) override {}
  void BeginProgress(const std::string& title) override;
  void ProgressStep(const std::string& line) override;
  void EndProgress() override {}
  ui::Modifiers HeldModifiers() override { return {}; }
  std::optional<ui::LoginEntry> AskLogin(const std::string& text,
                                         const ui::LoginEntry& start) override;
  std::optional<std::string> AskPassword(const std::string& text) override;

 private:
  bool assumeYes_;
};

}  // namespace qm::cli
