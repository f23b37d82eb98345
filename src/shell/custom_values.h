// Names typed into a defect's list fields. A user group may let its members type a name
// that a list does not hold yet, list by list; the name then joins the end of the list for
// everyone, as if it had been set up there.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "store/bytes.h"

namespace qm {

class CDBDoc;

// Whether a group can let its members type new names of the list kept in `list`.
bool TakesTypedNames(Tag list);

// Whether the user logged in may add a name to the list kept in `list` by typing it into a
// field: always in a project without logins; otherwise when the user's group allows
// custom values of that list (types, severities, products, reproducibles, components).
// No other list takes typed names.
bool MayTypeNewValue(const CDBDoc& doc, Tag list);

// The id of the name typed, without its blanks: the list's own name in any case of its
// letters, or a new last name of the list when MayTypeNewValue allows one, made known to
// the other users of the project. Nothing for an empty name, or a new one the user may not
// add. A failure of the store is thrown as StoreError.
std::optional<std::uint32_t> ValueForTypedName(CDBDoc& doc, Tag list, std::string_view typed);

}  // namespace qm
