// Big-endian reading and writing of fixed-size blocks, and four-character tags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qm {

// A table or format tag: four ASCII characters, the first most significant, stored in
// reading order ("dfct" begins with the byte 'd').
using Tag = std::uint32_t;

consteval Tag MakeTag(const char (&s)[5]) {
  return (static_cast<Tag>(static_cast<unsigned char>(s[0])) << 24) |
         (static_cast<Tag>(static_cast<unsigned char>(s[1])) << 16) |
         (static_cast<Tag>(static_cast<unsigned char>(s[2])) << 8) |
         static_cast<Tag>(static_cast<unsigned char>(s[3]));
}

// The four characters of a tag, whatever bytes they are.
std::string TagText(Tag tag);
// A tag from exactly four printable ASCII characters.
std::optional<Tag> ParseTag(std::string_view text);

// Writes big-endian values one after another into a buffer that the caller sized.
class BeWriter {
 public:
  explicit BeWriter(std::uint8_t* out) : p_(out) {}
  void U8(std::uint8_t v) { *p_++ = v; }
  void U16(std::uint16_t v) {
    U8(static_cast<std::uint8_t>(v >> 8));
    U8(static_cast<std::uint8_t>(v));
  }
  void U32(std::uint32_t v) {
    U16(static_cast<std::uint16_t>(v >> 16));
    U16(static_cast<std::uint16_t>(v));
  }
  void Zeros(std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) U8(0);
  }
  void Bytes(const std::uint8_t* data, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) U8(data[i]);
  }
  std::uint8_t* position() const { return p_; }

 private:
  std::uint8_t* p_;
};

// Reads big-endian values one after another from a buffer that the caller checked.
class BeReader {
 public:
  explicit BeReader(const std::uint8_t* in) : p_(in) {}
  std::uint8_t U8() { return *p_++; }
  std::uint16_t U16() {
    std::uint16_t hi = U8();
    return static_cast<std::uint16_t>((hi << 8) | U8());
  }
  std::uint32_t U32() {
    std::uint32_t hi = U16();
    return (hi << 16) | U16();
  }
  void Skip(std::size_t n) { p_ += n; }
  void Bytes(std::uint8_t* out, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) out[i] = U8();
  }

 private:
  const std::uint8_t* p_;
};

}  // namespace qm
