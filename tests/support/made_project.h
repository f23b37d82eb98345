// A project made on disk and closed again, so that a test opens it as the program would and
// a forked child shares none of its locks. For tests that link the shell library.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "defects/defect.h"
#include "people/user.h"
#include "session/db_doc.h"
#include "shell/project_item_kinds.h"
#include "support/quiet_host.h"
#include "support/scripted_ui.h"

namespace qm::test {

// A multi-user project holds a user "tess" (last name Tess) in the administrators' group;
// `defects` are the summaries of the defects it starts with.
inline void MakeProject(const std::string& path, bool multiUser = true,
                        const std::vector<std::string>& defects = {},
                        const char* tessPassword = "") {
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc made(ui, kinds, host);
  ASSERT_EQ(made.NewProject(path, multiUser), 1);
  if (multiUser) {
    auto tess = std::make_unique<CUser>();
    tess->SetLastName("Tess");
    tess->SetLogin("tess");
    tess->SetPassword(tessPassword);
    tess->SetGroupId(1);
    std::unique_ptr<RecordItem> item = std::move(tess);
    ASSERT_EQ(made.GetTable(kUserTag)->AddItem(item), DBStatus::kOk);
  }
  for (const std::string& summary : defects) {
    std::unique_ptr<RecordItem> item = made.GetTable(kDefectTag)->NewItem();
    static_cast<CDefect&>(*item).summary = summary;
    ASSERT_EQ(made.GetTable(kDefectTag)->AddItem(item), DBStatus::kOk);
  }
  made.CloseProject();
}

}  // namespace qm::test
