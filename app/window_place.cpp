#include "app/window_place.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kwo {
namespace {

using platform::Point;
using platform::Rectangle;

std::int64_t Overlap(int start, int size, int otherStart, int otherSize) {
  const std::int64_t end =
      std::min(std::int64_t{start} + size, std::int64_t{otherStart} + otherSize);
  return std::max<std::int64_t>(0, end - std::max(start, otherStart));
}

std::int64_t Touched(const Rectangle& window, const Rectangle& screen) {
  return Overlap(window.x, window.width, screen.x, screen.width) *
         Overlap(window.y, window.height, screen.y, screen.height);
}

// Edges that only meet count as seen.
bool Meets(std::int64_t start, int size, int otherStart, int otherSize) {
  return start + size >= otherStart && start <= std::int64_t{otherStart} + otherSize;
}

int Within(int start, int size, int otherStart, int otherSize) {
  return std::max(otherStart, std::min(start, otherStart + otherSize - size));
}

}  // namespace

Rectangle FirstScreen() {
  return platform::Screens().front();
}

Point SeenPlace(Point saved, platform::Size window) {
  for (const Rectangle& screen : platform::Screens())
    if (Meets(saved.x, window.width, screen.x, screen.width) &&
        Meets(saved.y, window.height, screen.y, screen.height))
      return saved;
  const Rectangle first = FirstScreen();
  return {first.x, first.y};
}

Point PlaceOnScreen(const Rectangle& window) {
  const std::vector<Rectangle> screens = platform::Screens();
  const Rectangle& screen = *std::max_element(screens.begin(), screens.end(),
                                              [&](const Rectangle& a, const Rectangle& b) {
                                                return Touched(window, a) < Touched(window, b);
                                              });
  return {Within(window.x, window.width, screen.x, screen.width),
          Within(window.y, window.height, screen.y, screen.height)};
}

}  // namespace kwo
