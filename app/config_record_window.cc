// The test configuration window's widgets.
#include "config_record_window.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QVBoxLayout>

#include "config_dialog.h"
#include "qt_ui.h"
#include "session/db_doc.h"

namespace qm::app {

ConfigRecordWindow::ConfigRecordWindow(CDBDoc& doc, ui::Ui& ui, EditMarks& marks, QWidget* parent)
    : RecordWindowWidget(parent), model_(doc, *doc.GetTable(kConfigTag), ui, marks) {
  auto* layout = new QVBoxLayout(this);
  auto* top = new QFormLayout;
  name_ = new QLineEdit;
  name_->setObjectName("name");
  name_->setAccessibleName("Name");
  LimitBytes(name_, decltype(CTestConfig::name)::kCapacity);
  top->addRow("Name:", name_);
  layout->addLayout(top);
  form_ = new ComputerConfigForm;
  layout->addWidget(Scrolling(form_));
  layout->addLayout(MakeButtonRow());
  connect(name_, &QLineEdit::textEdited, this, [this] { Edited(); });
  form_->onEdited = [this] { Edited(); };
}

void ConfigRecordWindow::Show() {
  showing_ = true;
  name_->setText(ToQt(model_.config().name.str()));
  form_->SetEditable(model_.editable());
  form_->Show(model_.config());
  name_->setEnabled(model_.editable());
  showing_ = false;
  ShowButtons();
}

void ConfigRecordWindow::Edited() {
  if (showing_) return;
  CTestConfig& config = model_.config();
  config.name = FromQt(name_->text());
  form_->Keep(config);
  model_.MarkChanged();
  ShowButtons();
}

}  // namespace qm::app
