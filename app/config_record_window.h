// The record window of a shared test configuration: its name and the computer's
// description, bound to the configuration window logic.
#pragma once

#include <QWidget>

#include "record_window_widget.h"
#include "shell/config_window.h"

class QLineEdit;

namespace qm::app {

class ComputerConfigForm;

class ConfigRecordWindow : public RecordWindowWidget {
 public:
  ConfigRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, QWidget* parent = nullptr);

  CRecordWindow& logic() override { return model_; }
  CConfigWindow& model() { return model_; }

 private:
  void Show() override;
  void Edited();

  CConfigWindow model_;
  bool showing_ = false;
  QLineEdit* name_ = nullptr;
  ComputerConfigForm* form_ = nullptr;
};

}  // namespace qm::app
