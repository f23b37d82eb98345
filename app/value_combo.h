// Combo boxes over the project's lists: the names of a value list or of the users, each
// entry carrying its record id.
#pragma once

#include <cstdint>

#include "store/bytes.h"
#include "ui/ui.h"

class QComboBox;

namespace qm {
class CDBDoc;
class ItemTable;
}  // namespace qm

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

// Lets the person type into the combo of the list kept in `list` a name the list lacks, when
// the group of the user logged in allows new names of that list: when typing ends (Enter,
// or leaving the field) the name joins the list and the combo chooses it; a name the list
// holds in another case is chosen as the list spells it. Otherwise the combo offers the
// list's names alone.
void AllowTypedNames(QComboBox* combo, CDBDoc& doc, Tag list, ui::Ui& ui);

}  // namespace qm::app
