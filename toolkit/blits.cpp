#include "toolkit/blits.h"

#include <algorithm>
#include <cstddef>

#include "base/shared.h"

namespace kwo {
namespace {

using Byte = std::uint8_t;

constexpr int kChunkPixels = 16;
constexpr int kChunk = 3 * kChunkPixels;

// Brightness as two saturating steps, one of which is 0.
struct Brightness {
  explicit Brightness(int value)
      : rise(static_cast<Byte>(std::clamp(value, 0, 255))),
        fall(static_cast<Byte>(std::clamp(-std::max(value, -255), 0, 255))) {}
  Byte rise, fall;
};

// A chunk's bytes with room for the pixels that it cuts at either side.
constexpr int kMargin = 2;
struct Chunk {
  Byte* Bytes() { return padded + kMargin; }
  Byte padded[kMargin + kChunk + kMargin];
};

// The key's bytes laid out over a chunk and its margins, against which pixels are compared at once.
struct KeyPattern {
  explicit KeyPattern(std::uint32_t key) {
    const Byte bytes[] = {static_cast<Byte>(key >> 16), static_cast<Byte>(key >> 8),
                          static_cast<Byte>(key)};
    for (int i = 0; i < kChunk + 2 * kMargin; ++i) padded[i] = bytes[(i + 3 - kMargin) % 3];
  }
  Byte padded[kMargin + kChunk + kMargin];
};

// Where in its pixel each byte of a chunk stands.
struct Phases {
  constexpr Phases() {
    for (int i = 0; i < kChunk; ++i) is[i % 3][i] = 255;
  }
  Byte is[3][kChunk] = {};
};
constexpr Phases kPhases;

// Plain loops over a whole number of vectors, which the compiler turns into vector code as they
// stand; each runs over local memory, so that nothing can overlap.

inline void AddSaturated(Byte* pixels, const Byte* more) {
  for (int i = 0; i < kChunk; ++i) {
    const auto sum = static_cast<Byte>(pixels[i] + more[i]);
    pixels[i] = sum < more[i] ? 255 : sum;
  }
}

inline void Brighten(Byte* pixels, Brightness by) {
  if (by.rise) {
    Byte rise[kChunk];
    for (Byte& byte : rise) byte = by.rise;
    AddSaturated(pixels, rise);
    return;
  }
  for (int i = 0; i < kChunk; ++i)
    pixels[i] = static_cast<Byte>(std::max(pixels[i], by.fall) - by.fall);
}

inline void Blend(Byte* pixels, const Byte* below, int blendMode) {
  switch (blendMode) {
    case BLEND_ADD:
      AddSaturated(pixels, below);
      break;
    case BLEND_SUBTRACT:
      for (int i = 0; i < kChunk; ++i)
        pixels[i] = static_cast<Byte>(std::max(below[i], pixels[i]) - pixels[i]);
      break;
    case BLEND_AVERAGE:
      for (int i = 0; i < kChunk; ++i)
        pixels[i] = static_cast<Byte>((below[i] & pixels[i]) + ((below[i] ^ pixels[i]) >> 1));
      break;
    default:
      break;
  }
}

// Puts back what was below each pixel whose three raw bytes are the key's.  `raw` can be read a
// margin beyond the chunk; what stands there decides over no pixel of it.
inline void Restore(Byte* pixels, const Byte* below, const Byte* raw, const KeyPattern& key) {
  const Byte* sought = key.padded + kMargin;
  for (int i = 0; i < kChunk; ++i) {
    const Byte twoBefore = raw[i - 2] == sought[i - 2] ? 255 : 0;
    const Byte before = raw[i - 1] == sought[i - 1] ? 255 : 0;
    const Byte here = raw[i] == sought[i] ? 255 : 0;
    const Byte after = raw[i + 1] == sought[i + 1] ? 255 : 0;
    const Byte twoAfter = raw[i + 2] == sought[i + 2] ? 255 : 0;
    const Byte skip = (kPhases.is[0][i] & here & after & twoAfter) |
                      (kPhases.is[1][i] & before & here & after) |
                      (kPhases.is[2][i] & twoBefore & before & here);
    pixels[i] = static_cast<Byte>((below[i] & skip) | (pixels[i] & ~skip));
  }
}

// What a row goes through, chunk by chunk; null where a step is left out.
struct RowSteps {
  const Brightness* brightness;
  int blendMode;
  const KeyPattern* key;
};

KWO_MAY_TEAR inline void MoveBytes(const Byte* from, Byte* to, int count) {
  for (int i = 0; i < count; ++i) to[i] = from[i];
}

KWO_MAY_TEAR void MoveRow(const Byte* from, Byte* to, int bytes, const RowSteps& steps) {
  Chunk raw{};
  Byte below[kChunk], pixels[kChunk];
  for (int done = 0; done < bytes; done += kChunk) {
    const int size = std::min(kChunk, bytes - done);
    if (size == kChunk) {
      MoveBytes(from + done, raw.Bytes(), kChunk);
      MoveBytes(to + done, below, kChunk);
    } else {
      MoveBytes(from + done, raw.Bytes(), size);
      MoveBytes(to + done, below, size);
    }
    MoveBytes(raw.Bytes(), pixels, kChunk);
    if (steps.brightness) Brighten(pixels, *steps.brightness);
    Blend(pixels, below, steps.blendMode);
    if (steps.key) Restore(pixels, below, raw.Bytes(), *steps.key);
    if (size == kChunk) {
      MoveBytes(pixels, to + done, kChunk);
    } else {
      MoveBytes(pixels, to + done, size);
    }
  }
}

const Byte* RowOf(const BlitSource& source, int row) {
  return source.bits + std::ptrdiff_t{source.row + row} * source.stride + 3 * source.x;
}

Byte* RowOf(const BlitTarget& target, int row) {
  return target.bits + std::ptrdiff_t{target.row + row} * target.stride + 3 * target.x;
}

void MoveRows(const BlitSource& source, int width, int height, const BlitTarget& target,
              const RowSteps& steps) {
  for (int row = 0; row < height; ++row)
    MoveRow(RowOf(source, row), RowOf(target, row), 3 * width, steps);
}

bool IsKey(std::uint32_t key) {
  return key <= 0xFFFFFF;
}

}  // namespace

void BlitCopy(const BlitSource& source, int width, int height, const BlitTarget& target) {
  for (int row = 0; row < height; ++row)
    MoveBytes(RowOf(source, row), RowOf(target, row), 3 * width);
}

void BlitBright(const BlitSource& source, int width, int height, const BlitTarget& target,
                int brightness) {
  const Brightness by(brightness);
  MoveRows(source, width, height, target, {&by, BLEND_COPY, nullptr});
}

void BlitKeyed(const BlitSource& source, int width, int height, const BlitTarget& target,
               std::uint32_t key) {
  BlitBlend(source, width, height, target, 0, BLEND_COPY, key);
}

void BlitBlend(const BlitSource& source, int width, int height, const BlitTarget& target,
               int brightness, int blendMode, std::uint32_t key) {
  const Brightness by(brightness);
  const KeyPattern pattern(key);
  MoveRows(source, width, height, target,
           {brightness ? &by : nullptr, blendMode, IsKey(key) ? &pattern : nullptr});
}

}  // namespace kwo
