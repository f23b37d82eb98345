// Filling the combos of value lists and users.
#include "value_combo.h"

#include <QComboBox>
#include <functional>

#include "people/user.h"
#include "qt_ui.h"
#include "session/item_table.h"

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

}  // namespace qm::app
