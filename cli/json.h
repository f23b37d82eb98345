// A small writer of JSON text for the command line's machine-readable output.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qm::cli {

// Builds one JSON value; the caller keeps commas and nesting right with the helpers.
class Json {
 public:
  Json& Open(char bracket);   // '{' or '['
  Json& Close(char bracket);  // '}' or ']'
  Json& Key(std::string_view name);
  Json& String(std::string_view value);
  Json& Number(std::uint64_t value);
  Json& Bool(bool value);
  Json& Null();
  const std::string& text() const { return out_; }

 private:
  void Separate();
  std::string out_;
  bool needComma_ = false;
};

// Lower-case hexadecimal of bytes.
std::string Hex(const std::uint8_t* data, std::size_t n);

}  // namespace qm::cli
