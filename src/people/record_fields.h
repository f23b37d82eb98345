// Field types that the records of people, groups and configurations share: texts with a
// byte capacity, idlists, the old one-byte-length text, and names compared ignoring case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "session/payload.h"

namespace qm {

// A text field of a record, holding at most `Capacity` bytes: the stored width less its
// terminator. Every assignment cuts to the capacity, between UTF-8 characters.
template <std::size_t Capacity>
class BoundedText {
 public:
  static constexpr std::size_t kCapacity = Capacity;

  BoundedText& operator=(std::string_view text) {
    text_ = CutToCapacity(text, Capacity);
    return *this;
  }
  const std::string& str() const { return text_; }
  bool empty() const { return text_.empty(); }
  friend bool operator==(const BoundedText&, const BoundedText&) = default;

 private:
  std::string text_;
};

// string(255): written cut to the field's capacity.
template <std::size_t N>
void WriteString(PayloadWriter& out, const BoundedText<N>& field) {
  out.String(field.str(), N);
}

// string(255): a length up to 255 is taken, then cut to the field's capacity. On failure
// the field keeps its value.
template <std::size_t N>
bool ReadString(PayloadReader& in, BoundedText<N>& field) {
  std::string text;
  if (!in.String(text, kStringCapacity)) return false;
  field = text;
  return true;
}

// text8, the notes of old records: a length byte, then the bytes, taken as they are
// (0 bytes stay). On failure the field keeps its value.
bool ReadText8(PayloadReader& in, std::string& field);

// A list as an idlist stores it: u32 element size, u32 count, then the elements. Elements
// of 2 and 4 bytes are big-endian numbers; elements of any size are kept as their bytes,
// so a list is written back as it was read.
class IdList {
 public:
  explicit IdList(std::uint32_t elementSize = 4) : elementSize_(elementSize) {}

  std::uint32_t elementSize() const { return elementSize_; }
  std::uint32_t count() const;
  // The element at a 0-based index as a big-endian number; for elements of 1 to 4 bytes
  // (a wider one answers its last four bytes).
  std::uint32_t At(std::uint32_t index) const;
  // Appends a number: its low bytes in elements narrower than 4 bytes, zeros before it
  // in wider ones.
  void Append(std::uint32_t value);
  friend bool operator==(const IdList&, const IdList&) = default;

  void Write(PayloadWriter& out) const;
  // Reads a list of any element size. The elements that the payload holds whole are
  // taken; one beyond its end reads as nothing, and so does everything after it. On
  // failure to read the size or the count the list keeps its value.
  bool Read(PayloadReader& in);

 private:
  std::uint32_t elementSize_;
  std::vector<std::uint8_t> bytes_;  // the elements as stored
};

// The three-way comparison of two texts with ASCII letters folded to one case: -1, 0, 1.
int CompareNoCase(std::string_view a, std::string_view b);
// The same of the texts that the parts of `a` and of `b` make when joined, without joining
// them: sorting compares names this way many times over.
int CompareNoCase(std::span<const std::string_view> a, std::span<const std::string_view> b);

}  // namespace qm
