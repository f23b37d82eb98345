// A window's rectangle pulled into the main window's area, over the places a remembered or
// default placement can leave it.
#include "shell/window_fit.h"

#include <gtest/gtest.h>

namespace qm::test {
namespace {

TEST(WindowFitTest, EveryWindowEndsWithinTheArea) {
  struct Case {
    const char* what;
    AreaRect rect;
    std::int32_t width, height;
    AreaRect fitted;
  };
  const Case cases[] = {
      {"inside stays", {10, 20, 410, 320}, 800, 600, {10, 20, 410, 320}},
      {"over the right edge moves left", {600, 20, 1000, 320}, 800, 600, {400, 20, 800, 320}},
      {"above and left of the area moves in", {-50, -30, 350, 270}, 800, 600, {0, 0, 400, 300}},
      {"from a larger screen, far off", {2000, 1500, 2760, 2060}, 800, 600, {40, 40, 800, 600}},
      {"wider than the area takes its width", {100, 10, 1100, 310}, 800, 600, {0, 10, 800, 310}},
      {"larger both ways takes the whole area", {-5, -5, 2000, 2000}, 640, 480, {0, 0, 640, 480}},
      {"an area not laid out yet changes nothing",
       {600, 500, 1000, 900},
       0,
       0,
       {600, 500, 1000, 900}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FitIntoArea(c.rect, c.width, c.height), c.fitted) << c.what;
  }
}

}  // namespace
}  // namespace qm::test
