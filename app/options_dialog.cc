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
#include <algorithm>
#include <vector>

#include "qt_ui.h"
#include "session/db_doc.h"
#include "value_combo.h"

namespace qm::app {
namespace {

QString Text(std::string_view text) { return ToQt(std::string(text)); }

}  // namespace

OptionsDialogWidget::OptionsDialogWidget(QWidget* parent, OptionsDialog& options, CDBDoc* doc)
    : QDialog(parent) {
  setWindowTitle("Options");
  auto* layout = new QVBoxLayout(this);
  auto* tabs = new QTabWidget;
  tabs->setAccessibleName("Option pages");
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
  auto* every = new QLabel("Check multi-user project file every");
  every->setBuddy(interval);  // the combo's label for a screen reader
  checkRow->addWidget(every);
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
  QCheckBox* sound = nullptr;
  QCheckBox* question = nullptr;
  QRadioButton* viewOnDoubleClick = nullptr;
  QRadioButton* firstNameFirst = nullptr;
  // "Double-clicking on items..." and "Display names as...", on the User or Project page.
  const auto choices = [&](QVBoxLayout* page) {
    auto* click = new QGroupBox("Double-clicking on items...");
    auto* c = new QVBoxLayout(click);
    auto* edits = new QRadioButton("Opens edit dialog box");
    viewOnDoubleClick = new QRadioButton("Opens view dialog box");
    (options.viewOnDoubleClick ? viewOnDoubleClick : edits)->setChecked(true);
    c->addWidget(edits);
    c->addWidget(viewOnDoubleClick);
    page->addWidget(click);
    auto* names = new QGroupBox("Display names as...");
    auto* n = new QVBoxLayout(names);
    firstNameFirst = new QRadioButton("First Last   (e.g., John Smith)");
    auto* lastFirst = new QRadioButton("Last, First  (e.g., Smith, John)");
    (options.firstNameFirst ? firstNameFirst : lastFirst)->setChecked(true);
    n->addWidget(firstNameFirst);
    n->addWidget(lastFirst);
    page->addWidget(names);
  };
  if (options.HasPage("User")) {
    auto* user = new QWidget;
    auto* u = new QVBoxLayout(user);
    auto* alert = new QGroupBox("Notification Options:");
    auto* a = new QVBoxLayout(alert);
    sound = new QCheckBox("Play a sound");
    sound->setChecked(options.playSound);
    question = new QCheckBox("Display a dialog box");
    question->setChecked(options.showQuestion);
    a->addWidget(sound);
    a->addWidget(question);
    u->addWidget(alert);
    choices(u);
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
  if (options.HasPage("Project")) {
    auto* project = new QWidget;
    auto* p = new QVBoxLayout(project);
    choices(p);
    p->addStretch();
    tabs->addTab(project, "Project");
  }

  // The Assign page: a choice and, for its last entry, a user.
  struct RuleWidgets {
    std::vector<QRadioButton*> choices;
    QComboBox* user = nullptr;
  };
  RuleWidgets onAdd;
  RuleWidgets afterWork;
  if (options.HasPage("Assign")) {
    auto* assign = new QWidget;
    auto* a = new QVBoxLayout(assign);
    a->addWidget(
        new QLabel("The following settings affect defect assignments for this project file."));
    const auto rule = [&](const char* title, std::initializer_list<const char*> labels,
                          std::uint16_t chosen, std::uint32_t userId, RuleWidgets& out) {
      auto* box = new QGroupBox(title);
      auto* b = new QVBoxLayout(box);
      for (const char* label : labels) {
        out.choices.push_back(new QRadioButton(label));
        b->addWidget(out.choices.back());
      }
      out.choices.at(std::min<std::size_t>(chosen, out.choices.size() - 1))->setChecked(true);
      out.user = new QComboBox;
      FillUserCombo(out.user, *doc->GetTable(kUserTag), userId, true);
      b->addWidget(out.user);
      // The user combo serves the last choice only.
      const auto follow = [last = out.choices.back(), user = out.user] {
        user->setEnabled(last->isChecked());
      };
      for (QRadioButton* choice : out.choices) connect(choice, &QRadioButton::toggled, follow);
      follow();
      a->addWidget(box);
    };
    rule("When adding a defect...",
         {"Leave it unassigned", "Assign it to the user who entered it",
          "Assign it to the following user:"},
         options.assign.onAdd, options.assign.onAddUser, onAdd);
    rule("After fixing, estimating, verifying, or re-opening a defect...",
         {"Leave it unassigned", "Keep its current assignment",
          "Assign it to the user who entered it", "Assign it to the following user:"},
         options.assign.afterWork, options.assign.afterWorkUser, afterWork);
    a->addStretch();
    tabs->addTab(assign, "Assign");
  }

  layout->addWidget(OkCancelButtons(*this));

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
    if (sound != nullptr) {
      options.playSound = sound->isChecked();
      options.showQuestion = question->isChecked();
    }
    if (viewOnDoubleClick != nullptr) {
      options.viewOnDoubleClick = viewOnDoubleClick->isChecked();
      options.firstNameFirst = firstNameFirst->isChecked();
    }
    const auto chosen = [](const RuleWidgets& rule) {
      for (std::size_t n = 0; n < rule.choices.size(); ++n) {
        if (rule.choices[n]->isChecked()) return static_cast<std::uint16_t>(n);
      }
      return std::uint16_t{0};
    };
    if (onAdd.user != nullptr) {
      options.assign = {chosen(onAdd), onAdd.user->currentData().toUInt(), chosen(afterWork),
                        afterWork.user->currentData().toUInt()};
    }
  };
}

void OptionsDialogWidget::Store() { store_(); }

bool RunOptionsDialog(QWidget* parent, OptionsDialog& options, CDBDoc* doc) {
  OptionsDialogWidget dialog(parent, options, doc);
  if (dialog.exec() != QDialog::Accepted) return false;
  dialog.Store();
  return options.Apply();
}

}  // namespace qm::app
