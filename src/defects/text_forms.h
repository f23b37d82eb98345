// The names that ids stand for in the forms of defects, events and reported-by rows, and
// the pieces every form shares.
#pragma once

#include <cstdint>
#include <string>

#include "defects/defect_lookups.h"
#include "session/form_text.h"
#include "store/bytes.h"

namespace qm {

// The user's name; empty when the id names no one.
std::string UserName(const DefectLookups& lookups, std::uint32_t id);
// The name of a value of `list`; "<not set>" when the id names none.
std::string ValueName(const DefectLookups& lookups, Tag list, std::uint32_t id);

}  // namespace qm
