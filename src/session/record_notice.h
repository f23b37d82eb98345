// Change notices about one record: what other clients of a multi-user file read to learn
// that a record changed or went. The data are the table's tag and the record id,
// big-endian.
#pragma once

#include <array>
#include <cstdint>

#include "store/bytes.h"
#include "store/project_store.h"

namespace qm {

inline constexpr std::uint32_t kNoticeAssigned = 1000;  // u32 defect id: yours now
inline constexpr std::uint32_t kNoticeText = 1001;      // a text to show
inline constexpr std::uint32_t kNoticeChanged = 1002;
inline constexpr std::uint32_t kNoticeDeleted = 1003;
inline constexpr std::uint32_t kNoticeAdded = 1004;

[[nodiscard]] inline DBStatus PostRecordNotice(CProjectStore& store, std::uint32_t sender,
                                               std::uint32_t kind, Tag table, std::uint32_t id) {
  std::array<std::uint8_t, 8> data{};
  BeWriter out(data.data());
  out.U32(table);
  out.U32(id);
  return store.PostMessage(sender, kind, data);
}

}  // namespace qm
