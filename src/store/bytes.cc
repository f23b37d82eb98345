// Tags as text.
#include "store/bytes.h"

namespace qm {

std::string TagText(Tag tag) {
  std::string s(4, ' ');
  for (int i = 0; i < 4; ++i)
    s[static_cast<std::size_t>(i)] = static_cast<char>(tag >> (24 - 8 * i));
  return s;
}

std::optional<Tag> ParseTag(std::string_view text) {
  if (text.size() != 4) return std::nullopt;
  Tag tag = 0;
  for (char c : text) {
    auto u = static_cast<unsigned char>(c);
    if (u < 0x20 || u > 0x7E) return std::nullopt;
    tag = (tag << 8) | u;
  }
  return tag;
}

}  // namespace qm
