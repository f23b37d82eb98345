// What quillmark-cli does around an open project: it has no windows, timers or mail of its
// own; it keeps a login in the machine's preferences when asked to remember it.
#pragma once

#include "session/project_host.h"
#include "shell/app_preferences.h"

namespace qm::cli {

class CliHost : public ProjectHost {
 public:
  // With `remember`, a successful login becomes the remembered login of `preferences`,
  // for this file.
  CliHost(CAppPreferences& preferences, bool remember)
      : preferences_(preferences), remember_(remember) {}

  void ProjectLoaded(CDBDoc& doc) override;
  void RememberLogin(const ui::LoginEntry& login) override;
  std::int32_t DatabaseCheckSeconds() const override { return preferences_.GetDBCheckSeconds(); }
  void StartBackgroundWork(CDBDoc&) override {}
  void BeforeClose(CDBDoc&) override {}
  void CloseListWindows(CDBDoc&) override {}

 private:
  CAppPreferences& preferences_;
  bool remember_;
};

}  // namespace qm::cli
