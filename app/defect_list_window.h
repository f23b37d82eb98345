// The defect list window: a table view over the project's defects, with the columns,
// header sorting and popup, the marks and the title of the list logic.
#pragma once

#include <QAbstractTableModel>
#include <QTableView>
#include <QWidget>
#include <functional>
#include <vector>

#include "defects/defect.h"
#include "defects/defect_table.h"
#include "shell/record_list.h"

namespace qm::app {

class DefectListModel : public QAbstractTableModel {
 public:
  DefectListModel(CDefectTable& table, CDefectListView& list, bool grayClosed)
      : table_(table), list_(list), grayClosed_(grayClosed) {}

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  void SetGrayClosed(bool gray) { grayClosed_ = gray; }
  // After the table or the columns changed under the view.
  void Reset() {
    beginResetModel();
    endResetModel();
  }

 private:
  CDefectTable& table_;
  CDefectListView& list_;
  bool grayClosed_;
};

class DefectListWindow : public QWidget {
 public:
  DefectListWindow(CDefectTable& table, ui::Ui& ui, bool grayClosed, QWidget* parent = nullptr);

  // The selected defects in list order.
  std::vector<CDefect*> SelectedDefects() const;
  // Shows the table as it is now, keeping the selection of the items still in it; sorts
  // it first when asked.
  void Refresh(bool resort);
  // "Defects - (n items, m selected)".
  QString Title() const;

  CDefectListView& list() { return list_; }
  // "Gray out closed defects" was changed in the Options dialog.
  void SetGrayClosed(bool gray) {
    model_.SetGrayClosed(gray);
    model_.Reset();
  }
  QTableView* view() const { return view_; }

  // The columns as the list logic has them now, after a restored state.
  void ShowColumns();
  // The widths as the person left them, into the list logic.
  void TakeWidths();

  // The window is about to close: its placement is stored.
  std::function<void()> onClosing;
  // Double-click: open the selection.
  std::function<void()> onOpen;
  // After the selection or the count changed, so that the frame's title follows.
  std::function<void()> onTitleChanged;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void Reselect(const std::vector<CDefect*>& items);
  void HeaderPopup(const QPoint& at);

  CDefectTable& table_;
  CDefectListView list_;
  DefectListModel model_;
  QTableView* view_;
};

}  // namespace qm::app
