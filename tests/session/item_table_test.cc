// ItemTable over a real project file: payloads as stored, loading with corrupt records,
// the busy question and its retry, the order of equal keys, working copies.
#include "session/item_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "session/item_error.h"
#include "store/project_store.h"
#include "store/store_error.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

using ByteList = std::vector<std::uint8_t>;

constexpr Tag kDfct = MakeTag("dfct");

// A small item: a name of at most 63 bytes and, since version 2, a number.
class Note : public RecordItem {
 public:
  Note() = default;
  Note(std::string n, std::uint32_t num) : name(std::move(n)), number(num) {}

  void WriteTo(PayloadWriter& out) const override {
    out.U16(2);
    out.U8(deleted);
    out.String(name, 63);
    out.U32(number);
  }
  void ReadFrom(PayloadReader& in) override {
    const std::uint16_t version = ReadVersion(in, 1, 2);
    in.U8(deleted);
    in.String(name, 63);
    if (version >= 2) in.U32(number);
  }
  void AfterSave() override { ++saves; }
  void AfterDelete() override { ++deletes; }
  std::string GetName() const override { return name; }

  std::string name;
  std::uint32_t number = 77;
  int saves = 0;
  int deletes = 0;
};

// Sorts by name, or by number for field 1; direction 1 turns the order round. A record
// named "skip" makes no item.
class NoteTable : public ItemTable {
 public:
  using ItemTable::ItemTable;

  int CompareItems(const RecordItem& a, const RecordItem& b,
                   const SortOrder& order) const override {
    const auto& x = static_cast<const Note&>(a);
    const auto& y = static_cast<const Note&>(b);
    int c = 0;
    if (order.field == 1) {
      c = x.number < y.number ? -1 : (x.number > y.number ? 1 : 0);
    } else {
      c = x.name < y.name ? -1 : (x.name > y.name ? 1 : 0);
    }
    return order.direction == 1 ? -c : c;
  }
  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload) const override {
    auto note = std::make_unique<Note>();
    PayloadReader in(payload);
    note->Read(in);
    if (note->name == "skip") return nullptr;
    return note;
  }
  std::unique_ptr<RecordItem> NewItem() const override { return std::make_unique<Note>(); }
};

ByteList NoteBytes(std::uint8_t deleted, const std::string& name, std::uint32_t number) {
  ByteList b{0, 2, deleted, static_cast<std::uint8_t>(name.size())};
  for (char c : name) b.push_back(static_cast<std::uint8_t>(c));
  for (int shift = 24; shift >= 0; shift -= 8)
    b.push_back(static_cast<std::uint8_t>(number >> shift));
  return b;
}

Note& At(const ItemTable& table, std::uint32_t position) {
  return static_cast<Note&>(*table.ItemAt(position));
}

std::string Names(const ItemTable& table) {
  std::string names;
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    names += (p > 1 ? " " : "") + At(table, p).name;
  }
  return names;
}

// The numbers of the items as letters, 0 being 'a'.
std::string Letters(const ItemTable& table) {
  std::string letters;
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    letters += static_cast<char>('a' + At(table, p).number);
  }
  return letters;
}

// A scripted Ui that can act on the file before it answers.
class HookedUi : public ScriptedUi {
 public:
  ui::Answer Ask(const ui::Message& message) override {
    if (beforeAnswer) beforeAnswer();
    return ScriptedUi::Ask(message);
  }
  std::function<void()> beforeAnswer;
};

class ItemTableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path = dir.File("p.qmk");
    ASSERT_EQ(store.Create(path, 1), DBStatus::kOk);
    ASSERT_EQ(store.AddTable(kDfct, ""), DBStatus::kOk);
  }
  std::uint32_t AddRaw(const ByteList& payload) {
    std::uint32_t id = 0;
    EXPECT_EQ(store.AddRecord(kDfct, payload, &id), DBStatus::kOk);
    return id;
  }
  DBStatus Add(NoteTable& table, const std::string& name, std::uint32_t number) {
    std::unique_ptr<RecordItem> note = std::make_unique<Note>(name, number);
    const DBStatus s = table.AddItem(note);
    EXPECT_EQ(note == nullptr, s == DBStatus::kOk);
    return s;
  }
  ByteList Stored(std::uint32_t id) {
    ByteList out;
    EXPECT_EQ(store.ReadRecord(kDfct, id, out), DBStatus::kOk);
    return out;
  }
  // Damages the payload of the record at a position of the index.
  void Corrupt(std::uint32_t position) {
    std::vector<IndexEntry> index;
    ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
    std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(index[position - 1].offset + RecordHeader::kSize + 4);
    f.put('#');
  }

  TempDir dir;
  HookedUi ui;
  FakeClock clock;
  CProjectStore store{ui, platform::FileSystem::Real(), clock};
  std::string path;
};

