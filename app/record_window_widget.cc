// The buttons every record window has, wired to its logic.
#include "record_window_widget.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTextEdit>
#include <utility>

#include "qt_ui.h"

namespace qm::app {
namespace {

void ShowButton(QPushButton* button, const ButtonState& state) {
  button->setVisible(state.visible);
  button->setEnabled(state.enabled);
  if (!state.label.empty()) button->setText(ToQt(state.label));
  button->setToolTip(ToQt(state.tip));
  // The label names the button for a screen reader; the tip says what it does.
  button->setAccessibleDescription(ToQt(state.tip));
}

}  // namespace

void RecordWindowWidget::Open(std::uint16_t mode, std::vector<RecordItem*> browse,
                              std::uint32_t start) {
  logic().Open(mode, std::move(browse), start);
  Show();
}

void RecordWindowWidget::OnIdle() {
  const bool wasFailed = logic().lockFailed();
  logic().OnIdle();
  if (wasFailed && !logic().lockFailed()) Show();
}

void RecordWindowWidget::closeEvent(QCloseEvent* event) {
  bool saved = false;
  if (!logic().QueryClose(&saved)) {
    event->ignore();
    return;
  }
  event->accept();
  if (saved && onSaved) onSaved();
  if (onClosed) onClosed();
}

QLayout* RecordWindowWidget::MakeButtonRow() {
  auto* buttons = new QHBoxLayout;
  previous_ = new QPushButton("<");
  previous_->setAccessibleName("Previous Record");
  next_ = new QPushButton(">");
  next_->setAccessibleName("Next Record");
  lockedBy_ = new QPushButton("Locked By?");
  first_ = new QPushButton;
  first_->setObjectName("first");
  second_ = new QPushButton;
  second_->setObjectName("second");
  buttons->addWidget(previous_);
  buttons->addWidget(next_);
  buttons->addWidget(lockedBy_);
  buttons->addStretch();
  buttons->addWidget(second_);
  buttons->addWidget(first_);
  connect(previous_, &QPushButton::clicked, this, [this] {
    if (logic().OnPreviousRecord()) Show();
    FocusRefusedField();
  });
  connect(next_, &QPushButton::clicked, this, [this] {
    if (logic().OnNextRecord()) Show();
    FocusRefusedField();
  });
  connect(lockedBy_, &QPushButton::clicked, this, [this] { (void)logic().OnLockedBy(); });
  connect(first_, &QPushButton::clicked, this, [this] {
    logic().OnCancelButton();
    if (onClosed) onClosed();
  });
  connect(second_, &QPushButton::clicked, this, [this] {
    const bool saving = logic().mode() != CRecordWindow::kView;
    const bool closes = logic().OnAcceptButton();
    if (saving && onSaved) onSaved();
    if (closes) {
      if (onClosed) onClosed();
    } else {
      Show();
      FocusRefusedField();
    }
  });
  return buttons;
}

void RecordWindowWidget::FocusRefusedField() {
  const std::string& name = logic().refusedField();
  if (name.empty()) return;
  auto* field = findChild<QWidget*>(ToQt(name));
  if (field == nullptr) return;
  // A field on a tab that is not shown: its tab comes to the front first.
  for (auto* tabs : findChildren<QTabWidget*>()) {
    for (int t = 0; t < tabs->count(); ++t) {
      if (tabs->widget(t)->isAncestorOf(field)) tabs->setCurrentIndex(t);
    }
  }
  field->setFocus();
  if (auto* edit = qobject_cast<QLineEdit*>(field)) edit->selectAll();
}

void RecordWindowWidget::keyPressEvent(QKeyEvent* event) {
  // Esc is the first button (Cancel, Close) or, where there is none, the OK of a view;
  // Enter is the second button (OK, Add) unless the focus is on a button, which it presses,
  // or in a text of several lines, which keeps its new lines. The keys reach here only
  // when the field with the focus left them.
  const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  QWidget* focus = focusWidget();
  if (plain && event->key() == Qt::Key_Escape) {
    (!first_->isHidden() ? first_ : second_)->click();
    return;
  }
  if (plain && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
    if (auto* button = qobject_cast<QPushButton*>(focus)) {
      button->click();
      return;
    }
    const bool inText =
        focus != nullptr && (qobject_cast<QPlainTextEdit*>(focus->parentWidget()) != nullptr ||
                             qobject_cast<QTextEdit*>(focus->parentWidget()) != nullptr ||
                             qobject_cast<QPlainTextEdit*>(focus) != nullptr ||
                             qobject_cast<QTextEdit*>(focus) != nullptr);
    if (!inText && !second_->isHidden()) {
      second_->click();
      return;
    }
  }
  QWidget::keyPressEvent(event);
}

void RecordWindowWidget::ShowButtons() {
  setWindowTitle(ToQt(logic().title()));
  ShowButton(first_, logic().firstButton());
  ShowButton(second_, logic().secondButton());
  ShowButton(previous_, logic().previousButton());
  ShowButton(next_, logic().nextButton());
  ShowButton(lockedBy_, logic().lockedByButton());
}

}  // namespace qm::app
