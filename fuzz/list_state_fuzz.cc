// Reads arbitrary bytes as a list window's saved value: its placement, then the state of
// its columns. Nothing may crash; a value that was read must be written back as the same
// bytes, less what follows the state (which belongs to the window's class).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <vector>

#include "bench/silent_ui.h"
#include "defects/defect_table.h"
#include "shell/record_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qm::bench::SilentUi ui;
  qm::CDefectTable table(nullptr, ui, static_cast<const qm::DefectLookups*>(nullptr));
  qm::CDefectListView list(table, ui);
  const std::span<const std::uint8_t> value(data, size);
  const std::optional<qm::WindowPlacement> placement = list.RestorePlacement(value);
  if (!placement) return 0;
  const std::vector<std::uint8_t> written = list.SavePlacement(*placement);
  // A state of an older version is written as the newest, so only the newest compares.
  if (size >= qm::WindowPlacement::kSize + 2 && data[qm::WindowPlacement::kSize] == 1 &&
      data[qm::WindowPlacement::kSize + 1] == 2) {
    // Titles longer than their length byte cannot come from bytes, so every byte that was
    // read is written back as it stood; the visible flag is the one exception (any
    // non-zero reads as 1).
    if (written.size() > size) std::abort();
    for (std::size_t i = 4; i < written.size(); ++i) {
      if (written[i] != data[i]) std::abort();
    }
  }
  return 0;
}
