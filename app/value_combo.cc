// Filling the combos of value lists and users.
#include "value_combo.h"

#include <QComboBox>
#include <QCompleter>
#include <QLineEdit>
#include <functional>
#include <optional>

#include "people/user.h"
#include "qt_ui.h"
#include "session/db_doc.h"
#include "session/item_table.h"
#include "shell/custom_values.h"
#include "store/store_error.h"
#include "value_setup_dialog.h"

namespace qm::app {
namespace {

void Fill(QComboBox* combo, const ItemTable* table, std::uint32_t currentId, bool withNone,
          const std::function<bool(const RecordItem&)>& shown) {
  combo->clear();
  if (withNone) combo->addItem(QString(), 0u);
  if (table == nullptr) return;
  for (std::uint32_t p = 1; p <= table->count(); ++p) {
    const RecordItem* item = table->ItemAt(p);
    if (item->deleted || !shown(*item)) continue;
    combo->addItem(ToQt(item->GetName()), item->GetId());
    if (item->GetId() == currentId) combo->setCurrentIndex(combo->count() - 1);
  }
}

}  // namespace

void FillValueCombo(QComboBox* combo, const ItemTable* list, std::uint32_t currentId,
                    bool withNone) {
  Fill(combo, list, currentId, withNone, [](const RecordItem&) { return true; });
}

void FillUserCombo(QComboBox* combo, const ItemTable& users, std::uint32_t currentId,
                   bool withNone) {
  Fill(combo, &users, currentId, withNone, [](const RecordItem& item) {
    const auto* user = dynamic_cast<const CUser*>(&item);
    return user != nullptr && !user->IsCustomer();
  });
}

void FillPeopleCombo(QComboBox* combo, const ItemTable& people, std::uint32_t currentId,
                     bool withNone) {
  Fill(combo, &people, currentId, withNone,
       [](const RecordItem& item) { return dynamic_cast<const CUser*>(&item) != nullptr; });
}

void AllowTypedNames(QComboBox* combo, CDBDoc& doc, Tag list, ui::Ui& ui) {
  if (!MayTypeNewValue(doc, list)) return;
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
  QObject::connect(combo->lineEdit(), &QLineEdit::editingFinished, combo, [combo, &doc, list, &ui] {
    const QString typed = combo->currentText();
    if (combo->currentIndex() >= 0 && combo->itemText(combo->currentIndex()) == typed) return;
    std::optional<std::uint32_t> id;
    try {
      id = ValueForTypedName(doc, list, FromQt(typed));
    } catch (const StoreError& e) {
      TellStoreFailure(ui, e.status);
    }
    FillValueCombo(combo, doc.GetTable(list), id.value_or(0), true);
  });
}

}  // namespace qm::app
