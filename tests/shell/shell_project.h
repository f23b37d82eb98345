// A project file in a folder of its own, and what a project opened in this process needs
// around it. The file is made first and opened after, so that a forked child shares none
// of this process's locks.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "shell/record_window.h"
#include "support/fake_files.h"
#include "support/made_project.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {

class ShellProject : public ::testing::Test {
 protected:
  // Opens the file at `path`, on the test's clock; a single-user project takes no login.
  void Open(std::optional<ui::LoginEntry> login = ui::LoginEntry{"admin", ""}) {
    doc = std::make_unique<CDBDoc>(ui, kinds, host, platform::FileSystem::Real(), clock);
    ASSERT_EQ(doc->OpenProject(path, login), 1);
  }
  template <class Table = ItemTable>
  Table& table(Tag tag) {
    return static_cast<Table&>(*doc->GetTable(tag));
  }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  FakeClock clock;
  EditMarks marks;
  std::unique_ptr<CDBDoc> doc;
};

}  // namespace qm::test
