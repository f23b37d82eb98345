// The defect record window's widgets and their binding to the window logic.
#include "defect_record_window.h"

#include "accessible_names.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

#include "config_dialog.h"
#include "defects/project_defects.h"
#include "defects/text_forms.h"
#include "people/test_config.h"
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

// A field of the window, with the name a screen reader says for it.
template <typename W>
W* Named(W* widget, const char* name) {
  widget->setAccessibleName(name);
  return widget;
}

// Tab goes through `chain` in its order.
void ChainTabs(std::initializer_list<QWidget*> chain) {
  for (auto it = chain.begin(); it + 1 != chain.end(); ++it) QWidget::setTabOrder(*it, *(it + 1));
}

}  // namespace

DefectRecordWindow::DefectRecordWindow(CDBDoc& doc, CDefectTable& table, ui::Ui& ui,
                                       EditMarks& marks, CDefectWindow::RunEventDialog runDialog,
                                       QWidget* parent)
    : RecordWindowWidget(parent),
      doc_(doc),
      ui_(ui),
      model_(doc, table, ui, marks, std::move(runDialog)) {
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  tabs_->setAccessibleName("Defect pages");
  // The Detail tab scrolls, so that the window's buttons stay in a small frame.
  tabs_->addTab(Scrolling(MakeDetail(doc)), ToQt(std::string(kDefectTabs[0])));
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
  auto* layout = new QVBoxLayout(page);
  auto* grid = new QGridLayout;
  layout->addLayout(grid);
  summary_ = Named(new QLineEdit, "Summary");
  summary_->setObjectName("summary");
  summary_->setMaxLength(255);
  grid->addWidget(new QLabel("Summary:"), 0, 0);
  grid->addWidget(summary_, 0, 1, 1, 3);
  // Two fields to a row under the summary, left to right.
  int at = 2;
  const auto place = [&](const char* label, QWidget* field) {
    auto* caption = new QLabel(label);
    caption->setBuddy(field);
    grid->addWidget(caption, at / 2, (at % 2) * 2);
    grid->addWidget(field, at / 2, (at % 2) * 2 + 1);
    ++at;
  };
  const auto combo = [&](const char* label, const char* name, Tag list, QComboBox*& out) {
    out = Named(new QComboBox, name);
    FillValueCombo(out, doc.GetTable(list), 0, true);
    AllowTypedNames(out, doc, list, ui_);
    place(label, out);
    connect(out, &QComboBox::currentIndexChanged, this, [this] { Edited(); });
  };
  combo("Type:", "Type", MakeTag("type"), type_);
  combo("Priority:", "Priority", MakeTag("prio"), priority_);
  combo("Severity:", "Severity", MakeTag("sevr"), severity_);
  combo("Product:", "Product", MakeTag("prod"), product_);
  combo("Component:", "Component", MakeTag("comp"), component_);
  reference_ = Named(new QLineEdit, "Reference");
  reference_->setMaxLength(32);
  place("Reference:", reference_);
  status_ = Named(new QLabel, "Status");
  place("Status:", status_);
  resolution_ = Named(new QLabel, "Resolution");
  place("Resolution:", resolution_);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  for (QLineEdit* edit : {summary_, reference_}) {
    connect(edit, &QLineEdit::textEdited, this, [this] { Edited(); });
  }
  layout->addWidget(MakeReportPane(doc), 1);
  ChainTabs({summary_, type_, priority_, severity_, product_, component_, reference_});
  return page;
}

