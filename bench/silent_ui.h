// A Ui for the benchmarks: nobody is there to answer, so every question is cancelled.
#pragma once

#include "ui/ui.h"

namespace qm::bench {

class SilentUi : public ui::Ui {
 public:
  ui::Answer Ask(const ui::Message& m) override {
    return m.buttons == ui::Buttons::kOk ? ui::Answer::kOk : ui::Answer::kCancel;
  }
  std::optional<std::string> ChooseFile(const ui::FileChoice&) override { return std::nullopt; }
  void SetStatusText(const std::string&) override {}
  void BeginProgress(const std::string&) override {}
  void ProgressStep(const std::string&) override {}
  void EndProgress() override {}
  ui::Modifiers HeldModifiers() override { return {}; }
  std::optional<ui::LoginEntry> AskLogin(const std::string&, const ui::LoginEntry&) override {
    return std::nullopt;
  }
  std::optional<std::string> AskPassword(const std::string&) override { return std::nullopt; }
};

}  // namespace qm::bench
