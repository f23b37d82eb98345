// The memory file of items.
#include "session/handle_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qm {

CHandleFile::CHandleFile(std::size_t growth) : growth_(std::max<std::size_t>(growth, 1)) {}

CHandleFile::CHandleFile(std::vector<std::uint8_t> bytes, std::size_t growth)
    : block_(std::move(bytes)), length_(block_.size()), growth_(std::max<std::size_t>(growth, 1)) {}

void CHandleFile::Reserve(std::size_t length) {
  if (length <= block_.size()) return;
  block_.resize((length + growth_ - 1) / growth_ * growth_);
}

std::size_t CHandleFile::Read(std::span<std::uint8_t> out) {
  if (position_ >= length_) return 0;
  const std::size_t n = std::min(out.size(), length_ - position_);
  std::memcpy(out.data(), block_.data() + position_, n);
  position_ += n;
  return n;
}

void CHandleFile::Write(std::span<const std::uint8_t> data) {
  if (data.empty()) return;
  const std::size_t end = position_ + data.size();
  Reserve(end);
  // Spare bytes may hold what a cut left behind.
  if (position_ > length_) std::fill(block_.begin() + length_, block_.begin() + position_, 0);
  std::memcpy(block_.data() + position_, data.data(), data.size());
  position_ = end;
  length_ = std::max(length_, end);
}

std::size_t CHandleFile::Seek(std::int64_t offset, From from) {
  std::int64_t base = 0;
  if (from == From::kCurrent) base = static_cast<std::int64_t>(position_);
  if (from == From::kEnd) base = static_cast<std::int64_t>(length_);
  const std::int64_t target = base + offset;
  if (target < 0) throw BadSeek();
  position_ = static_cast<std::size_t>(target);
  return position_;
}

void CHandleFile::SetLength(std::size_t length) {
  Reserve(length);
  if (length > length_) std::fill(block_.begin() + length_, block_.begin() + length, 0);
  length_ = length;
  position_ = std::min(position_, length_);
}

std::vector<std::uint8_t> CHandleFile::Detach() {
  std::vector<std::uint8_t> bytes = std::move(block_);
  bytes.resize(length_);
  Close();
  return bytes;
}

void CHandleFile::Close() {
  block_ = {};
  position_ = 0;
  length_ = 0;
}

}  // namespace qm
