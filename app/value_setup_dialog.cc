// The value list set-up dialog's widgets, and the small dialogs it asks through: the name
// of an item, and the name that takes over a deleted one.
#include "value_setup_dialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "defects/defect_table.h"
#include "defects/project_defects.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "session/value_item.h"
#include "store/store_error.h"

namespace qm::app {
namespace {

std::optional<QString> AskNameDialog(QWidget* parent, const QString& title, const QString& hint,
                                     const QString& start) {
  QDialog dialog(parent);
  dialog.setWindowTitle(title);
  dialog.setAccessibleName(title);
  auto* layout = new QVBoxLayout(&dialog);
  auto* label = new QLabel(hint);
  label->setAccessibleName("Hint");
  auto* name = new QLineEdit(start);
  name->setAccessibleName("Name");
  name->setMaxLength(static_cast<int>(ValueItem::kNameCapacity));
  name->selectAll();
  label->setBuddy(name);
  layout->addWidget(label);
  layout->addWidget(name);
  layout->addWidget(OkCancelButtons(dialog));
  dialog.resize(360, dialog.sizeHint().height());
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return name->text();
}

std::optional<std::uint32_t> AskReplacementDialog(QWidget* parent,
                                                  const ReplacementQuestion& question) {
  QDialog dialog(parent);
  dialog.setWindowTitle("Quillmark");
  dialog.setAccessibleName("Replacing name");
  auto* layout = new QVBoxLayout(&dialog);
  auto* text = new QLabel(ToQt(question.text));
  text->setWordWrap(true);
  text->setAccessibleName("Question");
  layout->addWidget(text);
  auto* names = new QComboBox;
  names->setAccessibleName("New name");
  for (const std::string& name : question.names) names->addItem(ToQt(name));
  auto* form = new QFormLayout;
  form->addRow(ToQt(question.label), names);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(dialog));
  names->setFocus();
  if (dialog.exec() != QDialog::Accepted || names->currentIndex() < 0) return std::nullopt;
  return static_cast<std::uint32_t>(names->currentIndex() + 1);
}

}  // namespace

void TellStoreFailure(ui::Ui& ui, DBStatus status) {
  ui.Tell("Cannot complete command. Database error " + std::to_string(static_cast<int>(status)),
          ui::Icon::kError);
}

ValueSetupDialog::ValueSetupDialog(QWidget* parent, ValueSetup& setup, ui::Ui& ui)
    : QDialog(parent), setup_(setup), ui_(ui) {
  askName = [this](const QString& title, const QString& hint, const QString& start) {
    return AskNameDialog(this, title, hint, start);
  };
  askReplacement = [this](const ReplacementQuestion& question) {
    return AskReplacementDialog(this, question);
  };
  const QString title = ToQt(setup.Title());
  setWindowTitle(title);
  setAccessibleName(title);
  auto* layout = new QVBoxLayout(this);
  auto* text = new QLabel(ToQt(setup.Text()));
  text->setWordWrap(true);
  text->setAccessibleName("Instructions");
  layout->addWidget(text);
  auto* row = new QHBoxLayout;
  names_ = new QListWidget;
  names_->setAccessibleName("Names");
  text->setBuddy(names_);
  row->addWidget(names_, 1);
  auto* column = new QVBoxLayout;
  const std::array<const char*, kButtonCount> labels = {"&Add...", "&Edit...", "&Delete",
                                                        "Move &Up", "Move Do&wn"};
  const std::array<const char*, kButtonCount> spoken = {"Add name", "Edit name", "Delete name",
                                                        "Move name up", "Move name down"};
  for (int i = 0; i < kButtonCount; ++i) {
    auto* button = new QPushButton(labels[static_cast<std::size_t>(i)]);
    button->setAccessibleName(spoken[static_cast<std::size_t>(i)]);
    button->setAutoDefault(false);
    buttons_[static_cast<std::size_t>(i)] = button;
    column->addWidget(button);
  }
  column->addStretch();
  // Each command is stored as it is made, so there is nothing to cancel: Close ends it,
  // by Enter or Esc alike.
  auto* close = new QPushButton("Close");
  close->setAccessibleName("Close");
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::accept);
  column->addWidget(close);
  row->addLayout(column);
  layout->addLayout(row);

  connect(buttons_[kAdd], &QPushButton::clicked, this, [this] { Run([this] { Add(); }); });
  connect(buttons_[kEdit], &QPushButton::clicked, this, [this] { Run([this] { Edit(); }); });
  connect(buttons_[kDelete], &QPushButton::clicked, this, [this] { Run([this] { Delete(); }); });
  connect(buttons_[kUp], &QPushButton::clicked, this, [this] { Run([this] { setup_.MoveUp(); }); });
  connect(buttons_[kDown], &QPushButton::clicked, this,
          [this] { Run([this] { setup_.MoveDown(); }); });
  connect(names_, &QListWidget::currentRowChanged, this, [this](int current) {
    setup_.Select(static_cast<std::uint32_t>(current + 1));
    UpdateButtons();
  });
  connect(names_, &QListWidget::itemDoubleClicked, this, [this] { Run([this] { Edit(); }); });
  Fill();
  if (names_->count() > 0) names_->setCurrentRow(0);
  names_->setFocus();
  resize(460, 340);
}

