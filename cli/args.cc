// Splitting the command line.
#include "args.h"

#include <charconv>

namespace qm::cli {

Args::Args(const std::vector<std::string>& words, const std::set<std::string>& valued) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& w = words[i];
    if (w.size() > 2 && w.rfind("--", 0) == 0) {
      std::string name = w.substr(2);
      given_.push_back(name);
      if (valued.count(name) != 0) {
        if (i + 1 >= words.size()) throw UsageError{"--" + name + " needs a value."};
        values_[name] = words[++i];
      } else {
        flags_.insert(name);
      }
    } else {
      positional_.push_back(w);
    }
  }
}

std::optional<std::string> Args::Value(const std::string& name) const {
  auto it = values_.find(name);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

std::uint32_t Args::RequiredNumber(const std::string& name) const {
  auto text = Value(name);
  if (!text) throw UsageError{"--" + name + " is required."};
  std::uint32_t n = 0;
  auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), n);
  if (ec != std::errc{} || end != text->data() + text->size()) {
    throw UsageError{"--" + name + " takes a whole number from 0 to 4294967295, not \"" + *text +
                     "\"."};
  }
  return n;
}

}  // namespace qm::cli
