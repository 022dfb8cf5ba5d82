#include "decoder/huffman_lookup.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace kwo {
namespace {

using Entry = HuffmanLookup::Entry;

// A node is the index of a tree's entry; its two children.
std::size_t ChildOfZero(std::size_t node) {
  return node + 1;
}

std::size_t ChildOfOne(const HuffmanTree& tree, std::size_t node) {
  return node + 1 + static_cast<std::size_t>(-tree.entries[node]);
}

int Depth(const HuffmanTree& tree, std::size_t node) {
  if (tree.entries[node] >= 0) return 0;
  return 1 + std::max(Depth(tree, ChildOfZero(node)), Depth(tree, ChildOfOne(tree, node)));
}

class Builder {
 public:
  explicit Builder(const HuffmanTree& tree) : tree_(tree) {
    lookup_.linbits = tree.linbits;
    lookup_.entries.resize(std::size_t{1} << HuffmanLookup::kIndexBits);
    Fill(0, 0, HuffmanLookup::kIndexBits, 0, 0);
  }

  HuffmanLookup Take() { return std::move(lookup_); }

 private:
  // Fills the part of the table at `base`, of `width` index bits, whose indices begin with the
  // `depth` bits of `prefix`.
  void Fill(std::size_t node, std::size_t base, int width, std::size_t prefix, int depth) {
    const int value = tree_.entries[node];
    if (value >= 0) {
      const std::size_t first = base + (prefix << (width - depth));
      const Entry leaf{static_cast<std::int16_t>(value), static_cast<std::uint8_t>(depth), 0};
      std::fill_n(lookup_.entries.begin() + static_cast<std::ptrdiff_t>(first),
                  std::size_t{1} << (width - depth), leaf);
    } else if (depth == width) {
      const std::size_t further = lookup_.entries.size();
      const int bits = Depth(tree_, node);
      lookup_.entries[base + prefix] = {static_cast<std::int16_t>(further), 0,
                                        static_cast<std::uint8_t>(bits)};
      lookup_.entries.resize(further + (std::size_t{1} << bits));
      Fill(node, further, bits, 0, 0);
    } else {
      Fill(ChildOfZero(node), base, width, prefix << 1, depth + 1);
      Fill(ChildOfOne(tree_, node), base, width, prefix << 1 | 1, depth + 1);
    }
  }

  const HuffmanTree& tree_;
  HuffmanLookup lookup_;
};

constexpr int kFirstQuads = 32, kTables = 34;
constexpr int kEscape = 15;  // the value that linbits are added to

PairLookup::Entry PairEntry(int pair, int codeBits, int linbits) {
  const int first = pair >> 4, second = pair & 15;
  const int signs = (first != 0) + (second != 0);
  PairLookup::Entry entry{};
  entry.pair = static_cast<std::uint8_t>(pair);
  entry.signs = static_cast<std::uint8_t>((first ? 4 : 0) | (second ? 8 : 0));
  const bool escaped = linbits > 0 && (first == kEscape || second == kEscape);
  entry.bits = static_cast<std::uint8_t>(escaped ? codeBits : codeBits + signs);
  entry.codeBits = escaped ? PairLookup::kEscaped : static_cast<std::uint8_t>(codeBits);
  return entry;
}

PairLookup PairsOf(const HuffmanTree& tree, const HuffmanLookup& lookup) {
  constexpr int kIndexBits = PairLookup::kIndexBits;
  PairLookup pairs;
  pairs.linbits = tree.linbits;
  pairs.entries.resize(std::size_t{1} << kIndexBits);
  const int furtherBits = std::max(Depth(tree, 0) - kIndexBits, 0);
  for (std::uint64_t i = 0; i >> kIndexBits == 0; ++i) {
    const std::uint64_t window = i << (64 - kIndexBits);
    int codeBits;
    const int pair = lookup.Find(window, codeBits);
    if (codeBits <= kIndexBits) {
      pairs.entries[i] = PairEntry(pair, codeBits, tree.linbits);
      continue;
    }
    const std::size_t next = pairs.entries.size();
    pairs.entries[i] = {static_cast<std::uint8_t>(furtherBits), PairLookup::kFurther,
                        static_cast<std::uint8_t>(next), static_cast<std::uint8_t>(next >> 8)};
    for (std::uint64_t j = 0; j >> furtherBits == 0; ++j) {
      const int longer = lookup.Find(window | j << (64 - kIndexBits - furtherBits), codeBits);
      pairs.entries.push_back(PairEntry(longer, codeBits, tree.linbits));
    }
  }
  return pairs;
}

QuadLookup QuadsOf(const HuffmanLookup& lookup) {
  QuadLookup quads{};
  for (std::uint64_t i = 0; i < std::size(quads.entries); ++i) {
    const std::uint64_t window = i << (64 - QuadLookup::kIndexBits);
    int bits, pattern = 0;
    const int quad = lookup.Find(window, bits);
    for (int value = 8; value > 0; value >>= 1) {
      pattern <<= 2;
      if (quad & value) pattern |= window << bits++ >> 63 ? 2 : 1;
    }
    quads.entries[i] = {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(pattern)};
  }
  return quads;
}

}  // namespace

const PairLookup& GetPairLookup(int table) {
  static const auto lookups = [] {
    std::array<PairLookup, kFirstQuads> built;
    for (int i = 0; i < kFirstQuads; ++i)
      built[static_cast<std::size_t>(i)] = PairsOf(kHuffmanTrees[i], GetHuffmanLookup(i));
    return built;
  }();
  return lookups[static_cast<std::size_t>(table)];
}

const QuadLookup& GetQuadLookup(int table) {
  static const QuadLookup lookups[] = {QuadsOf(GetHuffmanLookup(kFirstQuads)),
                                       QuadsOf(GetHuffmanLookup(kFirstQuads + 1))};
  return lookups[table - kFirstQuads];
}

const HuffmanLookup& GetHuffmanLookup(int table) {
  static const std::array<HuffmanLookup, kTables> lookups = [] {
    std::array<HuffmanLookup, kTables> built;
    for (std::size_t i = 0; i < built.size(); ++i) built[i] = Builder(kHuffmanTrees[i]).Take();
    return built;
  }();
  return lookups[static_cast<std::size_t>(table)];
}

}  // namespace kwo
