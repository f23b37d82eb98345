// ItemTable over a real project file: payloads as stored, loading with corrupt records,
// the busy question and its retry, the order of equal keys, working copies; and the
// LockableArray beneath it: sorted insertion, keys that order every element.
#include "session/item_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "session/item_error.h"
#include "session/lockable_array.h"
#include "store/file_bytes.h"
#include "store/project_store.h"
#include "store/store_error.h"
#include "support/fake_files.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace qm::test {
namespace {

using ByteList = std::vector<std::uint8_t>;

constexpr Tag kDfct = MakeTag("dfct");

// A small item of layout 2: a name of at most 63 bytes and a number.
class Note : public RecordItem {
 public:
  explicit Note(std::string n = "", std::uint32_t num = 0) : name(std::move(n)), number(num) {}

  void WriteTo(PayloadWriter& out) const override {
    out.U16(2);
    out.U8(deleted);
    out.String(name, 63);
    out.U32(number);
  }
  void ReadFrom(PayloadReader& in) override {
    ReadVersion(in, 2, 2);
    in.U8(deleted);
    in.String(name, 63);
    in.U32(number);
  }
  void AfterSave() override { ++saves; }
  void AfterDelete() override { ++deletes; }
  std::string GetName() const override { return name; }

  std::string name;
  std::uint32_t number;
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
    const int c = order.field == 1 ? (x.number > y.number) - (x.number < y.number)
                                   : (x.name > y.name) - (x.name < y.name);
    return order.direction == 1 ? -c : c;
  }
  std::unique_ptr<RecordItem> ItemFromRecord(std::span<const std::uint8_t> payload,
                                             std::uint32_t = 0) const override {
    auto note = std::make_unique<Note>();
    PayloadReader in(payload);
    note->Read(in);
    if (note->name == "skip") return nullptr;
    return note;
  }
  std::unique_ptr<RecordItem> NewItem() const override { return std::make_unique<Note>(); }
};

ByteList NoteBytes(std::uint8_t deleted, const std::string& name, std::uint32_t number) {
  return Bytes().u16(2).u8(deleted).str8(name).u32(number).b;
}

Note& At(const ItemTable& table, std::uint32_t position) {
  return static_cast<Note&>(*table.ItemAt(position));
}

// The names of the items, or with `letters` their numbers as letters, 0 being 'a'.
std::string Names(const ItemTable& table, bool letters = false) {
  std::string out;
  for (std::uint32_t p = 1; p <= table.count(); ++p) {
    const Note& note = At(table, p);
    out += letters ? std::string(1, static_cast<char>('a' + note.number))
                   : (p > 1 ? " " : "") + note.name;
  }
  return out;
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
  void AddRaw(const ByteList& payload) {
    std::uint32_t id = 0;
    ASSERT_EQ(store.AddRecord(kDfct, payload, &id), DBStatus::kOk);
  }
  DBStatus Add(const std::string& name, std::uint32_t number) {
    std::unique_ptr<RecordItem> note = std::make_unique<Note>(name, number);
    const DBStatus s = table.AddItem(note);
    EXPECT_EQ(note == nullptr, s == DBStatus::kOk) << "the table takes the item on success";
    return s;
  }
  ByteList Stored(std::uint32_t id) {
    ByteList out;
    EXPECT_EQ(store.ReadRecord(kDfct, id, out), DBStatus::kOk);
    return out;
  }

  TempDir dir;
  HookedUi ui;
  FakeClock clock;
  CProjectStore store{ui, platform::FileSystem::Real(), clock};
  std::string path;
  NoteTable table{&store, kDfct, ui};
};

