// The defect numbering dialog's widgets.
#include "numbering_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>
#include <string>

#include "defects/project_defects.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "store/store_error.h"
#include "value_setup_dialog.h"

namespace qm::app {
namespace {

QString Text(std::string_view text) { return ToQt(std::string(text)); }

QCheckBox* Option(std::string_view label, bool checked, QVBoxLayout* box) {
  auto* option = new QCheckBox(Text(label));
  option->setAccessibleName(Text(label));
  option->setChecked(checked);
  box->addWidget(option);
  return option;
}

}  // namespace

NumberingDialog::NumberingDialog(QWidget* parent, NumberingSetup& setup, ui::Ui& ui)
    : QDialog(parent), setup_(setup), ui_(ui) {
  setWindowTitle(Text(NumberingSetup::kTitle));
  setAccessibleName(Text(NumberingSetup::kTitle));
  auto* layout = new QVBoxLayout(this);
  auto* text = new QLabel(Text(NumberingSetup::kText));
  text->setWordWrap(true);
  text->setAccessibleName("Instructions");
  layout->addWidget(text);
  auto* defer = new QGroupBox(Text(NumberingSetup::kDeferLabel));
  defer->setAccessibleName(Text(NumberingSetup::kDeferLabel));
  auto* options = new QVBoxLayout(defer);
  userEntry_ = Option(NumberingSetup::kUserEntryLabel, setup.numberOnUserEntry, options);
  wispNote_ = Option(NumberingSetup::kWispNoteLabel, setup.numberOnWispNoteImport, options);
  mail_ = Option(NumberingSetup::kMailLabel, setup.numberOnMailImport, options);
  layout->addWidget(defer);
  nextNumber_ = new QLineEdit(QString::number(setup.nextNumber));
  nextNumber_->setAccessibleName(Text(NumberingSetup::kNextNumberLabel));
  // A defect number is a 32-bit count: at most ten digits, which the setup takes whole.
  nextNumber_->setValidator(
      new QRegularExpressionValidator(QRegularExpression("[0-9]{0,10}"), nextNumber_));
  auto* form = new QFormLayout;
  form->addRow(Text(NumberingSetup::kNextNumberLabel), nextNumber_);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(*this));
  nextNumber_->setFocus();
  nextNumber_->selectAll();
}

void NumberingDialog::accept() {
  setup_.numberOnUserEntry = userEntry_->isChecked();
  setup_.numberOnWispNoteImport = wispNote_->isChecked();
  setup_.numberOnMailImport = mail_->isChecked();
  // Ten digits may pass the 32-bit range: such a number is refused as too high to give.
  const qulonglong typed = nextNumber_->text().toULongLong();
  if (typed > 0xFFFFFFFEu) {
    ui_.Tell("Please enter a defect number from 1 to 4294967294.", ui::Icon::kWarning);
    nextNumber_->setFocus();
    nextNumber_->selectAll();
    return;
  }
  setup_.nextNumber = static_cast<std::uint32_t>(typed);
  bool done = false;
  try {
    done = setup_.Accept();
  } catch (const StoreError& e) {
    TellStoreFailure(ui_, e.status);
  }
  if (!done) {
    nextNumber_->setFocus();
    nextNumber_->selectAll();
    return;
  }
  QDialog::accept();
}

void RunNumberingDialog(QWidget* parent, CDBDoc& doc, ui::Ui& ui) {
  const auto* defects = dynamic_cast<const CDefectTable*>(doc.GetTable(kDefectTag));
  if (defects == nullptr || doc.store() == nullptr) return;
  DefectTableNumbers numbers(*defects);
  NumberingSetup setup(*doc.store(), doc.options(), doc, numbers, ui);
  try {
    setup.Open();
  } catch (const StoreError& e) {
    TellStoreFailure(ui, e.status);
    return;
  }
  NumberingDialog dialog(parent, setup, ui);
  dialog.exec();
}

}  // namespace qm::app
