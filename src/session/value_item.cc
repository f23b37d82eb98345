// The record form of value list names, and the table that keeps them in list order.
#include "session/value_item.h"

namespace qm {

void ValueItem::WriteTo(PayloadWriter& out) const {
  out.U16(kVersion);
  out.U8(deleted ? 1 : 0);
  out.String(name, kNameCapacity);
  out.U32(order);
}

void ValueItem::ReadFrom(PayloadReader& in) {
  const std::uint16_t version = ReadVersion(in, kOldestVersion, kVersion);
  if (version >= 257) in.U8(deleted);
  in.String(name, kNameCapacity);
  in.U32(order);
}

int CValueTable::CompareItems(const RecordItem& a, const RecordItem& b,
                              const SortOrder& /*order*/) const {
  const std::uint32_t x = static_cast<const ValueItem&>(a).order;
  const std::uint32_t y = static_cast<const ValueItem&>(b).order;
  return x < y ? -1 : (x > y ? 1 : 0);
}

}  // namespace qm
