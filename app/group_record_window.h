// The record window of a user group: Info, Notes, Users and Security tabs bound to the
// group window logic.
#pragma once

#include <QWidget>
#include <array>

#include "record_window_widget.h"
#include "shell/group_window.h"

class QCheckBox;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QTabWidget;

namespace qm::app {

class GroupRecordWindow : public RecordWindowWidget {
 public:
  GroupRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, QWidget* parent = nullptr);

  CRecordWindow& logic() override { return model_; }
  CGroupWindow& model() { return model_; }
  QListWidget* users() const { return users_; }
  QListWidget* rights() const { return rights_; }
  QTabWidget* tabs() const { return tabs_; }

 private:
  void Show() override;
  void Edited();
  void UserTicked(int row);

  ui::Ui& ui_;
  CGroupWindow model_;
  bool showing_ = false;
  QTabWidget* tabs_ = nullptr;
  QLineEdit* name_ = nullptr;
  QLineEdit* description_ = nullptr;
  QPlainTextEdit* notes_ = nullptr;
  QListWidget* users_ = nullptr;
  QListWidget* rights_ = nullptr;
  std::array<QCheckBox*, 6> custom_{};
  QCheckBox* onlyAssigned_ = nullptr;
};

}  // namespace qm::app
