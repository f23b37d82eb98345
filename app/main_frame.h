// CMainFrame, the program's main window: the menus, the status bar, the area of the list
// and record windows, the one-second tick of the open project, and the alert.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "defects/task.h"
#include "session/db_doc.h"
#include "session/project_host.h"
#include "session/value_lists.h"
#include "shell/app_preferences.h"
#include "shell/defect_window.h"
#include "shell/project_item_kinds.h"
#include "shell/recent_files.h"

class QLabel;
class QMdiArea;
class QMenu;
class QMdiSubWindow;
class QSystemTrayIcon;

namespace qm::app {

class DefectRecordWindow;
class PersonRecordWindow;
class RecordListWindow;
class RecordWindowWidget;

class CMainFrame : public QMainWindow, private ProjectHost {
 public:
  // The event dialogs run through `runDialog` when given (tests fill them), else as Qt
  // dialogs over this window.
  CMainFrame(ui::Ui& ui, CAppPreferences& preferences,
             CDefectWindow::RunEventDialog runDialog = {});
  ~CMainFrame() override;

  // Opens a project and shows its lists; false after the person was told why.
  bool OpenProject(const std::string& path, const std::optional<ui::LoginEntry>& login = {});
  // What a later start of the program asked for: this window comes to the front, and a
  // file or user named is opened here once this call has returned, the project open now
  // closing under its usual questions. Answers why not, empty when taken.
  std::string TakeRequest(const std::optional<std::string>& file,
                          const std::optional<ui::LoginEntry>& login);
  // Asks for a name and makes a new project there.
  void NewProject();
  // The Open dialog.
  void ChooseProject();
  // Puts the open project away, after each record window with changes not yet saved has
  // asked what becomes of them; false when the person cancelled, and the project stays.
  bool CloseProject();

  // A list window (the defect, user or customer list), opened when it is not.
  RecordListWindow* ShowList(const ListWindowKind& kind);
  // A record window on a new item of the active list (a defect when none is active).
  RecordWindowWidget* AddItem();
  DefectRecordWindow* AddDefect();
  // A record window on the active list's selection, in edit or view mode.
  RecordWindowWidget* OpenSelection(bool edit);
  // A command of the Defect menu on the defect list's selection.
  void RunOnSelection(DefectCommand command);
  // Moves the selected people of the active people list to the other list.
  void TransferSelection();
  // Edit > Delete Item on the user or customer list.
  void DeleteSelectedPeople(RecordListWindow& list);
  // The Options dialog, and what its OK changes in the windows.
  void ShowOptions();
  // The one-second tick: the project's idle work and the record windows' lock retries.
  void Tick();

  // The set-up and session commands (main_frame_setup.cc): a value list's set-up dialog,
  // after which the lists show the names anew.
  void SetUpValues(const ValueListSettings& list);
  // The defect numbering dialog.
  void SetUpNumbering();
  // "&Log In User...": another user takes over the open multi-user project; the record
  // windows close, and the lists the new user may not see.
  void LogInUser();
  // The password of the user logged in, or of a single-user project.
  void ChangePassword();
  // The project of the File menu's recent file at `index` (from 0); a file that is gone
  // is said so and taken off the list.
  void OpenRecentFile(std::size_t index);
  const RecentFileList& recentFiles() const { return recent_; }

  // Where the window stood when the program last ended: maximised from the start when it
  // has never ended here.
  void RestorePlacement();

  CDBDoc* doc() const { return doc_.get(); }
  RecordListWindow* List(const ListWindowKind& kind) const;
  RecordListWindow* defectList() const;
  const std::vector<RecordWindowWidget*>& recordWindows() const { return records_; }
  // Whether the tray icon of an assignment alert is up: the program was in the background
  // when someone assigned a defect to this user, and the user has not come back yet.
  bool alertShown() const { return tray_ != nullptr; }

