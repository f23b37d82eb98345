// Fields named by their labels.
#include "accessible_names.h"

#include <QFormLayout>
#include <QLabel>

namespace qm::app {

void NameFieldsByLabels(QFormLayout* form) {
  for (int row = 0; row < form->rowCount(); ++row) {
    const QLayoutItem* label = form->itemAt(row, QFormLayout::LabelRole);
    const QLayoutItem* field = form->itemAt(row, QFormLayout::FieldRole);
    const auto* text = label != nullptr ? qobject_cast<QLabel*>(label->widget()) : nullptr;
    QWidget* named = field != nullptr ? field->widget() : nullptr;
    // A label that shows a value is read by its value, as its row's label tells.
    if (text == nullptr || named == nullptr || qobject_cast<QLabel*>(named) != nullptr ||
        !named->accessibleName().isEmpty()) {
      continue;
    }
    QString name = text->text();
    name.remove('&');
    if (name.endsWith(':')) name.chop(1);
    named->setAccessibleName(name.trimmed());
  }
}

}  // namespace qm::app
