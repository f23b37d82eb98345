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

struct MadeDefect {
  MadeDefect(const char* s, std::uint32_t n = 0, const char* to = nullptr)
      : summary(s), number(n), assignedTo(to) {}
  const char* summary;
  std::uint32_t number;    // 0: none given
  const char* assignedTo;  // "admin" or "tess": one assignment event
};

// A multi-user project holds a user "tess" (last name Tess) in the administrators' group.
inline void MakeProject(const std::string& path, bool multiUser = true,
                        const std::vector<MadeDefect>& defects = {},
                        const char* tessPassword = "") {
  ScriptedUi ui;
  QuietHost host;
  ProjectItemKinds kinds;
  CDBDoc made(ui, kinds, host);
  ASSERT_EQ(made.NewProject(path, multiUser), 1);
  std::uint32_t tessId = 0;
  if (multiUser) {
    auto tess = std::make_unique<CUser>();
    tess->SetLastName("Tess");
    tess->SetLogin("tess");
    tess->SetPassword(tessPassword);
    tess->SetGroupId(1);
    const CUser& added = *tess;
    std::unique_ptr<RecordItem> item = std::move(tess);
    ASSERT_EQ(made.GetTable(kUserTag)->AddItem(item), DBStatus::kOk);
    tessId = added.GetId();
  }
  for (const MadeDefect& d : defects) {
    std::unique_ptr<RecordItem> item = made.GetTable(kDefectTag)->NewItem();
    auto& defect = static_cast<CDefect&>(*item);
    defect.summary = d.summary;
    defect.number = d.number;
    if (d.assignedTo != nullptr) {
      auto assign = CDefectEvent::Make(static_cast<std::int16_t>(EventKind::kAssign));
      assign->userId = std::string(d.assignedTo) == "tess" ? tessId : made.currentUserId();
      defect.AddEvent(std::move(assign));
    }
    ASSERT_EQ(made.GetTable(kDefectTag)->AddItem(item), DBStatus::kOk);
  }
  made.CloseProject();
}

}  // namespace qm::test
