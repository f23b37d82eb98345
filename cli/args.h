// The command line split into words and --options.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qm::cli {

// Thrown for a command line that cannot be carried out as written.
struct UsageError {
  std::string message;
};

class Args {
 public:
  // `valued` names the options that take a value; every other --option is a flag.
  Args(const std::vector<std::string>& words, const std::set<std::string>& valued);

  const std::vector<std::string>& positional() const { return positional_; }
  bool Flag(const std::string& name) const { return flags_.count(name) != 0; }
  std::optional<std::string> Value(const std::string& name) const;
  // A value that must be there and be a whole number within 32 bits.
  std::uint32_t RequiredNumber(const std::string& name) const;
  // The names of the options given, flags and valued ones, in the order typed.
  const std::vector<std::string>& OptionNames() const { return given_; }

 private:
  std::vector<std::string> positional_;
  std::set<std::string> flags_;
  std::map<std::string, std::string> values_;
  std::vector<std::string> given_;
};

}  // namespace qm::cli
