// The recent files of the File menu, and where they are kept.
#include "shell/recent_files.h"

#include <algorithm>

#include "shell/app_preferences.h"

namespace qm {
namespace {

std::string ValueName(std::size_t index) {
  return "Recent File List\\File" + std::to_string(index + 1);
}

}  // namespace

void RecentFileList::Read(const CAppPreferences& preferences) {
  paths_.clear();
  for (std::size_t i = 0; i < kSize; ++i) {
    const auto path = preferences.GetPlacement(ValueName(i));
    if (!path || path->empty()) break;
    if (std::find(paths_.begin(), paths_.end(), *path) == paths_.end()) paths_.push_back(*path);
  }
}

bool RecentFileList::Write(CAppPreferences& preferences) const {
  bool written = true;
  for (std::size_t i = 0; i < kSize; ++i) {
    const std::string path = i < paths_.size() ? paths_[i] : std::string();
    if (preferences.GetPlacement(ValueName(i)).value_or("") == path) continue;
    written = preferences.SetPlacement(ValueName(i), path) && written;
  }
  return written;
}

void RecentFileList::Add(std::string_view path) {
  if (path.empty()) return;
  Remove(path);
  paths_.insert(paths_.begin(), std::string(path));
  if (paths_.size() > kSize) paths_.resize(kSize);
}

void RecentFileList::Remove(std::string_view path) { std::erase(paths_, path); }

std::string RecentFileMenuText(std::size_t index, std::string_view path, std::string_view home) {
  std::string shown(path);
  if (!home.empty() && home != "/" && path.starts_with(home) &&
      (path.size() == home.size() || path[home.size()] == '/')) {
    shown = "~" + shown.substr(home.size());
  }
  std::string text = "&" + std::to_string(index + 1) + " ";
  for (const char c : shown) {
    if (c == '&') text += '&';
    text += c;
  }
  return text;
}

}  // namespace qm
