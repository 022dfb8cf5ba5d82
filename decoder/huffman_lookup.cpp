#include "decoder/huffman_lookup.h"

#include <algorithm>
#include <array>

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

}  // namespace

const HuffmanLookup& GetHuffmanLookup(int table) {
  static const std::array<HuffmanLookup, 34> lookups = [] {
    std::array<HuffmanLookup, 34> built;
    for (std::size_t i = 0; i < built.size(); ++i) built[i] = Builder(kHuffmanTrees[i]).Take();
    return built;
  }();
  return lookups[static_cast<std::size_t>(table)];
}

}  // namespace kwo
