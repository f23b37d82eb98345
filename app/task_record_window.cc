// The task window's widgets.
#include "task_record_window.h"

#include "accessible_names.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "defects/defect_event.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "value_combo.h"

namespace qm::app {

TaskRecordWindow::TaskRecordWindow(CDBDoc& doc, CTaskTable& tasks, ui::Ui& ui, EditMarks& marks,
                                   QWidget* parent)
    : RecordWindowWidget(parent), model_(doc, tasks, ui, marks) {
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  toDo_ = new QLineEdit;
  toDo_->setObjectName("to do");
  toDo_->setMaxLength(255);
  status_ = new QComboBox;
  for (const std::uint16_t status : {kTaskOnHold, kTaskOpen, kTaskDone}) {
    status_->addItem(ToQt(TaskStatusText(status)), status);
  }
  priority_ = new QComboBox;
  FillValueCombo(priority_, doc.GetTable(MakeTag("prio")), 0, true);
  dateNeeded_ = new QLineEdit;
  dateNeeded_->setObjectName("date needed");
  versionNeeded_ = new QLineEdit;
  versionNeeded_->setMaxLength(35);
  private_ = new QCheckBox("Private");
  description_ = new QPlainTextEdit;
  form->addRow("To Do:", toDo_);
  form->addRow("Status:", status_);
  form->addRow("Priority:", priority_);
  form->addRow("Date Needed:", dateNeeded_);
  form->addRow("Version Needed:", versionNeeded_);
  form->addRow(private_);
  form->addRow("Description:", description_);
  NameFieldsByLabels(form);
  layout->addLayout(form);
  layout->addLayout(MakeButtonRow());
  for (QLineEdit* edit : {toDo_, dateNeeded_, versionNeeded_}) {
    connect(edit, &QLineEdit::textEdited, this, [this] { Edited(); });
  }
  for (QComboBox* combo : {status_, priority_}) {
    connect(combo, &QComboBox::currentIndexChanged, this, [this] { Edited(); });
  }
  connect(private_, &QCheckBox::toggled, this, [this] { Edited(); });
  connect(description_, &QPlainTextEdit::textChanged, this, [this] { Edited(); });
}

void TaskRecordWindow::Show() {
  showing_ = true;
  const CTask& t = model_.task();
  toDo_->setText(ToQt(t.toDo.str()));
  status_->setCurrentIndex(std::max(0, status_->findData(t.status)));
  priority_->setCurrentIndex(std::max(0, priority_->findData(t.priorityId)));
  dateNeeded_->setText(ToQt(model_.dateNeededText));
  versionNeeded_->setText(ToQt(t.versionNeeded.str()));
  private_->setChecked(t.access == kTaskPrivate);
  description_->setPlainText(ToQtLines(t.description));
  showing_ = false;
  const bool editable = model_.editable();
  for (QWidget* field : std::initializer_list<QWidget*>{toDo_, status_, priority_, dateNeeded_,
                                                        versionNeeded_, private_, description_}) {
    field->setEnabled(editable);
  }
  ShowButtons();
}

void TaskRecordWindow::Edited() {
  if (showing_) return;
  CTask& t = model_.task();
  t.toDo = FromQt(toDo_->text());
  t.status = static_cast<std::uint16_t>(status_->currentData().toUInt());
  t.priorityId = priority_->currentData().toUInt();
  // As typed: the window's checks tell what they cannot read.
  model_.dateNeededText = FromQt(dateNeeded_->text());
  t.versionNeeded = FromQt(versionNeeded_->text());
  // Anything but private shows the task to every user.
  t.access = private_->isChecked() ? kTaskPrivate : 0;
  t.description = FromQtLines(description_->toPlainText());
  model_.MarkChanged();
  ShowButtons();
}

}  // namespace qm::app
