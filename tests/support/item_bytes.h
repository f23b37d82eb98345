// An item read from bytes, the bytes an item writes, and the code a read throws.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "session/handle_file.h"
#include "session/item_error.h"
#include "session/payload.h"

namespace qm::test {

// An Item made from `args` and read from `bytes`.
template <class Item, class... Args>
std::unique_ptr<Item> ReadItem(const std::vector<std::uint8_t>& bytes, Args... args) {
  auto item = std::make_unique<Item>(args...);
  PayloadReader in(bytes);
  item->ReadFrom(in);
  return item;
}

template <class Item>
std::vector<std::uint8_t> Written(const Item& item) {
  CHandleFile file;
  PayloadWriter out(file);
  item.WriteTo(out);
  return file.Detach();
}

// The code `read` throws, or 0 when it throws nothing.
template <class Read>
std::uint32_t ThrownCode(Read read) {
  try {
    read();
  } catch (const ItemError& e) {
    return e.code();
  }
  return 0;
}

}  // namespace qm::test