TEST_F(ItemTableTest, ItemsKeepTheirSortedPlacesThroughTheStore) {
  for (const char* name : {"pear", "apple", "fig"}) ASSERT_EQ(Add(name, 1), DBStatus::kOk);
  EXPECT_EQ(Names(table), "apple fig pear");
  Note& pear = At(table, 3);
  pear.number = 9;
  ASSERT_EQ(table.SaveItem(pear), DBStatus::kOk);
  EXPECT_EQ(Stored(1), NoteBytes(0, "pear", 9));
  EXPECT_EQ(pear.saves, 1);
  Note& fig = At(table, 2);
  ASSERT_EQ(table.DeleteItem(fig, true), DBStatus::kOk);
  EXPECT_EQ(Stored(3), NoteBytes(1, "fig", 1)) << "kept in the file, marked deleted";
  EXPECT_EQ(fig.deletes, 1);
  std::unique_ptr<RecordItem> gone;
  ASSERT_EQ(table.DeleteItem(pear, false, &gone), DBStatus::kOk);
  EXPECT_EQ(gone.get(), &pear);
  EXPECT_TRUE(pear.owners().empty());

  AddRaw(NoteBytes(0, "cherry", 4));
  AddRaw(NoteBytes(0, "skip", 3));
  NoteTable loaded(&store, kDfct, ui);
  loaded.LoadTable(true);
  EXPECT_EQ(Names(loaded), "apple cherry fig");
  EXPECT_EQ(At(loaded, 2).GetId(), 4u);
  EXPECT_TRUE(At(loaded, 3).deleted);

  // Another client renames the apple: a reload reads it and puts the sorted table right.
  ASSERT_EQ(store.UpdateRecord(kDfct, 2, NoteBytes(0, "zebra", 8)), DBStatus::kOk);
  Note& apple = At(loaded, 1);
  loaded.ReloadItem(apple);
  EXPECT_EQ(Names(loaded), "cherry fig zebra");
  EXPECT_EQ(apple.number, 8u);
  EXPECT_EQ(apple.saves, 1);

  RecordItem* one = table.LoadItem(4);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(one->GetId(), 4u);
  EXPECT_EQ(Names(table), "apple cherry fig") << "in sorted place";
  EXPECT_EQ(table.LoadItem(1), nullptr);
  EXPECT_THROW(table.ReloadItem(pear), StoreError);

  // A layout the class does not know, and a table the file does not have, are thrown.
  AddRaw({0, 3, 0, 0});
  NoteTable bad(&store, kDfct, ui);
  EXPECT_THROW(bad.LoadTable(true), ItemError);
  NoteTable missing(&store, MakeTag("none"), ui);
  EXPECT_THROW(missing.LoadTable(true), StoreError);
}

TEST_F(ItemTableTest, CorruptRecordsAreOfferedForDeletionWithoutSkipping) {
  for (const char* name : {"a", "b", "c", "d", "e"}) AddRaw(NoteBytes(0, name, 0));
  // Damages the payload of the records with the ids given, the first ones of the index.
  std::vector<IndexEntry> index;
  ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
  for (std::uint32_t id : {1, 2, 4}) {
    std::fstream f(path, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(index[id - 1].offset + RecordHeader::kSize + 4);
    f.put('#');
  }
  ui.Script({ui::Answer::kYes, ui::Answer::kYes, ui::Answer::kNo});
  table.LoadTable(false);
  EXPECT_EQ(Names(table), "c e");
  const auto question = [](int id) {
    return "Defect record #" + std::to_string(id) +
           " is corrupt and cannot be loaded. Do you want to delete it?";
  };
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{question(1), question(2), question(4)}));
  EXPECT_EQ(ui.shown[0].icon, ui::Icon::kQuestion);
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kYesNo);
  ASSERT_EQ(store.ReadIndex(kDfct, index), DBStatus::kOk);
  std::vector<std::uint32_t> ids;
  for (const IndexEntry& entry : index) ids.push_back(entry.id);
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{3, 4, 5})) << "answered No: 4 kept";

  // A table entry that counts more records than the index holds: the index ends the
  // loading, with nothing to ask about.
  std::vector<std::uint8_t> bytes = ReadFileBytes(path);
  std::size_t entry = 404;
  while (BeU32(bytes, entry) != kDfct) entry += TableEntry::kSize;
  PutU32(bytes, entry + 4, 4'000'000'000u);
  WriteFileBytes(path, bytes);
  ui.shown.clear();
  ui.Script({ui::Answer::kNo});
  NoteTable again(&store, kDfct, ui);
  again.LoadTable(false);
  EXPECT_EQ(Names(again), "c e");
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{question(4)});
}

