// A folder of its own for each test, removed with everything in it at the end.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace qm::test {

class TempDir {
 public:
  // Inside `base`; without one, inside $TMPDIR or /tmp.
  explicit TempDir(const std::string& base = "");
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // A path inside the folder.
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// The whole of a file as text, and a file written whole from text.
inline std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void WriteText(const std::string& path, std::string_view text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace qm::test
