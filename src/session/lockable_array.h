// LockableArray, the one container of the program: 1-based positions, a lock count that
// keeps loops safe from structural change, and sorting by a key object.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "session/array_key.h"
#include "ui/ui.h"

namespace qm {

// As a position: the last element when reading, past the end when inserting.
inline constexpr std::uint32_t kArrayEnd = 0x7FFFFFFF;

template <class T>
class LockableArray {
 public:
  // Compares by the shared default key of T.
  LockableArray() : key_(&DefaultKey<T>()) {}
  // Compares by a key that the caller keeps alive for the array's life.
  explicit LockableArray(const ArrayKey<T>& key) : key_(&key) {}
  // Compares by a key that the array owns.
  explicit LockableArray(std::unique_ptr<const ArrayKey<T>> key)
      : ownedKey_(std::move(key)), key_(ownedKey_.get()) {}
  LockableArray(const LockableArray&) = delete;
  LockableArray& operator=(const LockableArray&) = delete;

  std::uint32_t count() const { return static_cast<std::uint32_t>(elements_.size()); }
  const ArrayKey<T>& key() const { return *key_; }

  // While locked, no element may be added or removed; Set, Swap, Move and sorting go on.
  void Lock() { ++lockCount_; }
  void Unlock() { --lockCount_; }
  std::uint32_t lockCount() const { return lockCount_; }

  bool isSorted() const { return isSorted_; }
  // With keepSorted, Insert puts each element at its place in the key order and ignores
  // the position given. The caller sorts the array before turning it on.
  bool keepSorted() const { return keepSorted_; }
  void SetKeepSorted(bool keep) { keepSorted_ = keep; }
  // For contents that may have left the key order because elements changed in place:
  // the next Sort sorts them again.
  void MarkUnsorted() { isSorted_ = false; }

  // Copies out the element at a position (kArrayEnd: the last); false when there is none.
  bool GetElement(std::uint32_t position, T& out) const {
    const T* element = ElementAt(position);
    if (element == nullptr) return false;
    out = *element;
    return true;
  }
  // The element at a position, valid until the next insertion or removal; null when
  // there is none.
  const T* ElementAt(std::uint32_t position) const {
    const std::uint32_t p = Resolve(position);
    return p == 0 ? nullptr : &elements_[p - 1];
  }

  // Inserts `n` copies of `value` before `position`; 0 goes to 1, a position beyond the
  // end to the end. Answers where they went, or 0 when the array is locked.
  std::uint32_t Insert(const T& value, std::uint32_t position = kArrayEnd, std::uint32_t n = 1) {
    if (lockCount_ != 0) {
      ui::DebugOutput("Can't insert into a locked Array");
      return 0;
    }
    if (keepSorted_) position = FindSortedPosition(value);
    position = std::clamp<std::uint32_t>(position, 1, count() + 1);
    elements_.insert(elements_.begin() + (position - 1), n, value);
    isSorted_ = keepSorted_;
    return position;
  }

  // Removes `n` elements from `position` on, as many as there are. Answers how many went.
  std::uint32_t Remove(std::uint32_t position, std::uint32_t n = 1) {
    if (lockCount_ != 0) {
      ui::DebugOutput("Can't remove from a locked Array");
      return 0;
    }
    const std::uint32_t p = Resolve(position);
    if (p == 0) return 0;
    n = std::min(n, count() - p + 1);
    elements_.erase(elements_.begin() + (p - 1), elements_.begin() + (p - 1 + n));
    return n;
  }

  // Sets `n` elements from `position` on (as many as there are) to `value`. With
  // keepSorted they are removed and inserted again at their place in the key order.
  bool Set(std::uint32_t position, const T& value, std::uint32_t n = 1) {
    const std::uint32_t p = Resolve(position);
    if (p == 0) return false;
    n = std::min(n, count() - p + 1);
    if (keepSorted_) {
      if (Remove(p, n) == 0) return false;
      return Insert(value, p, n) != 0;
    }
    std::fill_n(elements_.begin() + (p - 1), n, value);
    isSorted_ = false;
    return true;
  }

