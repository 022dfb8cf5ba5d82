#pragma once

#include <cstdint>
#include <vector>

#include "decoder/huffman_trees.h"

namespace kwo {

/// A Huffman tree as tables to look whole code words up in: gives what the walk bit by bit gives.
///
/// The first kIndexBits bits index the front of `entries`.  A code word that is no longer leads to
/// its leaf; for longer ones the entry leads to a further table, indexed by the next bits.
struct HuffmanLookup {
  static constexpr int kIndexBits = 9;

  struct Entry {
    std::int16_t value;        ///< a leaf's value, or where the further table begins
    std::uint8_t bits;         ///< a leaf: bits of the code word (of this table's part of it)
    std::uint8_t furtherBits;  ///< 0 for a leaf, else how many bits index the further table
  };

  std::vector<Entry> entries;
  int linbits = 0;

  /// The leaf at the top of `window`; `length` gets the bits of its code word.
  int Find(std::uint64_t window, int& length) const {
    Entry entry = entries[window >> (64 - kIndexBits)];
    length = entry.bits;
    if (entry.furtherBits) {
      const auto next = window << kIndexBits >> (64 - entry.furtherBits);
      entry = entries[static_cast<std::size_t>(entry.value) + next];
      length = kIndexBits + entry.bits;
    }
    return entry.value;
  }
};

/// A tree of pairs as tables that also know their signs, to take most pairs by one look.
///
/// The first kIndexBits bits index the front of `entries`.  An entry tells how many bits the pair
/// takes, and what it is; for a longer code word it leads to a further table, indexed by the next
/// bits; and a pair with linbits is left to the caller.
struct PairLookup {
  static constexpr int kIndexBits = 10;
  static constexpr std::uint8_t kFurther = 254, kEscaped = 255;

  struct Entry {
    std::uint8_t bits;      ///< of the code word and the signs; of the next index; of the code word
    std::uint8_t codeBits;  ///< of the code word; or kFurther; or kEscaped
    std::uint8_t pair;      ///< the first value in the high half
    std::uint8_t signs;     ///< 4 if the first value has a sign, and 8 if the second has
  };

  const Entry& Next(const Entry& further, std::uint64_t window) const {
    const auto index = window << kIndexBits >> (64 - further.bits);
    return entries[further.pair + 256u * further.signs + index];
  }

  std::vector<Entry> entries;
  int linbits = 0;
};

/// A tree of quads as one table, by the next kIndexBits bits, in which every code word has room
/// with its signs.
struct QuadLookup {
  static constexpr int kIndexBits = 10;

  struct Entry {
    std::uint8_t bits;     ///< of the code word and the signs
    std::uint8_t pattern;  ///< two bits for each value, the first in the highest: 0, 1 or 2 for -1
  };

  Entry entries[1 << kIndexBits];
};

/// The tables of kHuffmanTrees, in its order.
const HuffmanLookup& GetHuffmanLookup(int table);
/// Of those, 0 to 31 are of pairs, 32 and 33 of quads.
const PairLookup& GetPairLookup(int table);
const QuadLookup& GetQuadLookup(int table);

}  // namespace kwo
