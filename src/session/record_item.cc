// The shared behaviour of items.
#include "session/record_item.h"

#include <algorithm>

#include "session/item_table.h"

namespace qm {

RecordItem::~RecordItem() {
  // Each Forget takes its table off the list.
  while (!owners_.empty()) owners_.back()->Forget(*this);
}

bool RecordItem::GetColumnText(std::uint16_t /*column*/, std::string& /*out*/) const {
  return false;
}

std::string RecordItem::GetName() const { return "--Not Set--"; }

void RecordItem::CopyPayloadFrom(const RecordItem& other) {
  const std::vector<std::uint8_t> bytes = other.Pack();
  PayloadReader in(bytes);
  ReadFrom(in);
  SetId(other.GetId());
}

std::vector<std::uint8_t> RecordItem::Pack() const {
  CHandleFile file(1024);
  PayloadWriter out(file);
  WriteTo(out);
  return file.Detach();
}

void RecordItem::AddToTable(ItemTable& table) { owners_.push_back(&table); }

void RecordItem::RemoveFromTable(ItemTable& table) {
  const auto it = std::find(owners_.begin(), owners_.end(), &table);
  if (it != owners_.end()) owners_.erase(it);
}

}  // namespace qm
