// ValueItem, one name of a field's value list (a defect type, a priority, a product...),
// and CValueTable, the table of one list, kept in the list's own order.
//
// Payload (version 257 written; 256 and 257 read):
//
//   order  field    form         present when
//   1      version  u16          always
//   2      deleted  u8           257
//   3      name     string(255)  always
//   4      order    u32          always
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "session/item_table.h"
#include "session/record_item.h"

namespace qm {

class ValueItem : public RecordItem {
 public:
  static constexpr std::uint16_t kOldestVersion = 256;
  static constexpr std::uint16_t kVersion = 257;
  static constexpr std::size_t kNameCapacity = 255;

  ValueItem() = default;
  ValueItem(std::string n, std::uint32_t o) : name(std::move(n)), order(o) {}

  void WriteTo(PayloadWriter& out) const override;
  // Reads a record of version 256 or 257; throws ItemError(kItemFailed) for another.
  void ReadFrom(PayloadReader& in) override;

  std::string GetName() const override { return name; }

  std::string name;
  std::uint32_t order = 0;  // the place in the list, from 1
};

// The table of one value list. Items sort by `order`, ascending, whatever sort order the
// table is given.
class CValueTable : public ItemTableOf<ValueItem> {
 public:
  CValueTable(CProjectStore* store, Tag tag, ui::Ui& ui) : ItemTableOf(store, tag, ui) {}

  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;

  // The item at a 1-based position, or null.
  ValueItem* ValueAt(std::uint32_t position) const {
    return static_cast<ValueItem*>(ItemAt(position));
  }
};

}  // namespace qm
