// CRecordListView, the logic of the list that shows one table: its columns, which a person
// inserts, removes and fills from the header's popup, the hit test of that popup, the
// window title, and the saved state of the columns and the window's placement.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "session/item_table.h"
#include "ui/ui.h"

namespace qm {

class CDBDoc;

// One column of a list.
struct ListColumn {
  static constexpr std::uint16_t kMarkerField = 65535;  // the defect list's fixed first column
  static constexpr std::uint16_t kLeft = 129;
  static constexpr std::uint16_t kRight = 130;  // any other format is left-aligned too
  static constexpr std::uint16_t kNoMenu = 1;   // flags: the header offers no popup for it

  std::uint16_t fieldId = 0;  // 0: not set
  std::uint16_t width = 64;
  std::uint16_t minWidth = 20;
  std::uint16_t maxWidth = 400;
  std::uint16_t format = kLeft;
  std::string title = "<not set>";  // at most 255 bytes are kept
  std::uint16_t flags = 0;
  std::uint16_t x = 0;  // the widths of the columns before it

  bool operator==(const ListColumn&) const = default;
};

// A saved state or placement that cannot be read; the list keeps its defaults.
struct ListStateError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Where a window stood: the first 22 bytes of its saved value, little-endian.
//   0   4  visible flag
//   4   2  1 maximised, 65535 iconic, 0 normal
//   6  16  left, top, right, bottom in the frame's client coordinates
struct WindowPlacement {
  static constexpr std::uint16_t kNormal = 0;
  static constexpr std::uint16_t kMaximised = 1;
  static constexpr std::uint16_t kIconic = 65535;
  static constexpr std::size_t kSize = 22;

  bool visible = true;
  std::uint16_t state = kNormal;
  std::array<std::int32_t, 4> rect{};  // left, top, right, bottom

  bool operator==(const WindowPlacement&) const = default;
};

// A placement as its 22 bytes, and back: nothing from fewer bytes. A record window's value
// is just these; a list window's goes on with its list state.
std::vector<std::uint8_t> EncodePlacement(const WindowPlacement& placement);
std::optional<WindowPlacement> DecodePlacement(std::span<const std::uint8_t> value);

// A field a column can show, as the header's popup offers it.
struct ColumnChoice {
  std::uint16_t fieldId;
  std::string title;
};

class CRecordListView {
 public:
  // The codes of ColumnCommand beside the field choices, which are 1 and on.
  static constexpr std::uint16_t kInsertColumn = 1000;
  static constexpr std::uint16_t kRemoveColumn = 1001;
  // The version of the saved list state this program writes; 256 to 258 are read.
  static constexpr std::uint16_t kStateVersion = 258;
  static constexpr std::uint16_t kNoSortColumn = 0;

  CRecordListView(ItemTable& table, ui::Ui& ui, std::string name);
  CRecordListView(const CRecordListView&) = delete;
  CRecordListView& operator=(const CRecordListView&) = delete;
  virtual ~CRecordListView() = default;

  // The list's own columns when it has no saved state.
  virtual void SetDefaultColumns() = 0;
  // The fields the header's popup offers, in menu order; choice n (from 1) is ColumnCommand
  // code n.
  virtual std::vector<ColumnChoice> GetColumnMenu() const = 0;
  // The text of a cell; false when the item has none for the field.
  virtual bool GetCellText(const RecordItem& item, std::uint16_t fieldId, std::string& text) const {
    return item.GetColumnText(fieldId, text);
  }
  // Whether the list shows an item of its table: the ones not marked deleted, and of them
  // the ones of this list where two lists share a table.
  virtual bool Shows(const RecordItem& item) const { return !item.deleted; }
  // Called before the window fills its rows, for what the cells count over other tables.
  virtual void BeforeFill() {}
  // Whether a row is drawn grayed ("Gray out closed defects").
  virtual bool Grayed(const RecordItem& /*item*/) const { return false; }