void ValueSetupDialog::Run(const std::function<void()>& command) {
  try {
    command();
  } catch (const StoreError& e) {
    TellStoreFailure(ui_, e.status);
  }
  Fill();
}

void ValueSetupDialog::Fill() {
  const QSignalBlocker quiet(names_);
  names_->clear();
  for (const std::string& name : setup_.Names()) names_->addItem(ToQt(name));
  names_->setCurrentRow(static_cast<int>(setup_.selection()) - 1);
  UpdateButtons();
}

void ValueSetupDialog::UpdateButtons() {
  const bool selected = setup_.selection() != 0;
  const auto count = static_cast<std::uint32_t>(names_->count());
  buttons_[kEdit]->setEnabled(selected);
  buttons_[kDelete]->setEnabled(selected);
  buttons_[kUp]->setEnabled(selected && setup_.selection() > 1);
  buttons_[kDown]->setEnabled(selected && setup_.selection() < count);
}

void ValueSetupDialog::Add() {
  const auto typed = askName(ToQt(setup_.AddTitle()), ToQt(std::string(ValueSetup::kNameHint)), {});
  if (typed && setup_.Add(FromQt(*typed))) {
    setup_.Select(static_cast<std::uint32_t>(setup_.Names().size()));
  }
}

void ValueSetupDialog::Edit() {
  if (setup_.selection() == 0) return;
  const auto typed = askName(ToQt(setup_.EditTitle()), ToQt(std::string(ValueSetup::kNameHint)),
                             ToQt(setup_.EditInput()));
  if (typed) setup_.Edit(FromQt(*typed));
}

void ValueSetupDialog::Delete() {
  if (setup_.Delete() == ValueSetup::DeleteStep::kChooseReplacement) {
    setup_.ChooseReplacement(askReplacement(setup_.replacementQuestion()));
  }
}

bool RunValueSetup(QWidget* parent, CDBDoc& doc, const ValueListSettings& list, ui::Ui& ui) {
  auto* table = dynamic_cast<CValueTable*>(doc.GetTable(list.tag));
  if (table == nullptr) return false;
  auto* defects = dynamic_cast<CDefectTable*>(doc.GetTable(kDefectTag));
  std::optional<DefectValueAccess> access;
  if (defects != nullptr) access.emplace(*defects);
  ValueSetup setup(*table, list, access ? &*access : nullptr, ui, doc.currentUserId());
  try {
    if (!setup.Open()) return false;
  } catch (const StoreError& e) {
    TellStoreFailure(ui, e.status);
    return false;
  }
  ValueSetupDialog dialog(parent, setup, ui);
  dialog.exec();
  return true;
}

}  // namespace qm::app
