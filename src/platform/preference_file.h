// Named values of the machine's preferences, kept in one text file that the core reads and
// writes itself. The program's preferences and the windows' placements live here.
//
// The file is UTF-8 text, one value a line, each line ended by LF:
//
//   Name=string:TEXT        a string; TEXT is its bytes with the escapes below
//   Name=binary:HEXBYTES    a byte run, two hex digits a byte (lowercase when written)
//   # ...                   a comment; comments and blank lines are read past
//
//   escape  byte
//   \\      backslash
//   \n      LF
//   \r      CR
//   \xHH    any other byte below 0x20, DEL, and every byte that is not part of a
//           well-formed UTF-8 character; UTF-8 characters are written as they are
//
// The name is everything before the first '=': printable ASCII, not beginning with '#'.
// A line that does not read as a value (no '=', another kind, a bad escape, an odd count
// of hex digits) is skipped and costs only its own value. When a name appears twice the
// later line wins. A CR before the LF and a byte order mark at the start are tolerated, so
// a file edited elsewhere reads. Comments are not written back.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qm::platform {

enum class PreferenceKind { kString, kBinary };

struct PreferenceValue {
  std::string name;
  PreferenceKind kind = PreferenceKind::kString;
  std::string bytes;  // the string's bytes, or the binary value's bytes

  bool operator==(const PreferenceValue&) const = default;
};

// All the values of one preference file, held in memory between Load and Save. Values keep
// the order in which they were first read or set, and names that nobody here knows are
// written back as they were read, so values written by other parts of the program survive.
class PreferenceFile {
 public:
  enum class LoadResult {
    kRead,       // the file was read; lines that did not read are left out
    kMissing,    // there is no file: no values
    kUnreadable  // the file is there but could not be read: no values
  };

  explicit PreferenceFile(std::string path) : path_(std::move(path)) {}

  // $XDG_CONFIG_HOME/Corvane Software/Quillmark.conf, with $HOME/.config in place of an
  // unset, empty or relative XDG_CONFIG_HOME, and the user's home folder from the system's
  // user list when HOME is not set either.
  static std::string DefaultPath();

  const std::string& path() const { return path_; }

  // Replaces every value in memory with those of the file.
  [[nodiscard]] LoadResult Load();

  // Writes every value to a new file in the same folder, puts it on the device and renames
  // it over the old one, so a reader never sees half of a file; creates the folder when it
  // is missing. The file is readable by its owner only, since it holds passwords. Answers
  // false when any step fails; the old file is then as it was.
  [[nodiscard]] bool Save() const;

  // A value of the kind asked for; none when the name is absent or holds the other kind.
  std::optional<std::string> GetString(std::string_view name) const;
  std::optional<std::vector<std::uint8_t>> GetBinary(std::string_view name) const;

  // Replace the value of the name in its place, or add it at the end. Throw
  // std::invalid_argument for a name that could not be read back.
  void SetString(std::string_view name, std::string_view text);
  void SetBinary(std::string_view name, std::span<const std::uint8_t> bytes);

  const std::vector<PreferenceValue>& values() const { return values_; }

 private:
  const PreferenceValue* Find(std::string_view name) const;
  void Set(std::string_view name, PreferenceKind kind, std::string bytes);

  std::string path_;
  std::vector<PreferenceValue> values_;
};

}  // namespace qm::platform
