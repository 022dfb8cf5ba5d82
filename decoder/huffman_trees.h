#pragma once

#include <cstddef>
#include <cstdint>

namespace kwo {

/// A Huffman code in its tree form, and the bits that follow a value of 15.
struct HuffmanTree {
  const std::int16_t* entries;
  std::size_t size;
  int linbits;
};

/// Pair tables 0 to 31, then quad tables A (32) and B (33): ISO/IEC 11172-3 Table B.7.
extern const HuffmanTree kHuffmanTrees[34];

}  // namespace kwo
