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

/// The tables of kHuffmanTrees, in its order.
const HuffmanLookup& GetHuffmanLookup(int table);

}  // namespace kwo
