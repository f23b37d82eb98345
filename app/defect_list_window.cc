// The defect list's view and model.
#include "defect_list_window.h"

#include <QApplication>
#include <QBrush>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPalette>
#include <QVBoxLayout>

#include "qt_ui.h"

namespace qm::app {

int DefectListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(table_.count());
}

int DefectListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(list_.columns().size());
}

QVariant DefectListModel::data(const QModelIndex& index, int role) const {
  const CDefect* defect = table_.DefectAt(static_cast<std::uint32_t>(index.row()) + 1);
  if (defect == nullptr || index.column() >= columnCount()) return {};
  const ListColumn& column = list_.columns()[static_cast<std::size_t>(index.column())];
  switch (role) {
    case Qt::DisplayRole: {
      std::string text;
      list_.GetCellText(*defect, column.fieldId, text);
      return ToQt(text);
    }
    case Qt::TextAlignmentRole:
      return column.format == ListColumn::kRight ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                 : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ForegroundRole:
      // "Gray out closed defects".
      if (grayClosed_ && (defect->status() == 4 || defect->status() == 5)) {
        return QBrush(QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text));
      }
      return {};
    default:
      return {};
  }
}

QVariant DefectListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= columnCount()) {
    return {};
  }
  return ToQt(list_.columns()[static_cast<std::size_t>(section)].title);
}

DefectListWindow::DefectListWindow(CDefectTable& table, ui::Ui& ui, bool grayClosed,
                                   QWidget* parent)
    : QWidget(parent),
      table_(table),
      list_(table, ui),
      model_(table, list_, grayClosed),
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
  list_.SortByColumns();
  ShowColumns();
  QHeaderView* header = view_->horizontalHeader();
  header->setSectionsClickable(true);
  header->setStretchLastSection(true);
  header->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header, &QHeaderView::sectionClicked, this, [this](int section) {
    const std::vector<CDefect*> selected = SelectedDefects();
    const bool shift = QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier);
    list_.OnHeaderClick(static_cast<std::uint16_t>(section + 1), shift);
    model_.Reset();
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

std::vector<CDefect*> DefectListWindow::SelectedDefects() const {
  std::vector<CDefect*> selected;
  for (int row = 0; row < model_.rowCount(); ++row) {
    if (view_->selectionModel()->isRowSelected(row, {})) {
      selected.push_back(table_.DefectAt(static_cast<std::uint32_t>(row) + 1));
    }
  }
  return selected;
}

void DefectListWindow::Refresh(bool resort) {
  const std::vector<CDefect*> selected = SelectedDefects();
  if (resort) table_.Sort();
  model_.Reset();
  Reselect(selected);
  if (onTitleChanged) onTitleChanged();
}

void DefectListWindow::Reselect(const std::vector<CDefect*>& items) {
  QItemSelection selection;
  for (CDefect* item : items) {
    // An item that is gone from the table is simply not selected again.
    const std::uint32_t position = table_.PositionOf(item);
    if (position > table_.count()) continue;
    const int row = static_cast<int>(position) - 1;
    selection.select(model_.index(row, 0), model_.index(row, model_.columnCount() - 1));
  }
  view_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  if (!items.empty() && !selection.isEmpty()) view_->scrollTo(selection.indexes().first());
}

QString DefectListWindow::Title() const {
  return ToQt(list_.Title(static_cast<std::uint32_t>(SelectedDefects().size())));
}

void DefectListWindow::HeaderPopup(const QPoint& at) {
  TakeWidths();
  const std::uint16_t column = list_.HeaderHit(at.x() + view_->horizontalHeader()->offset());
  if (column == 0) return;
  QMenu menu(this);
  const std::vector<ColumnChoice> choices = list_.GetColumnMenu();
  for (std::size_t n = 0; n < choices.size(); ++n) {
    menu.addAction(ToQt(choices[n].title))->setData(static_cast<int>(n + 1));
  }
  menu.addSeparator();
  menu.addAction("Insert Column")->setData(CRecordListView::kInsertColumn);
  menu.addAction("Remove Column")->setData(CRecordListView::kRemoveColumn);
  QAction* chosen = menu.exec(view_->horizontalHeader()->mapToGlobal(at));
  if (chosen == nullptr) return;
  list_.ColumnCommand(column, static_cast<std::uint16_t>(chosen->data().toInt()));
  ShowColumns();
}

void DefectListWindow::ShowColumns() {
  model_.Reset();
  for (std::size_t c = 0; c < list_.columns().size(); ++c) {
    view_->setColumnWidth(static_cast<int>(c), list_.columns()[c].width);
  }
}

void DefectListWindow::TakeWidths() {
  std::vector<std::uint16_t> widths;
  for (int c = 0; c < model_.columnCount(); ++c) {
    widths.push_back(static_cast<std::uint16_t>(view_->columnWidth(c)));
  }
  list_.SetWidths(widths);
}

void DefectListWindow::closeEvent(QCloseEvent* event) {
  if (onClosing) onClosing();
  QWidget::closeEvent(event);
}

}  // namespace qm::app
