// Hand-built file bytes for the store's tests, written field by field so that the
// expected layout never comes from the code under test.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace qm::test {

struct Bytes {
  std::vector<std::uint8_t> b;

  Bytes& u8(std::uint8_t v) {
    b.push_back(v);
    return *this;
  }
  Bytes& u16(std::uint16_t v) {
    return u8(static_cast<std::uint8_t>(v >> 8)).u8(static_cast<std::uint8_t>(v));
  }
  Bytes& u16(std::initializer_list<std::uint16_t> values) {
    for (const std::uint16_t v : values) u16(v);
    return *this;
  }
  Bytes& u32(std::uint32_t v) {
    return u16(static_cast<std::uint16_t>(v >> 16)).u16(static_cast<std::uint16_t>(v));
  }
  Bytes& tag(const char* t) {
    for (int i = 0; i < 4; ++i) u8(static_cast<std::uint8_t>(t[i]));
    return *this;
  }
  Bytes& zeros(std::size_t n) {
    b.insert(b.end(), n, 0);
    return *this;
  }
  Bytes& raw(const std::vector<std::uint8_t>& v) {
    b.insert(b.end(), v.begin(), v.end());
    return *this;
  }
  Bytes& text(const std::string& s) {
    b.insert(b.end(), s.begin(), s.end());
    return *this;
  }
  // Text behind its length: one byte for a string, two for a long text.
  Bytes& str8(const std::string& s) { return u8(static_cast<std::uint8_t>(s.size())).text(s); }
  Bytes& str16(const std::string& s) { return u16(static_cast<std::uint16_t>(s.size())).text(s); }
  // A 33-byte version field: the length byte, the text, zeros to fill it.
  Bytes& fixed33(const std::string& s) { return str8(s).zeros(32 - s.size()); }
  std::size_t size() const { return b.size(); }
};

inline std::vector<std::uint8_t> ReadFileBytes(const std::string& path) {
  const std::string text = ReadText(path);
  return {text.begin(), text.end()};
}

inline void WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  WriteText(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

inline std::uint16_t BeU16(const std::vector<std::uint8_t>& b, std::size_t at) {
  return static_cast<std::uint16_t>((b[at] << 8) | b[at + 1]);
}

inline std::uint32_t BeU32(const std::vector<std::uint8_t>& b, std::size_t at) {
  return (std::uint32_t{BeU16(b, at)} << 16) | BeU16(b, at + 2);
}

inline void PutU16(std::vector<std::uint8_t>& b, std::size_t at, std::uint16_t v) {
  b[at] = static_cast<std::uint8_t>(v >> 8);
  b[at + 1] = static_cast<std::uint8_t>(v);
}

inline void PutU32(std::vector<std::uint8_t>& b, std::size_t at, std::uint32_t v) {
  PutU16(b, at, static_cast<std::uint16_t>(v >> 16));
  PutU16(b, at + 2, static_cast<std::uint16_t>(v));
}

}  // namespace qm::test
