// Combo boxes over the project's lists: the names of a value list or of the users, each
// entry carrying its record id.
#pragma once

#include <cstdint>

class QComboBox;

namespace qm {
class ItemTable;
}

namespace qm::app {

// The names of `list` in its order, with an empty "none" entry first when `withNone`; the
// entry of `currentId` is chosen. A missing list leaves the combo empty, and deleted
// items are left out.
void FillValueCombo(QComboBox* combo, const ItemTable* list, std::uint32_t currentId,
                    bool withNone);
// The users of the program as the table sorts them, without the customers.
void FillUserCombo(QComboBox* combo, const ItemTable& users, std::uint32_t currentId,
                   bool withNone);
// The users and the customers alike, as the table sorts them: everyone who may report.
void FillPeopleCombo(QComboBox* combo, const ItemTable& people, std::uint32_t currentId,
                     bool withNone);

}  // namespace qm::app