  // Inserts a column before, removes, or fills with field choice `code` the 1-based
  // `column`. Removing the last two columns is refused with a message.
  void ColumnCommand(std::uint16_t column, std::uint16_t code);
  // The column whose header a click at `x` pixels hits with its popup: the first whose
  // x + 3 is left of the click and whose right edge less 3 is right of it. 0 for none, or
  // for a column without a popup.
  std::uint16_t HeaderHit(std::int32_t x) const;
  // A click on the header of the 1-based `column`. Plain, it makes the column's field the
  // table's first key, or turns the direction round when it is that already; with Shift,
  // the field becomes the second key and the direction stays. The table is sorted again;
  // the caller keeps the selection and the scroll position around it.
  void OnHeaderClick(std::uint16_t column, bool shift);
  // Puts the table in the order the sort columns name, as a list window shows it when it
  // opens: the first column's field in the table's direction (ascending when it has none),
  // the second column's as the second key.
  void SortByColumns();
  // The widths as the person left them in the header.
  void SetWidths(std::span<const std::uint16_t> widths);

  // "%s - (%d items, %d selected)", or "(1 item, ...)" for a list of one, counting the
  // items the list shows.
  std::string Title(std::uint32_t selected) const;

  // The saved list state: big-endian
  //   u16 version (258)   u16 column count
  //   per column: u16 field id, width, minimum, maximum, format; u8 length and the title;
  //               u16 flags (not in version 256)
  //   version 258: u16 primary and secondary sort column, and two words kept as read.
  std::vector<std::uint8_t> WriteState() const;
  // Reads a saved state in place of every column, and answers the bytes it used. Throws
  // ListStateError for an unknown version or a state cut short; the columns are then as
  // they were. Without flags (version 256) a column of a field id that is negative as a
  // signed number gets flags 1. A state of version 256 or 257 leaves the sort columns as
  // they were.
  std::size_t ReadState(std::span<const std::uint8_t> bytes);

  // The window's value: its placement, then the list state.
  std::vector<std::uint8_t> SavePlacement(const WindowPlacement& placement) const;
  // The placement of a saved value, with the list state read from it; nothing when the
  // value is too short or its list state cannot be read, and then the columns stay as they
  // were: the defaults of a new list.
  std::optional<WindowPlacement> RestorePlacement(std::span<const std::uint8_t> value);

  const std::vector<ListColumn>& columns() const { return columns_; }
  // 1-based column numbers; kNoSortColumn for none.
  std::uint16_t primarySortColumn() const { return primary_; }
  std::uint16_t secondarySortColumn() const { return secondary_; }
  const std::string& name() const { return name_; }
  ItemTable& table() const { return table_; }

 protected:
  // Appends a column as a list's defaults give it.
  void AddColumn(std::string_view title, std::uint16_t fieldId, std::uint16_t width,
                 std::uint16_t minWidth, std::uint16_t maxWidth, std::uint16_t format,
                 std::uint16_t flags = 0);
  void SetSortColumns(std::uint16_t primary, std::uint16_t secondary);
  // Makes `field` the second key of the table's order.
  virtual void ApplySecondarySort(std::int16_t field) = 0;
  void ClearColumns() { columns_.clear(); }

 private:
  void InsertColumn(std::uint16_t before);
  void RemoveColumn(std::uint16_t column);
  void Reposition();

