// Temporary folders of the tests.
#include "support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace qm::test {

TempDir::TempDir(const std::string& base) {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = (!base.empty() ? base
                         : tmp && *tmp ? tmp
                                       : "/tmp") +
                        std::string("/quillmark-test-XXXXXX");
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace qm::test
