// Comparison objects of LockableArray: how two elements compare, and how an element
// compares with a key of another type, such as an id or a name.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "ui/ui.h"

namespace qm {

// A key value handed to FindKey, of whatever type the array's key class expects. It
// refers to the caller's value and lives no longer than the call.
class KeyRef {
 public:
  template <class K>
  explicit KeyRef(const K& value) : value_(&value), type_(&typeid(K)) {}

  // The value when it is of type K, else null.
  template <class K>
  const K* Get() const {
    return *type_ == typeid(K) ? static_cast<const K*>(value_) : nullptr;
  }

 private:
  const void* value_;
  const std::type_info* type_;
};

// Compare answers below 0, 0 or above 0. CompareToKey is for keys of another type; a
// key class that does not offer it answers 1, so nothing is ever found by it.
template <class T>
class ArrayKey {
 public:
  virtual ~ArrayKey() = default;
  virtual int Compare(const T& a, const T& b) const = 0;
  // Whether Compare calls no two distinct elements equal. Then every sort gives one and
  // the same order, and the array may use the quickest.
  virtual bool TotalOrder() const { return false; }
  virtual bool Equal(const T& a, const T& b) const { return Compare(a, b) == 0; }
  virtual int CompareToKey(const T& /*element*/, const KeyRef& /*key*/) const {
    ui::DebugOutput("CompareToKey not implemented");
    return 1;
  }
  bool EqualToKey(const T& element, const KeyRef& key) const {
    return CompareToKey(element, key) == 0;
  }
};

// Bytes in order up to the shorter size, then the longer is the greater: the order of
// strings as bytes, and of plain values by their bytes in memory.
template <class T>
requires std::same_as<T, std::string> ||
    (std::is_trivially_copyable_v<T>&& std::has_unique_object_representations_v<T>)class ByteKey
    : public ArrayKey<T> {
 public:
  int Compare(const T& a, const T& b) const override {
    if constexpr (std::same_as<T, std::string>) {
      const int c = a.compare(b);
      return c < 0 ? -1 : (c > 0 ? 1 : 0);
    } else {
      return std::memcmp(&a, &b, sizeof(T));
    }
  }
};

// 4-byte values compare by the sign of their 32-bit difference, taken with wrap-around,
// so two values more than 2^31 apart compare the other way round.
template <class T>
requires(sizeof(T) == 4 && (std::is_integral_v<T> || std::is_enum_v<T>)) class FourByteKey
    : public ArrayKey<T> {
 public:
  int Compare(const T& a, const T& b) const override {
    const auto difference = static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b);
    return static_cast<std::int32_t>(difference);
  }
};

// Pointers compare by address: only equality means anything.
template <class T>
requires std::is_pointer_v<T>
class PointerKey : public ArrayKey<T> {
 public:
  int Compare(const T& a, const T& b) const override {
    const auto order = std::compare_three_way{}(a, b);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
  }
  bool Equal(const T& a, const T& b) const override { return a == b; }
};

// The shared key of an array made without one: the 4-byte key for 4-byte values, the
// pointer key for pointers, else the byte key.
template <class T>
const ArrayKey<T>& DefaultKey() {
  if constexpr (std::is_pointer_v<T>) {
    static const PointerKey<T> key;
    return key;
  } else if constexpr (sizeof(T) == 4 && (std::is_integral_v<T> || std::is_enum_v<T>)) {
    static const FourByteKey<T> key;
    return key;
  } else {
    static const ByteKey<T> key;
    return key;
  }
}

}  // namespace qm
