#include "platform/density.h"

#include <cstddef>
#include <cstring>

#include "base/shared.h"

namespace kwo::platform {
namespace {

constexpr int kWhole = Density::kWhole, kChannels = 4;

// The two rows' sums of sixteen shares, rounded: a plain loop for the compiler to turn into vector
// code.
void MixRows(const std::uint16_t* upper, const std::uint16_t* lower, int upperShare,
             std::uint8_t* mixed, int count) {
  const auto share = static_cast<std::uint16_t>(upperShare),
             rest = static_cast<std::uint16_t>(kWhole - upperShare);
  for (int i = 0; i < count; ++i)
    mixed[i] = static_cast<std::uint8_t>(
        static_cast<std::uint16_t>(upper[i] * share + lower[i] * rest + 8) >> 4);
}

// Each pixel so many times.  Another thread may be presenting: what tears is whole in the next
// frame.
template <int kTimes>
KWO_MAY_TEAR void RepeatPixels(const std::uint32_t* own, int width, std::uint32_t* to) {
  for (int x = 0; x < width; ++x)
    for (int i = 0; i < kTimes; ++i) to[kTimes * x + i] = own[x];
}

constexpr void (*kRepeats[])(const std::uint32_t* own, int width, std::uint32_t* to) = {
    RepeatPixels<1>, RepeatPixels<2>, RepeatPixels<3>, RepeatPixels<4>};

}  // namespace

Enlarger::Enlarger(Density density, Size own)
    : density_(density),
      own_(own),
      screen_{density.ToScreen(own.width), density.ToScreen(own.height)},
      spread_(static_cast<std::size_t>(own.width) + 1) {
  for (int x = 0; x < screen_.width; x += 2) {
    // With an odd width the last pair's right one is drawn for nothing.
    const Place left = PlaceOf(x), right = PlaceOf(std::min(x + 1, screen_.width - 1));
    const auto share = [](const Place& place) { return static_cast<std::uint16_t>(place.share); };
    columns_.push_back({left.pixel, right.pixel,
                        Pair{share(left), share(left), share(left), share(left), share(right),
                             share(right), share(right), share(right)}});
  }
  for (WideRow& wide : wide_) wide.pairs.resize(columns_.size());
}

Enlarger::Place Enlarger::PlaceOf(int screen) const {
  const int quarters = density_.Quarters();
  const int pixel = screen * kWhole / quarters;
  return {pixel, std::min((pixel + 1) * quarters - screen * kWhole, kWhole)};
}

// Another thread may be presenting, as above.
KWO_MAY_TEAR void Enlarger::Spread(const std::uint32_t* own) {
  for (int x = 0; x < own_.width; ++x) {
    const std::uint64_t halves = (own[x] | std::uint64_t{own[x]} << 16) & 0x0000'FFFF'0000'FFFF;
    spread_[static_cast<std::size_t>(x)] = (halves | halves << 8) & 0x00FF'00FF'00FF'00FF;
  }
  // Beyond its edge the picture goes on as it ends.
  spread_.back() = spread_[spread_.size() - 2];
}

void Enlarger::Widen(const std::uint32_t* own, int row, WideRow& wide) {
  using TwoPixels = std::uint64_t __attribute__((vector_size(16)));
  Spread(own + std::ptrdiff_t{row} * own_.width);
  const std::uint64_t* pixels = spread_.data();
  Pair* to = wide.pairs.data();
  for (const Columns& columns : columns_) {
    const Pair on = Pair(TwoPixels{pixels[columns.left], pixels[columns.right]});
    const Pair next = Pair(TwoPixels{pixels[columns.left + 1], pixels[columns.right + 1]});
    *to++ = next * kWhole + (on - next) * columns.shares;
  }
  wide.row = row;
}

const std::uint16_t* Enlarger::WideRowOf(const std::uint32_t* own, int row) {
  WideRow& wide = wide_[row % 2];
  if (wide.row != row) Widen(own, row, wide);
  // A vector may be read as its elements.
  return reinterpret_cast<const std::uint16_t*>(wide.pairs.data());
}

void Enlarger::Enlarge(const std::uint32_t* own, int first, int end, std::uint32_t* screen) {
  for (WideRow& wide : wide_) wide.row = -1;
  Place before{-1, 0};
  const int endRow = std::min(density_.EndRow(end), screen_.height);
  for (int y = density_.FirstRow(first); y < endRow; ++y) {
    const Place row = PlaceOf(y);
    std::uint32_t* to = screen + std::ptrdiff_t{y} * screen_.width;
    if (row == before) {
      std::memcpy(to, to - screen_.width, sizeof *to * static_cast<std::size_t>(screen_.width));
      continue;
    }
    before = row;
    if (density_.Quarters() % kWhole == 0) {
      kRepeats[density_.Quarters() / kWhole - 1](own + std::ptrdiff_t{row.pixel} * own_.width,
                                                 own_.width, to);
      continue;
    }
    const std::uint16_t* upper = WideRowOf(own, row.pixel);
    const int below = std::min(row.pixel + 1, own_.height - 1);
    const std::uint16_t* lower = row.share < kWhole ? WideRowOf(own, below) : upper;
    MixRows(upper, lower, row.share, reinterpret_cast<std::uint8_t*>(to),
            kChannels * screen_.width);
  }
}

}  // namespace kwo::platform