TEST_F(ItemTableTest, ABusyStoreIsAskedAboutAndRetriedWithTheSamePayload) {
  const std::string busy =
      "The database is currently busy. Click Retry to continue waiting, Cancel to abort.";
  ASSERT_EQ(Add("first", 1), DBStatus::kOk);

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
  ASSERT_EQ(Add("second", 2), DBStatus::kOk);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{busy, busy}));
  EXPECT_EQ(ui.shown[0].buttons, ui::Buttons::kRetryCancel);
  EXPECT_EQ(Stored(2), NoteBytes(0, "second", 2));
  ui.beforeAnswer = nullptr;

  ASSERT_EQ(other.BeginAccess(true), DBStatus::kOk);
  ui.shown.clear();
  ui.Script({ui::Answer::kCancel, ui::Answer::kCancel, ui::Answer::kCancel});
  EXPECT_EQ(Add("third", 3), DBStatus::kBusy);
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
}

TEST_F(ItemTableTest, SortsLeaveEqualKeysInTheirOwnOrder) {
  const char* names[] = {"k3", "k1", "k2", "k3", "k1", "k2", "k3", "k1", "k2", "k3",
                         "k1", "k2", "k0", "k3", "k1", "k2", "k0", "k3", "k1", "k2"};
  for (std::uint32_t i = 0; i < 20; ++i) AddRaw(NoteBytes(0, names[i], i));
  table.LoadTable(false);
  EXPECT_EQ(Names(table, true), "abcdefghijklmnopqrst");

  auto byShell = table.CloneTable();
  byShell->SortBy([&](const RecordItem& a, const RecordItem& b) {
    return table.CompareItems(a, b, table.sortOrder());
  });
  EXPECT_EQ(Names(*byShell, true), "mqbkesohicltpfjandrg") << "gaps 13, 4, 1";
  auto added = table.CloneTableSorted(-1, -1);
  EXPECT_EQ(Names(*added, true), "mqbehkoscfilptadgjnr") << "each after its equals";
  auto descending = table.CloneTableSorted(1, 1);
  EXPECT_EQ(Names(*descending, true), "tsrqponmlkjihgfedcba") << "the copy's own order";

  table.Sort();
  EXPECT_EQ(Names(table, true), "mqbkhoesflpictjnargd") << "gaps 4, 1";
  EXPECT_EQ(Names(*byShell, true), "mqbkesohicltpfjandrg") << "copies keep their order";
}

TEST_F(ItemTableTest, WorkingCopiesHoldButDoNotOwn) {
  for (std::uint32_t i = 0; i < 6; ++i)
    ASSERT_EQ(Add(std::string(1, static_cast<char>('a' + i)), i), DBStatus::kOk);
  auto copy = table.CloneTable();
  {
    auto scratch = table.CloneTable();
    EXPECT_EQ(At(table, 1).owners().size(), 3u);
  }
  EXPECT_EQ(At(table, 1).owners().size(), 2u) << "a destroyed copy leaves the items be";

  // Each deleted item also leaves the copy.
  for (std::uint32_t p = table.count(); p >= 1; --p) {
    if (static_cast<Note&>(At(table, p)).number % 2 == 0) {
      ASSERT_EQ(table.DeleteItem(At(table, p), false), DBStatus::kOk);
    }
  }
  EXPECT_EQ(Names(*copy), "b d f");
  EXPECT_EQ(copy->RemoveItem(copy->ItemAt(1)), nullptr) << "a copy hands nothing back";
  EXPECT_EQ(Names(table), "b d f");
  EXPECT_EQ(Names(*copy), "d f");

  std::unique_ptr<RecordItem> old = table.ReplaceItem(1, new Note("z", 9));
  ASSERT_NE(old, nullptr);
  EXPECT_EQ(old->GetName(), "b");
  EXPECT_TRUE(old->owners().empty());
  EXPECT_EQ(Names(table), "z d f");

  // A working copy has no store: nothing is written, and the answer is 0. A locked
  // table stores the item but refuses it, and the caller keeps it.
  std::unique_ptr<RecordItem> extra = std::make_unique<Note>("extra", 1);
  EXPECT_EQ(copy->AddItem(extra), DBStatus::kOk);
  EXPECT_NE(extra, nullptr);
  table.Lock();
  EXPECT_EQ(table.AddItem(extra), DBStatus::kOk);
  EXPECT_NE(extra, nullptr);
  table.Unlock();
  EXPECT_EQ(Names(table), "z d f");
}

