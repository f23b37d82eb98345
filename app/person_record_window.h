// The record window of a user or a customer: the person's fields, the Statistics tab and
// the person's computer, bound to the person window logic.
#pragma once

#include <QWidget>

#include "record_window_widget.h"
#include "shell/people_window.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;
class QPlainTextEdit;
class QTabWidget;

namespace qm::app {

class ComputerConfigForm;

class PersonRecordWindow : public RecordWindowWidget {
 public:
  PersonRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, bool customers,
                     QWidget* parent = nullptr);

  CRecordWindow& logic() override { return model_; }

  CPersonWindow& model() { return model_; }
  QTabWidget* tabs() const { return tabs_; }

 private:
  void Show() override;
  void ShowStatistics();
  void Edited();

  CDBDoc& doc_;
  CPersonWindow model_;
  bool customers_;
  bool showing_ = false;
  QTabWidget* tabs_ = nullptr;
  QLineEdit* first_ = nullptr;
  QLineEdit* last_ = nullptr;
  QLineEdit* login_ = nullptr;
  QLineEdit* password_ = nullptr;
  QComboBox* group_ = nullptr;
  QLineEdit* company_ = nullptr;
  QPlainTextEdit* address_ = nullptr;
  QCheckBox* betaSite_ = nullptr;
  QLineEdit* email_ = nullptr;
  QLineEdit* phone1_ = nullptr;
  QLineEdit* phone2_ = nullptr;
  QPlainTextEdit* notes_ = nullptr;
  QFormLayout* statistics_ = nullptr;
  ComputerConfigForm* computer_ = nullptr;
};

}  // namespace qm::app
