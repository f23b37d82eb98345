// CDefectTable, the 'dfct' table: the defects of a project, read under a guard that keeps
// what a damaged record holds, and sorted by any field of the defect.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "defects/defect.h"
#include "defects/defect_lookups.h"
#include "session/item_table.h"
#include "session/table_tags.h"

namespace qm {

// No secondary sort field.
inline constexpr std::int16_t kNoSortField = -1;

class CDefectTable : public ItemTable {
 public:
  // Sorted by number, then by type, ascending.
  CDefectTable(CProjectStore* store, ui::Ui& ui, const DefectLookups* lookups);
  // The same, keeping its lookups for as long as it lives.
  CDefectTable(CProjectStore* store, ui::Ui& ui, std::unique_ptr<DefectLookups> lookups);

  int CompareItems(const RecordItem& a, const RecordItem& b, const SortOrder& order) const override;
  // A defect from a record. One that cannot be read whole is kept with what it holds,
  // after telling the person that it needs editing: saving it again is the repair.
  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                             std::uint32_t id = 0) const override;
  std::unique_ptr<RecordItem> NewItem() const override;
  // The attachments stored in the project, in every reported-by row.
  std::vector<std::pair<Tag, std::uint32_t>> OwnedRecords(const RecordItem& item) const override;
  // Ties go by record id, except by number alone.
  bool IsTotalOrder(const SortOrder& order) const override {
    return secondary_ != kNoSortField || order.field != 1;
  }

  // The field that decides between defects equal in the sort field; kNoSortField for none.
  // What the defects of this table read their names through.
  const DefectLookups* lookups() const { return lookups_; }
  std::int16_t secondaryField() const { return secondary_; }
  void SetSecondaryField(std::int16_t field);

  // -1, 0 or 1: the two defects by one field, ascending.
  int CompareField(std::uint16_t field, const CDefect& a, const CDefect& b) const;

  CDefect* DefectAt(std::uint32_t position) const {
    return static_cast<CDefect*>(ItemAt(position));
  }

 private:
  ui::Ui& ui_;
  std::unique_ptr<DefectLookups> ownedLookups_;
  const DefectLookups* lookups_;
  std::int16_t secondary_ = 4;
};

}  // namespace qm