TEST_F(ItemTableTest, ItemsGoThroughTheStoreAsTheirPayloads) {
  NoteTable table(&store, kDfct, ui);
  ASSERT_EQ(Add(table, "pear", 5), DBStatus::kOk);
  ASSERT_EQ(Add(table, "apple", 0x01020304), DBStatus::kOk);
  ASSERT_EQ(Add(table, "fig", 1), DBStatus::kOk);
  EXPECT_EQ(Names(table), "apple fig pear");
  EXPECT_EQ(table.ItemById(2)->GetName(), "apple");
  EXPECT_EQ(table.ItemById(9), nullptr);
  EXPECT_EQ(Stored(1), (ByteList{0, 2, 0, 4, 'p', 'e', 'a', 'r', 0, 0, 0, 5}));
  EXPECT_EQ(Stored(2), (ByteList{0, 2, 0, 5, 'a', 'p', 'p', 'l', 'e', 1, 2, 3, 4}));

  Note& pear = At(table, 3);
  pear.number = 9;
  ASSERT_EQ(table.SaveItem(pear), DBStatus::kOk);
  EXPECT_EQ(Stored(1), NoteBytes(0, "pear", 9));
  EXPECT_EQ(pear.saves, 1);

  Note& fig = At(table, 2);
  ASSERT_EQ(table.DeleteItem(fig, true), DBStatus::kOk);
  EXPECT_EQ(Stored(3), NoteBytes(1, "fig", 1)) << "kept in the file, marked deleted";
  EXPECT_EQ(table.PositionOf(&fig), 2u);
  EXPECT_EQ(fig.deletes, 1);

  std::unique_ptr<RecordItem> gone;
  ASSERT_EQ(table.DeleteItem(pear, false, &gone), DBStatus::kOk);
  EXPECT_EQ(gone.get(), &pear);
  EXPECT_EQ(pear.deletes, 1);
  EXPECT_TRUE(pear.owners().empty());
  EXPECT_EQ(table.PositionOf(&pear), 3u) << "one past the end when absent";
  ByteList out;
  EXPECT_EQ(store.ReadRecord(kDfct, 1, out), DBStatus::kNoSuchRecord);

  // A version-1 record has no number: the item keeps its default. "skip" makes no item.
  AddRaw({0, 1, 0, 3, 'o', 'l', 'd'});
  AddRaw(NoteBytes(0, "skip", 3));
  NoteTable loaded(&store, kDfct, ui);
  loaded.LoadTable(true);
  EXPECT_EQ(Names(loaded), "apple fig old");
  EXPECT_EQ(At(loaded, 1).GetId(), 2u);
  EXPECT_TRUE(At(loaded, 2).deleted);
  EXPECT_EQ(At(loaded, 3).number, 77u);
  EXPECT_EQ(At(loaded, 3).GetId(), 4u);

  // Another client renames the apple: a reload reads it and puts the sorted table right.
  ASSERT_EQ(store.UpdateRecord(kDfct, 2, NoteBytes(0, "zebra", 8)), DBStatus::kOk);
  Note& apple = At(loaded, 1);
  loaded.ReloadItem(apple);
  EXPECT_EQ(Names(loaded), "fig old zebra");
  EXPECT_EQ(apple.number, 8u);
  EXPECT_EQ(apple.saves, 1);

  RecordItem* one = table.LoadItem(4);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(one->GetId(), 4u);
  EXPECT_EQ(Names(table), "apple fig old") << "in sorted place";
  EXPECT_EQ(table.LoadItem(1), nullptr);
  Note stray;
  stray.SetId(1);
  EXPECT_THROW(table.ReloadItem(stray), StoreError);

  // A working copy has no store: nothing is written, and the answer is 0.
  auto copy = table.CloneTable();
  std::unique_ptr<RecordItem> extra = std::make_unique<Note>("extra", 1);
  EXPECT_EQ(copy->AddItem(extra), DBStatus::kOk);
  EXPECT_NE(extra, nullptr);
  EXPECT_TRUE(ui.shown.empty());
}

