// The defect record window's widgets and their binding to the window logic.
#include "defect_record_window.h"

#include "accessible_names.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "defects/project_defects.h"
#include "defects/text_forms.h"
#include "people/user.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "value_combo.h"

namespace qm::app {
namespace {

// The History tab's buttons, in the order they stand.
constexpr std::pair<DefectCommand, const char*> kActionButtons[] = {
    {DefectCommand::kAssign, "Assign Defect"},  {DefectCommand::kFix, "Describe Fix"},
    {DefectCommand::kVerify, "Verify Fix"},     {DefectCommand::kClose, "Close Defect"},
    {DefectCommand::kReOpen, "Re-Open Defect"}, {DefectCommand::kEstimate, "Estimate Fix"},
    {DefectCommand::kComment, "Add Comments"},  {DefectCommand::kReleaseNotes, "Release Notes"}};

std::uint32_t Chosen(const QComboBox* combo) { return combo->currentData().toUInt(); }

void Choose(QComboBox* combo, std::uint32_t id) {
  const int at = combo->findData(id);
  combo->setCurrentIndex(at >= 0 ? at : 0);
}

}  // namespace

DefectRecordWindow::DefectRecordWindow(CDBDoc& doc, CDefectTable& table, ui::Ui& ui,
                                       EditMarks& marks, CDefectWindow::RunEventDialog runDialog,
                                       QWidget* parent)
    : RecordWindowWidget(parent), doc_(doc), model_(doc, table, ui, marks, std::move(runDialog)) {
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  tabs_->setAccessibleName("Defect pages");
  tabs_->addTab(MakeDetail(doc), ToQt(std::string(kDefectTabs[0])));
  tabs_->addTab(MakeHistory(), ToQt(std::string(kDefectTabs[1])));
  tabs_->addTab(MakeNotify(doc), ToQt(std::string(kDefectTabs[2])));
  workaround_ = new QPlainTextEdit;
  workaround_->setAccessibleName("Workaround");
  connect(workaround_, &QPlainTextEdit::textChanged, this, [this] { Edited(); });
  tabs_->addTab(workaround_, ToQt(std::string(kDefectTabs[3])));
  layout->addWidget(tabs_);

  layout->addLayout(MakeButtonRow());
}

QWidget* DefectRecordWindow::MakeDetail(CDBDoc& doc) {
  auto* page = new QWidget;
  auto* form = new QFormLayout(page);
  summary_ = new QLineEdit;
  summary_->setObjectName("summary");
  summary_->setMaxLength(255);
  form->addRow("Summary:", summary_);
  const auto combo = [&](const char* label, Tag list, QComboBox*& out) {
    out = new QComboBox;
    FillValueCombo(out, doc.GetTable(list), 0, true);
    form->addRow(label, out);
    connect(out, &QComboBox::currentIndexChanged, this, [this] { Edited(); });
  };
  combo("Type:", MakeTag("type"), type_);
  combo("Priority:", MakeTag("prio"), priority_);
  combo("Severity:", MakeTag("sevr"), severity_);
  combo("Product:", MakeTag("prod"), product_);
  combo("Component:", MakeTag("comp"), component_);
  reference_ = new QLineEdit;
  reference_->setMaxLength(32);
  form->addRow("Reference:", reference_);
  status_ = new QLabel;
  form->addRow("Status:", status_);
  reportCounter_ = new QLabel;
  form->addRow("Reported by:", reportCounter_);
  description_ = new QPlainTextEdit;
  form->addRow("Description:", description_);
  for (QLineEdit* edit : {summary_, reference_}) {
    connect(edit, &QLineEdit::textEdited, this, [this] { Edited(); });
  }
  connect(description_, &QPlainTextEdit::textChanged, this, [this] { Edited(); });
  NameFieldsByLabels(form);
  return page;
}

QWidget* DefectRecordWindow::MakeHistory() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  events_ = new QTableWidget(0, 4);
  events_->setAccessibleName("History");
  events_->setHorizontalHeaderLabels({"Action", "Date", "Who", "Other Information"});
  for (const auto& [column, width] : {std::pair{0, 53}, {1, 67}, {2, 114}, {3, 512}}) {
    events_->setColumnWidth(column, width + 40);
  }
  events_->verticalHeader()->hide();
  events_->horizontalHeader()->setStretchLastSection(true);
  events_->setSelectionBehavior(QAbstractItemView::SelectRows);
  events_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  layout->addWidget(events_);
  auto* buttons = new QHBoxLayout;
  for (const auto& [command, text] : kActionButtons) {
    auto* button = new QPushButton(text);
    connect(button, &QPushButton::clicked, this, [this, c = command] { RunCommand(c); });
    buttons->addWidget(button);
    actions_.emplace_back(command, button);
  }
  layout->addLayout(buttons);
  eventNotes_ = new QPlainTextEdit;
  eventNotes_->setAccessibleName("Notes of the action");
  eventNotes_->setReadOnly(true);
  eventNotes_->setMaximumHeight(90);
  layout->addWidget(eventNotes_);
  connect(events_, &QTableWidget::currentCellChanged, this, [this](int row) {
    const CDefect& defect = model_.defect();
    const std::uint32_t first = defect.ReportedByCount() > 0 ? 2 : 1;
    const CDefectEvent* event = row + 1 >= static_cast<int>(first)
                                    ? defect.EventAt(static_cast<std::uint32_t>(row) + 2 - first)
                                    : nullptr;
    eventNotes_->setPlainText(ToQtLines(event != nullptr ? event->notes
                                        : defect.ReportedByAt(1) != nullptr
                                            ? defect.ReportedByAt(1)->description
                                            : std::string()));
  });
  connect(events_, &QTableWidget::cellDoubleClicked, this, [this](int row) {
    const auto r = static_cast<std::uint32_t>(row) + 1;
    if (model_.EventEditable(r) ? model_.EditEvent(r) : model_.ViewEvent(r)) Show();
  });
  return page;
}