QWidget* DefectRecordWindow::MakeReportPane(CDBDoc& doc) {
  auto* box = Named(new QGroupBox("Reported By"), "Reported By");
  reportPane_ = box;
  auto* grid = new QGridLayout(box);
  auto* rows = new QHBoxLayout;
  reportCounter_ = Named(new QLabel, "Report shown");
  reportSpin_ = Named(new QSpinBox, "Report number");
  reportSpin_->setButtonSymbols(QAbstractSpinBox::UpDownArrows);
  // The mnemonics stay clear of the frame's menus and their keys (Alt+D, Alt+E).
  newReport_ = Named(new QPushButton("&New Reported By"), "New Reported By");
  deleteReport_ = Named(new QPushButton("De&lete Reported By"), "Delete Reported By");
  rows->addWidget(reportCounter_);
  rows->addWidget(reportSpin_);
  rows->addStretch();
  rows->addWidget(newReport_);
  rows->addWidget(deleteReport_);
  grid->addLayout(rows, 0, 0, 1, 4);

  const auto place = [grid](int row, int column, const char* label, QWidget* field) {
    auto* caption = new QLabel(label);
    caption->setBuddy(field);
    grid->addWidget(caption, row, column);
    grid->addWidget(field, row, column + 1);
    return caption;
  };
  foundBy_ = Named(new QComboBox, "Found by");
  FillPeopleCombo(foundBy_, *doc.GetTable(kUserTag), 0, true);
  place(1, 0, "Found by:", foundBy_);
  dateFound_ = Named(new QLineEdit, "Date Found");
  dateFound_->setPlaceholderText("M/D/YYYY");
  place(1, 2, "Date Found:", dateFound_);
  contact_ = Named(new QLineEdit, "Contact at");
  LimitBytes(contact_, decltype(CReportedBy::contact)::kCapacity);
  place(2, 0, "Contact at:", contact_);
  versionFound_ = Named(new QLineEdit, "Found in Version");
  LimitBytes(versionFound_, 32);
  place(2, 2, "Found in Version:", versionFound_);
  reproduced_ = Named(new QComboBox, "Reproduced");
  FillValueCombo(reproduced_, doc.GetTable(MakeTag("rpro")), 0, true);
  AllowTypedNames(reproduced_, doc, MakeTag("rpro"), ui_);
  place(3, 0, "Reproduced:", reproduced_);
  configKind_ = Named(new QComboBox, "Configuration");
  for (const std::string_view entry : kConfigKindEntries) {
    configKind_->addItem(ToQt(std::string(entry)));
  }
  place(3, 2, "Configuration:", configKind_);
  storedConfig_ = Named(new QComboBox, "Standard Test Configuration");
  FillValueCombo(storedConfig_, doc.GetTable(MakeTag("scfg")), 0, true);
  storedConfigLabel_ = place(4, 0, "Standard Test Configuration:", storedConfig_);
  describeComputer_ = Named(new QPushButton("Describe Computer..."), "Describe Computer");
  grid->addWidget(describeComputer_, 4, 3);
  description_ = Named(new QPlainTextEdit, "Description");
  steps_ = Named(new QPlainTextEdit, "Steps to Reproduce");
  otherHardware_ = Named(new QPlainTextEdit, "Other Hardware and Software");
  otherHardware_->setMaximumHeight(60);
  grid->addWidget(new QLabel("Description:"), 5, 0, 1, 2);
  grid->addWidget(new QLabel("Steps to Reproduce:"), 5, 2, 1, 2);
  grid->addWidget(description_, 6, 0, 1, 2);
  grid->addWidget(steps_, 6, 2, 1, 2);
  grid->addWidget(new QLabel("Other Hardware and Software:"), 7, 0, 1, 4);
  grid->addWidget(otherHardware_, 8, 0, 1, 4);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  grid->setRowStretch(6, 1);

  connect(reportSpin_, &QSpinBox::valueChanged, this, [this](int row) {
    if (showing_) return;
    if (!model_.ShowReport(static_cast<std::uint32_t>(row))) FocusWhereNeeded();
    ShowReport();
  });
  connect(newReport_, &QPushButton::clicked, this, [this] {
    if (!model_.NewReportedBy()) FocusWhereNeeded();
    ShowReport();
    ShowEvents();
  });
  connect(deleteReport_, &QPushButton::clicked, this, [this] {
    if (model_.DeleteReportedBy()) {
      ShowReport();
      ShowEvents();
    }
  });
  connect(foundBy_, &QComboBox::currentIndexChanged, this, [this] {
    if (showing_) return;
    model_.SetFinder(Chosen(foundBy_));
    ShowReport();
    ShowEvents();
  });
  for (QLineEdit* edit : {dateFound_, contact_, versionFound_}) {
    connect(edit, &QLineEdit::textEdited, this, [this] { ReportEdited(); });
  }
  for (QComboBox* c : {reproduced_, configKind_, storedConfig_}) {
    connect(c, &QComboBox::currentIndexChanged, this, [this] { ReportEdited(); });
  }
  for (QPlainTextEdit* edit : {description_, steps_, otherHardware_}) {
    connect(edit, &QPlainTextEdit::textChanged, this, [this] { ReportEdited(); });
  }
  connect(describeComputer_, &QPushButton::clicked, this, [this] { DescribeComputer(); });
  ChainTabs({reportSpin_, newReport_, deleteReport_, foundBy_, dateFound_, contact_, versionFound_,
             reproduced_, configKind_, storedConfig_, describeComputer_, description_, steps_,
             otherHardware_});
  return box;
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
  resolution_->setText(ToQt(model_.ResolutionText()));
  workaround_->setPlainText(ToQtLines(d.workaround));
  notify_->clear();
  const DocLookups lookups(doc_);
  for (const std::uint32_t id : d.notifyList()) {
    auto* item = new QListWidgetItem(ToQt(UserName(lookups, id)), notify_);
    item->setData(Qt::UserRole, id);
  }
  ShowEvents();
  showing_ = false;
  ShowReport();
  FocusWhereNeeded();
}

