// Fuzz target: a whole project opened from a damaged or foreign file, through every step of
// the opening: the settings records, the login, the tables and what an older project
// gains. Every opening must end in a project or a message, never a crash.
#include <cstddef>
#include <cstdint>

#include "bench/silent_ui.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "support/fake_files.h"
#include "support/quiet_host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static qm::bench::SilentUi ui;
  static qm::ProjectItemKinds kinds;
  static qm::test::QuietHost host;
  qm::test::MemoryFileSystem files;
  qm::test::FakeClock clock;
  files.Bytes("p.qmk").assign(data, data + size);
  qm::CDBDoc doc(ui, kinds, host, files, clock);
  // The administrator of a new project; the seeds are projects as they are made.
  if (doc.OpenProject("p.qmk", qm::ui::LoginEntry{"admin", ""}) == 1) doc.CloseProject();
  return 0;
}