QWidget* DefectRecordWindow::MakeNotify(CDBDoc& doc) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  notify_ = new QListWidget;
  notify_->setAccessibleName("Notify list");
  layout->addWidget(notify_);
  auto* row = new QHBoxLayout;
  notifyUser_ = new QComboBox;
  FillUserCombo(notifyUser_, *doc.GetTable(kUserTag), 0, false);
  auto* add = new QPushButton("Add");
  auto* remove = new QPushButton("Remove");
  add->setAccessibleName("Add to notify list");
  remove->setAccessibleName("Remove from notify list");
  // A combo is read by its value; the label says what the value is for.
  auto* user = new QLabel("User:");
  user->setBuddy(notifyUser_);
  row->addWidget(user);
  row->addWidget(notifyUser_);
  row->addWidget(add);
  row->addWidget(remove);
  layout->addLayout(row);
  connect(add, &QPushButton::clicked, this, [this] {
    model_.AddToNotify(Chosen(notifyUser_));
    Show();
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    if (const QListWidgetItem* item = notify_->currentItem()) {
      model_.RemoveFromNotify(item->data(Qt::UserRole).toUInt());
      Show();
    }
  });
  return page;
}

void DefectRecordWindow::RunCommand(DefectCommand command) {
  if (model_.RunCommand(command)) Show();
}

void DefectRecordWindow::Show() {
  showing_ = true;
  const CDefect& d = model_.defect();
  summary_->setText(ToQt(d.summary));
  Choose(type_, d.typeId);
  Choose(priority_, d.priorityId);
  Choose(severity_, d.severityId);
  Choose(product_, d.productId);
  Choose(component_, d.componentId);
  reference_->setText(ToQt(d.reference));
  status_->setText(ToQt(d.GetStatusText()));
  reportCounter_->setText(ToQt(model_.ReportCounter()));
  const CReportedBy* report = d.ReportedByAt(model_.reportRow());
  description_->setPlainText(ToQtLines(report != nullptr ? report->description : std::string()));
  description_->setEnabled(report != nullptr);
  workaround_->setPlainText(ToQtLines(d.workaround));
  notify_->clear();
  const DocLookups lookups(doc_);
  for (const std::uint32_t id : d.notifyList()) {
    auto* item = new QListWidgetItem(ToQt(UserName(lookups, id)), notify_);
    item->setData(Qt::UserRole, id);
  }
  ShowEvents();
  showing_ = false;
  ShowStates();
}

void DefectRecordWindow::ShowEvents() {
  const std::vector<EventRow> rows = model_.EventRows();
  events_->setRowCount(static_cast<int>(rows.size()));
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const std::string* cells[] = {&rows[r].action, &rows[r].date, &rows[r].who, &rows[r].info};
    for (int c = 0; c < 4; ++c) {
      events_->setItem(static_cast<int>(r), c, new QTableWidgetItem(ToQt(*cells[c])));
    }
  }
}

void DefectRecordWindow::ShowStates() {
  ShowButtons();
  const bool editable = model_.editable();
  for (QWidget* field :
       std::initializer_list<QWidget*>{summary_, type_, priority_, severity_, product_, component_,
                                       reference_, workaround_, notifyUser_}) {
    field->setEnabled(editable);
  }
  description_->setReadOnly(!editable);
  for (const auto& [command, button] : actions_) button->setEnabled(model_.CommandEnabled(command));
}

void DefectRecordWindow::Edited() {
  if (showing_) return;
  CDefect& d = model_.defect();
  d.summary = FromQt(summary_->text());
  d.typeId = Chosen(type_);
  d.priorityId = Chosen(priority_);
  d.severityId = Chosen(severity_);
  d.productId = Chosen(product_);
  d.componentId = Chosen(component_);
  d.reference = FromQt(reference_->text());
  d.workaround = FromQtLines(workaround_->toPlainText());
  if (CReportedBy* report = d.ReportedByAt(model_.reportRow())) {
    report->description = FromQtLines(description_->toPlainText());
  }
  model_.MarkChanged();
  ShowStates();
}

}  // namespace qm::app
