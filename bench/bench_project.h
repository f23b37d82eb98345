// A new multi-user project for a benchmark to fill, with nobody around it.
#pragma once

#include <string>

#include "bench/setup_checks.h"
#include "bench/silent_ui.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "store/store_error.h"
#include "support/quiet_host.h"

namespace qm::bench {

struct BenchProject {
  explicit BenchProject(const std::string& path) {
    try {
      doc.NewProject(path, true);
    } catch (const StoreError& e) {
      Check(e.status, "new project");
    }
  }

  SilentUi ui;
  test::QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc doc{ui, kinds, host};
};

}  // namespace qm::bench
