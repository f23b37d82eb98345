// The event dialog's widgets, made from the model's labels in their order.
#include "event_dialog.h"

#include "accessible_names.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <variant>

#include "qt_ui.h"
#include "session/db_doc.h"
#include "session/item_table.h"
#include "value_combo.h"

namespace qm::app {
namespace {

class EventDialogWidget : public QDialog {
 public:
  EventDialogWidget(QWidget* parent, CDBDoc& doc, EventDialog& model)
      : QDialog(parent), model_(model) {
    setWindowTitle(ToQt(std::string(model.Title())));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    layout->addLayout(form);
    const auto labels = model.Labels();
    for (std::size_t n = 0; n < labels.size(); ++n) {
      const std::string label(labels[n]);
      const QString text = ToQt(label);
      if (n == 0) {
        user_ = new QComboBox;
        FillUserCombo(user_, *doc.GetTable(kUserTag), model.userId, true);
        form->addRow(text, user_);
      } else if (n + 1 == labels.size()) {
        notes_ = new QPlainTextEdit(ToQt(model.notes));
        form->addRow(text, notes_);
      } else if (label == "Date:") {
        date_ = new QLineEdit(ToQt(model.dateText));
        form->addRow(text, date_);
      } else if (label == "Resolution:") {
        resolution_ = new QComboBox;
        FillValueCombo(resolution_, doc.GetTable(MakeTag("reso")), model.resolutionId, true);
        form->addRow(text, resolution_);
      } else if (label == "Hours to Fix:" || label == "Estimated time to complete:") {
        hours_ = new QLineEdit(ToQt(model.hoursText));
        form->addRow(text, hours_);
      } else if (label == "Estimated completion date:") {
        completion_ = new QLineEdit(ToQt(model.estimatedDateText));
        form->addRow(text, completion_);
      } else if (label.find("ersion:") != std::string::npos) {
        version_ = new QLineEdit(ToQt(model.versionText));
        version_->setMaxLength(32);
        form->addRow(text, version_);
      } else if (label == "Affects Documentation") {
        docs_ = new QCheckBox(text);
        docs_->setChecked(model.affectsDocs);
        form->addRow(docs_);
      } else if (label == "Affects Test Plan") {
        testPlan_ = new QCheckBox(text);
        testPlan_->setChecked(model.affectsTestPlan);
        form->addRow(testPlan_);
      } else if (label == "Pass") {
        pass_ = new QRadioButton(text);
        pass_->setChecked(model.passed);
        form->addRow(pass_);
      } else if (label == "Fail") {
        auto* fail = new QRadioButton(text);
        fail->setChecked(!model.passed);
        form->addRow(fail);
      }
    }
    NameFieldsByLabels(form);
    for (QWidget* w : findChildren<QWidget*>()) {
      if (qobject_cast<QLabel*>(w) == nullptr) w->setEnabled(model.fieldsEnabled());
    }

    auto* buttons = new QDialogButtonBox;
    buttons->addButton(QDialogButtonBox::Ok);
    if (model.mode() == EventDialogMode::kEdit) buttons->addButton(QDialogButtonBox::Cancel);
    // "&&" shows a single ampersand on a button, as the model's texts expect.
    if (model.saveAndAssignVisible()) {
      assign_ = buttons->addButton(ToQt(std::string(EventDialog::kSaveAndAssignText)),
                                   QDialogButtonBox::AcceptRole);
    }
    if (model.saveAndReleaseVisible()) {
      release_ = buttons->addButton(ToQt(std::string(EventDialog::kSaveAndReleaseText)),
                                    QDialogButtonBox::AcceptRole);
    }
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::clicked, this, [this, buttons](QAbstractButton* b) {
      if (buttons->buttonRole(b) == QDialogButtonBox::RejectRole) {
        reject();
      } else {
        Close(b == assign_    ? EventDialogResult::kSaveAndAssign
              : b == release_ ? EventDialogResult::kSaveAndRelease
                              : EventDialogResult::kOk);
      }
    });
    if (pass_ != nullptr) {
      connect(pass_, &QRadioButton::toggled, this, [this] { SetSaveButtons(); });
    }
    SetSaveButtons();
  }

  std::optional<EventDialogResult> result;

 private:
  void Read() {
    if (user_ != nullptr) model_.userId = user_->currentData().toUInt();
    if (date_ != nullptr) model_.dateText = FromQt(date_->text());
    if (notes_ != nullptr) model_.notes = FromQt(notes_->toPlainText());
    if (version_ != nullptr) model_.versionText = FromQt(version_->text());
    if (resolution_ != nullptr) model_.resolutionId = resolution_->currentData().toUInt();
    if (hours_ != nullptr) model_.hoursText = FromQt(hours_->text());
    if (completion_ != nullptr) model_.estimatedDateText = FromQt(completion_->text());
    if (docs_ != nullptr) model_.affectsDocs = docs_->isChecked();
    if (testPlan_ != nullptr) model_.affectsTestPlan = testPlan_->isChecked();
    if (pass_ != nullptr) model_.passed = pass_->isChecked();
  }

  void SetSaveButtons() {
    Read();
    if (assign_ != nullptr) assign_->setEnabled(model_.saveAndAssignEnabled());
    if (release_ != nullptr) release_->setEnabled(model_.saveAndReleaseEnabled());
  }

  void Close(EventDialogResult button) {
    Read();
    const auto closed = model_.Accept(button);
    if (const auto* refusal = std::get_if<EventDialogRefusal>(&closed)) {
      QMessageBox::warning(this, "Quillmark", ToQt(std::string(refusal->message)));
      QWidget* focus = nullptr;
      switch (refusal->focus) {
        case EventField::kDate:
          focus = date_;
          break;
        case EventField::kUser:
          focus = user_;
          break;
        case EventField::kResolution:
          focus = resolution_;
          break;
        case EventField::kHours:
          focus = hours_;
          break;
        case EventField::kEstimatedDate:
          focus = completion_;
          break;
        case EventField::kNotes:
          focus = notes_;
          break;
      }
      if (focus != nullptr) focus->setFocus();
      if (auto* edit = qobject_cast<QLineEdit*>(focus); edit != nullptr && refusal->selectText) {
        edit->selectAll();
      }
      return;
    }
    result = std::get<EventDialogResult>(closed);
    accept();
  }

  EventDialog& model_;
  QComboBox* user_ = nullptr;
  QLineEdit* date_ = nullptr;
  QPlainTextEdit* notes_ = nullptr;
  QLineEdit* version_ = nullptr;
  QComboBox* resolution_ = nullptr;
  QLineEdit* hours_ = nullptr;
  QLineEdit* completion_ = nullptr;
  QCheckBox* docs_ = nullptr;
  QCheckBox* testPlan_ = nullptr;
  QRadioButton* pass_ = nullptr;
  QPushButton* assign_ = nullptr;
  QPushButton* release_ = nullptr;
};

}  // namespace

std::optional<EventDialogResult> RunEventDialog(QWidget* parent, CDBDoc& doc, CDefectEvent& event,
                                                EventDialogMode mode) {
  EventDialog model(event, mode, doc.currentUserId(), doc.HasRight(Right::kAssignDefect));
  EventDialogWidget dialog(parent, doc, model);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.result;
}

}  // namespace qm::app
