// Reads arbitrary bytes as the preference file, alone and as the program's preferences.
// Nothing may crash, what was read must come back the same after a Save, and a second
// Load and Save of the preferences must write the very bytes of the first.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/preference_file.h"
#include "shell/app_preferences.h"
#include "support/temp_dir.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using qm::platform::PreferenceFile;
  using qm::platform::PreferenceKind;
  // Every Save puts its file on the device, so the folder is in memory where the system
  // offers that.
  static const qm::test::TempDir folder(std::filesystem::is_directory("/dev/shm") ? "/dev/shm"
                                                                                  : "");
  const std::string in = folder.File("in.conf");
  const std::string out = folder.File("out.conf");
  qm::test::WriteText(in, {reinterpret_cast<const char*>(data), size});
  PreferenceFile read(in);
  Require(read.Load() == PreferenceFile::LoadResult::kRead);
  PreferenceFile copy(out);
  for (const qm::platform::PreferenceValue& value : read.values()) {
    if (value.kind == PreferenceKind::kString) {
      copy.SetString(value.name, value.bytes);
    } else {
      copy.SetBinary(value.name, {reinterpret_cast<const std::uint8_t*>(value.bytes.data()),
                                  value.bytes.size()});
    }
  }
  Require(copy.Save());
  PreferenceFile again(out);
  Require(again.Load() == PreferenceFile::LoadResult::kRead);
  Require(again.values() == read.values());

  qm::CAppPreferences prefs(in);
  (void)prefs.Load();
  Require(prefs.Save());
  const std::string first = qm::test::ReadText(in);
  qm::CAppPreferences next(in);
  (void)next.Load();
  Require(next.Save());
  Require(qm::test::ReadText(in) == first);
  return 0;
}
