// Writing and reading the elements of record payloads.
#include "session/payload.h"

#include <algorithm>
#include <bit>

#include "session/item_error.h"

namespace qm {

bool IsValidUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    std::size_t n = 0;  // continuation bytes
    std::uint32_t cp = 0;
    if ((lead & 0xE0) == 0xC0) {
      n = 1;
      cp = lead & 0x1Fu;
    } else if ((lead & 0xF0) == 0xE0) {
      n = 2;
      cp = lead & 0x0Fu;
    } else if ((lead & 0xF8) == 0xF0) {
      n = 3;
      cp = lead & 0x07u;
    } else {
      return false;
    }
    if (i + n >= text.size()) return false;
    for (std::size_t k = 1; k <= n; ++k) {
      const auto c = static_cast<unsigned char>(text[i + k]);
      if ((c & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (c & 0x3Fu);
    }
    // Overlong forms, surrogates and values beyond the last code point are not UTF-8.
    static constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (cp < kSmallest[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    i += n + 1;
  }
  return true;
}

std::string_view CutToCapacity(std::string_view text, std::size_t capacity) {
  if (text.size() <= capacity) return text;
  std::size_t cut = capacity;
  if (IsValidUtf8(text)) {
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  }
  return text.substr(0, cut);
}

void PayloadWriter::U8(std::uint8_t v) { file_.Write(std::span<const std::uint8_t>(&v, 1)); }

void PayloadWriter::U16(std::uint16_t v) {
  const std::uint8_t b[2] = {static_cast<std::uint8_t>(v >> 8), static_cast<std::uint8_t>(v)};
  file_.Write(b);
}

void PayloadWriter::U32(std::uint32_t v) {
  U16(static_cast<std::uint16_t>(v >> 16));
  U16(static_cast<std::uint16_t>(v));
}

void PayloadWriter::Float64(double v) {
  const auto bits = std::bit_cast<std::uint64_t>(v);
  U32(static_cast<std::uint32_t>(bits >> 32));
  U32(static_cast<std::uint32_t>(bits));
}

void PayloadWriter::String(std::string_view text, std::size_t capacity) {
  const std::string_view kept = CutToCapacity(text, std::min(capacity, kStringCapacity));
  U8(static_cast<std::uint8_t>(kept.size()));
  Raw({reinterpret_cast<const std::uint8_t*>(kept.data()), kept.size()});
}

void PayloadWriter::Text(std::string_view text, std::size_t capacity) {
  const std::string_view kept = CutToCapacity(text, std::min(capacity, kTextCapacity));
  U16(static_cast<std::uint16_t>(kept.size()));
  Raw({reinterpret_cast<const std::uint8_t*>(kept.data()), kept.size()});
}

void PayloadWriter::Raw(std::span<const std::uint8_t> bytes) { file_.Write(bytes); }

std::span<const std::uint8_t> PayloadReader::Take(std::size_t n) {
  if (failed_ || n > data_.size() - position_) {
    position_ = data_.size();
    return {};
  }
  const auto bytes = data_.subspan(position_, n);
  position_ += n;
  return bytes;
}

bool PayloadReader::U8(std::uint8_t& field) {
  const auto b = Take(1);
  if (b.empty()) return false;
  field = b[0];
  return true;
}

bool PayloadReader::U8(bool& field) {
  std::uint8_t v = 0;
  if (!U8(v)) return false;
  field = v != 0;
  return true;
}

bool PayloadReader::U16(std::uint16_t& field) {
  const auto b = Take(2);
  if (b.empty()) return false;
  field = static_cast<std::uint16_t>((b[0] << 8) | b[1]);
  return true;
}

bool PayloadReader::U32(std::uint32_t& field) {
  const auto b = Take(4);
  if (b.empty()) return false;
  field =
      (std::uint32_t{b[0]} << 24) | (std::uint32_t{b[1]} << 16) | (std::uint32_t{b[2]} << 8) | b[3];
  return true;
}

bool PayloadReader::Float64(double& field) {
  const auto b = Take(8);
  if (b.empty()) return false;
  std::uint64_t bits = 0;
  for (std::uint8_t byte : b) bits = (bits << 8) | byte;
  field = std::bit_cast<double>(bits);
  return true;
}

bool PayloadReader::String(std::string& field, std::size_t limit) {
  std::uint8_t length = 0;
  if (!U8(length)) return false;
  if (length > limit) {
    failed_ = true;
    return false;
  }
  const auto b = Take(length);
  if (b.size() != length) return false;
  field.assign(b.begin(), b.end());
  std::replace(field.begin(), field.end(), '\0', ' ');
  return true;
}

bool PayloadReader::Text(std::string& field, std::size_t limit) {
  std::uint16_t length = 0;
  if (!U16(length)) return false;
  // The length is a signed 16-bit number: one below 0 is damage, and the reading stops.
  if (length > kTextCapacity) {
    failed_ = true;
    return false;
  }
  const std::size_t n = std::min<std::size_t>(length, limit);
  const auto b = Take(n);
  if (b.size() != n) return false;
  field.assign(b.begin(), b.end());
  std::replace(field.begin(), field.end(), '\0', ' ');
  return true;
}

bool PayloadReader::Raw(std::span<std::uint8_t> out) {
  const auto b = Take(out.size());
  if (b.size() != out.size()) return false;
  std::copy(b.begin(), b.end(), out.begin());
  return true;
}

std::uint16_t ReadVersion(PayloadReader& in, std::uint16_t oldest, std::uint16_t newest) {
  std::uint16_t version = 0;
  if (!in.U16(version) || version < oldest || version > newest) throw ItemError(kItemFailed);
  return version;
}

}  // namespace qm
