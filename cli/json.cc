// JSON text and hexadecimal.
#include "json.h"

#include <cstdio>

namespace qm::cli {

void Json::Separate() {
  if (needComma_) out_ += ',';
  needComma_ = false;
}

Json& Json::Open(char bracket) {
  Separate();
  out_ += bracket;
  return *this;
}

Json& Json::Close(char bracket) {
  out_ += bracket;
  needComma_ = true;
  return *this;
}

Json& Json::Key(std::string_view name) {
  String(name);
  out_ += ':';
  needComma_ = false;
  return *this;
}

Json& Json::String(std::string_view value) {
  Separate();
  out_ += '"';
  for (unsigned char c : value) {
    switch (c) {
      case '"':
        out_ += "\\\"";
        break;
      case '\\':
        out_ += "\\\\";
        break;
      case '\n':
        out_ += "\\n";
        break;
      case '\r':
        out_ += "\\r";
        break;
      case '\t':
        out_ += "\\t";
        break;
      default:
        if (c < 0x20 || c >= 0x7F) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", c);
          out_ += buf;
        } else {
          out_ += static_cast<char>(c);
        }
    }
  }
  out_ += '"';
  needComma_ = true;
  return *this;
}

Json& Json::Number(std::uint64_t value) {
  Separate();
  out_ += std::to_string(value);
  needComma_ = true;
  return *this;
}

Json& Json::Bool(bool value) {
  Separate();
  out_ += value ? "true" : "false";
  needComma_ = true;
  return *this;
}

Json& Json::Null() {
  Separate();
  out_ += "null";
  needComma_ = true;
  return *this;
}

std::string Hex(const std::uint8_t* data, std::size_t n) {
  static const char kDigits[] = "0123456789abcdef";
  std::string s;
  s.reserve(n * 2);
  for (std::size_t i = 0; i < n; ++i) {
    s += kDigits[data[i] >> 4];
    s += kDigits[data[i] & 15];
  }
  return s;
}

}  // namespace qm::cli