TEST_F(ItemTableTest, CorruptRecordsAreOfferedForDeletionWithoutSkipping) {
  for (const char* name : {"a", "b", "c", "d", "e"}) AddRaw(NoteBytes(0, name, 0));
  Corrupt(1);
  Corrupt(2);
  Corrupt(4);
  ui.Script({ui::Answer::kYes, ui::Answer::kYes, ui::Answer::kNo});
  NoteTable table(&store, kDfct, ui);
  table.LoadTable(false);
  EXPECT_EQ(Names(table), "c e");
  ASSERT_EQ(ui.shown.size(), 3u);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{
                            "Defect record #1 is corrupt and cannot be loaded. Do you want to "
                            "delete it?",
                            "Defect record #2 is corrupt and cannot be loaded. Do you want to "
                            "delete it?",
                            "Defect record #4 is corrupt and cannot be loaded. Do you want to "
                            "delete it?"}));
  EXPECT_EQ(ui.shown[0].icon, ui::Icon::kQuestion);
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kYesNo);
  std::vector<IndexEntry> index;
  ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
  ASSERT_EQ(index.size(), 3u);
  EXPECT_EQ(index[0].id, 3u);
  EXPECT_EQ(index[1].id, 4u) << "answered No: kept";
  EXPECT_EQ(index[2].id, 5u);
}

TEST_F(ItemTableTest, FailuresOfLoadingAreThrown) {
  AddRaw(NoteBytes(0, "fine", 1));
  AddRaw({0, 3, 0, 0});
  NoteTable table(&store, kDfct, ui);
  try {
    table.LoadTable(true);
    ADD_FAILURE() << "no throw";
  } catch (const ItemError& e) {
    EXPECT_EQ(e.code(), kItemFailed);
  }
  NoteTable missing(&store, MakeTag("none"), ui);
  try {
    missing.LoadTable(true);
    ADD_FAILURE() << "no throw";
  } catch (const StoreError& e) {
    EXPECT_EQ(e.status, DBStatus::kNoSuchTable);
  }
  // Neither failure kept the bulk claim: a second client can still write.
  ScriptedUi otherUi;
  CProjectStore other(otherUi);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  std::uint32_t id = 0;
  EXPECT_EQ(other.AddRecord(kDfct, NoteBytes(0, "x", 0), &id), DBStatus::kOk);
}

TEST_F(ItemTableTest, ABusyStoreIsAskedAboutAndRetriedWithTheSamePayload) {
  const std::string busy =
      "The database is currently busy. Click Retry to continue waiting, Cancel to abort.";
  NoteTable table(&store, kDfct, ui);
  ASSERT_EQ(Add(table, "first", 1), DBStatus::kOk);

  ScriptedUi otherUi;
  CProjectStore other(otherUi);
  ASSERT_EQ(other.Open(path), DBStatus::kOk);
  ASSERT_EQ(other.BeginAccess(true), DBStatus::kOk);
  clock.pauseTicks = 20000;  // each wait for the write lock runs out at once

  // Retry while the lock is held, then the other client lets go before the second Retry.
  ui.Script({ui::Answer::kRetry, ui::Answer::kRetry});
  ui.beforeAnswer = [&] {
    if (ui.shown.size() == 1) {
      ASSERT_EQ(other.EndAccess(false), DBStatus::kOk);
    }
  };
  ASSERT_EQ(Add(table, "second", 2), DBStatus::kOk);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{busy, busy}));
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kRetryCancel);
  EXPECT_EQ(Stored(2), NoteBytes(0, "second", 2));
  EXPECT_EQ(Names(table), "first second");
  ui.beforeAnswer = nullptr;

  ASSERT_EQ(other.BeginAccess(true), DBStatus::kOk);
  ui.shown.clear();
  ui.Script({ui::Answer::kCancel, ui::Answer::kCancel, ui::Answer::kCancel});
  EXPECT_EQ(Add(table, "third", 3), DBStatus::kBusy);
  EXPECT_EQ(table.count(), 2u);
  Note& first = At(table, 1);
  first.number = 10;
  EXPECT_EQ(table.SaveItem(first), DBStatus::kBusy);
  EXPECT_EQ(first.saves, 0);
  EXPECT_EQ(table.DeleteItem(first, true), DBStatus::kBusy);
  EXPECT_FALSE(first.deleted) << "cleared again after a failed keep";
  EXPECT_EQ(first.deletes, 0);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>(3, busy)));
  ASSERT_EQ(other.EndAccess(false), DBStatus::kOk);
  EXPECT_EQ(Stored(1), NoteBytes(0, "first", 1));
}