  ItemTable& table_;
  ui::Ui& ui_;
  std::string name_;
  std::vector<ListColumn> columns_;
  std::uint16_t primary_ = kNoSortColumn;
  std::uint16_t secondary_ = kNoSortColumn;
  std::array<std::uint16_t, 2> keptWords_{};  // stored and read back, not used
};

// The defect list: a marker column, then number, summary, type, priority and status, sorted
// by number; its popup offers every field of the catalogue.
class CDefectListView : public CRecordListView {
 public:
  CDefectListView(ItemTable& table, ui::Ui& ui);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  // A field's text; the marker column shows "*" for a defect assigned to the user by
  // someone else, "+" for a new one and "~" for a changed one, until the user opens it.
  bool GetCellText(const RecordItem& item, std::uint16_t fieldId, std::string& text) const override;
  // Closed defects: statuses 4 and 5.
  bool Grayed(const RecordItem& item) const override;
  // The defects not deleted; with a user's id, only those assigned to that user, as the
  // user's group may ask. 0 shows every defect.
  bool Shows(const RecordItem& item) const override;
  void SetOnlyAssignedTo(std::uint32_t userId) { onlyAssignedTo_ = userId; }

 protected:
  void ApplySecondarySort(std::int16_t field) override;

 private:
  std::uint32_t onlyAssignedTo_ = 0;
};

// The user list: the people of the user table who are not customers, by name, with their
// group and the count of defects assigned to them. The counts over the defects are taken
// by Recount, when the list is filled.
class CUserListView : public CRecordListView {
 public:
  // `defects`, when given, is counted before each filling of the list.
  CUserListView(ItemTable& people, ui::Ui& ui, const ItemTable* groups,
                const ItemTable* defects = nullptr);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  bool GetCellText(const RecordItem& item, std::uint16_t fieldId, std::string& text) const override;
  bool Shows(const RecordItem& item) const override;
  // "Display names as...": "First Last" rather than "Last, First" in the Name column.
  void SetFirstNameFirst(bool first) { firstNameFirst_ = first; }
  // Counts, per person, the defects found (in any reported-by row) and assigned.
  void Recount(const ItemTable& defects);
  void BeforeFill() override {
    if (defects_ != nullptr) Recount(*defects_);
  }

 protected:
  CUserListView(ItemTable& people, ui::Ui& ui, const ItemTable* groups, const ItemTable* defects,
                std::string name);
  // The people table keeps one order, by name: there is no second key to give it.
  void ApplySecondarySort(std::int16_t /*field*/) override {}

 private:
  const ItemTable* groups_;
  const ItemTable* defects_;
  bool firstNameFirst_ = false;
  std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> counts_;  // found, assigned
};

// The customer list: the customers of the user table, with company, e-mail and the count
// of defects they reported.
class CCustomerListView : public CUserListView {
 public:
  CCustomerListView(ItemTable& people, ui::Ui& ui, const ItemTable* defects = nullptr);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  bool Shows(const RecordItem& item) const override;
};

// The workbook: the tasks the user logged in may see, theirs and the public ones, with
// those standing for the defects assigned to them; sorted by kind, then status.
class CTaskListView : public CRecordListView {
 public:
  CTaskListView(ItemTable& tasks, ui::Ui& ui, const CDBDoc& doc);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  bool Shows(const RecordItem& item) const override;

 protected:
  // The task table sorts by one key.
  void ApplySecondarySort(std::int16_t /*field*/) override {}

 private:
  const CDBDoc& doc_;
};

// The user group list: name, description and the members, by name.
class CUserGroupListView : public CRecordListView {
 public:
  CUserGroupListView(ItemTable& groups, ui::Ui& ui, const ItemTable& people);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  bool GetCellText(const RecordItem& item, std::uint16_t fieldId, std::string& text) const override;

 protected:
  void ApplySecondarySort(std::int16_t /*field*/) override {}

 private:
  const ItemTable& people_;
};

// The test configuration list: name, brand and model, by name.
class CSystemListView : public CRecordListView {
 public:
  CSystemListView(ItemTable& configs, ui::Ui& ui);
  void SetDefaultColumns() override;
  std::vector<ColumnChoice> GetColumnMenu() const override;
  bool GetCellText(const RecordItem& item, std::uint16_t fieldId, std::string& text) const override;

 protected:
  void ApplySecondarySort(std::int16_t /*field*/) override {}
};

}  // namespace qm
