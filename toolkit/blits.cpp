#include "toolkit/blits.h"

#include <algorithm>
#include <cstddef>

#include "platform/shared.h"

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

// The key's bytes laid out over a chunk, against which a chunk of pixels is compared at once.
struct KeyPattern {
  explicit KeyPattern(std::uint32_t key) {
    for (int i = 0; i < kChunk; i += 3) {
      bytes[i] = static_cast<Byte>(key >> 16);
      bytes[i + 1] = static_cast<Byte>(key >> 8);
      bytes[i + 2] = static_cast<Byte>(key);
    }
  }
  Byte bytes[kChunk];
};

// Plain loops over a whole number of vectors, which the compiler turns into vector code as they
// stand; each runs over local memory, so that nothing can overlap.

inline void Brighten(Byte* pixels, Brightness by) {
  for (int i = 0; i < kChunk; ++i) {
    const Byte risen = static_cast<Byte>(std::min<int>(pixels[i] + by.rise, 255));
    pixels[i] = static_cast<Byte>(std::max<int>(risen - by.fall, 0));
  }
}

inline void Blend(Byte* pixels, const Byte* below, int blendMode) {
  switch (blendMode) {
    case BLEND_ADD:
      for (int i = 0; i < kChunk; ++i)
        pixels[i] = static_cast<Byte>(std::min<int>(below[i] + pixels[i], 255));
      break;
    case BLEND_SUBTRACT:
      for (int i = 0; i < kChunk; ++i)
        pixels[i] = static_cast<Byte>(std::max<int>(below[i] - pixels[i], 0));
      break;
    case BLEND_AVERAGE:
      for (int i = 0; i < kChunk; ++i)
        pixels[i] = static_cast<Byte>((below[i] & pixels[i]) + ((below[i] ^ pixels[i]) >> 1));
      break;
    default:
      break;
  }
}

// Puts back what was below each pixel whose three raw bytes are the key's.
inline void Restore(Byte* pixels, const Byte* below, const Byte* raw, const KeyPattern& key) {
  Byte equal[kChunk];
  for (int i = 0; i < kChunk; ++i) equal[i] = raw[i] == key.bytes[i] ? 255 : 0;
  for (int i = 0; i < kChunk; i += 3) {
    const Byte skip = equal[i] & equal[i + 1] & equal[i + 2];
    equal[i] = equal[i + 1] = equal[i + 2] = skip;
  }
  for (int i = 0; i < kChunk; ++i)
    pixels[i] = static_cast<Byte>((below[i] & equal[i]) | (pixels[i] & ~equal[i]));
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
  Byte raw[kChunk], below[kChunk], pixels[kChunk];
  for (int done = 0; done < bytes; done += kChunk) {
    const int size = std::min(kChunk, bytes - done);
    if (size == kChunk) {
      MoveBytes(from + done, raw, kChunk);
      MoveBytes(to + done, below, kChunk);
    } else {
      MoveBytes(from + done, raw, size);
      MoveBytes(to + done, below, size);
    }
    MoveBytes(raw, pixels, kChunk);
    if (steps.brightness) Brighten(pixels, *steps.brightness);
    Blend(pixels, below, steps.blendMode);
    if (steps.key) Restore(pixels, below, raw, *steps.key);
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
