// Loading, adding, saving and deleting the items of one store table.
#include "session/item_table.h"

#include <algorithm>
#include <utility>

#include "store/project_store.h"
#include "store/store_error.h"

namespace qm {

namespace {

// A working copy compares, reads and makes items as the table it was made from does.
class WorkingCopy : public ItemTable {
 public:
  WorkingCopy(const ItemTable& source, ui::Ui& ui)
      : ItemTable(nullptr, source.tag(), ui), source_(source) {}

  int CompareItems(const RecordItem& a, const RecordItem& b,
                   const SortOrder& order) const override {
    return source_.CompareItems(a, b, order);
  }
  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                             std::uint32_t id = 0) const override {
    return source_.ItemFromRecord(payload, id);
  }
  std::unique_ptr<RecordItem> NewItem() const override { return source_.NewItem(); }

 private:
  const ItemTable& source_;
};

}  // namespace

std::string TableDisplayWord(Tag tag) {
  struct Word {
    Tag tag;
    const char* word;
  };
  static constexpr Word kWords[] = {
      {MakeTag("msgs"), ""},         {MakeTag("misc"), "Misc Info"},
      {MakeTag("dfct"), "Defect"},   {MakeTag("scfg"), "Defect"},
      {MakeTag("user"), "User"},     {MakeTag("ugrp"), "User Group"},
      {MakeTag("dflt"), "Filter"},   {MakeTag("rprt"), "Report"},
      {MakeTag("type"), "Type"},     {MakeTag("reso"), "Resolution"},
      {MakeTag("prio"), "Priority"}, {MakeTag("prod"), "Product"},
      {MakeTag("stat"), "Status"},   {MakeTag("comp"), "Component"},
      {MakeTag("rpro"), "Defect"},   {MakeTag("atch"), "Attachment"},
      {MakeTag("task"), "Task"},     {MakeTag("sevr"), "Severity"},
      {MakeTag("usta"), "Status"},   {MakeTag("etmp"), "E-mail Template"},
  };
  for (const Word& w : kWords) {
    if (w.tag == tag) return w.word;
  }
  return TagText(tag);
}

ItemTable::ItemTable(CProjectStore* store, Tag tag, ui::Ui& ui)
    : store_(store), tag_(tag), ui_(ui) {}

ItemTable::~ItemTable() {
  for (std::uint32_t p = 1; p <= items_.count(); ++p) {
    RecordItem* item = *items_.ElementAt(p);
    item->RemoveFromTable(*this);
    if (ownsItems()) delete item;
  }
}

RecordItem* ItemTable::ItemAt(std::uint32_t position) const {
  RecordItem* const* element = items_.ElementAt(position);
  return element == nullptr ? nullptr : *element;
}

std::uint32_t ItemTable::PositionOf(const RecordItem* item) const {
  std::uint32_t p = 1;
  while (p <= count() && ItemAt(p) != item) ++p;
  return p;
}

RecordItem* ItemTable::ItemById(std::uint32_t id) const {
  for (std::uint32_t p = 1; p <= count(); ++p) {
    if (ItemAt(p)->GetId() == id) return ItemAt(p);
  }
  return nullptr;
}

std::uint32_t ItemTable::InsertAt(RecordItem* item, std::uint32_t position) {
  const std::uint32_t at = items_.Insert(item, position);
  if (at != 0) item->AddToTable(*this);
  return at;
}

std::uint32_t ItemTable::AddSorted(RecordItem* item) {
  std::uint32_t p = 1;
  while (p <= count() && CompareItems(*item, *ItemAt(p), order_) >= 0) ++p;
  return InsertAt(item, p);
}

std::unique_ptr<RecordItem> ItemTable::RemoveItem(RecordItem* item) {
  const std::uint32_t p = PositionOf(item);
  if (p > count() || items_.Remove(p) == 0) return nullptr;
  item->RemoveFromTable(*this);
  return std::unique_ptr<RecordItem>(ownsItems() ? item : nullptr);
}

