// The main window's set-up and session commands: the value lists' set-up dialogs in the
// Tools menu with the defect numbering dialog; logging in as another user, passwords and
// the recent files in the File menu; the About box; and their entries' states.
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

#include "about_dialog.h"
#include "main_frame.h"
#include "numbering_dialog.h"
#include "password_dialog.h"
#include "qt_ui.h"
#include "record_list_window.h"
#include "record_window_widget.h"
#include "shell/group_window.h"
#include "shell/people_window.h"
#include "shell/session_commands.h"
#include "value_setup_dialog.h"

namespace qm::app {
namespace {

// The lists' entries in the Set Up menu, in the order of kValueLists.
constexpr std::array<const char*, kValueLists.size()> kValueListMenuTexts = {
    "&Type...",         "&Resolution...", "&Priority...",  "Pro&duct...",
    "Re&producible...", "&Severity...",   "&Component...", "D&isposition..."};

}  // namespace

void CMainFrame::MakeSetupMenus(QMenu* file, QMenu* tools) {
  const auto hasRight = [this](Right right) {
    return [this, right] { return doc_ != nullptr && doc_->HasRight(right); };
  };
  // Before the separator above Exit.
  QAction* exitSeparator = file->actions().size() >= 2 ? file->actions().end()[-2] : nullptr;
  auto* logIn = new QAction("&Log In User...", file);
  connect(logIn, &QAction::triggered, this, [this] { LogInUser(); });
  setupActions_.emplace_back(logIn, [this] { return doc_ != nullptr && doc_->multiUser(); });
  auto* password = new QAction("Change &Password...", file);
  connect(password, &QAction::triggered, this, [this] { ChangePassword(); });
  setupActions_.emplace_back(password,
                             [this] { return doc_ != nullptr && CurrentPassword(*doc_); });
  file->insertSeparator(exitSeparator);
  file->insertActions(exitSeparator, {logIn, password});
  recentSeparator_ = file->insertSeparator(exitSeparator);
  for (std::size_t i = 0; i < RecentFileList::kSize; ++i) {
    auto* entry = new QAction(file);
    connect(entry, &QAction::triggered, this, [this, i] { OpenRecentFile(i); });
    file->insertAction(exitSeparator, entry);
    recentActions_.push_back(entry);
  }
  recent_.Read(preferences_);
  UpdateRecentFiles();

  QMenu* help = menuBar()->addMenu("&Help");
  help->addAction("&About Quillmark...", this, [this] { ShowAbout(this); });

  tools->addSeparator();
  QMenu* setup = tools->addMenu("Set &Up");
  for (std::size_t i = 0; i < kValueLists.size(); ++i) {
    const ValueListSettings& list = kValueLists[i];
    QAction* action =
        setup->addAction(kValueListMenuTexts[i], this, [this, &list] { SetUpValues(list); });
    setupActions_.emplace_back(action, hasRight(Right::kSetUpProjectFields));
  }
  setup->addSeparator();
  setupActions_.emplace_back(
      setup->addAction("Defect &Numbering...", this, [this] { SetUpNumbering(); }),
      hasRight(Right::kSetUpDefectNumbering));
}

void CMainFrame::UpdateSetupCommands() {
  for (const auto& [action, enabled] : setupActions_) action->setEnabled(enabled());
}

void CMainFrame::SetUpValues(const ValueListSettings& list) {
  if (doc_ == nullptr || !doc_->HasRight(Right::kSetUpProjectFields)) return;
  if (RunValueSetup(this, *doc_, list, ui_)) RefreshLists(kDefectTag, true);
}

void CMainFrame::SetUpNumbering() {
  if (doc_ == nullptr || !doc_->HasRight(Right::kSetUpDefectNumbering)) return;
  RunNumberingDialog(this, *doc_, ui_);
}

void CMainFrame::LogInUser() {
  if (doc_ == nullptr || !doc_->multiUser()) return;
  if (doc_->LogInUser() != 0) return;  // the same user, or the former one stays
  for (RecordWindowWidget* window : std::vector<RecordWindowWidget*>(records_)) {
    CloseRecordWindow(window);
  }
  for (const auto& [kind, list] : std::map(lists_)) {
    if (list == nullptr || doc_->HasRight(list->kind().rights.view)) continue;
    SavePlacement(*list);
    delete list->parentWidget();
    lists_.erase(kind);
  }
  // The workbook is the new user's, and names show in that user's order.
  const bool firstNameFirst = ReadPersonalSettings(doc_->preferences()).firstNameFirst;
  for (const auto& [kind, list] : lists_) {
    if (list == nullptr) continue;
    if (auto* people = dynamic_cast<CUserListView*>(&list->list())) {
      people->SetFirstNameFirst(firstNameFirst);
    }
    if (auto* defects = dynamic_cast<CDefectListView*>(&list->list())) {
      defects->SetOnlyAssignedTo(OnlyAssignedUser(*doc_));
    }
    list->Refresh(true);
  }
  UpdateTitle();
  UpdateCommands();
}

void CMainFrame::ChangePassword() {
  if (doc_ == nullptr) return;
  RunPasswordChange(this, *doc_, &marks_, &preferences_, ui_);
}

void CMainFrame::RememberRecentFile(const std::string& path) {
  recent_.Add(FromQt(QFileInfo(ToQt(path)).absoluteFilePath()));
  recent_.Write(preferences_);
  UpdateRecentFiles();
}

void CMainFrame::UpdateRecentFiles() {
  const std::vector<std::string>& paths = recent_.paths();
  const std::string home = FromQt(QDir::homePath());
  for (std::size_t i = 0; i < recentActions_.size(); ++i) {
    QAction* entry = recentActions_[i];
    entry->setVisible(i < paths.size());
    if (i >= paths.size()) continue;
    entry->setText(ToQt(RecentFileMenuText(i, paths[i], home)));
    entry->setStatusTip(ToQt(paths[i]));
  }
  recentSeparator_->setVisible(!paths.empty());
}

void CMainFrame::OpenRecentFile(std::size_t index) {
  if (index >= recent_.paths().size()) return;
  const std::string path = recent_.paths()[index];
  if (!QFileInfo::exists(ToQt(path))) {
    ui_.Tell("Cannot find the file " + path +
                 ". It may have been moved, renamed or deleted, and is taken off the list of "
                 "recent files.",
             ui::Icon::kWarning);
    recent_.Remove(path);
    recent_.Write(preferences_);
    UpdateRecentFiles();
    return;
  }
  if (doc_ != nullptr && QFileInfo(ToQt(doc_->path())) == QFileInfo(ToQt(path))) return;
  OpenProject(path);
}

}  // namespace qm::app
