// LockableArray: sorted insertion, keys that order every element.
#include "session/lockable_array.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace qm {
namespace {

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
}  // namespace qm
