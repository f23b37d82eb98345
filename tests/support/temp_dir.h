// A folder of its own for each test, removed with everything in it at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qm::test {

class TempDir {
 public:
  // Inside `base`; without one, inside $TMPDIR or /tmp.
  explicit TempDir(const std::string& base = "") {
    const char* tmp = std::getenv("TMPDIR");
    path_ = (!base.empty() ? base
             : tmp && *tmp ? tmp
                           : "/tmp") +
            std::string("/quillmark-test-XXXXXX");
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
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
