// The names that ids stand for in the forms of defects.
#include "defects/text_forms.h"

#include "people/user.h"
#include "session/value_item.h"

namespace qm {

std::string UserName(const DefectLookups& lookups, std::uint32_t id) {
  const CUser* user = lookups.User(id);
  return user != nullptr ? user->GetName() : std::string();
}

std::string ValueName(const DefectLookups& lookups, Tag list, std::uint32_t id) {
  const ValueItem* value = lookups.Value(list, id);
  return value != nullptr ? value->name : std::string("<not set>");
}

}  // namespace qm
