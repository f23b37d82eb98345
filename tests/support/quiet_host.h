// A host with nothing around the project: no windows, no preferences, no mail, no timers.
// For tests, benchmarks and fuzz targets that open projects without a program around them.
#pragma once

#include <cstdint>

#include "session/project_host.h"

namespace qm::test {

class QuietHost : public ProjectHost {
 public:
  void ProjectLoaded(CDBDoc&) override {}
  void RememberLogin(const ui::LoginEntry&) override {}
  std::int32_t DatabaseCheckSeconds() const override { return -1; }
  void StartBackgroundWork(CDBDoc&) override {}
  void BeforeClose(CDBDoc&) override {}
  void CloseListWindows(CDBDoc&) override {}
};

}  // namespace qm::test
