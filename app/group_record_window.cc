// The user group window's widgets.
#include "group_record_window.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include "accessible_names.h"
#include "config_dialog.h"
#include "people/user.h"
#include "qt_ui.h"
#include "session/db_doc.h"

namespace qm::app {
namespace {

QListWidgetItem* CheckItem(QListWidget* list, const QString& text, std::uint32_t data) {
  auto* item = new QListWidgetItem(text, list);
  item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
  item->setData(Qt::UserRole, data);
  return item;
}

}  // namespace

GroupRecordWindow::GroupRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, QWidget* parent)
    : RecordWindowWidget(parent), ui_(ui), model_(doc, *doc.GetTable(kGroupTag), ui, marks) {
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  tabs_->setAccessibleName("User group pages");
  layout->addWidget(tabs_);

  auto* info = new QWidget;
  auto* form = new QFormLayout(info);
  name_ = new QLineEdit;
  name_->setObjectName("name");
  LimitBytes(name_, decltype(CUserGroup::name)::kCapacity);
  description_ = new QLineEdit;
  LimitBytes(description_, decltype(CUserGroup::description)::kCapacity);
  form->addRow("Name:", name_);
  form->addRow("Description:", description_);
  NameFieldsByLabels(form);
  tabs_->addTab(info, "Info");

  notes_ = new QPlainTextEdit;
  notes_->setAccessibleName("Notes");
  tabs_->addTab(notes_, "Notes");

  auto* members = new QWidget;
  auto* memberLayout = new QVBoxLayout(members);
  memberLayout->addWidget(new QLabel("Users in Group:"));
  users_ = new QListWidget;
  users_->setAccessibleName("Users in Group");
  memberLayout->addWidget(users_);
  tabs_->addTab(members, "Users");

  auto* security = new QWidget;
  auto* securityLayout = new QVBoxLayout(security);
  securityLayout->addWidget(new QLabel("Commands members may run:"));
  rights_ = new QListWidget;
  rights_->setAccessibleName("Commands members may run");
  for (std::uint32_t n = 1; n <= kRightCount; ++n) {
    CheckItem(rights_, ToQt(std::string(RightName(static_cast<Right>(n)))), n);
  }
  securityLayout->addWidget(rights_);
  for (std::size_t i = 0; i < custom_.size(); ++i) {
    custom_[i] = new QCheckBox(kCustomValueLabels[i]);
    securityLayout->addWidget(custom_[i]);
  }
  onlyAssigned_ = new QCheckBox("Members see only the defects assigned to them");
  securityLayout->addWidget(onlyAssigned_);
  // The rights are shown only to those whose own group lets them see them.
  if (doc.HasRight(Right::kSeeSecurityTab)) tabs_->addTab(security, "Defect Security");
  layout->addLayout(MakeButtonRow());

  for (QLineEdit* edit : {name_, description_}) {
    connect(edit, &QLineEdit::textEdited, this, [this] { Edited(); });
  }
  connect(notes_, &QPlainTextEdit::textChanged, this, [this] { Edited(); });
  connect(rights_, &QListWidget::itemChanged, this, [this] { Edited(); });
  connect(users_, &QListWidget::itemChanged, this,
          [this](QListWidgetItem* item) { UserTicked(users_->row(item)); });
  for (QCheckBox* box : custom_) connect(box, &QCheckBox::toggled, this, [this] { Edited(); });
  connect(onlyAssigned_, &QCheckBox::toggled, this, [this] { Edited(); });
}

void GroupRecordWindow::Show() {
  showing_ = true;
  const CUserGroup& g = model_.group();
  name_->setText(ToQt(g.name.str()));
  description_->setText(ToQt(g.description.str()));
  notes_->setPlainText(ToQtLines(g.notes.str()));
  users_->clear();
  for (const CUser* user : model_.Candidates()) {
    CheckItem(users_, ToQt(user->GetName()), user->GetId())
        ->setCheckState(g.HasUser(user->GetId()) ? Qt::Checked : Qt::Unchecked);
  }
  for (int row = 0; row < rights_->count(); ++row) {
    QListWidgetItem* item = rights_->item(row);
    item->setCheckState(g.IsCommandDisabled(item->data(Qt::UserRole).toUInt()) ? Qt::Unchecked
                                                                               : Qt::Checked);
  }
  for (std::size_t i = 0; i < custom_.size(); ++i) {
    custom_[i]->setChecked((g.customFlags & (1u << i)) != 0);
  }
  onlyAssigned_->setChecked(g.onlyAssigned != 0);
  showing_ = false;
  const bool editable = model_.editable();
  for (QWidget* field : std::initializer_list<QWidget*>{name_, description_, notes_, users_,
                                                        rights_, onlyAssigned_}) {
    field->setEnabled(editable);
  }
  for (QCheckBox* box : custom_) box->setEnabled(editable);
  ShowButtons();
}

void GroupRecordWindow::UserTicked(int row) {
  if (showing_) return;
  QListWidgetItem* item = users_->item(row);
  const bool member = item->checkState() == Qt::Checked;
  if (const auto refusal = model_.SetMember(item->data(Qt::UserRole).toUInt(), member)) {
    ui_.Tell(*refusal, ui::Icon::kWarning);
    showing_ = true;
    item->setCheckState(Qt::Checked);
    showing_ = false;
    return;
  }
  model_.MarkChanged();
  ShowButtons();
}

void GroupRecordWindow::Edited() {
  if (showing_) return;
  CUserGroup& g = model_.group();
  g.name = FromQt(name_->text());
  g.description = FromQt(description_->text());
  g.notes = FromQtLines(notes_->toPlainText());
  for (int row = 0; row < rights_->count(); ++row) {
    const QListWidgetItem* item = rights_->item(row);
    model_.SetDenied(static_cast<Right>(item->data(Qt::UserRole).toUInt()),
                     item->checkState() != Qt::Checked);
  }
  std::uint16_t flags = 0;
  for (std::size_t i = 0; i < custom_.size(); ++i) {
    if (custom_[i]->isChecked()) flags = static_cast<std::uint16_t>(flags | (1u << i));
  }
  g.customFlags = flags;
  g.onlyAssigned = onlyAssigned_->isChecked() ? 1 : 0;
  model_.MarkChanged();
  ShowButtons();
}

}  // namespace qm::app
