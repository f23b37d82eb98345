// The record window of a task the user writes, bound to the task window logic.
#pragma once

#include "record_window_widget.h"
#include "shell/task_window.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;

namespace qm::app {

class TaskRecordWindow : public RecordWindowWidget {
 public:
  TaskRecordWindow(CDBDoc& doc, CTaskTable& tasks, ui::Ui& ui, EditMarks& marks,
                   QWidget* parent = nullptr);

  CRecordWindow& logic() override { return model_; }
  CTaskWindow& model() { return model_; }

 private:
  void Show() override;
  void Edited();

  CTaskWindow model_;
  bool showing_ = false;
  QLineEdit* toDo_ = nullptr;
  QComboBox* status_ = nullptr;
  QComboBox* priority_ = nullptr;
  QLineEdit* dateNeeded_ = nullptr;
  QLineEdit* versionNeeded_ = nullptr;
  QCheckBox* private_ = nullptr;
  QPlainTextEdit* description_ = nullptr;
};

}  // namespace qm::app
