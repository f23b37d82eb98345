// How an item factory gives up: the failure is thrown as a code and caught where the
// work began (at load, the opening of the project ends with it).
#pragma once

#include <cstdint>
#include <exception>

#include "store/bytes.h"

namespace qm {

// A bad version of a payload, or no memory.
inline constexpr std::uint32_t kItemFailed = 1;
// The user cancelled during the opening of a project.
inline constexpr std::uint32_t kItemCancelled = 2;
// No object could be made.
inline constexpr std::uint32_t kNoItem = MakeTag("nilP");

class ItemError : public std::exception {
 public:
  explicit ItemError(std::uint32_t code) : code_(code) {}
  std::uint32_t code() const { return code_; }
  const char* what() const noexcept override { return "item could not be made"; }

 private:
  std::uint32_t code_;
};

}  // namespace qm
