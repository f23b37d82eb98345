// The main window's set-up and session commands: the value lists' set-up dialogs in the
// Tools menu with the defect numbering dialog, and their entries' states.
#include <QAction>
#include <QMenu>

#include "main_frame.h"
#include "numbering_dialog.h"
#include "record_list_window.h"
#include "value_setup_dialog.h"

namespace qm::app {
namespace {

// The lists' entries in the Set Up menu, in the order of kValueLists.
constexpr std::array<const char*, kValueLists.size()> kValueListMenuTexts = {
    "&Type...",         "&Resolution...", "&Priority...",  "Pro&duct...",
    "Re&producible...", "&Severity...",   "&Component...", "D&isposition..."};

// The rights of the commands.
constexpr std::uint32_t kSetUpFieldsRight = 29;
constexpr std::uint32_t kSetUpNumberingRight = 64;

}  // namespace

void CMainFrame::MakeSetupMenus(QMenu* /*file*/, QMenu* tools) {
  tools->addSeparator();
  QMenu* setup = tools->addMenu("Set &Up");
  for (std::size_t i = 0; i < kValueLists.size(); ++i) {
    const ValueListSettings& list = kValueLists[i];
    QAction* action =
        setup->addAction(kValueListMenuTexts[i], this, [this, &list] { SetUpValues(list); });
    setupActions_.emplace_back(action, kSetUpFieldsRight);
  }
  setup->addSeparator();
  setupActions_.emplace_back(
      setup->addAction("Defect &Numbering...", this, [this] { SetUpNumbering(); }),
      kSetUpNumberingRight);
}

void CMainFrame::UpdateSetupCommands() {
  for (const auto& [action, right] : setupActions_) {
    action->setEnabled(doc_ != nullptr && doc_->HasRight(right));
  }
}

void CMainFrame::SetUpValues(const ValueListSettings& list) {
  if (doc_ == nullptr || !doc_->HasRight(kSetUpFieldsRight)) return;
  if (RunValueSetup(this, *doc_, list, ui_)) RefreshLists(kDefectTag, true);
}

void CMainFrame::SetUpNumbering() {
  if (doc_ == nullptr || !doc_->HasRight(kSetUpNumberingRight)) return;
  RunNumberingDialog(this, *doc_, ui_);
}

}  // namespace qm::app
