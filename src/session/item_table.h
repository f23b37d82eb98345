// ItemTable: every item of one store table, loaded whole when the project opens and
// written through to the store on each save. Working copies of a table serve filters and
// sorted lists.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "session/lockable_array.h"
#include "session/record_item.h"
#include "store/bytes.h"
#include "store/db_status.h"
#include "ui/ui.h"

namespace qm {

class CProjectStore;

// The word for one record of a table in messages ("Defect", "User Group"); the four
// characters of the tag for a table this program does not know.
std::string TableDisplayWord(Tag tag);

// The column a list sorts by and its direction; -1 for none.
struct SortOrder {
  std::int16_t field = -1;
  std::int16_t direction = -1;
};

// A table with a store owns its items: an item added to it is deleted with it unless
// taken out again. A working copy (no store) holds the same items without owning them
// and must go before the table it was made from. Failures of the store are thrown as
// StoreError where an operation answers no status.
class ItemTable {
 public:
  ItemTable(CProjectStore* store, Tag tag, ui::Ui& ui);
  ItemTable(const ItemTable&) = delete;
  ItemTable& operator=(const ItemTable&) = delete;
  virtual ~ItemTable();

  // How two items of the class compare under a sort order: -1, 0 or 1.
  virtual int CompareItems(const RecordItem& a, const RecordItem& b,
                           const SortOrder& order) const = 0;
  // A new item made from a payload, or null when none can be made (the record is then
  // skipped). Throws ItemError for a payload of a layout the class does not know. `id`
  // is the record's, for the messages of a class that reports damage itself; 0 when the
  // payload comes from elsewhere.
  virtual std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                                     std::uint32_t id = 0) const = 0;
  // A new empty item of the class.
  virtual std::unique_ptr<RecordItem> NewItem() const = 0;
  // The records of other tables that belong to the item (a defect's attachments), which a
  // deletion that does not keep the record removes first.
  virtual std::vector<std::pair<Tag, std::uint32_t>> OwnedRecords(const RecordItem&) const {
    return {};
  }
  // Whether CompareItems under `order` calls no two items of the table equal (it breaks
  // every tie, by record id say); sorting is then quicker.
  virtual bool IsTotalOrder(const SortOrder& /*order*/) const { return false; }

  CProjectStore* store() const { return store_; }
  Tag tag() const { return tag_; }
  bool ownsItems() const { return store_ != nullptr; }
  std::uint32_t count() const { return items_.count(); }
  // For iterating and finding; changes go through the table.
  const LockableArray<RecordItem*>& items() const { return items_; }
  void Lock() { items_.Lock(); }
  void Unlock() { items_.Unlock(); }

  const SortOrder& sortOrder() const { return order_; }
  // A new order; the next Sort sorts by it.
  void SetSortOrder(const SortOrder& order) {
    order_ = order;
    items_.MarkUnsorted();
  }

  // The item at a 1-based position (kArrayEnd: the last), or null.
  RecordItem* ItemAt(std::uint32_t position) const;
  // The 1-based position of the item, or count() + 1 when it is not here.
  std::uint32_t PositionOf(const RecordItem* item) const;
  RecordItem* ItemById(std::uint32_t id) const;

  // Inserts before the first item that the new one sorts before, else at the end, so an
  // item goes after those equal to it. Answers the position, 0 when the table is locked.
  std::uint32_t AddSorted(RecordItem* item);
  // Takes the item out of the table. A table that owned it hands it back; a working copy
  // answers null and the item stays with its own table.
  std::unique_ptr<RecordItem> RemoveItem(RecordItem* item);
  // Puts an item in the place of another; answers the one replaced if this table owned it.
  std::unique_ptr<RecordItem> ReplaceItem(std::uint32_t position, RecordItem* item);
  // Sorts by the class's comparison under the table's sort order.
  void Sort() { items_.Sort(); }
  // Sorts by `compare` (below 0, 0, above 0).
  void SortBy(const std::function<int(const RecordItem&, const RecordItem&)>& compare);

  // A working copy: the same items in the same order.
  std::unique_ptr<ItemTable> CloneTable() const;
  // A working copy sorted by a column, its items added one by one by AddSorted.
  std::unique_ptr<ItemTable> CloneTableSorted(std::int16_t sortField,
                                              std::int16_t sortDirection) const;
  // The items for which `keep` answers true, in table order.
  std::vector<RecordItem*> FilterTable(const std::function<bool(const RecordItem&)>& keep) const;

  // Reads every record of the table under one bulk claim and appends the items. A record
  // that cannot be read is offered for deletion. Throws StoreError for a failure of the
  // table as a whole, and lets an ItemError of the class through.
  void LoadTable(bool sort);
  // Reads one record and adds its item in sorted place; null when it cannot be read.
  RecordItem* LoadItem(std::uint32_t id);
  // Reads the item's record into it again; throws StoreError when it cannot be read.
  void ReloadItem(RecordItem& item);

  // Adds the item to the store and, in sorted place, to the table. On success the table
  // takes the item (and gives it its id); otherwise it stays with the caller. Without an
  // item or a store the answer is 0 and nothing happens.
  [[nodiscard]] DBStatus AddItem(std::unique_ptr<RecordItem>& item);
  // Writes the item to its record.
  [[nodiscard]] DBStatus SaveItem(RecordItem& item);
  // Marks the item deleted. With `keep` the record stays, rewritten with the mark;
  // without, the records it owns leave the store first, then its own, and the item
  // leaves the table. The item is handed to
  // `removed` when given, else destroyed at the end of the call.
  [[nodiscard]] DBStatus DeleteItem(RecordItem& item, bool keep,
                                    std::unique_ptr<RecordItem>* removed = nullptr);

 private:
  friend class RecordItem;

  class ItemKey : public ArrayKey<RecordItem*> {
   public:
    explicit ItemKey(const ItemTable& table) : table_(table) {}
    int Compare(RecordItem* const& a, RecordItem* const& b) const override {
      return table_.CompareItems(*a, *b, table_.order_);
    }
    bool TotalOrder() const override { return table_.IsTotalOrder(table_.order_); }

   private:
    const ItemTable& table_;
  };

  std::uint32_t InsertAt(RecordItem* item, std::uint32_t position);
  // Drops the pointer of an item that is being destroyed elsewhere. While the table is
  // locked the array refuses, and the pointer stays.
  void Forget(RecordItem& item);
  // Sorts again when the contents were in order, as an item's fields may have changed.
  void Resort();
  // Runs a store call; while it answers busy and the user chooses Retry, runs it again.
  template <class StoreCall>
  DBStatus WhileBusy(StoreCall&& call);

  CProjectStore* store_;
  Tag tag_;
  ui::Ui& ui_;
  SortOrder order_;
  ItemKey key_{*this};
  LockableArray<RecordItem*> items_{key_};
};

// A table whose items are all of one class: made empty, or from a payload of a layout
// the class reads (ItemError for another).
template <class Item>
class ItemTableOf : public ItemTable {
 public:
  using ItemTable::ItemTable;

  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                             std::uint32_t = 0) const override {
    auto item = std::make_unique<Item>();
    PayloadReader in(payload);
    item->ReadFrom(in);
    return item;
  }
  std::unique_ptr<RecordItem> NewItem() const override { return std::make_unique<Item>(); }
};

}  // namespace qm
