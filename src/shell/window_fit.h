// Where a window inside the main window's area may stand: a remembered place from a larger
// screen, or a default size bigger than the area, is pulled back so that the whole window
// can be reached.
#pragma once

#include <array>
#include <cstdint>

namespace qm {

// A rectangle as left, top, right, bottom (right and bottom just outside), in the area's
// coordinates.
using AreaRect = std::array<std::int32_t, 4>;

// `rect` moved, and where it is larger than the area cut, to lie within an area of `width`
// by `height` whose top left is 0, 0: a window larger than the area takes the whole of it
// in that direction, and one hanging over an edge moves in as far as it must. An area of
// no size (not laid out yet) leaves the rectangle as it is.
AreaRect FitIntoArea(const AreaRect& rect, std::int32_t width, std::int32_t height);

}  // namespace qm
