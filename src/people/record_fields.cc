// Reading and writing the shared field types of the people records.
#include "people/record_fields.h"

#include <algorithm>

namespace qm {

bool ReadText8(PayloadReader& in, std::string& field) {
  std::uint8_t length = 0;
  if (!in.U8(length)) return false;
  std::vector<std::uint8_t> bytes(length);
  if (!in.Raw(bytes)) return false;
  field.assign(bytes.begin(), bytes.end());
  return true;
}

std::uint32_t IdList::count() const {
  return elementSize_ == 0 ? 0 : static_cast<std::uint32_t>(bytes_.size() / elementSize_);
}

std::uint32_t IdList::At(std::uint32_t index) const {
  std::uint32_t value = 0;
  const std::size_t start = std::size_t{index} * elementSize_;
  for (std::size_t i = start; i < start + elementSize_; ++i) value = (value << 8) | bytes_.at(i);
  return value;
}

void IdList::Append(std::uint32_t value) {
  for (std::uint32_t i = elementSize_; i > 0; --i) {
    bytes_.push_back(i > 4 ? 0 : static_cast<std::uint8_t>(value >> (8 * (i - 1))));
  }
}

void IdList::Write(PayloadWriter& out) const {
  out.U32(elementSize_);
  out.U32(count());
  out.Raw(bytes_);
}

bool IdList::Read(PayloadReader& in) {
  std::uint32_t size = 0;
  std::uint32_t total = 0;
  if (!in.U32(size) || !in.U32(total)) return false;
  elementSize_ = size;
  bytes_.clear();
  if (size == 0 || total == 0) return true;
  // Only what the payload holds is allocated, whatever the count claims.
  const std::size_t whole = std::min<std::size_t>(total, in.remaining() / size);
  bytes_.resize(whole * size);
  in.Raw(bytes_);
  if (whole < total) {
    // The next element runs past the end: asking for more than remains reads nothing and
    // leaves the payload read to its end, as any element beyond the end does.
    std::vector<std::uint8_t> partial(in.remaining() + 1);
    in.Raw(partial);
  }
  return true;
}

int CompareNoCase(std::string_view a, std::string_view b) {
  const auto fold = [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return u >= 'A' && u <= 'Z' ? static_cast<unsigned char>(u - 'A' + 'a') : u;
  };
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const unsigned char x = fold(a[i]);
    const unsigned char y = fold(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

int CompareNoCase(std::span<const std::string_view> a, std::span<const std::string_view> b) {
  std::size_t ai = 0;
  std::size_t bi = 0;
  std::string_view x;  // what is left of a's current part
  std::string_view y;
  for (;;) {
    while (x.empty() && ai < a.size()) x = a[ai++];
    while (y.empty() && bi < b.size()) y = b[bi++];
    if (x.empty() || y.empty()) return x.empty() == y.empty() ? 0 : (x.empty() ? -1 : 1);
    // Runs of equal length differ only where a byte differs, never by their lengths.
    const std::size_t n = std::min(x.size(), y.size());
    if (const int c = CompareNoCase(x.substr(0, n), y.substr(0, n)); c != 0) return c;
    x.remove_prefix(n);
    y.remove_prefix(n);
  }
}

}  // namespace qm
