#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace kwo {

/// The 57 or more bits that follow bit `position`, at the top of the word.  Eight bytes from the
/// position's byte on must be readable.
inline std::uint64_t PeekBits(const unsigned char* base, int position) {
  std::uint64_t word;
  std::memcpy(&word, base + (position >> 3), sizeof word);
#if defined(__GNUC__)
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
#else
  if constexpr (std::endian::native == std::endian::little) {
    std::uint64_t swapped = 0;
    for (int i = 0; i < 8; ++i) swapped = swapped << 8 | (word >> 8 * i & 255);
    word = swapped;
  }
#endif
  return word << (position & 7);
}

}  // namespace kwo
