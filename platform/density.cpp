#include "platform/density.h"

#include <cstddef>
#include <cstring>

#include "base/shared.h"

namespace kwo::platform {
namespace {

constexpr int kWhole = Density::kWhole, kChannels = 4;

// The channels of a pixel, in 16 bits each, in their order.
std::uint64_t Spread(std::uint32_t pixel) {
  const std::uint64_t halves = (pixel | std::uint64_t{pixel} << 16) & 0x0000'FFFF'0000'FFFF;
  return (halves | halves << 8) & 0x00FF'00FF'00FF'00FF;
}

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

}  // namespace

Enlarger::Enlarger(Density density, Size own)
    : density_(density),
      own_(own),
      screen_{density.ToScreen(own.width), density.ToScreen(own.height)} {
  columns_.reserve(static_cast<std::size_t>(screen_.width));
  for (int x = 0; x < screen_.width; ++x) columns_.push_back(PlaceOf(x));
  for (WideRow& wide : wide_) wide.channels.resize(kChannels * columns_.size());
}

Enlarger::Place Enlarger::PlaceOf(int screen) const {
  const int quarters = density_.Quarters();
  const int pixel = screen * kWhole / quarters;
  return {pixel, std::min((pixel + 1) * quarters - screen * kWhole, kWhole)};
}

// Another thread may be presenting: what tears is whole in the next frame.
KWO_MAY_TEAR void Enlarger::Widen(const std::uint32_t* own, int row, WideRow& wide) const {
  const std::uint32_t* pixels = own + std::ptrdiff_t{row} * own_.width;
  std::uint16_t* to = wide.channels.data();
  for (const Place& column : columns_) {
    const auto share = static_cast<std::uint64_t>(column.share);
    // Beyond its edge the picture goes on as it ends.
    const int next = std::min(column.pixel + 1, own_.width - 1);
    const std::uint64_t mixed =
        Spread(pixels[column.pixel]) * share + Spread(pixels[next]) * (kWhole - share);
    std::memcpy(to, &mixed, sizeof mixed);
    to += kChannels;
  }
  wide.row = row;
}

const std::uint16_t* Enlarger::WideRowOf(const std::uint32_t* own, int row) {
  WideRow& wide = wide_[row % 2];
  if (wide.row != row) Widen(own, row, wide);
  return wide.channels.data();
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
    const std::uint16_t* upper = WideRowOf(own, row.pixel);
    const int below = std::min(row.pixel + 1, own_.height - 1);
    const std::uint16_t* lower = row.share < kWhole ? WideRowOf(own, below) : upper;
    MixRows(upper, lower, row.share, reinterpret_cast<std::uint8_t*>(to),
            kChannels * screen_.width);
    before = row;
  }
}

}  // namespace kwo::platform
