// The main window over a project file of its own, with a scripted person: every event
// dialog closes with OK, and an assignment names the user logged in.
#pragma once

#include <gtest/gtest.h>

#include <QObject>
#include <QString>
#include <string>
#include <vector>

#include "cli/cli_run.h"
#include "main_frame.h"
#include "support/made_project.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {

// The first child of `parent` of type W (a button, an action) whose text is `text`, or null.
template <class W>
W* Named(const QObject& parent, const QString& text) {
  for (W* w : parent.findChildren<W*>()) {
    if (w->text() == text) return w;
  }
  return nullptr;
}

class FrameTest : public ::testing::Test {
 protected:
  void SetUp() override { MakeProject(path); }
  void Open() { ASSERT_TRUE(frame.OpenProject(path, ui::LoginEntry{"admin", ""})); }
  // quillmark-cli on the project as `user`, another program on the file.
  void Cli(const std::string& args, const std::string& user = "admin") {
    const CliResult r = RunCli(dir, "--user " + user + " --password '' " + args);
    ASSERT_EQ(r.code, 0) << r.err;
  }

  TempDir dir;
  std::string path = dir.File("Atlas.qmk");
  ScriptedUi ui;
  CAppPreferences preferences{dir.File("Quillmark.conf")};
  std::vector<EventKind> dialogs;
  app::CMainFrame frame{ui, preferences, [this](CDefectEvent& event, EventDialogMode) {
                          dialogs.push_back(event.kind());
                          if (event.kind() == EventKind::kAssign) {
                            event.userId = frame.doc()->currentUserId();
                          }
                          return std::optional(EventDialogResult::kOk);
                        }};
};

}  // namespace qm::test
