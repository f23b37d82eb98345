// The list windows' view and model.
#include "record_list_window.h"

#include <QBrush>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QPalette>
#include <QVBoxLayout>
#include <algorithm>

#include "qt_ui.h"

namespace qm::app {
namespace {

// What the marks of the defect list's first column mean, for its header's tip.
constexpr const char* kMarkerLegend =
    "* assigned to you by another user\n+ new\n~ changed by another user\n"
    "Each mark stays until you open the defect.";

// One row's mark in words, for the cell's tip.
QString MarkerTip(const RecordItem& item) {
  if (item.isAssigned) return "Assigned to you by another user";
  if (item.isNew) return "New";
  if (item.isChanged) return "Changed by another user";
  return {};
}

}  // namespace

void RecordListModel::Reset() {
  beginResetModel();
  list_.BeforeFill();
  rows_.clear();
  const ItemTable& table = list_.table();
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    if (list_.Shows(*table.ItemAt(p))) rows_.push_back(table.ItemAt(p));
  }
  endResetModel();
}

RecordItem* RecordListModel::ItemAt(int row) const {
  return row >= 0 && row < static_cast<int>(rows_.size()) ? rows_[static_cast<std::size_t>(row)]
                                                          : nullptr;
}

int RecordListModel::RowOf(const RecordItem* item) const {
  const auto found = std::find(rows_.begin(), rows_.end(), item);
  return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

int RecordListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int RecordListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(list_.columns().size());
}

QVariant RecordListModel::data(const QModelIndex& index, int role) const {
  const RecordItem* item = ItemAt(index.row());
  if (item == nullptr || index.column() >= columnCount()) return {};
  const ListColumn& column = list_.columns()[static_cast<std::size_t>(index.column())];
  switch (role) {
    case Qt::DisplayRole: {
      std::string text;
      list_.GetCellText(*item, column.fieldId, text);
      return ToQt(text);
    }
    case Qt::TextAlignmentRole:
      return column.format == ListColumn::kRight ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                 : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ForegroundRole:
      if (gray_ && list_.Grayed(*item)) {
        return QBrush(QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text));
      }
      return {};
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
      // A mark is one character: its words go to the tip and to a screen reader.
      if (column.fieldId == ListColumn::kMarkerField) return MarkerTip(*item);
      return {};
    default:
      return {};
  }
}

QVariant RecordListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section >= columnCount()) return {};
  const ListColumn& column = list_.columns()[static_cast<std::size_t>(section)];
  const auto number = static_cast<std::uint16_t>(section + 1);
  switch (role) {
    case Qt::DisplayRole:
      return ToQt(column.title);
    case Qt::AccessibleTextRole:
      return column.fieldId == ListColumn::kMarkerField ? QString("Marks") : ToQt(column.title);
    case Qt::ToolTipRole:
      if (column.fieldId == ListColumn::kMarkerField) return QString(kMarkerLegend);
      if (number == list_.primarySortColumn()) {
        return list_.table().sortOrder().direction == 2
                   ? "Sorted by this column, descending. Click to sort ascending."
                   : "Sorted by this column, ascending. Click to sort descending.";
      }
      if (number == list_.secondarySortColumn()) return "Sorted second by this column.";
      return "Click to sort by this column; Shift+click to sort second by it.";
    default:
      return {};
  }
}

RecordListWindow::RecordListWindow(const ListWindowKind& kind,
                                   std::unique_ptr<CRecordListView> list, QWidget* parent)
    : QWidget(parent),
      kind_(kind),
      list_(std::move(list)),
      model_(*list_),
      view_(new QTableView(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_);
  view_->setModel(&model_);
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->verticalHeader()->hide();
  view_->verticalHeader()->setDefaultSectionSize(20);
  view_->setShowGrid(false);
  view_->setWordWrap(false);
  view_->setAccessibleName(ToQt(list_->name()));
  list_->SortByColumns();
  ShowColumns();
  QHeaderView* header = view_->horizontalHeader();
  header->setSectionsClickable(true);
  header->setSortIndicatorShown(true);
  header->setStretchLastSection(true);
  header->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header, &QHeaderView::sectionClicked, this, [this](int section) {
    const std::vector<RecordItem*> selected = SelectedItems();
    const bool shift = QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier);
    list_->OnHeaderClick(static_cast<std::uint16_t>(section + 1), shift);
    model_.Reset();
    ShowSortMark();
    Reselect(selected);
  });
  connect(header, &QHeaderView::customContextMenuRequested, this,
          [this](const QPoint& at) { HeaderPopup(at); });
  connect(view_, &QTableView::doubleClicked, this, [this] {
    if (onOpen) onOpen();
  });
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (onTitleChanged) onTitleChanged();
  });
}