std::unique_ptr<RecordItem> ItemTable::ReplaceItem(std::uint32_t position, RecordItem* item) {
  RecordItem* old = ItemAt(position);
  if (old == nullptr || !items_.Set(position, item)) return nullptr;
  old->RemoveFromTable(*this);
  item->AddToTable(*this);
  return std::unique_ptr<RecordItem>(ownsItems() ? old : nullptr);
}

void ItemTable::Forget(RecordItem& item) {
  const std::uint32_t p = PositionOf(&item);
  if (p <= count()) items_.Remove(p);
  item.RemoveFromTable(*this);
}

void ItemTable::SortBy(const std::function<int(const RecordItem&, const RecordItem&)>& compare) {
  items_.SortBy([&](RecordItem* a, RecordItem* b) { return compare(*a, *b); });
}

void ItemTable::Resort() {
  if (!items_.isSorted()) return;
  items_.MarkUnsorted();
  items_.Sort();
}

std::unique_ptr<ItemTable> ItemTable::CloneTable() const {
  auto copy = std::make_unique<WorkingCopy>(*this, ui_);
  copy->order_ = order_;
  for (std::uint32_t p = 1; p <= count(); ++p) copy->InsertAt(ItemAt(p), kArrayEnd);
  return copy;
}

std::unique_ptr<ItemTable> ItemTable::CloneTableSorted(std::int16_t sortField,
                                                       std::int16_t sortDirection) const {
  auto copy = std::make_unique<WorkingCopy>(*this, ui_);
  copy->order_ = {sortField, sortDirection};
  for (std::uint32_t p = 1; p <= count(); ++p) copy->AddSorted(ItemAt(p));
  return copy;
}

std::vector<RecordItem*> ItemTable::FilterTable(
    const std::function<bool(const RecordItem&)>& keep) const {
  std::vector<RecordItem*> kept;
  for (std::uint32_t p = 1; p <= count(); ++p) {
    if (keep(*ItemAt(p))) kept.push_back(ItemAt(p));
  }
  return kept;
}

void ItemTable::LoadTable(bool sort) {
  if (store_ == nullptr) return;
  // The claim is given up however the loading ends, an ItemError of the class included.
  class Claim {
   public:
    explicit Claim(CProjectStore& store) : store_(&store) {}
    ~Claim() { Release(); }
    void Release() {
      if (store_ != nullptr) (void)std::exchange(store_, nullptr)->UnlockDatabase();
    }

   private:
    CProjectStore* store_;
  };
  DBStatus status = store_->LockDatabase(tag_);
  Claim claim(*store_);
  std::uint32_t total = 0;
  if (status == DBStatus::kOk) status = store_->CountRecords(tag_, total);
  std::vector<std::uint8_t> payload;
  for (std::uint32_t p = 1; p <= total && status == DBStatus::kOk; ++p) {
    std::uint32_t id = 0;
    const DBStatus read = store_->ReadRecordByIndex(tag_, p, payload, &id);
    if (read == DBStatus::kOk) {
      std::unique_ptr<RecordItem> item = ItemFromRecord(payload, id);
      if (item != nullptr && InsertAt(item.get(), kArrayEnd) != 0) item.release()->SetId(id);
      continue;
    }
    // A damaged table entry can count more records than its index holds: the index ends
    // the loading, and there is no record there to offer for deletion.
    if (read == DBStatus::kBadPosition) break;
    // No id: the index itself could not be read, and the table fails as a whole.
    if (id == 0) {
      status = read;
      break;
    }
    const ui::Answer answer =
        ui_.Ask({TableDisplayWord(tag_) + " record #" + std::to_string(id) +
                     " is corrupt and cannot be loaded. Do you want to delete it?",
                 "", ui::Icon::kQuestion, ui::Buttons::kYesNo});
    if (answer != ui::Answer::kYes) continue;
    // A deletion is a change and takes the write lock like any other, which the claim
    // would skip: the claim is given up for it and taken again.
    (void)store_->UnlockDatabase();
    const DBStatus deleted = store_->DeleteRecord(tag_, id);
    status = store_->LockDatabase(tag_);
    // The records after a deleted one move up a place; the next one is read from here.
    if (deleted == DBStatus::kOk) {
      --p;
      --total;
    }
  }
  claim.Release();
  if (sort) Sort();
  if (status != DBStatus::kOk) Fail(status);
}

