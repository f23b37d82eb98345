// Pulling a window's rectangle into the main window's area.
#include "shell/window_fit.h"

#include <algorithm>

namespace qm {
namespace {

// One direction: the start and end of the window along an area of `size`.
void Fit(std::int32_t& start, std::int32_t& end, std::int32_t size) {
  const std::int32_t length = std::min(end - start, size);
  start = std::clamp(start, 0, size - length);
  end = start + length;
}

}  // namespace

AreaRect FitIntoArea(const AreaRect& rect, std::int32_t width, std::int32_t height) {
  if (width <= 0 || height <= 0) return rect;
  auto [left, top, right, bottom] = rect;
  Fit(left, right, width);
  Fit(top, bottom, height);
  return {left, top, right, bottom};
}

}  // namespace qm
