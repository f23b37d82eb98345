// The encoding of record payloads: a flat run of untagged big-endian elements in the
// order of an item's fields, beginning with a u16 version of the item's layout.
//
//   element  bytes  notes
//   u8       1
//   u16      2      big-endian
//   u32      4      big-endian
//   stamp    4      big-endian timestamp; 0xFFFFFFFF means not set
//   float64  8      big-endian IEEE double
//   string   1 + n  length byte n, then n bytes, no terminator; at most 255 bytes
//   text     2 + n  u16 length n, then n bytes, no terminator; at most 32,767 bytes
//   raw      n      bytes as they are; the length is known from elsewhere
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "session/handle_file.h"

namespace qm {

// The longest string and text a payload holds, in bytes.
inline constexpr std::size_t kStringCapacity = 255;
inline constexpr std::size_t kTextCapacity = 32767;

// Whether the bytes are well-formed UTF-8.
bool IsValidUtf8(std::string_view text);
// The longest beginning of `text` of at most `capacity` bytes. Valid UTF-8 is cut only
// between characters; other text (Windows-1252 from older files) at any byte.
std::string_view CutToCapacity(std::string_view text, std::size_t capacity);

// Writes elements at the position of a memory file.
class PayloadWriter {
 public:
  explicit PayloadWriter(CHandleFile& file) : file_(file) {}

  void U8(std::uint8_t v);
  void U16(std::uint16_t v);
  void U32(std::uint32_t v);
  void Stamp(std::uint32_t v) { U32(v); }
  void Float64(double v);
  // Cut to the field's capacity, and never above 255 bytes.
  void String(std::string_view text, std::size_t capacity = kStringCapacity);
  // Cut to the field's capacity, and never above 32,767 bytes.
  void Text(std::string_view text, std::size_t capacity = kTextCapacity);
  void Raw(std::span<const std::uint8_t> bytes);

 private:
  CHandleFile& file_;
};

// Reads elements from a payload. An element beyond the end reads as nothing and leaves
// its field as it was, so a record from an older layout keeps the newest fields at the
// item's defaults. A string longer than its field stops the reading: it and everything
// after it read as nothing. Each read answers whether the field was set.
class PayloadReader {
 public:
  explicit PayloadReader(std::span<const std::uint8_t> payload) : data_(payload) {}

  bool U8(std::uint8_t& field);
  bool U8(bool& field);
  bool U16(std::uint16_t& field);
  bool U32(std::uint32_t& field);
  bool Stamp(std::uint32_t& field) { return U32(field); }
  bool Float64(double& field);
  // Fails, and stops the reading, when the stored length is above `limit`; every 0 byte
  // of the text reads as a blank.
  bool String(std::string& field, std::size_t limit);
  // Reads at most `limit` bytes of the text, every 0 byte as a blank. The rest stays in
  // the payload and is read as whatever follows, so the limit must be the writer's. A
  // length above 32,767 (below 0 as the signed number it is) fails and stops the reading.
  bool Text(std::string& field, std::size_t limit);
  // Fills all of `out`, or reads nothing.
  bool Raw(std::span<std::uint8_t> out);

  bool failed() const { return failed_; }
  std::size_t remaining() const { return failed_ ? 0 : data_.size() - position_; }

 private:
  // The next n bytes, or an empty span when fewer remain; then the payload counts as
  // read to its end.
  std::span<const std::uint8_t> Take(std::size_t n);

  std::span<const std::uint8_t> data_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

// Reads the version that begins every payload. One outside [oldest, newest], or none at
// all, throws ItemError(kItemFailed).
std::uint16_t ReadVersion(PayloadReader& in, std::uint16_t oldest, std::uint16_t newest);

}  // namespace qm