RecordItem* ItemTable::LoadItem(std::uint32_t id) {
  if (store_ == nullptr) return nullptr;
  std::vector<std::uint8_t> payload;
  if (store_->ReadRecord(tag_, id, payload) != DBStatus::kOk) return nullptr;
  std::unique_ptr<RecordItem> item = ItemFromRecord(payload, id);
  if (item == nullptr || AddSorted(item.get()) == 0) return nullptr;
  item->SetId(id);
  return item.release();
}

void ItemTable::ReloadItem(RecordItem& item) {
  if (store_ == nullptr) return;
  std::vector<std::uint8_t> payload;
  if (DBStatus s = store_->ReadRecord(tag_, item.GetId(), payload); s != DBStatus::kOk) Fail(s);
  PayloadReader in(payload);
  item.Read(in);
  Resort();
  item.AfterSave();
}

template <class StoreCall>
DBStatus ItemTable::WhileBusy(StoreCall&& call) {
  for (;;) {
    const DBStatus status = call();
    if (status != DBStatus::kBusy) return status;
    const ui::Answer answer = ui_.Ask(
        {"The database is currently busy. Click Retry to continue waiting, Cancel to abort.", "",
         ui::Icon::kWarning, ui::Buttons::kRetryCancel});
    if (answer != ui::Answer::kRetry) return status;
  }
}

DBStatus ItemTable::AddItem(std::unique_ptr<RecordItem>& item) {
  if (item == nullptr || store_ == nullptr) return DBStatus::kOk;
  const std::vector<std::uint8_t> payload = item->Pack();
  std::uint32_t id = 0;
  const DBStatus status = WhileBusy([&] { return store_->AddRecord(tag_, payload, &id); });
  if (status != DBStatus::kOk) return status;
  if (AddSorted(item.get()) != 0) item.release()->SetId(id);
  return status;
}

DBStatus ItemTable::SaveItem(RecordItem& item) {
  if (store_ == nullptr) return DBStatus::kOk;
  Resort();
  const std::vector<std::uint8_t> payload = item.Pack();
  const DBStatus status =
      WhileBusy([&] { return store_->UpdateRecord(tag_, item.GetId(), payload); });
  if (status == DBStatus::kOk) item.AfterSave();
  return status;
}

DBStatus ItemTable::DeleteItem(RecordItem& item, bool keep, std::unique_ptr<RecordItem>* removed) {
  if (store_ == nullptr) return DBStatus::kOk;
  item.deleted = true;
  DBStatus status = DBStatus::kOk;
  std::unique_ptr<RecordItem> taken;
  if (keep) {
    const std::vector<std::uint8_t> payload = item.Pack();
    status = WhileBusy([&] { return store_->UpdateRecord(tag_, item.GetId(), payload); });
    if (status != DBStatus::kOk) item.deleted = false;
  } else {
    // A record that is gone already is no reason to keep the item; a busy store that the
    // person gave up on is.
    for (const auto& owned : OwnedRecords(item)) {
      status = WhileBusy([&] { return store_->DeleteRecord(owned.first, owned.second); });
      if (status == DBStatus::kBusy) break;
      status = DBStatus::kOk;
    }
    if (status == DBStatus::kOk) {
      status = WhileBusy([&] { return store_->DeleteRecord(tag_, item.GetId()); });
    }
    if (status == DBStatus::kOk) taken = RemoveItem(&item);
    if (status != DBStatus::kOk) item.deleted = false;
  }
  if (status == DBStatus::kOk) item.AfterDelete();
  if (removed != nullptr) *removed = std::move(taken);
  return status;
}

}  // namespace qm
