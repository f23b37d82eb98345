// The defect's record window: the Detail tab with its reported-by pane, the History, Notify
// and Workaround tabs, bound to the defect window logic, with the buttons of its mode.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "record_window_widget.h"
#include "shell/defect_window.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QTabWidget;

namespace qm::app {

class DefectRecordWindow : public RecordWindowWidget {
 public:
  DefectRecordWindow(CDBDoc& doc, CDefectTable& table, ui::Ui& ui, EditMarks& marks,
                     CDefectWindow::RunEventDialog runDialog, QWidget* parent = nullptr);

  CRecordWindow& logic() override { return model_; }
  // Runs a command of the History tab, as its button does.
  void RunCommand(DefectCommand command);

  CDefectWindow& model() { return model_; }
  QTabWidget* tabs() const { return tabs_; }
  QTableWidget* events() const { return events_; }
  // The reported-by pane, its counter and its spin control.
  QWidget* reportPane() const { return reportPane_; }

 private:
  QWidget* MakeDetail(CDBDoc& doc);
  QWidget* MakeReportPane(CDBDoc& doc);
  QWidget* MakeHistory();
  QWidget* MakeNotify(CDBDoc& doc);
  // The model's defect into the widgets, and the states of every control.
  void Show() override;
  void ShowStates();
  void ShowEvents();
  // The row of the reported-by pane shown, and which of its controls stand.
  void ShowReport();
  // A widget's edit into the model's defect.
  void Edited();
  // An edit of the reported-by pane into its row.
  void ReportEdited();
  // The row's own computer in its dialog.
  void DescribeComputer();
  // The focus on the field a refusal names, else on an empty Summary.
  void FocusWhereNeeded();

  CDBDoc& doc_;
  ui::Ui& ui_;
  CDefectWindow model_;
  bool showing_ = false;
  QTabWidget* tabs_ = nullptr;
  QLineEdit* summary_ = nullptr;
  QComboBox* type_ = nullptr;
  QComboBox* priority_ = nullptr;
  QComboBox* severity_ = nullptr;
  QComboBox* product_ = nullptr;
  QComboBox* component_ = nullptr;
  QLineEdit* reference_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* resolution_ = nullptr;
  QWidget* reportPane_ = nullptr;
  QLabel* reportCounter_ = nullptr;
  QSpinBox* reportSpin_ = nullptr;
  QPushButton* newReport_ = nullptr;
  QPushButton* deleteReport_ = nullptr;
  QComboBox* foundBy_ = nullptr;
  QLineEdit* dateFound_ = nullptr;
  QLineEdit* contact_ = nullptr;
  QLineEdit* versionFound_ = nullptr;
  QComboBox* reproduced_ = nullptr;
  QComboBox* configKind_ = nullptr;
  QLabel* storedConfigLabel_ = nullptr;
  QComboBox* storedConfig_ = nullptr;
  QPushButton* describeComputer_ = nullptr;
  QPlainTextEdit* description_ = nullptr;
  QPlainTextEdit* steps_ = nullptr;
  QPlainTextEdit* otherHardware_ = nullptr;
  QTableWidget* events_ = nullptr;
  QPlainTextEdit* eventNotes_ = nullptr;
  std::vector<std::pair<DefectCommand, QPushButton*>> actions_;
  QListWidget* notify_ = nullptr;
  QComboBox* notifyUser_ = nullptr;
  QPlainTextEdit* workaround_ = nullptr;
};

}  // namespace qm::app