std::vector<RecordItem*> RecordListWindow::SelectedItems() const {
  std::vector<RecordItem*> selected;
  for (int row = 0; row < model_.rowCount(); ++row) {
    if (view_->selectionModel()->isRowSelected(row, {})) selected.push_back(model_.ItemAt(row));
  }
  return selected;
}

void RecordListWindow::Refresh(bool resort) {
  const std::vector<RecordItem*> selected = SelectedItems();
  if (resort) list_->table().Sort();
  model_.Reset();
  Reselect(selected);
  if (onTitleChanged) onTitleChanged();
}

void RecordListWindow::Reselect(const std::vector<RecordItem*>& items) {
  QItemSelection selection;
  for (const RecordItem* item : items) {
    // An item that is gone from the list is simply not selected again.
    const int row = model_.RowOf(item);
    if (row < 0) continue;
    selection.select(model_.index(row, 0), model_.index(row, model_.columnCount() - 1));
  }
  view_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  if (!selection.isEmpty()) view_->scrollTo(selection.indexes().first());
}

QString RecordListWindow::Title() const {
  return ToQt(list_->Title(static_cast<std::uint32_t>(SelectedItems().size())));
}

void RecordListWindow::SetGrayed(bool gray) {
  model_.SetGrayed(gray);
  model_.Reset();
}

void RecordListWindow::ShowColumns() {
  model_.Reset();
  for (std::size_t c = 0; c < list_->columns().size(); ++c) {
    view_->setColumnWidth(static_cast<int>(c), list_->columns()[c].width);
  }
  ShowSortMark();
}

void RecordListWindow::ShowSortMark() {
  // The header's arrow on the first sort column; the second is told in its tip.
  const int column = static_cast<int>(list_->primarySortColumn()) - 1;
  view_->horizontalHeader()->setSortIndicator(
      column, list_->table().sortOrder().direction == 2 ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void RecordListWindow::keyPressEvent(QKeyEvent* event) {
  // Enter on a row opens it as a double-click does; the view leaves the key to its window.
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
      !SelectedItems().empty() && onOpen) {
    onOpen();
    return;
  }
  QWidget::keyPressEvent(event);
}

void RecordListWindow::TakeWidths() {
  std::vector<std::uint16_t> widths;
  for (int c = 0; c < model_.columnCount(); ++c) {
    widths.push_back(static_cast<std::uint16_t>(view_->columnWidth(c)));
  }
  list_->SetWidths(widths);
}

void RecordListWindow::closeEvent(QCloseEvent* event) {
  if (onClosing) onClosing();
  QWidget::closeEvent(event);
}

void RecordListWindow::HeaderPopup(const QPoint& at) {
  TakeWidths();
  const std::uint16_t column = list_->HeaderHit(at.x() + view_->horizontalHeader()->offset());
  if (column == 0) return;
  QMenu menu(this);
  const std::vector<ColumnChoice> choices = list_->GetColumnMenu();
  for (std::size_t n = 0; n < choices.size(); ++n) {
    menu.addAction(ToQt(choices[n].title))->setData(static_cast<int>(n + 1));
  }
  menu.addSeparator();
  menu.addAction("Insert Column")->setData(CRecordListView::kInsertColumn);
  menu.addAction("Remove Column")->setData(CRecordListView::kRemoveColumn);
  QAction* chosen = menu.exec(view_->horizontalHeader()->mapToGlobal(at));
  if (chosen == nullptr) return;
  list_->ColumnCommand(column, static_cast<std::uint16_t>(chosen->data().toInt()));
  ShowColumns();
}

}  // namespace qm::app
