// A list window: a table view over the items that a list shows, with the columns, header
// sorting and popup, the marks and the title of the list logic.
#pragma once

#include <QAbstractTableModel>
#include <QTableView>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

#include "shell/app_preferences.h"
#include "shell/record_list.h"

namespace qm::app {

class RecordListModel : public QAbstractTableModel {
 public:
  explicit RecordListModel(CRecordListView& list) : list_(list) {}

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  void SetGrayed(bool gray) { gray_ = gray; }
  // The rows again from the table, after it or the columns changed under the view.
  void Reset();
  RecordItem* ItemAt(int row) const;
  // The row of an item, -1 when the list does not show it.
  int RowOf(const RecordItem* item) const;

 private:
  CRecordListView& list_;
  std::vector<RecordItem*> rows_;
  bool gray_ = false;
};

class RecordListWindow : public QWidget {
 public:
  RecordListWindow(const ListWindowKind& kind, std::unique_ptr<CRecordListView> list,
                   QWidget* parent = nullptr);

  const ListWindowKind& kind() const { return kind_; }
  // The selected items in list order.
  std::vector<RecordItem*> SelectedItems() const;
  // Shows the table as it is now, keeping the selection of the items still in it; sorts
  // it first when asked.
  void Refresh(bool resort);
  // "Defects - (n items, m selected)".
  QString Title() const;
  // The columns as the list logic has them now, after a restored state.
  void ShowColumns();
  // The widths as the person left them, into the list logic.
  void TakeWidths();
  // "Gray out closed defects".
  void SetGrayed(bool gray);

  CRecordListView& list() { return *list_; }
  QTableView* view() const { return view_; }

  // The window is about to close: its placement is stored.
  std::function<void()> onClosing;
  // Double-click: open the selection.
  std::function<void()> onOpen;
  // After the selection or the count changed, so that the frame's title follows.
  std::function<void()> onTitleChanged;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Reselect(const std::vector<RecordItem*>& items);
  // The header's arrow where the list sorts, pointing its way.
  void ShowSortMark();
  void HeaderPopup(const QPoint& at);

  const ListWindowKind& kind_;
  std::unique_ptr<CRecordListView> list_;
  RecordListModel model_;
  QTableView* view_;
};

}  // namespace qm::app
