// CHandleFile: a growable file in memory, the stream of items on the clipboard, in drag
// and drop and while an item is packed into a record payload.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace qm {

class CHandleFile {
 public:
  enum class From { kStart, kCurrent, kEnd };

  // Thrown by Seek when the new position would lie before the start.
  class BadSeek : public std::runtime_error {
   public:
    BadSeek() : std::runtime_error("seek before the start of a memory file") {}
  };

  // The block grows in multiples of `growth` bytes.
  explicit CHandleFile(std::size_t growth = 1024);
  // A file over existing bytes, positioned at the start.
  CHandleFile(std::vector<std::uint8_t> bytes, std::size_t growth);

  // Reads up to `out.size()` bytes from the position; answers how many.
  std::size_t Read(std::span<std::uint8_t> out);
  // Writes at the position, growing the file; a gap after the old end reads as zeros.
  void Write(std::span<const std::uint8_t> data);
  // Answers the new position. A position beyond the end is allowed.
  std::size_t Seek(std::int64_t offset, From from);
  // Cuts or extends the file; the position follows a cut.
  void SetLength(std::size_t length);
  std::size_t GetLength() const { return length_; }
  std::size_t position() const { return position_; }
  // The bytes allocated for the block, a multiple of the growth.
  std::size_t allocated() const { return block_.size(); }
  std::span<const std::uint8_t> Data() const { return {block_.data(), length_}; }
  // Hands out the bytes and leaves the file empty.
  std::vector<std::uint8_t> Detach();
  // Frees the block; the file is empty afterwards.
  void Close();

 private:
  void Reserve(std::size_t length);

  std::vector<std::uint8_t> block_;  // allocated bytes; those beyond length_ are spare
  std::size_t position_ = 0;
  std::size_t length_ = 0;
  std::size_t growth_;
};

}  // namespace qm
