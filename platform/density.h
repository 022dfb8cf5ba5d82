#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/window.h"

namespace kwo::platform {

/// How many pixels of the screen, to each side, show one of the window's own: 1 to 4 in quarter
/// steps.  Places of either kind may be negative.
class Density {
 public:
  static constexpr int kWhole = 4, kMost = 4 * kWhole;

  /// The step that the screen's density reaches.
  static Density Of(double dotsPerInch) {
    constexpr double kPlainDotsPerInch = 96;
    return Density(static_cast<int>(
        std::clamp(kWhole * dotsPerInch / kPlainDotsPerInch, double{kWhole}, double{kMost})));
  }
  explicit constexpr Density(int quarters) : quarters_(quarters) {}
  bool operator==(const Density&) const = default;

  int Quarters() const { return quarters_; }
  bool Plain() const { return quarters_ == kWhole; }

  /// The first pixel of the screen that lies within one of the window's; `ToOwn` leads back.
  int ToScreen(int own) const { return -FloorDivide(-own * quarters_, kWhole); }
  Point ToScreen(Point own) const { return {ToScreen(own.x), ToScreen(own.y)}; }
  /// The pixel of the window's in which one of the screen begins.
  int ToOwn(int screen) const { return FloorDivide(screen * kWhole, quarters_); }
  Point ToOwn(Point screen) const { return {ToOwn(screen.x), ToOwn(screen.y)}; }

  /// The pixels of the screen whose middles lie in a rectangle: what adjoins goes on adjoining.
  Rectangle Covered(const Rectangle& own) const {
    const int left = Edge(own.x), top = Edge(own.y);
    return {left, top, Edge(own.x + own.width) - left, Edge(own.Bottom()) - top};
  }
  /// The rows of the screen on which some of the rows from `first` to before `end` show.
  int FirstRow(int first) const { return FloorDivide(first * quarters_, kWhole); }
  int EndRow(int end) const { return ToScreen(end); }

 private:
  static constexpr int FloorDivide(int value, int by) {
    return value >= 0 ? value / by : -((by - 1 - value) / by);
  }
  // The first pixel of the screen whose middle does not lie before a place.
  int Edge(int own) const { return FloorDivide(own * quarters_ - kWhole / 2 + kWhole - 1, kWhole); }

  int quarters_;
};

/// Enlarges pictures of one size.  By whole steps each pixel becomes a square; by others, a pixel
/// of the screen takes of each of the window's as much as it lies upon, so that letters and lines
/// stay legible.  One thread at a time.
class Enlarger {
 public:
  Enlarger(Density density, Size own);

  Size ScreenSize() const { return screen_; }
  /// Draws the rows from `first` to before `end` of a picture, 32 bits a pixel from the top and no
  /// padding, into the enlarged one.
  void Enlarge(const std::uint32_t* own, int first, int end, std::uint32_t* screen);

 private:
  // Where a pixel of the screen lies along one side: `share` quarters of it on a pixel of the
  // window's, the rest on the next one.
  struct Place {
    int pixel, share;
    bool operator==(const Place&) const = default;
  };
  // The channels of two pixels, in 16 bits each: what the machine mixes at once.
  using Pair = std::uint16_t __attribute__((vector_size(16)));
  struct Columns {
    int left, right;  // pixels
    Pair shares;
  };
  // A row of the window's, enlarged to the side, in quarters of a channel's steps.
  struct WideRow {
    int row = -1;
    std::vector<Pair> pairs;
  };
  Place PlaceOf(int screen) const;
  void Spread(const std::uint32_t* own);
  void Widen(const std::uint32_t* own, int row, WideRow& wide);
  const std::uint16_t* WideRowOf(const std::uint32_t* own, int row);

  Density density_;
  Size own_, screen_;
  std::vector<Columns> columns_;
  std::vector<std::uint64_t> spread_;  // a row of the window's, 16 bits a channel, and one more
  WideRow wide_[2];                    // the last of the even rows, and of the odd ones
};

}  // namespace kwo::platform
