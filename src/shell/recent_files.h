// The projects opened last, newest first, as the File menu lists them. They are kept in
// the preference file as the strings "Recent File List\File1" to "Recent File List\File4",
// each a full path; an empty or missing value ends the list.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qm {

class CAppPreferences;

class RecentFileList {
 public:
  static constexpr std::size_t kSize = 4;

  void Read(const CAppPreferences& preferences);
  // Writes every entry, and empties the values past the last one; false when the file
  // could not be written.
  bool Write(CAppPreferences& preferences) const;

  // `path` becomes the first entry: the same path further down goes, and past kSize the
  // oldest entry goes.
  void Add(std::string_view path);
  void Remove(std::string_view path);
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  std::vector<std::string> paths_;
};

// The File menu's text of the entry at `index` (from 0): "&1 " and the path, with the home
// folder `home` shown as "~" and each '&' doubled, so that it shows as itself.
std::string RecentFileMenuText(std::size_t index, std::string_view path, std::string_view home);

}  // namespace qm
