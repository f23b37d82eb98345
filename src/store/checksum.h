// The payload checksum of a stored record.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qm {

// Sum modulo 65536 of a table value per payload byte, so that any byte's change shows.
class Checksum {
 public:
  void Add(const std::uint8_t* data, std::size_t n);
  std::uint16_t value() const { return sum_; }

  static std::uint16_t Of(const std::uint8_t* data, std::size_t n) {
    Checksum c;
    c.Add(data, n);
    return c.value();
  }

 private:
  std::uint16_t sum_ = 0;
};

}  // namespace qm