TEST_F(ItemTableTest, SortsLeaveEqualKeysInTheirOwnOrder) {
  const char* names[] = {"k3", "k1", "k2", "k3", "k1", "k2", "k3", "k1", "k2", "k3",
                         "k1", "k2", "k0", "k3", "k1", "k2", "k0", "k3", "k1", "k2"};
  for (std::uint32_t i = 0; i < 20; ++i) AddRaw(NoteBytes(0, names[i], i));
  NoteTable table(&store, kDfct, ui);
  table.LoadTable(false);
  EXPECT_EQ(Letters(table), "abcdefghijklmnopqrst");

  auto byShell = table.CloneTable();
  byShell->SortBy([&](const RecordItem& a, const RecordItem& b) {
    return table.CompareItems(a, b, table.sortOrder());
  });
  EXPECT_EQ(Letters(*byShell), "mqbkesohicltpfjandrg") << "gaps 13, 4, 1";
  auto added = table.CloneTableSorted(-1, -1);
  EXPECT_EQ(Letters(*added), "mqbehkoscfilptadgjnr") << "each after its equals";
  auto descending = table.CloneTableSorted(1, 1);
  EXPECT_EQ(Letters(*descending), "tsrqponmlkjihgfedcba") << "the copy's own order";

  table.Sort();
  EXPECT_EQ(Letters(table), "mqbkhoesflpictjnargd") << "gaps 4, 1";
  EXPECT_EQ(Letters(*byShell), "mqbkesohicltpfjandrg") << "copies keep their order";
}

TEST_F(ItemTableTest, WorkingCopiesHoldButDoNotOwn) {
  NoteTable table(&store, kDfct, ui);
  for (std::uint32_t i = 0; i < 6; ++i)
    ASSERT_EQ(Add(table, std::string(1, static_cast<char>('a' + i)), i), DBStatus::kOk);
  auto copy = table.CloneTable();
  {
    auto scratch = table.CloneTable();
    EXPECT_EQ(At(table, 1).owners().size(), 3u);
  }
  EXPECT_EQ(At(table, 1).owners().size(), 2u) << "a destroyed copy leaves the items be";

  std::vector<RecordItem*> odd = table.FilterTable(
      [](const RecordItem& item) { return static_cast<const Note&>(item).number % 2 == 1; });
  ASSERT_EQ(odd.size(), 3u);
  EXPECT_EQ(odd[0]->GetName(), "b");

  // Deleting while iterating: each deleted item also leaves the copy.
  ArrayIterator<RecordItem*> it(table.items());
  RecordItem* item = nullptr;
  std::string visited;
  while (it.Next(item)) {
    visited += item->GetName();
    if (static_cast<Note*>(item)->number % 2 == 0) {
      ASSERT_EQ(table.DeleteItem(*item, false), DBStatus::kOk);
    }
  }
  EXPECT_EQ(visited, "abcdef");
  EXPECT_EQ(Names(table), "b d f");
  EXPECT_EQ(Names(*copy), "b d f");
  EXPECT_EQ(copy->RemoveItem(copy->ItemAt(1)), nullptr) << "a copy hands nothing back";
  EXPECT_EQ(Names(table), "b d f");
  EXPECT_EQ(Names(*copy), "d f");

  std::unique_ptr<RecordItem> old = table.ReplaceItem(1, new Note("z", 9));
  ASSERT_NE(old, nullptr);
  EXPECT_EQ(old->GetName(), "b");
  EXPECT_TRUE(old->owners().empty());
  EXPECT_EQ(Names(table), "z d f");

  table.Lock();
  std::unique_ptr<RecordItem> late = std::make_unique<Note>("late", 1);
  EXPECT_EQ(table.AddItem(late), DBStatus::kOk) << "stored, but the locked table refuses it";
  EXPECT_NE(late, nullptr);
  table.Unlock();
}

TEST(TableDisplayWord, NamesRecordsInMessages) {
  EXPECT_EQ(TableDisplayWord(MakeTag("scfg")), "Defect");
  EXPECT_EQ(TableDisplayWord(MakeTag("ugrp")), "User Group");
  EXPECT_EQ(TableDisplayWord(MakeTag("usta")), "Status");
  EXPECT_EQ(TableDisplayWord(MakeTag("etmp")), "E-mail Template");
  EXPECT_EQ(TableDisplayWord(MakeTag("msgs")), "");
  EXPECT_EQ(TableDisplayWord(MakeTag("wxyz")), "wxyz");
}

}  // namespace
}  // namespace qm::test
