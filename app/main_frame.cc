// The main window: project commands, the windows of the open project, the tick, the alert.
#include "main_frame.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QStatusBar>
#include <QStyle>
#include <QSystemTrayIcon>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <array>

#include "config_record_window.h"
#include "defect_record_window.h"
#include "defects/defect_table.h"
#include "defects/selection_commands.h"
#include "event_dialog.h"
#include "group_record_window.h"
#include "options_dialog.h"
#include "person_record_window.h"
#include "qt_ui.h"
#include "record_list_window.h"
#include "shell/config_window.h"
#include "shell/people_window.h"
#include "shell/window_fit.h"
#include "store/store_error.h"
#include "task_record_window.h"

namespace qm::app {
namespace {

constexpr const ListWindowKind& kUserListWindow = kListWindowKinds[1];
constexpr const ListWindowKind& kGroupListWindow = kListWindowKinds[2];
constexpr const ListWindowKind& kConfigListWindow = kListWindowKinds[3];
constexpr const ListWindowKind& kWorkbookWindow = kListWindowKinds[5];
constexpr const ListWindowKind& kCustomerListWindow = kListWindowKinds[7];
// The lists this program has, in the Window menu's order, with their menu items.
constexpr std::pair<const ListWindowKind*, const char*> kShownLists[] = {
    {&kDefectListWindow, "&Defect List"},         {&kUserListWindow, "&User List"},
    {&kCustomerListWindow, "Cu&stomer List"},     {&kGroupListWindow, "User &Groups"},
    {&kConfigListWindow, "Test Con&figurations"}, {&kWorkbookWindow, "&Workbook"}};

bool IsPeople(const RecordListWindow* list) {
  return list != nullptr &&
         (&list->kind() == &kUserListWindow || &list->kind() == &kCustomerListWindow);
}

bool IsGroups(const RecordListWindow* list) {
  return list != nullptr && &list->kind() == &kGroupListWindow;
}

template <class Item>
std::vector<Item*> SelectedAs(const RecordListWindow& list) {
  std::vector<Item*> items;
  for (RecordItem* item : list.SelectedItems()) items.push_back(static_cast<Item*>(item));
  return items;
}

// The group that takes the users of the groups being deleted, chosen by the person.
std::optional<std::uint32_t> ChooseHeirGroup(QWidget* parent,
                                             const std::vector<const CUserGroup*>& candidates) {
  QStringList names;
  for (const CUserGroup* group : candidates) names << ToQt(group->name.str());
  bool ok = false;
  const QString chosen = QInputDialog::getItem(parent, ToQt(std::string(kHeirTitle)),
                                               ToQt(std::string(kHeirText)), names, 0, false, &ok);
  if (!ok) return std::nullopt;
  return candidates[static_cast<std::size_t>(names.indexOf(chosen))]->GetId();
}

bool IsConfigs(const RecordListWindow* list) {
  return list != nullptr && &list->kind() == &kConfigListWindow;
}

bool IsWorkbook(const RecordListWindow* list) {
  return list != nullptr && &list->kind() == &kWorkbookWindow;
}

// A window of the area pulled back within it, so that none opens out of reach: a place
// remembered on a larger screen, or a default size larger than the area.
void KeepWithin(QWidget* frame, const QMdiArea* area) {
  if (!area->isVisible()) return;  // no size to keep within before the main window shows
  const QRect r = frame->geometry();
  const auto [left, top, right, bottom] =
      FitIntoArea({r.left(), r.top(), r.right() + 1, r.bottom() + 1}, area->viewport()->width(),
                  area->viewport()->height());
  frame->setGeometry(left, top, right - left, bottom - top);
}

}  // namespace

CMainFrame::CMainFrame(ui::Ui& ui, CAppPreferences& preferences,
                       CDefectWindow::RunEventDialog runDialog)
    : ui_(ui), preferences_(preferences), runDialog_(std::move(runDialog)) {
  area_ = new QMdiArea;
  area_->setAccessibleName("Project windows");
  area_->setViewMode(QMdiArea::SubWindowView);
  setCentralWidget(area_);
  statusBar()->showMessage("Ready");
  statusBar()->setAccessibleName("Status");
  user_ = new QLabel;
  statusBar()->addPermanentWidget(user_);
  MakeMenus();
  tick_.setInterval(1000);
  connect(&tick_, &QTimer::timeout, this, [this] { Tick(); });
  connect(area_, &QMdiArea::subWindowActivated, this, [this] { UpdateCommands(); });
  connect(qApp, &QApplication::applicationStateChanged, this, [this](Qt::ApplicationState s) {
    if (s == Qt::ApplicationActive) ClearAlert();
  });
  UpdateTitle();
  UpdateCommands();
}

CMainFrame::~CMainFrame() {
  PutProjectAway();
  // The windows that the base class destroys after this body may still signal: nothing of
  // this frame, whose members are gone by then, may answer them.
  area_->disconnect(this);
  qApp->disconnect(this);
}

void CMainFrame::MakeMenus() {
  QMenu* file = menuBar()->addMenu("&File");
  // Ctrl+N adds an item, the command of every day; a new project takes Shift as well.
  file->addAction("&New Project...", QKeySequence("Ctrl+Shift+N"), this, [this] { NewProject(); });
  file->addAction("&Open Project...", QKeySequence::Open, this, [this] { ChooseProject(); });
  // Ctrl+W and Ctrl+F4 close the window in front of the area; the project takes Shift too.
  projectActions_.push_back(file->addAction("&Close Project", QKeySequence("Ctrl+Shift+W"), this,
                                            [this] { CloseProject(); }));
  file->addSeparator();
  file->addAction("E&xit", QKeySequence::Quit, this, [this] { close(); });

  // Alt+E is Edit Item's own key, so the menu opens with Alt+I.
  QMenu* edit = menuBar()->addMenu("Ed&it");
  QAction* add = edit->addAction("&Add Item...", this, [this] { AddItem(); });
  add->setShortcut(QKeySequence("Ctrl+N"));
  add->setIcon(style()->standardIcon(QStyle::SP_FileIcon));
  itemActions_.emplace_back(add, &ItemRights::add);
  itemActions_.emplace_back(edit->addAction("&Edit Item...", QKeySequence("Alt+E"), this,
                                            [this] { OpenSelection(true); }),
                            &ItemRights::edit);
  itemActions_.emplace_back(edit->addAction("&View Item", QKeySequence("Alt+Return"), this,
                                            [this] { OpenSelection(false); }),
                            &ItemRights::view);
  itemActions_.emplace_back(edit->addAction("D&uplicate Item", QKeySequence("Ctrl+D"), this,
                                            [this] { DuplicateSelection(); }),
                            &ItemRights::duplicate);
  QAction* remove = edit->addAction("D&elete Item", QKeySequence("Alt+Del"), this, [this] {
    RecordListWindow* list = ActiveList();
    if (list == nullptr || doc_ == nullptr) return;
    if (IsPeople(list)) {
      DeleteSelectedPeople(*list);
      return;
    }
    if (IsConfigs(list)) {
      const std::vector<CTestConfig*> configs = SelectedAs<CTestConfig>(*list);
      for (RecordWindowWidget* w : std::vector<RecordWindowWidget*>(records_)) {
        if (std::find(configs.begin(), configs.end(), w->logic().currentItem()) != configs.end()) {
          CloseRecordWindow(w);
        }
      }
      DeleteConfigs(*doc_, configs, ui_);
      RefreshLists(kConfigTag, false);
      return;
    }
    if (IsGroups(list)) {
      const std::vector<CUserGroup*> groups = SelectedAs<CUserGroup>(*list);
      for (RecordWindowWidget* w : std::vector<RecordWindowWidget*>(records_)) {
        if (std::find(groups.begin(), groups.end(), w->logic().currentItem()) != groups.end()) {
          CloseRecordWindow(w);
        }
      }
      DeleteGroups(*doc_, groups, ui_, [this](const std::vector<const CUserGroup*>& candidates) {
        return ChooseHeirGroup(this, candidates);
      });
      RefreshLists(kGroupTag, false);
      RefreshLists(kUserTag, false);
      return;
    }
    if (IsWorkbook(list)) {
      std::vector<CTask*> tasks;
      for (RecordItem* item : list->SelectedItems()) tasks.push_back(static_cast<CTask*>(item));
      for (RecordWindowWidget* w : std::vector<RecordWindowWidget*>(records_)) {
        if (std::find(tasks.begin(), tasks.end(), w->logic().currentItem()) != tasks.end()) {
          CloseRecordWindow(w);
        }
      }
      DeleteTasks(*doc_, Workbook(), tasks, ui_);
      list->Refresh(false);
      return;
    }
    const std::vector<CDefect*> selected = SelectedDefects();
    for (CDefect* d : selected) {
      for (RecordWindowWidget* w : std::vector<RecordWindowWidget*>(records_)) {
        if (w->logic().currentItem() == d) CloseRecordWindow(w);
      }
    }
    DeleteDefects(*doc_, *Defects(), selected, ui_);
    list->Refresh(false);
  });
  itemActions_.emplace_back(remove, &ItemRights::remove);
  projectActions_.push_back(edit->addAction("&Copy", QKeySequence::Copy, this, [this] {
    // The selected defects under the program's own clipboard format.
    const std::vector<std::uint8_t> block = ClipboardBlock(SelectedDefects());
    auto* mime = new QMimeData;
    mime->setData(QString::fromLatin1(kClipboardFormat),
                  QByteArray(reinterpret_cast<const char*>(block.data()),
                             static_cast<qsizetype>(block.size())));
    QGuiApplication::clipboard()->setMimeData(mime);
  }));
  transfer_ = edit->addAction("Transfer to User List", QKeySequence("Ctrl+M"), this,
                              [this] { TransferSelection(); });

  QMenu* defect = menuBar()->addMenu("&Defect");
  for (const DefectCommand command : kDefectCommands) {
    QAction* action = defect->addAction(ToQt(std::string(CommandInfo(command).menuText)), this,
                                        [this, command] { RunOnSelection(command); });
    commandActions_.emplace_back(command, action);
  }

  QMenu* tools = menuBar()->addMenu("&Tools");
  tools->addAction("&Options...", this, [this] { ShowOptions(); });

  QMenu* window = menuBar()->addMenu("&Window");
  for (const auto& [kind, name] : kShownLists) {
    listActions_.emplace_back(window->addAction(name, this, [this, kind] { ShowList(*kind); }),
                              kind);
  }
  window->addSeparator();
  window->addAction("&Cascade", area_, &QMdiArea::cascadeSubWindows);
  window->addAction("&Tile", area_, &QMdiArea::tileSubWindows);
  MakeSetupMenus(file, tools);

  QToolBar* bar = addToolBar("Standard");
  bar->setObjectName("Standard");
  bar->setAccessibleName("Standard toolbar");
  // The button that shows the commands a narrow window leaves out.
  if (auto* more = bar->findChild<QToolButton*>("qt_toolbar_ext_button")) {
    more->setAccessibleName("More commands");
  }
  bar->addAction(style()->standardIcon(QStyle::SP_DialogOpenButton), "Open Project", this,
                 [this] { ChooseProject(); });
  bar->addAction(add);
}

void CMainFrame::UpdateTitle() {
  // Who is logged in, in the status bar; nothing without a project or a login.
  const RecordItem* user = doc_ != nullptr ? doc_->currentUser() : nullptr;
  user_->setText(user != nullptr ? "User: " + ToQt(user->GetName()) : QString());
  if (doc_ == nullptr) {
    setWindowTitle("Quillmark");
    return;
  }
  const QString path = ToQt(doc_->path());
  setWindowTitle("Quillmark - " +
                 (preferences_.fullPathInTitleBar != 0 ? path : QFileInfo(path).fileName()));
  for (const auto& [kind, list] : lists_) {
    if (list != nullptr && list->parentWidget() != nullptr) {
      list->parentWidget()->setWindowTitle(list->Title());
    }
  }
}

void CMainFrame::UpdateCommands() {
  const bool open = doc_ != nullptr;
  for (QAction* action : projectActions_) action->setEnabled(open);
  UpdateSetupCommands();
  std::vector<std::uint16_t> statuses;
  for (const CDefect* d : SelectedDefects()) statuses.push_back(d->status());
  for (const auto& [command, action] : commandActions_) {
    action->setEnabled(open && doc_->HasRight(CommandInfo(command).right) &&
                       AllowedOnSelection(command, statuses, doc_->options().allowMultipleFixes));
  }
  const RecordListWindow* list = ActiveList();
  const bool fromCustomers = list != nullptr && &list->kind() == &kCustomerListWindow;
  transfer_->setText(fromCustomers ? "Transfer to User List" : "Transfer to Customer List");
  transfer_->setEnabled(
      open && IsPeople(list) && !list->SelectedItems().empty() &&
      doc_->HasRight(fromCustomers ? Right::kMakeCustomerUser : Right::kMakeUserCustomer));
  for (const auto& [action, shown] : listActions_) {
    action->setEnabled(open && doc_->HasRight(shown->rights.view));
  }
  // The item commands act on the list in front, or on the defect list when none is.
  const ListWindowKind& kind = list != nullptr ? list->kind() : kDefectListWindow;
  for (const auto& [action, right] : itemActions_) {
    // Tasks have no copies.
    const bool none = right == &ItemRights::duplicate && IsWorkbook(list);
    action->setEnabled(open && !none && doc_->HasRight(kind.rights.*right));
  }
}

RecordListWindow* CMainFrame::List(const ListWindowKind& kind) const {
  const auto found = lists_.find(kind.kind);
  return found == lists_.end() ? nullptr : found->second.data();
}

RecordListWindow* CMainFrame::defectList() const { return List(kDefectListWindow); }

RecordListWindow* CMainFrame::ActiveList() const {
  // The current window, also while the program is in the background.
  const QMdiSubWindow* active = area_->currentSubWindow();
  for (const auto& [kind, list] : lists_) {
    if (list != nullptr && active != nullptr && active->widget() == list) return list;
  }
  return nullptr;
}

std::vector<CDefect*> CMainFrame::SelectedDefects() const {
  std::vector<CDefect*> selected;
  if (RecordListWindow* list = defectList()) {
    for (RecordItem* item : list->SelectedItems()) selected.push_back(static_cast<CDefect*>(item));
  }
  return selected;
}

void CMainFrame::RefreshLists(Tag table, bool resort) {
  for (const auto& [kind, list] : lists_) {
    if (list != nullptr && (list->list().table().tag() == table || table == kDefectTag)) {
      // The people lists count defects too.
      list->Refresh(resort && list->list().table().tag() == table);
    }
  }
}

CTaskTable& CMainFrame::Workbook() const {
  return static_cast<CTaskTable&>(*doc_->GetTable(kTasksTag));
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

void CMainFrame::closeEvent(QCloseEvent* event) {
  if (!QueryCloseRecordWindows()) {
    event->ignore();
    return;
  }
  const QRect r = normalGeometry();
  preferences_.SetPlacement("MainWindowPos", QString("%1 %2 %3 %4 %5")
                                                 .arg(isMaximized() ? 1 : 0)
                                                 .arg(r.left())
                                                 .arg(r.top())
                                                 .arg(r.width())
                                                 .arg(r.height())
                                                 .toStdString());
  PutProjectAway();
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

bool CMainFrame::OpenProject(const std::string& path, const std::optional<ui::LoginEntry>& login) {
  if (!CloseProject()) return false;
  doc_ = std::make_unique<CDBDoc>(ui_, kinds_, static_cast<ProjectHost&>(*this));
  if (doc_->OpenProject(path, login) != 1) {
    doc_.reset();
    UpdateTitle();
    UpdateCommands();
    return false;
  }
  UpdateTitle();
  UpdateCommands();
  statusBar()->showMessage("Ready");
  return true;
}

std::string CMainFrame::TakeRequest(const std::optional<std::string>& file,
                                    const std::optional<ui::LoginEntry>& login) {
  showNormal();
  raise();
  activateWindow();
  if (!file && !login) return {};
  if (QApplication::activeModalWidget() != nullptr) {
    return "Quillmark is already running and waits for an answer in one of its windows, so it "
           "cannot open anything now. Answer it there, then start Quillmark again.";
  }
  if (!file && doc_ == nullptr) {
    return "Quillmark is already running with no project open. Start it again with the "
           "project file as well as the user name.";
  }
  const std::string path = file ? *file : doc_->path();
  const auto* user =
      doc_ != nullptr ? dynamic_cast<const LoginAccount*>(doc_->currentUser()) : nullptr;
  const bool sameUser = !login || (doc_ != nullptr && !doc_->multiUser()) ||
                        (user != nullptr && SameLoginText(user->LoginName(), login->name));
  if (doc_ != nullptr && QFileInfo(ToQt(path)) == QFileInfo(ToQt(doc_->path())) && sameUser) {
    return {};  // open here already
  }
  // Opened from the event loop, not from inside the other copy's request.
  QTimer::singleShot(0, this, [this, path, login] { OpenProject(path, login); });
  return {};
}

void CMainFrame::NewProject() {
  const auto path = ui_.ChooseFile({"Save new project file as:",
                                    {"Project Files (*.qmk)", "All Files (*.*)"},
                                    "Untitled.qmk",
                                    true,
                                    false});
  if (!path) return;
  // The project open here is not replaced from under its own windows: it is closed first,
  // by the person, who then sees whether anyone else still has it open.
  if (doc_ != nullptr && QFileInfo(ToQt(*path)) == QFileInfo(ToQt(doc_->path()))) {
    ui_.Tell("The project " + *path +
                 " is open here. Close it first (File > Close Project), then make the new "
                 "project under its name.",
             ui::Icon::kWarning);
    return;
  }
  if (!CDBDoc(ui_, kinds_, static_cast<ProjectHost&>(*this)).MayMakeProjectAt(*path) ||
      !CloseProject()) {
    return;
  }
  doc_ = std::make_unique<CDBDoc>(ui_, kinds_, static_cast<ProjectHost&>(*this));
  try {
    doc_->NewProject(*path, true);
  } catch (const StoreError& e) {
    ui_.Tell(e.status == DBStatus::kInUse ? OpenElsewhereText(*path, {})
                                          : "The project could not be made (error " +
                                                std::to_string(static_cast<int>(e.status)) + ").",
             ui::Icon::kError);
    doc_.reset();
    UpdateCommands();
    return;
  }
  if (doc_->HasRight(kDefectListWindow.rights.view)) ShowList(kDefectListWindow);
  UpdateTitle();
  UpdateCommands();
}

void CMainFrame::ChooseProject() {
  const auto path =
      ui_.ChooseFile({"Open", {"Project Files (*.qmk)", "All Files (*.*)"}, "", false, false});
  if (path) OpenProject(*path);
}

bool CMainFrame::QueryCloseRecordWindows() {
  for (RecordWindowWidget* window : std::vector<RecordWindowWidget*>(records_)) {
    // The window asking comes to the front, so the person sees what the question is about.
    area_->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(window->parentWidget()));
    bool saved = false;
    if (!window->logic().QueryClose(&saved)) return false;
    if (saved && window->onSaved) window->onSaved();
    CloseRecordWindow(window);
  }
  return true;
}

bool CMainFrame::CloseProject() {
  if (!QueryCloseRecordWindows()) return false;
  PutProjectAway();
  return true;
}

void CMainFrame::PutProjectAway() {
  if (doc_ == nullptr) return;
  doc_->CloseProject();
  doc_.reset();
  tick_.stop();
  ClearAlert();
  UpdateTitle();
  UpdateCommands();
  statusBar()->showMessage("Ready");
}

RecordListWindow* CMainFrame::ShowList(const ListWindowKind& kind) {
  if (!Permits(kind.rights.view)) return nullptr;
  if (RecordListWindow* open = List(kind)) {
    area_->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(open->parentWidget()));
    return open;
  }
  std::unique_ptr<CRecordListView> logic;
  ItemTable& people = *doc_->GetTable(kUserTag);
  if (&kind == &kUserListWindow) {
    logic = std::make_unique<CUserListView>(people, ui_, doc_->GetTable(kGroupTag), Defects());
  } else if (&kind == &kWorkbookWindow) {
    logic = std::make_unique<CTaskListView>(Workbook(), ui_, *doc_);
  } else if (&kind == &kCustomerListWindow) {
    logic = std::make_unique<CCustomerListView>(people, ui_, Defects());
  } else if (&kind == &kConfigListWindow) {
    logic = std::make_unique<CSystemListView>(*doc_->GetTable(kConfigTag), ui_);
  } else if (&kind == &kGroupListWindow) {
    logic = std::make_unique<CUserGroupListView>(*doc_->GetTable(kGroupTag), ui_, people);
  } else {
    auto defects = std::make_unique<CDefectListView>(*Defects(), ui_);
    defects->SetOnlyAssignedTo(OnlyAssignedUser(*doc_));
    logic = std::move(defects);
  }
  if (auto* names = dynamic_cast<CUserListView*>(logic.get())) {
    names->SetFirstNameFirst(ReadPersonalSettings(doc_->preferences()).firstNameFirst);
  }
  auto* window = new RecordListWindow(kind, std::move(logic));
  window->SetGrayed(preferences_.strikeClosedDefects != 0);
  lists_[kind.kind] = window;
  QMdiSubWindow* frame = area_->addSubWindow(window);
  frame->setAttribute(Qt::WA_DeleteOnClose);
  frame->resize(640, 420);
  // Double-click opens the edit or the view window, as the user or the project chose.
  window->onOpen = [this] {
    OpenSelection(!ReadPersonalSettings(doc_->preferences()).viewOnDoubleClick);
  };
  window->onClosing = [this, window] { SavePlacement(*window); };
  window->onTitleChanged = [this] {
    UpdateTitle();
    UpdateCommands();
  };
  RestorePlacement(*window);
  window->show();
  KeepWithin(frame, area_);
  area_->setActiveSubWindow(frame);
  UpdateTitle();
  return window;
}

void CMainFrame::SavePlacement(RecordListWindow& list) {
  auto* frame = qobject_cast<QMdiSubWindow*>(list.parentWidget());
  if (frame == nullptr) return;
  list.TakeWidths();
  WindowPlacement placement;
  placement.visible = frame->isVisible();
  placement.state = frame->isMaximized()   ? WindowPlacement::kMaximised
                    : frame->isMinimized() ? WindowPlacement::kIconic
                                           : WindowPlacement::kNormal;
  const QRect r =
      frame->isMaximized() || frame->isMinimized() ? frame->normalGeometry() : frame->geometry();
  placement.rect = {r.left(), r.top(), r.right() + 1, r.bottom() + 1};
  preferences_.SetWindowValue(list.kind().valueName, list.list().SavePlacement(placement));
}

void CMainFrame::RestorePlacement(RecordListWindow& list) {
  const auto value = preferences_.GetWindowValue(list.kind().valueName);
  if (!value) return;
  const std::optional<WindowPlacement> placement = list.list().RestorePlacement(*value);
  if (!placement) return;  // the default size and columns stay
  list.list().SortByColumns();
  list.ShowColumns();
  auto* frame = qobject_cast<QMdiSubWindow*>(list.parentWidget());
  const auto& [left, top, right, bottom] = placement->rect;
  if (right > left && bottom > top) frame->setGeometry(left, top, right - left, bottom - top);
  if (placement->state == WindowPlacement::kMaximised) frame->showMaximized();
  if (placement->state == WindowPlacement::kIconic) frame->showMinimized();
}

void CMainFrame::Place(RecordWindowWidget* window, Tag table, std::string_view placementName) {
  records_.push_back(window);
  window->placementName = placementName;
  QMdiSubWindow* frame = area_->addSubWindow(window);
  frame->resize(760, 560);
  const auto value = preferences_.GetWindowValue(placementName);
  if (const auto placement = value ? DecodePlacement(*value) : std::nullopt) {
    const auto& [left, top, right, bottom] = placement->rect;
    if (right > left && bottom > top) frame->setGeometry(left, top, right - left, bottom - top);
  }
  window->onClosed = [this, window] { CloseRecordWindow(window); };
  window->onSaved = [this, table] { RefreshLists(table, true); };
  window->show();
  KeepWithin(frame, area_);
}

void CMainFrame::CloseRecordWindow(RecordWindowWidget* window) {
  std::erase(records_, window);
  // Closing gives up the lock and the edit, and keeps the place; the frame goes too.
  window->logic().OnCancelButton();
  QWidget* frame = window->parentWidget();
  if (frame != nullptr) {
    const QRect r = frame->geometry();
    preferences_.SetWindowValue(
        window->placementName,
        EncodePlacement({frame->isVisible(),
                         WindowPlacement::kNormal,
                         {r.left(), r.top(), r.right() + 1, r.bottom() + 1}}));
  }
  window->deleteLater();
  if (frame != nullptr) frame->deleteLater();
}

DefectRecordWindow* CMainFrame::AddDefect() {
  if (!Permits(kDefectListWindow.rights.add)) return nullptr;
  auto* window = static_cast<DefectRecordWindow*>(NewItemWindow(nullptr));
  window->Open(CRecordWindow::kAddClose);
  return window;
}

RecordWindowWidget* CMainFrame::NewItemWindow(const RecordListWindow* list) {
  if (IsWorkbook(list)) {
    auto* window = new TaskRecordWindow(*doc_, Workbook(), ui_, marks_);
    Place(window, kTasksTag, "TaskViewPos");
    return window;
  }
  if (IsConfigs(list)) {
    auto* window = new ConfigRecordWindow(*doc_, ui_, marks_);
    Place(window, kConfigTag, "ConfigViewPos");
    return window;
  }
  if (IsGroups(list)) {
    auto* window = new GroupRecordWindow(*doc_, ui_, marks_);
    Place(window, kGroupTag, "UserGroupViewPos");
    return window;
  }
  if (IsPeople(list)) {
    const bool customers = &list->kind() == &kCustomerListWindow;
    auto* window = new PersonRecordWindow(*doc_, ui_, marks_, customers);
    Place(window, kUserTag, customers ? "CustomerViewPos" : "UserViewPos");
    return window;
  }
  auto* window = new DefectRecordWindow(*doc_, *Defects(), ui_, marks_, DialogRunner());
  Place(window, kDefectTag, "DefectViewPos");
  return window;
}

void CMainFrame::DuplicateSelection() {
  RecordListWindow* list = ActiveList();
  if (list == nullptr || doc_ == nullptr) return;
  if (IsPeople(list)) {
    DuplicatePeople(*doc_, SelectedAs<CUser>(*list), ui_);
  } else if (IsGroups(list)) {
    DuplicateGroups(*doc_, SelectedAs<CUserGroup>(*list), ui_);
  } else if (IsConfigs(list)) {
    DuplicateConfigs(*doc_, SelectedAs<CTestConfig>(*list), ui_);
  } else if (!IsWorkbook(list)) {
    DuplicateDefects(*doc_, *Defects(), SelectedDefects(), ui_);
  }
  list->Refresh(false);
}

bool CMainFrame::Permits(Right right) {
  if (doc_ == nullptr) return false;
  if (doc_->HasRight(right)) return true;
  ui_.Tell(RightRefusal(right), ui::Icon::kWarning);
  return false;
}

RecordWindowWidget* CMainFrame::AddItem() {
  RecordListWindow* list = ActiveList();
  // A new defect takes the project's rules of numbering and assignment.
  if (list == nullptr || list->kind().kind == kDefectListWindow.kind) return AddDefect();
  if (!Permits(list->kind().rights.add)) return nullptr;
  RecordWindowWidget* window = NewItemWindow(list);
  window->Open(CRecordWindow::kAddClose);
  return window;
}

RecordWindowWidget* CMainFrame::OpenSelection(bool edit) {
  RecordListWindow* list = ActiveList();
  if (list == nullptr) list = defectList();
  if (list == nullptr) return nullptr;
  std::vector<RecordItem*> selected = list->SelectedItems();
  // A double-click or Enter of one who may look but not change opens the items to view.
  const ItemRights& rights = list->kind().rights;
  if (edit && !doc_->HasRight(rights.edit) && doc_->HasRight(rights.view)) edit = false;
  if (selected.empty() || !Permits(edit ? rights.edit : rights.view)) {
    return nullptr;
  }
  for (RecordItem* item : selected) item->isNew = item->isChanged = item->isAssigned = false;
  const std::uint16_t mode = edit ? CRecordWindow::kEdit : CRecordWindow::kView;
  RecordWindowWidget* opened = nullptr;
  if (IsWorkbook(list)) {
    // A task that stands for a defect opens the defect; the others their own window.
    std::vector<RecordItem*> written;
    for (RecordItem* item : selected) {
      const auto* task = static_cast<const CTask*>(item);
      if (task->kind == kTaskDefect && task->defect != nullptr) {
        opened = NewItemWindow(nullptr);
        opened->Open(mode, {const_cast<CDefect*>(task->defect)}, 1);
      } else if (task->kind != kTaskDefect) {
        written.push_back(item);
      }
    }
    if (!written.empty()) {
      opened = NewItemWindow(list);
      opened->Open(mode, std::move(written), 1);
    }
  } else {
    opened = NewItemWindow(list);
    opened->Open(mode, std::move(selected), 1);
  }
  list->Refresh(false);
  return opened;
}

void CMainFrame::RunOnSelection(DefectCommand command) {
  if (defectList() == nullptr || doc_ == nullptr) return;
  const CDefectWindow::RunEventDialog dialog = DialogRunner();
  std::optional<DefectCommand> next = command;
  while (next) {
    SelectionAction action(
        *doc_, *Defects(), SelectedDefects(), ui_,
        [&dialog](CDefectEvent& event) { return dialog(event, EventDialogMode::kEdit); });
    next = action.Run(*next);
  }
  RefreshLists(kDefectTag, true);
}

void CMainFrame::TransferSelection() {
  RecordListWindow* list = ActiveList();
  if (!IsPeople(list) || doc_ == nullptr) return;
  const bool toCustomers = &list->kind() == &kUserListWindow;
  std::vector<CUser*> people;
  for (RecordItem* item : list->SelectedItems()) people.push_back(static_cast<CUser*>(item));
  TransferPeople(*doc_, people, toCustomers, ui_);
  RefreshLists(kUserTag, false);
}

void CMainFrame::DeleteSelectedPeople(RecordListWindow& list) {
  std::vector<CUser*> people;
  for (RecordItem* item : list.SelectedItems()) people.push_back(static_cast<CUser*>(item));
  // A window that edits a person holds the record, and the delete leaves that person out;
  // any other window on a person who went goes too.
  std::vector<std::pair<RecordWindowWidget*, std::uint32_t>> showing;
  for (RecordWindowWidget* w : records_) {
    const RecordItem* shown = w->logic().currentItem();
    if (std::find(people.begin(), people.end(), shown) != people.end()) {
      showing.emplace_back(w, shown->GetId());
    }
  }
  if (DeletePeople(*doc_, people, &list.kind() == &kCustomerListWindow, ui_) == 0) return;
  for (const auto& [window, id] : showing) {
    if (doc_->GetTable(kUserTag)->ItemById(id) == nullptr) CloseRecordWindow(window);
  }
  RefreshLists(kUserTag, false);
}

void CMainFrame::ShowOptions() {
  OptionsDialog options(preferences_, doc_.get());
  RunOptionsDialog(this, options, doc_.get());
  const bool firstNameFirst =
      doc_ != nullptr && ReadPersonalSettings(doc_->preferences()).firstNameFirst;
  for (const auto& [kind, list] : lists_) {
    if (list == nullptr) continue;
    if (auto* people = dynamic_cast<CUserListView*>(&list->list())) {
      people->SetFirstNameFirst(firstNameFirst);
    }
    // Drawn again: grayed or not, names turned round.
    list->SetGrayed(preferences_.strikeClosedDefects != 0);
  }
  UpdateTitle();
}

void CMainFrame::Tick() {
  if (doc_ == nullptr) return;
  doc_->IdleWork();
  for (RecordWindowWidget* window : std::vector<RecordWindowWidget*>(records_)) window->OnIdle();
}

// ---- what the project asks of the program ------------------------------------------------

void CMainFrame::ProjectLoaded(CDBDoc& doc) {
  preferences_.SetLastOpenFile(doc.path());
  preferences_.Save();
  RememberRecentFile(doc.path());
  // The list windows of the last session, unless Ctrl is held; the defect list in any case.
  if (!ui_.HeldModifiers().ctrl && preferences_.GetWindowBlock()) {
    for (const ListWindowKind* window : DecodeWindowBlock(*preferences_.GetWindowBlock())) {
      ui_.SetStatusText(std::string(window->openingText));
      for (const auto& [shown, name] : kShownLists) {
        if (shown == window && doc.HasRight(shown->rights.view)) ShowList(*shown);
      }
    }
  }
  if (doc.HasRight(kDefectListWindow.rights.view)) ShowList(kDefectListWindow);
}

void CMainFrame::RememberLogin(const ui::LoginEntry& login) {
  if (preferences_.autoLogin == 0) return;
  preferences_.SetLastUser(login.name, login.password);
  preferences_.Save();
}

std::int32_t CMainFrame::DatabaseCheckSeconds() const { return preferences_.GetDBCheckSeconds(); }

void CMainFrame::StartBackgroundWork(CDBDoc&) { tick_.start(); }

void CMainFrame::BeforeClose(CDBDoc&) {
  for (RecordWindowWidget* window : std::vector<RecordWindowWidget*>(records_)) {
    CloseRecordWindow(window);
  }
}

void CMainFrame::CloseListWindows(CDBDoc&) {
  // The block names the list windows that were open, in the order of the area; each
  // keeps its own place.
  std::vector<std::uint32_t> open;
  std::vector<RecordListWindow*> closing;
  for (QMdiSubWindow* frame : area_->subWindowList(QMdiArea::CreationOrder)) {
    for (const auto& [kind, list] : lists_) {
      if (list != nullptr && frame->widget() == list) {
        open.push_back(kind);
        closing.push_back(list);
      }
    }
  }
  preferences_.SetWindowBlock(EncodeWindowBlock(open));
  preferences_.Save();
  for (RecordListWindow* list : closing) {
    SavePlacement(*list);
    delete list->parentWidget();
  }
  lists_.clear();
}

bool CMainFrame::ListWindowOpen(Tag table) const {
  for (const auto& [kind, list] : lists_) {
    if (list != nullptr && list->list().table().tag() == table) return true;
  }
  return false;
}

void CMainFrame::ItemAdded(Tag table, RecordItem&) { RefreshLists(table, false); }

void CMainFrame::ItemChanged(Tag table, RecordItem&) { RefreshLists(table, true); }

void CMainFrame::ItemRemoving(Tag table, RecordItem& item) {
  for (RecordWindowWidget* window : std::vector<RecordWindowWidget*>(records_)) {
    if (window->logic().currentItem() == &item) CloseRecordWindow(window);
  }
  // The item leaves the table after this call; the lists look again once it has.
  QTimer::singleShot(0, this, [this, table] { RefreshLists(table, false); });
}

void CMainFrame::AlertAssignment() {
  // The user's own choices of sound and question; a project without logins has both.
  const PersonalSettings settings = ReadPersonalSettings(doc_->preferences());
  if (QApplication::applicationState() == Qt::ApplicationActive) {
    if (settings.playSound) QApplication::beep();
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
  if (settings.playSound) QApplication::beep();
  if (settings.showQuestion &&
      ui_.Ask({"One or more defects have been assigned to you. Do you want to activate "
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