  // The position of an element equal to key `k` by the key's CompareToKey, or 0. A sorted
  // array is searched by halves, so among equal elements any one may be found; else the
  // first.
  std::uint32_t FindKey(const KeyRef& k) const {
    if (isSorted_) {
      const std::uint32_t p = FindSortedPositionForKey(k);
      return p >= 1 && p <= count() && key_->EqualToKey(elements_[p - 1], k) ? p : 0;
    }
    for (std::uint32_t p = 1; p <= count(); ++p) {
      if (key_->EqualToKey(elements_[p - 1], k)) return p;
    }
    return 0;
  }

  // Where `value` belongs in a sorted array: the position of an equal element, else the
  // position before which it goes. 0 for an empty array.
  std::uint32_t FindSortedPosition(const T& value) const {
    return BinarySearch([&](const T& element) { return key_->Compare(value, element); });
  }
  std::uint32_t FindSortedPositionForKey(const KeyRef& k) const {
    return BinarySearch([&](const T& element) {
      const int c = key_->CompareToKey(element, k);
      return c < 0 ? 1 : (c > 0 ? -1 : 0);
    });
  }

  // Sorts by the key. The gaps 1, 4, 13, 40, ... stay below count / 9; each pass moves
  // an element only past strictly greater ones. Together they decide the order of equal
  // elements, which lists show, so they stay as they are; a key without equal elements
  // has one order only, which the library's sort finds with fewer comparisons.
  void Sort() {
    if (isSorted_ || count() < 2) return;
    if (key_->TotalOrder()) {
      std::sort(elements_.begin(), elements_.end(),
                [&](const T& a, const T& b) { return key_->Compare(a, b) < 0; });
      isSorted_ = true;
      return;
    }
    std::uint32_t h = 1;
    while (h < count() / 9) h = 3 * h + 1;
    ShellPasses(h, [&](const T& a, const T& b) { return key_->Compare(a, b); });
    isSorted_ = true;
  }

  // Sorts by `compare` (below 0, 0, above 0), starting from the largest gap of 1, 4, 13,
  // 40, ... below the count. The contents are then no longer known to be in key order.
  template <class Compare>
  void SortBy(Compare&& compare) {
    std::uint32_t h = 1;
    while (3 * h + 1 < count()) h = 3 * h + 1;
    ShellPasses(h, compare);
    isSorted_ = false;
  }

 private:
  // A 1-based position of an existing element, or 0.
  std::uint32_t Resolve(std::uint32_t position) const {
    if (position == kArrayEnd) return count();
    return position <= count() ? position : 0;
  }

  // `order` answers how the sought element compares with the one it is given. On
  // equality the answer is that position; when the range runs empty, it is the last
  // middle, plus 1 when the sought element belongs after it.
  template <class Order>
  std::uint32_t BinarySearch(Order&& order) const {
    std::uint32_t low = 1;
    std::uint32_t high = count();
    std::uint32_t middle = 0;
    bool after = false;
    while (low <= high) {
      middle = (low + high) / 2;
      const int c = order(elements_[middle - 1]);
      if (c == 0) return middle;
      after = c > 0;
      if (after) {
        low = middle + 1;
      } else {
        high = middle - 1;
      }
    }
    return after ? middle + 1 : middle;
  }

  // Insertion sorts with gap h, h / 3, ... down to 1.
  template <class Compare>
  void ShellPasses(std::uint32_t h, Compare&& compare) {
    const std::size_t n = elements_.size();
    for (; h > 0; h /= 3) {
      for (std::size_t i = h; i < n; ++i) {
        T value = elements_[i];
        std::size_t j = i;
        while (j >= h && compare(elements_[j - h], value) > 0) {
          elements_[j] = elements_[j - h];
          j -= h;
        }
        elements_[j] = value;
      }
    }
  }

  std::unique_ptr<const ArrayKey<T>> ownedKey_;
  const ArrayKey<T>* key_;
  std::vector<T> elements_;
  std::uint32_t lockCount_ = 0;
  bool isSorted_ = false;
  bool keepSorted_ = false;
};

}  // namespace qm
