// The Options dialog's widgets.
#include "options_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <vector>

#include "qt_ui.h"

namespace qm::app {
namespace {

QString Text(std::string_view text) { return ToQt(std::string(text)); }

}  // namespace

OptionsDialogWidget::OptionsDialogWidget(QWidget* parent, OptionsDialog& options)
    : QDialog(parent) {
  setWindowTitle("Options");
  auto* layout = new QVBoxLayout(this);
  auto* tabs = new QTabWidget;
  layout->addWidget(tabs);

  auto* general = new QWidget;
  auto* g = new QVBoxLayout(general);
  auto* starting = new QGroupBox("When starting program...");
  auto* s = new QVBoxLayout(starting);
  auto* previous = new QRadioButton("Open previous file at startup");
  auto* fileOpen = new QRadioButton("Show \"File Open\" dialog at startup");
  (options.openPreviousFile ? previous : fileOpen)->setChecked(true);
  s->addWidget(previous);
  s->addWidget(fileOpen);
  g->addWidget(starting);
  auto* autoLogin = new QCheckBox("Automatically log in last user");
  autoLogin->setChecked(options.autoLogin);
  auto* gray = new QCheckBox("Gray out closed defects");
  gray->setChecked(options.grayClosed);
  g->addWidget(autoLogin);
  g->addWidget(gray);
  auto* checkRow = new QHBoxLayout;
  auto* interval = new QComboBox;
  for (const std::string_view text : kCheckIntervalTexts) interval->addItem(Text(text));
  interval->setCurrentIndex(options.checkInterval);
  checkRow->addWidget(new QLabel("Check multi-user project file every"));
  checkRow->addWidget(interval);
  checkRow->addWidget(new QLabel("for changes."));
  checkRow->addStretch();
  g->addLayout(checkRow);
  auto* fullPath = new QCheckBox("Show full path to project file in title bar");
  fullPath->setChecked(options.fullPath);
  g->addWidget(fullPath);
  g->addStretch();
  tabs->addTab(general, "General");

  std::vector<std::pair<std::uint32_t, QCheckBox*>> notify;
  if (options.HasPage("User")) {
    auto* user = new QWidget;
    auto* u = new QVBoxLayout(user);
    auto* mail = new QGroupBox("Send me mail when...");
    auto* m = new QVBoxLayout(mail);
    for (const NotifyChoice& choice : kNotifyChoices) {
      auto* box = new QCheckBox(Text(choice.label));
      box->setChecked((options.notifyFlags & choice.bit) != 0);
      m->addWidget(box);
      notify.emplace_back(choice.bit, box);
    }
    u->addWidget(mail);
    u->addStretch();
    tabs->addTab(user, "User");
  }

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);

  store_ = [=, &options] {
    options.openPreviousFile = previous->isChecked();
    options.autoLogin = autoLogin->isChecked();
    options.grayClosed = gray->isChecked();
    options.checkInterval = interval->currentIndex();
    options.fullPath = fullPath->isChecked();
    options.notifyFlags = 0;
    for (const auto& [bit, box] : notify) {
      if (box->isChecked()) options.notifyFlags |= bit;
    }
  };
}

void OptionsDialogWidget::Store() { store_(); }

bool RunOptionsDialog(QWidget* parent, OptionsDialog& options) {
  OptionsDialogWidget dialog(parent, options);
  if (dialog.exec() != QDialog::Accepted) return false;
  dialog.Store();
  return options.Apply();
}

}  // namespace qm::app
