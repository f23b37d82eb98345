// Names typed into a defect's list fields, under the group's custom-value permissions.
#include "shell/custom_values.h"

#include <array>
#include <memory>
#include <string>

#include "people/user.h"
#include "people/user_group.h"
#include "session/db_doc.h"
#include "session/record_notice.h"
#include "session/value_item.h"
#include "session/value_setup.h"
#include "store/store_error.h"

namespace qm {
namespace {

// The lists whose names a group may let its members type, by the bit of the group's
// custom-value flags that allows it. Bit 3, versions, has no list: a version is typed
// freely.
constexpr std::array<std::pair<Tag, std::uint16_t>, 5> kTypedLists{{
    {MakeTag("type"), 1u << 0},
    {MakeTag("sevr"), 1u << 1},
    {MakeTag("prod"), 1u << 2},
    {MakeTag("rpro"), 1u << 4},
    {MakeTag("comp"), 1u << 5},
}};

// The bit of the flags that lets members type new names of `list`; 0 for a list that takes
// none.
std::uint16_t FlagOf(Tag list) {
  for (const auto& [tag, flag] : kTypedLists) {
    if (tag == list) return flag;
  }
  return 0;
}

}  // namespace

bool TakesTypedNames(Tag list) { return FlagOf(list) != 0; }

bool MayTypeNewValue(const CDBDoc& doc, Tag list) {
  const std::uint16_t bit = FlagOf(list);
  if (bit == 0) return false;
  if (!doc.multiUser()) return true;
  const auto* user = dynamic_cast<const CUser*>(doc.currentUser());
  if (user == nullptr) return false;
  const CUserGroup* group =
      user->GetGroup(static_cast<const CUserGroupTable&>(*doc.GetTable(kGroupTag)));
  return group != nullptr && (group->customFlags & bit) != 0;
}

std::optional<std::uint32_t> ValueForTypedName(CDBDoc& doc, Tag list, std::string_view typed) {
  auto* table = dynamic_cast<CValueTable*>(doc.GetTable(list));
  const std::string name = TypedName(typed);
  if (table == nullptr || name.empty()) return std::nullopt;
  if (const ValueItem* known = FindValueName(*table, name)) return known->GetId();
  if (!MayTypeNewValue(doc, list)) return std::nullopt;
  std::unique_ptr<RecordItem> item = table->NewItem();
  auto& value = static_cast<ValueItem&>(*item);
  value.name = name;
  value.order = table->count() + 1;
  const ValueItem& added = value;
  if (const DBStatus s = table->AddItem(item); s != DBStatus::kOk) Fail(s);
  // The others' lists are loaded once; the notice brings them the new name.
  if (doc.multiUser()) {
    if (const DBStatus s =
            PostRecordNotice(*doc.store(), doc.currentUserId(), kNoticeAdded, list, added.GetId());
        s != DBStatus::kOk) {
      Fail(s);
    }
  }
  return added.GetId();
}

}  // namespace qm
