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

  // The two ways of summing, for the tests: table pairs one at a time, and sixteen bytes
  // a step with the processor's vector gather where it has one (HasVectorSum).
  static std::uint32_t SumPortable(const std::uint8_t* data, std::size_t n);
  static std::uint32_t SumVector(const std::uint8_t* data, std::size_t n);
  static bool HasVectorSum();

 private:
  std::uint16_t sum_ = 0;
};

}  // namespace qm
