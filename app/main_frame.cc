// The main window: project commands, the windows of the open project, the tick, the alert.
#include "main_frame.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>
#include <QSystemTrayIcon>
#include <QToolBar>
#include <array>

#include "defect_list_window.h"
#include "defect_record_window.h"
#include "defects/defect_table.h"
#include "defects/selection_commands.h"
#include "event_dialog.h"
#include "options_dialog.h"
#include "qt_ui.h"
#include "store/store_error.h"

namespace qm::app {

CMainFrame::CMainFrame(ui::Ui& ui, CAppPreferences& preferences,
                       CDefectWindow::RunEventDialog runDialog)
    : ui_(ui), preferences_(preferences), runDialog_(std::move(runDialog)) {
  area_ = new QMdiArea;
  area_->setViewMode(QMdiArea::SubWindowView);
  setCentralWidget(area_);
  statusBar()->showMessage("Ready");
  MakeMenus();
  tick_.setInterval(1000);
  connect(&tick_, &QTimer::timeout, this, [this] { Tick(); });
  connect(qApp, &QApplication::applicationStateChanged, this, [this](Qt::ApplicationState s) {
    if (s == Qt::ApplicationActive) ClearAlert();
  });
  UpdateTitle();
  UpdateCommands();
}

CMainFrame::~CMainFrame() { CloseProject(); }

void CMainFrame::MakeMenus() {
  QMenu* file = menuBar()->addMenu("&File");
  file->addAction("&New Project...", this, [this] { NewProject(); });
  file->addAction("&Open Project...", QKeySequence::Open, this, [this] { ChooseProject(); });
  projectActions_.push_back(file->addAction("&Close Project", this, [this] { CloseProject(); }));
  file->addSeparator();
  file->addAction("E&xit", this, [this] { close(); });

  QMenu* defect = menuBar()->addMenu("&Defect");
  QAction* add = defect->addAction("&Add Defect...", this, [this] { AddDefect(); });
  add->setShortcut(QKeySequence("Ctrl+N"));
  projectActions_.push_back(add);
  projectActions_.push_back(defect->addAction("&Edit Item...", QKeySequence("Alt+E"), this,
                                              [this] { OpenSelection(true); }));
  projectActions_.push_back(defect->addAction("&View Item", QKeySequence("Alt+Return"), this,
                                              [this] { OpenSelection(false); }));
  defect->addSeparator();
  for (const DefectCommand command : kDefectCommands) {
    QAction* action = defect->addAction(ToQt(std::string(CommandInfo(command).menuText)), this,
                                        [this, command] { RunOnSelection(command); });
    commandActions_.emplace_back(command, action);
  }
  defect->addSeparator();
  projectActions_.push_back(
      defect->addAction("D&uplicate Item", QKeySequence("Ctrl+D"), this, [this] {
        if (list_ == nullptr || doc_ == nullptr) return;
        DuplicateDefects(*doc_, *Defects(), list_->SelectedDefects(), ui_);
        list_->Refresh(false);
      }));
  projectActions_.push_back(
      defect->addAction("D&elete Item", QKeySequence("Alt+Del"), this, [this] {
        if (list_ == nullptr || doc_ == nullptr) return;
        const std::vector<CDefect*> selected = list_->SelectedDefects();
        for (CDefect* d : selected) {
          for (DefectRecordWindow* w : std::vector<DefectRecordWindow*>(records_)) {
            if (w->model().currentItem() == d) CloseRecordWindow(w);
          }
        }
        DeleteDefects(*doc_, *Defects(), selected, ui_);
        list_->Refresh(false);
      }));

  QMenu* tools = menuBar()->addMenu("&Tools");
  tools->addAction("&Options...", this, [this] { ShowOptions(); });

  QMenu* window = menuBar()->addMenu("&Window");
  projectActions_.push_back(window->addAction("&Defect List", this, [this] { ShowDefectList(); }));
  window->addAction("&Cascade", area_, &QMdiArea::cascadeSubWindows);
  window->addAction("&Tile", area_, &QMdiArea::tileSubWindows);

  QToolBar* bar = addToolBar("Standard");
  bar->setObjectName("Standard");
  bar->addAction(style()->standardIcon(QStyle::SP_DialogOpenButton), "Open Project", this,
                 [this] { ChooseProject(); });
  bar->addAction(style()->standardIcon(QStyle::SP_FileIcon), "Add Defect", this,
                 [this] { AddDefect(); });
}

void CMainFrame::UpdateTitle() {
  if (doc_ == nullptr) {
    setWindowTitle("Quillmark");
    return;
  }
  const QString path = ToQt(doc_->path());
  setWindowTitle("Quillmark - " +
                 (preferences_.fullPathInTitleBar != 0 ? path : QFileInfo(path).fileName()));
  if (listFrame_ != nullptr) listFrame_->setWindowTitle(list_->Title());
}

void CMainFrame::UpdateCommands() {
  const bool open = doc_ != nullptr;
  for (QAction* action : projectActions_) action->setEnabled(open);
  std::vector<std::uint16_t> statuses;
  if (list_ != nullptr) {
    for (const CDefect* d : list_->SelectedDefects()) statuses.push_back(d->status());
  }
  for (const auto& [command, action] : commandActions_) {
    action->setEnabled(open && doc_->HasRight(CommandInfo(command).right) &&
                       AllowedOnSelection(command, statuses, doc_->options().allowMultipleFixes));
  }
}

DefectListWindow* CMainFrame::defectList() const { return list_; }

void CMainFrame::closeEvent(QCloseEvent* event) {
  const QRect r = normalGeometry();
  preferences_.SetPlacement("MainWindowPos", QString("%1 %2 %3 %4 %5")
                                                 .arg(isMaximized() ? 1 : 0)
                                                 .arg(r.left())
                                                 .arg(r.top())
                                                 .arg(r.width())
                                                 .arg(r.height())
                                                 .toStdString());
  CloseProject();
  QMainWindow::closeEvent(event);
}

void CMainFrame::RestorePlacement() {
  const std::optional<std::string> text = preferences_.GetPlacement("MainWindowPos");
  const QStringList fields = text ? ToQt(*text).split(' ', Qt::SkipEmptyParts) : QStringList();
  std::array<int, 5> v{};
  bool ok = fields.size() == 5;
  for (qsizetype i = 0; ok && i < 5; ++i) v[static_cast<std::size_t>(i)] = fields[i].toInt(&ok);
  if (!ok || v[3] <= 0 || v[4] <= 0) {
    showMaximized();
    return;
  }
  setGeometry(v[1], v[2], v[3], v[4]);
  if (v[0] == 1) {
    showMaximized();
  } else {
    show();
  }
}

CDefectTable* CMainFrame::Defects() const {
  return doc_ != nullptr ? static_cast<CDefectTable*>(doc_->GetTable(kDefectTag)) : nullptr;
}

CDefectWindow::RunEventDialog CMainFrame::DialogRunner() {
  if (runDialog_) return runDialog_;
  return [this](CDefectEvent& event, EventDialogMode mode) {
    return RunEventDialog(this, *doc_, event, mode);
  };
}

bool CMainFrame::OpenProject(const std::string& path, const std::optional<ui::LoginEntry>& login) {
  CloseProject();
  doc_ = std::make_unique<CDBDoc>(ui_, kinds_, static_cast<ProjectHost&>(*this));
  if (doc_->OpenProject(path, login) != 1) {
    doc_.reset();
    UpdateTitle();
    UpdateCommands();
    return false;
  }
  ShowDefectList();
  UpdateTitle();
  UpdateCommands();
  statusBar()->showMessage("Ready");
  return true;
}

void CMainFrame::NewProject() {
  const auto path = ui_.ChooseFile({"Save new project file as:",
                                    {"Project Files (*.qmk)", "All Files (*.*)"},
                                    "Untitled.qmk",
                                    true,
                                    false});
  if (!path) return;
  CloseProject();
  doc_ = std::make_unique<CDBDoc>(ui_, kinds_, static_cast<ProjectHost&>(*this));
  try {
    doc_->NewProject(*path, true);
  } catch (const StoreError& e) {
    ui_.Tell(
        "The project could not be made (error " + std::to_string(static_cast<int>(e.status)) + ").",
        ui::Icon::kError);
    doc_.reset();
    UpdateCommands();
    return;
  }
  ShowDefectList();
  UpdateTitle();
  UpdateCommands();
}

void CMainFrame::ChooseProject() {
  const auto path =
      ui_.ChooseFile({"Open", {"Project Files (*.qmk)", "All Files (*.*)"}, "", false, false});
  if (path) OpenProject(*path);
}

void CMainFrame::CloseProject() {
  if (doc_ == nullptr) return;
  doc_->CloseProject();
  doc_.reset();
  tick_.stop();
  ClearAlert();
  UpdateTitle();
  UpdateCommands();
  statusBar()->showMessage("Ready");
}

DefectListWindow* CMainFrame::ShowDefectList() {
  if (doc_ == nullptr) return nullptr;
  if (list_ != nullptr) {
    area_->setActiveSubWindow(listFrame_);
    return list_;
  }
  auto* window = new DefectListWindow(*Defects(), ui_, preferences_.strikeClosedDefects != 0);
  list_ = window;
  listFrame_ = area_->addSubWindow(window);
  listFrame_->setAttribute(Qt::WA_DeleteOnClose);
  listFrame_->resize(640, 420);
  window->onOpen = [this] { OpenSelection(true); };
  window->onClosing = [this] { SaveListPlacement(); };
  RestoreListPlacement();
  window->onTitleChanged = [this] {
    UpdateTitle();
    UpdateCommands();
  };
  window->show();
  UpdateTitle();
  return window;
}

DefectRecordWindow* CMainFrame::NewRecordWindow() {
  auto* window = new DefectRecordWindow(*doc_, *Defects(), ui_, marks_, DialogRunner());
  records_.push_back(window);
  QMdiSubWindow* frame = area_->addSubWindow(window);
  frame->resize(760, 560);
  window->onClosed = [this, window] { CloseRecordWindow(window); };
  window->onSaved = [this] {
    if (list_ != nullptr) list_->Refresh(true);
  };
  window->show();
  return window;
}

void CMainFrame::CloseRecordWindow(DefectRecordWindow* window) {
  std::erase(records_, window);
  // Closing gives up the lock and the edit; the window's frame goes with it.
  window->model().OnCancelButton();
  QWidget* frame = window->parentWidget();
  window->deleteLater();
  if (frame != nullptr) frame->deleteLater();
}

DefectRecordWindow* CMainFrame::AddDefect() {
  if (doc_ == nullptr || !doc_->HasRight(1)) return nullptr;
  DefectRecordWindow* window = NewRecordWindow();
  window->Open(CRecordWindow::kAddClose);
  return window;
}

DefectRecordWindow* CMainFrame::OpenSelection(bool edit) {
  if (list_ == nullptr) return nullptr;
  const std::vector<CDefect*> selected = list_->SelectedDefects();
  if (selected.empty()) return nullptr;
  for (CDefect* d : selected) d->isNew = d->isChanged = d->isAssigned = false;
  DefectRecordWindow* window = NewRecordWindow();
  window->Open(edit ? CRecordWindow::kEdit : CRecordWindow::kView,
               std::vector<RecordItem*>(selected.begin(), selected.end()), 1);
  list_->Refresh(false);
  return window;
}

void CMainFrame::RunOnSelection(DefectCommand command) {
  if (list_ == nullptr || doc_ == nullptr) return;
  const CDefectWindow::RunEventDialog dialog = DialogRunner();
  std::optional<DefectCommand> next = command;
  while (next) {
    SelectionAction action(
        *doc_, *Defects(), list_->SelectedDefects(), ui_,
        [&dialog](CDefectEvent& event) { return dialog(event, EventDialogMode::kEdit); });
    next = action.Run(*next);
  }
  list_->Refresh(true);
}

void CMainFrame::ShowOptions() {
  OptionsDialog options(preferences_, doc_.get());
  if (RunOptionsDialog(this, options) && list_ != nullptr) {
    list_->SetGrayClosed(preferences_.strikeClosedDefects != 0);
  }
  UpdateTitle();
}

void CMainFrame::Tick() {
  if (doc_ == nullptr) return;
  doc_->IdleWork();
  for (DefectRecordWindow* window : std::vector<DefectRecordWindow*>(records_)) window->OnIdle();
}

// ---- what the project asks of the program ------------------------------------------------

void CMainFrame::ProjectLoaded(CDBDoc& doc) {
  preferences_.SetLastOpenFile(doc.path());
  preferences_.Save();
  // The list windows of the last session, unless Ctrl is held; the defect list in any case.
  if (!ui_.HeldModifiers().ctrl && preferences_.GetWindowBlock()) {
    for (const ListWindowKind* window : DecodeWindowBlock(*preferences_.GetWindowBlock())) {
      ui_.SetStatusText(std::string(window->openingText));
      if (window->kind == kDefectListWindow.kind) ShowDefectList();
    }
  }
  ShowDefectList();
}

void CMainFrame::SaveListPlacement() {
  if (list_ == nullptr || listFrame_ == nullptr) return;
  list_->TakeWidths();
  WindowPlacement placement;
  placement.visible = listFrame_->isVisible();
  placement.state = listFrame_->isMaximized()   ? WindowPlacement::kMaximised
                    : listFrame_->isMinimized() ? WindowPlacement::kIconic
                                                : WindowPlacement::kNormal;
  const QRect r = listFrame_->isMaximized() || listFrame_->isMinimized()
                      ? listFrame_->normalGeometry()
                      : listFrame_->geometry();
  placement.rect = {r.left(), r.top(), r.right() + 1, r.bottom() + 1};
  preferences_.SetWindowValue(kDefectListWindow.valueName, list_->list().SavePlacement(placement));
}

void CMainFrame::RestoreListPlacement() {
  const auto value = preferences_.GetWindowValue(kDefectListWindow.valueName);
  if (!value) return;
  const std::optional<WindowPlacement> placement = list_->list().RestorePlacement(*value);
  if (!placement) return;  // the default size and columns stay
  list_->list().SortByColumns();
  list_->ShowColumns();
  const auto& [left, top, right, bottom] = placement->rect;
  if (right > left && bottom > top) listFrame_->setGeometry(left, top, right - left, bottom - top);
  if (placement->state == WindowPlacement::kMaximised) listFrame_->showMaximized();
  if (placement->state == WindowPlacement::kIconic) listFrame_->showMinimized();
}

void CMainFrame::RememberLogin(const ui::LoginEntry& login) {
  if (preferences_.autoLogin == 0) return;
  preferences_.SetLastUser(login.name, login.password);
  preferences_.Save();
}

std::int32_t CMainFrame::DatabaseCheckSeconds() const { return preferences_.GetDBCheckSeconds(); }

void CMainFrame::StartBackgroundWork(CDBDoc&) { tick_.start(); }

void CMainFrame::BeforeClose(CDBDoc&) {
  for (DefectRecordWindow* window : std::vector<DefectRecordWindow*>(records_)) {
    CloseRecordWindow(window);
  }
}

void CMainFrame::CloseListWindows(CDBDoc&) {
  // The block names the list windows that were open; each keeps its own place.
  std::vector<std::uint32_t> open;
  if (list_ != nullptr) open.push_back(kDefectListWindow.kind);
  preferences_.SetWindowBlock(EncodeWindowBlock(open));
  preferences_.Save();
  SaveListPlacement();
  delete listFrame_.data();
}

bool CMainFrame::ListWindowOpen(Tag table) const { return table == kDefectTag && list_ != nullptr; }

void CMainFrame::ItemAdded(Tag table, RecordItem&) {
  if (table == kDefectTag && list_ != nullptr) list_->Refresh(false);
}

void CMainFrame::ItemChanged(Tag table, RecordItem&) {
  if (table == kDefectTag && list_ != nullptr) list_->Refresh(true);
}

void CMainFrame::ItemRemoving(Tag table, RecordItem& item) {
  for (DefectRecordWindow* window : std::vector<DefectRecordWindow*>(records_)) {
    if (window->model().currentItem() == &item) CloseRecordWindow(window);
  }
  // The item leaves the table after this call; the list looks again once it has.
  if (table == kDefectTag && list_ != nullptr) {
    QTimer::singleShot(0, list_, [list = list_] { list->Refresh(false); });
  }
}

void CMainFrame::AlertAssignment() {
  if (QApplication::applicationState() == Qt::ApplicationActive) {
    QApplication::beep();
    return;
  }
  if (tray_ != nullptr) return;  // the alert is up already
  tray_ = new QSystemTrayIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning), this);
  tray_->setToolTip("New Bug Assignment");
  connect(tray_, &QSystemTrayIcon::activated, this, [this] {
    activateWindow();
    raise();
    ClearAlert();
  });
  tray_->show();
  QApplication::beep();
  if (ui_.Ask({"One or more defects have been assigned to you. Do you want to activate "
               "Quillmark?",
               "Quillmark", ui::Icon::kQuestion, ui::Buttons::kYesNo}) == ui::Answer::kYes) {
    activateWindow();
    raise();
  }
}

void CMainFrame::ClearAlert() {
  if (tray_ == nullptr) return;
  tray_->hide();
  tray_->deleteLater();
  tray_ = nullptr;
}

}  // namespace qm::app