struct Pair {
  int key = 0;
  char tag = 0;
};

// Compares the keys only, so that the tags show where equal keys ended up.
class PairKey : public ArrayKey<Pair> {
 public:
  int Compare(const Pair& a, const Pair& b) const override { return a.key - b.key; }
  int CompareToKey(const Pair& element, const KeyRef& key) const override {
    return element.key - *key.Get<int>();
  }
};

template <class T>
std::vector<T> Contents(const LockableArray<T>& array) {
  std::vector<T> out;
  for (std::uint32_t p = 1; p <= array.count(); ++p) out.push_back(*array.ElementAt(p));
  return out;
}

std::string Tags(const LockableArray<Pair>& array) {
  std::string tags;
  for (const Pair& p : Contents(array)) tags += p.tag;
  return tags;
}

TEST(LockableArray, KeepSortedInsertsWhereTheBinarySearchLands) {
  PairKey key;
  LockableArray<Pair> a(key);
  a.SetKeepSorted(true);
  // An equal key goes before the equal element that the search lands on, which is not
  // always the first or the last of a run; the position given is ignored.
  EXPECT_EQ(a.Insert({1, 'a'}, 5), 1u);
  EXPECT_EQ(a.Insert({3, 'b'}, 1), 2u);
  EXPECT_EQ(a.Insert({5, 'e'}), 3u);
  EXPECT_EQ(a.Insert({3, 'c'}), 2u);
  EXPECT_EQ(a.Insert({3, 'd'}), 2u);
  EXPECT_EQ(a.Insert({4, 'f'}, 1), 5u);
  EXPECT_EQ(a.Insert({3, 'g'}), 3u);
  EXPECT_EQ(a.Insert({9, 'h'}, 1), 8u);
  EXPECT_EQ(a.Insert({0, 'i'}, kArrayEnd), 1u);
  EXPECT_EQ(Tags(a), "iadgcbfeh");

  EXPECT_EQ(a.FindKey(KeyRef(3)), 5u) << "a sorted array is searched by halves";
  EXPECT_EQ(a.FindKey(KeyRef(4)), 7u);
  EXPECT_EQ(a.FindKey(KeyRef(7)), 0u);
  EXPECT_EQ(a.FindSortedPosition({10, '?'}), 10u);
  EXPECT_TRUE(a.Set(1, {6, 'j'})) << "a set element moves to its sorted place";
  EXPECT_EQ(Tags(a), "adgcbfejh");
  EXPECT_TRUE(a.isSorted());

  a.SetKeepSorted(false);
  EXPECT_TRUE(a.Set(1, {1, 'k'}));
  EXPECT_FALSE(a.isSorted());
  EXPECT_EQ(a.Insert({0, 'l'}, 3), 3u);
  EXPECT_EQ(a.FindKey(KeyRef(3)), 2u) << "unsorted: the first match";
}

// The gaps of the shell sorts, and so the order they leave equal keys in, are pinned by
// the item tables' sorts.
TEST(LockableArray, TotalKeysAndStringsSortOneWay) {
  const std::string tags = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN";
  // A key that breaks every tie (by tag here) has one order only, whichever sort finds it.
  class TotalKey : public PairKey {
   public:
    int Compare(const Pair& x, const Pair& y) const override {
      const int c = PairKey::Compare(x, y);
      return c != 0 ? c : x.tag - y.tag;
    }
    bool TotalOrder() const override { return true; }
  };
  TotalKey total;
  LockableArray<Pair> c(total);
  for (int i = 0; i < 40; ++i) c.Insert({(i * 7 + i / 5) % 4, tags[static_cast<std::size_t>(i)]});
  c.Sort();
  EXPECT_EQ(Tags(c), "DEIJNaefjkoptuyzCHMdinsxBGLchmrwAFKbglqv");
  EXPECT_TRUE(c.isSorted());

  LockableArray<std::string> words;
  for (const char* w : {"b", "abc", "a", "ab", "B"}) words.Insert(w);
  words.Sort();
  EXPECT_EQ(Contents(words), (std::vector<std::string>{"B", "a", "ab", "abc", "b"}))
      << "bytes in order, then the longer is the greater";
}

}  // namespace
}  // namespace qm::test
