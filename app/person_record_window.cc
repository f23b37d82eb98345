// The user and customer windows' widgets.
#include "person_record_window.h"

#include "accessible_names.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include "config_dialog.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "value_combo.h"

namespace qm::app {

PersonRecordWindow::PersonRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, bool customers,
                                       QWidget* parent)
    : RecordWindowWidget(parent),
      doc_(doc),
      model_(doc, *doc.GetTable(kUserTag), ui, marks, customers),
      customers_(customers) {
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  tabs_->setAccessibleName(customers ? "Customer pages" : "User pages");
  layout->addWidget(tabs_);

  auto* detail = new QWidget;
  auto* form = new QFormLayout(detail);
  first_ = new QLineEdit;
  first_->setObjectName("first name");
  last_ = new QLineEdit;
  last_->setObjectName("last name");
  form->addRow("First Name:", first_);
  form->addRow("Last Name:", last_);
  if (customers) {
    company_ = new QLineEdit;
    address_ = new QPlainTextEdit;
    address_->setMaximumHeight(70);
    betaSite_ = new QCheckBox("Beta Site");
    form->addRow("Company:", company_);
    form->addRow("Address:", address_);
    form->addRow(betaSite_);
  } else {
    login_ = new QLineEdit;
    login_->setObjectName("login");
    password_ = new QLineEdit;
    password_->setEchoMode(QLineEdit::Password);
    group_ = new QComboBox;
    FillValueCombo(group_, doc.GetTable(kGroupTag), 0, true);
    form->addRow("Login:", login_);
    form->addRow("Password:", password_);
    form->addRow("User Group:", group_);
  }
  phone1_ = new QLineEdit;
  phone2_ = new QLineEdit;
  email_ = new QLineEdit;
  notes_ = new QPlainTextEdit;
  form->addRow("Phone 1:", phone1_);
  form->addRow("Phone 2:", phone2_);
  form->addRow("e-mail:", email_);
  form->addRow("Notes:", notes_);
  NameFieldsByLabels(form);
  tabs_->addTab(detail, customers ? "Customer" : "User");

  auto* statistics = new QWidget;
  statistics_ = new QFormLayout(statistics);
  tabs_->addTab(statistics, "Statistics");
  // The statistics are counted when their tab is shown.
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int tab) {
    if (tab == 1) ShowStatistics();
  });
  // The person's own computer, as a report of theirs may name it.
  computer_ = new ComputerConfigForm;
  computer_->onEdited = [this] { Edited(); };
  computer_->layout()->setContentsMargins(9, 9, 9, 9);
  tabs_->addTab(Scrolling(computer_), "Computer");
  layout->addLayout(MakeButtonRow());

  // Typing stops at what the record keeps, so that a name or a password is never cut short
  // without the person seeing it.
  const std::pair<QLineEdit*, std::size_t> limits[] = {
      {first_, 32},   {last_, 32},  {login_, 32},  {password_, 32},
      {company_, 63}, {email_, 63}, {phone1_, 35}, {phone2_, 35}};
  for (const auto& [edit, bytes] : limits) {
    if (edit == nullptr) continue;
    LimitBytes(edit, bytes);
    connect(edit, &QLineEdit::textEdited, this, [this] { Edited(); });
  }
  for (QPlainTextEdit* edit : {address_, notes_}) {
    if (edit != nullptr) connect(edit, &QPlainTextEdit::textChanged, this, [this] { Edited(); });
  }
  if (group_ != nullptr) {
    connect(group_, &QComboBox::currentIndexChanged, this, [this] { Edited(); });
  }
  if (betaSite_ != nullptr) connect(betaSite_, &QCheckBox::toggled, this, [this] { Edited(); });
}

void PersonRecordWindow::Show() {
  showing_ = true;
  const CUser& p = model_.person();
  first_->setText(ToQt(p.GetFirstName()));
  last_->setText(ToQt(p.GetLastName()));
  if (login_ != nullptr) {
    login_->setText(ToQt(p.GetLogin()));
    password_->setText(ToQt(p.GetPassword()));
    const int at = group_->findData(p.GetGroupId());
    group_->setCurrentIndex(at >= 0 ? at : 0);
  }
  if (company_ != nullptr) {
    company_->setText(ToQt(p.GetCompany()));
    address_->setPlainText(ToQtLines(p.GetAddress()));
    betaSite_->setChecked(p.GetBetaSite() != 0);
  }
  phone1_->setText(ToQt(p.GetContactText(0)));
  phone2_->setText(ToQt(p.GetContactText(1)));
  email_->setText(ToQt(p.GetEmail()));
  notes_->setPlainText(ToQtLines(p.GetNotes()));
  computer_->Show(p.GetComputerConfig());
  showing_ = false;
  const bool editable = model_.editable();
  for (QWidget* field : findChildren<QLineEdit*>()) field->setEnabled(editable);
  for (QWidget* field : findChildren<QPlainTextEdit*>()) field->setEnabled(editable);
  if (group_ != nullptr) group_->setEnabled(model_.groupEditable());
  // A login and its password are changed only by those whose group allows it.
  if (login_ != nullptr) {
    login_->setEnabled(model_.loginEditable());
    password_->setEnabled(model_.loginEditable());
  }
  computer_->SetEditable(editable);
  if (betaSite_ != nullptr) betaSite_->setEnabled(editable);
  ShowButtons();
  if (tabs_->currentIndex() == 1) ShowStatistics();
}

void PersonRecordWindow::ShowStatistics() {
  while (statistics_->rowCount() > 0) statistics_->removeRow(0);
  const PersonStatistics stats = model_.Statistics();
  for (const auto& [label, value] : StatisticsLines(stats, model_.person())) {
    statistics_->addRow(ToQt(label), new QLabel(ToQt(value)));
  }
  statistics_->addRow(new QLabel(ToQt(StatisticsNote(stats))));
}

void PersonRecordWindow::Edited() {
  if (showing_) return;
  CUser& p = model_.person();
  p.SetFirstName(FromQt(first_->text()));
  p.SetLastName(FromQt(last_->text()));
  if (login_ != nullptr) {
    p.SetLogin(FromQt(login_->text()));
    p.SetPassword(FromQt(password_->text()));
    p.SetGroupId(group_->currentData().toUInt());
  }
  if (company_ != nullptr) {
    p.SetCompany(FromQt(company_->text()));
    p.SetAddress(FromQtLines(address_->toPlainText()));
    p.SetBetaSite(betaSite_->isChecked() ? 1 : 0);
  }
  p.SetContactText(0, FromQt(phone1_->text()));
  p.SetContactText(1, FromQt(phone2_->text()));
  p.SetEmail(FromQt(email_->text()));
  p.SetNotes(FromQtLines(notes_->toPlainText()));
  computer_->Keep(p.GetComputerConfig());
  model_.MarkChanged();
  ShowButtons();
}

}  // namespace qm::app
