// Fuzz target: the payloads of item records as a damaged or foreign file may hold them.
// The first byte picks the kind of item, the rest is the payload. Every reading must end
// in an item or an ItemError, and an item written and read again must write the same
// bytes. Kinds 4, 5 and 6 are the project's security, information and preferences records.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "bench/silent_ui.h"
#include "people/test_config.h"
#include "people/user.h"
#include "people/user_group.h"
#include "session/item_error.h"
#include "session/project_records.h"
#include "session/value_item.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::span<const std::uint8_t> record(data + 1, size - 1);
  try {
    if (data[0] % 7 == 4) {
      const std::vector<std::uint8_t> packed = qm::ProjectSecurity::Decode(record).Encode();
      if (qm::ProjectSecurity::Decode(packed).Encode() != packed) std::abort();
      return 0;
    }
    if (data[0] % 7 == 5) {
      const qm::ProjectInfo info = qm::ProjectInfo::Decode(record, 1);
      if (info.dataVersion <= qm::kDataVersion) {
        const std::vector<std::uint8_t> packed = info.Encode(1);
        if (qm::ProjectInfo::Decode(packed, 1).Encode(1) != packed) std::abort();
      }
      return 0;
    }
    if (data[0] % 7 == 6) {
      if (const auto block = qm::DecodePreferences(record)) {
        if (qm::DecodePreferences(qm::EncodePreferences(*block)) != block) std::abort();
      }
      return 0;
    }
  } catch (const qm::ItemError&) {
    return 0;
  }
  static qm::bench::SilentUi ui;
  static qm::CUserTable users(nullptr, ui);
  static qm::CUserGroupTable groups(nullptr, ui);
  static qm::CTestConfigTable configs(nullptr, ui);
  static qm::CValueTable values(nullptr, qm::MakeTag("type"), ui);
  const qm::ItemTable* tables[] = {&users, &groups, &configs, &values};
  const qm::ItemTable& table = *tables[data[0] % 7 % 4];
  const std::span<const std::uint8_t> payload = record;
  std::unique_ptr<qm::RecordItem> item;
  try {
    item = table.ItemFromRecord(payload);
  } catch (const qm::ItemError&) {
    return 0;
  }
  if (item == nullptr) return 0;
  const std::vector<std::uint8_t> packed = item->Pack();
  std::unique_ptr<qm::RecordItem> again = table.ItemFromRecord(packed);
  if (again == nullptr || again->Pack() != packed) std::abort();
  return 0;
}
