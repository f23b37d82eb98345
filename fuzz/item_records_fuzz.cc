// Fuzz target: the payloads of item records as a damaged or foreign file may hold them.
// The first byte picks the kind of item, the rest is the payload. Every reading must end
// in an item or an ItemError, and an item written and read again must come to write the
// same bytes. Kinds 4, 5 and 6 are the project's security, information and preferences records,
// kind 7 a defect, kind 8 a workbook task.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "bench/silent_ui.h"
#include "defects/defect_table.h"
#include "defects/task.h"
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
    if (data[0] % 9 == 4) {
      const std::vector<std::uint8_t> packed = qm::ProjectSecurity::Decode(record).Encode();
      if (qm::ProjectSecurity::Decode(packed).Encode() != packed) std::abort();
      return 0;
    }
    if (data[0] % 9 == 5) {
      const qm::ProjectInfo info = qm::ProjectInfo::Decode(record, 1);
      if (info.dataVersion <= qm::kDataVersion) {
        const std::vector<std::uint8_t> packed = info.Encode(1);
        if (qm::ProjectInfo::Decode(packed, 1).Encode(1) != packed) std::abort();
      }
      return 0;
    }
    if (data[0] % 9 == 6) {
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
  static qm::CDefectTable defects(nullptr, ui, nullptr);
  static qm::CTaskTable tasks(nullptr, ui, static_cast<const qm::DefectLookups*>(nullptr));
  const qm::ItemTable* tables[] = {&users,  &groups, &configs, &values, nullptr,
                                   nullptr, nullptr, &defects, &tasks};
  const qm::ItemTable& table = *tables[data[0] % 9];
  const std::span<const std::uint8_t> payload = record;
  std::unique_ptr<qm::RecordItem> item;
  try {
    item = table.ItemFromRecord(payload);
  } catch (const qm::ItemError&) {
    return 0;
  }
  if (item == nullptr) return 0;
  // The first writing may still differ from what the next reading makes of it: the old
  // one-byte texts keep their 0 bytes, which the newer form reads as blanks. From the
  // second writing on, the bytes must not change.
  std::unique_ptr<qm::RecordItem> again = table.ItemFromRecord(item->Pack());
  if (again == nullptr) std::abort();
  // An event without a date goes among dated ones by its kind, a place that depends on
  // the order the events come in; only a defect whose events all have dates must keep
  // its order, and so its bytes, from one reading to the next.
  if (const auto* defect = dynamic_cast<const qm::CDefect*>(again.get())) {
    for (std::uint32_t n = 1; n <= defect->EventCount(); ++n) {
      if (defect->EventAt(n)->date == qm::platform::kNoStamp) return 0;
    }
  }
  const std::vector<std::uint8_t> packed = again->Pack();
  std::unique_ptr<qm::RecordItem> third = table.ItemFromRecord(packed);
  if (third == nullptr || third->Pack() != packed) std::abort();
  return 0;
}