void DefectRecordWindow::ShowReport() {
  showing_ = true;
  const ReportPane& pane = model_.reportPane();
  const auto count = static_cast<int>(model_.defect().ReportedByCount());
  reportCounter_->setText(ToQt(model_.ReportCounter()));
  reportSpin_->setRange(count > 0 ? 1 : 0, count);
  reportSpin_->setValue(static_cast<int>(model_.reportRow()));
  Choose(foundBy_, pane.foundById);
  dateFound_->setText(ToQt(pane.dateText));
  contact_->setText(ToQt(pane.contact));
  versionFound_->setText(ToQt(pane.versionFound));
  Choose(reproduced_, pane.reproducedId);
  configKind_->setCurrentIndex(pane.configKind - CReportedBy::kNoConfig);
  Choose(storedConfig_, pane.testConfigId);
  // Only what the pane holds changes a text, so that typing keeps its cursor.
  for (const auto& [edit, text] :
       {std::pair{description_, &pane.description}, std::pair{steps_, &pane.steps},
        std::pair{otherHardware_, &pane.otherHardware}}) {
    if (FromQtLines(edit->toPlainText()) != *text) edit->setPlainText(ToQtLines(*text));
  }
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
  for (const auto& [command, button] : actions_) button->setEnabled(model_.CommandEnabled(command));

  const bool row = model_.reportRow() != 0;
  const std::uint16_t kind = model_.reportPane().configKind;
  reportSpin_->setEnabled(model_.defect().ReportedByCount() > 1);
  newReport_->setEnabled(editable);
  deleteReport_->setEnabled(editable && row);
  for (QWidget* field :
       std::initializer_list<QWidget*>{foundBy_, dateFound_, contact_, versionFound_, reproduced_,
                                       configKind_, storedConfig_}) {
    field->setEnabled(editable && row);
  }
  for (QPlainTextEdit* text : {description_, steps_, otherHardware_}) {
    text->setEnabled(row);
    text->setReadOnly(!editable);
  }
  storedConfigLabel_->setVisible(kind == CReportedBy::kStoredConfig);
  storedConfig_->setVisible(kind == CReportedBy::kStoredConfig);
  // A view may still read the row's own computer.
  describeComputer_->setVisible(kind == CReportedBy::kCustomConfig);
  describeComputer_->setEnabled(row);
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
  model_.MarkChanged();
  ShowStates();
}

void DefectRecordWindow::ReportEdited() {
  if (showing_) return;
  ReportPane pane = model_.reportPane();
  pane.dateText = FromQt(dateFound_->text());
  pane.contact = FromQt(contact_->text());
  pane.versionFound = FromQt(versionFound_->text());
  pane.reproducedId = Chosen(reproduced_);
  pane.configKind = static_cast<std::uint16_t>(configKind_->currentIndex() + 1);
  pane.testConfigId = Chosen(storedConfig_);
  pane.description = FromQtLines(description_->toPlainText());
  pane.steps = FromQtLines(steps_->toPlainText());
  pane.otherHardware = FromQtLines(otherHardware_->toPlainText());
  const bool firstRowLine = model_.reportRow() == 1;
  model_.EditReport(pane);
  ShowStates();
  // The first row's description heads the history.
  if (firstRowLine) ShowEvents();
}

void DefectRecordWindow::DescribeComputer() {
  std::unique_ptr<CTestConfig> config = model_.CustomConfigCopy();
  if (config == nullptr) return;
  if (EditComputerConfig(this, *config, model_.editable())) {
    model_.SetCustomConfig(std::move(config));
    ShowReport();
  }
}

void DefectRecordWindow::FocusWhereNeeded() {
  if (const std::optional<ReportField> field = model_.refusedField()) {
    tabs_->setCurrentIndex(0);
    if (*field == ReportField::kDateFound) {
      dateFound_->setFocus();
      dateFound_->selectAll();
    } else {
      storedConfig_->setFocus();
    }
  } else if (model_.editable() && model_.defect().summary.empty()) {
    // A new defect starts at its summary, and a save refused for want of one comes back there.
    tabs_->setCurrentIndex(0);
    summary_->setFocus();
  }
}

}  // namespace qm::app