 protected:
  // Ending the program: the window's placement first, then the project closes.
  void closeEvent(QCloseEvent* event) override;

 private:
  // ProjectHost
  void ProjectLoaded(CDBDoc& doc) override;
  void RememberLogin(const ui::LoginEntry& login) override;
  std::int32_t DatabaseCheckSeconds() const override;
  void StartBackgroundWork(CDBDoc& doc) override;
  void BeforeClose(CDBDoc& doc) override;
  void CloseListWindows(CDBDoc& doc) override;
  bool ListWindowOpen(Tag table) const override;
  void ItemAdded(Tag table, RecordItem& item) override;
  void ItemChanged(Tag table, RecordItem& item) override;
  void ItemRemoving(Tag table, RecordItem& item) override;
  void AlertAssignment() override;

  // Asks every record window with unsaved changes, closing each one answered; false
  // when the person cancelled.
  bool QueryCloseRecordWindows();
  // The project closes without a question.
  void PutProjectAway();
  void MakeMenus();
  // The entries of the set-up and session commands in the menus, and their states.
  void MakeSetupMenus(QMenu* file, QMenu* tools);
  void UpdateSetupCommands();
  // A project that opened heads the recent files.
  void RememberRecentFile(const std::string& path);
  void UpdateRecentFiles();
  void UpdateTitle();
  void UpdateCommands();
  // The list window that has the focus, or null.
  RecordListWindow* ActiveList() const;
  std::vector<CDefect*> SelectedDefects() const;
  // Every open list that shows the items of `table`, filled again.
  void RefreshLists(Tag table, bool resort);
  // A list window's placement and columns, to and from the preferences.
  void SavePlacement(RecordListWindow& list);
  void RestorePlacement(RecordListWindow& list);
  // A new record window in the area, wired to the frame.
  // Where it stood when a window of its kind last closed.
  void Place(RecordWindowWidget* window, Tag table, std::string_view placementName);
  void CloseRecordWindow(RecordWindowWidget* window);
  // A record window for the items of `list` (the defects when null), placed where its kind
  // was last; not yet opened.
  RecordWindowWidget* NewItemWindow(const RecordListWindow* list);
  CDefectTable* Defects() const;
  CTaskTable& Workbook() const;
  CDefectWindow::RunEventDialog DialogRunner();
  void ClearAlert();
  // "Duplicate Item" on the list in front.
  void DuplicateSelection();
  // Whether the user's group allows `right`; when it does not, the person is told so.
  bool Permits(Right right);

  ui::Ui& ui_;
  CAppPreferences& preferences_;
  CDefectWindow::RunEventDialog runDialog_;
  ProjectItemKinds kinds_;
  EditMarks marks_;
  std::unique_ptr<CDBDoc> doc_;
  QMdiArea* area_ = nullptr;
  std::map<std::uint32_t, QPointer<RecordListWindow>> lists_;  // by window kind
  std::vector<RecordWindowWidget*> records_;
  QTimer tick_;
  QSystemTrayIcon* tray_ = nullptr;
  std::vector<std::pair<DefectCommand, QAction*>> commandActions_;
  std::vector<QAction*> projectActions_;  // enabled while a project is open
  // The Window menu's lists, each offered to those who may view its items.
  std::vector<std::pair<QAction*, const ListWindowKind*>> listActions_;
  QAction* transfer_ = nullptr;
  // The set-up and session commands, each with when it is enabled.
  std::vector<std::pair<QAction*, std::function<bool()>>> setupActions_;
  RecentFileList recent_;
  std::vector<QAction*> recentActions_;
  QAction* recentSeparator_ = nullptr;
  // Add, edit, view, duplicate and delete, each with the member of a list's rights it asks.
  std::vector<std::pair<QAction*, Right ItemRights::*>> itemActions_;
  QLabel* user_ = nullptr;  // who is logged in, in the status bar
};

}  // namespace qm::app
