#include "platform/collation.h"

#include <algorithm>
#include <atomic>
#include <numeric>

#include "platform/posix/language.h"

namespace kwo::platform {
namespace {

std::atomic<Collation> userCollation = nullptr;

// Where no desktop tells an order: symbols, digits, letters without regard to case, then all bytes
// of other alphabets.
int SortClass(unsigned char c) {
  if (c >= 0x80) return 3;
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) return 2;
  return c >= '0' && c <= '9' ? 1 : 0;
}

int SortWeight(char byte) {
  const auto c = static_cast<unsigned char>(byte);
  return SortClass(c) << 8 | (c >= 'A' && c <= 'Z' ? c + 32 : c);
}

// Small letters come before their capitals where nothing else differs.
bool SortsBefore(const std::string& a, const std::string& b) {
  const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                                    [](char p, char q) { return SortWeight(p) == SortWeight(q); });
  if (x != a.end() && y != b.end()) return SortWeight(*x) < SortWeight(*y);
  if (a.size() != b.size()) return a.size() < b.size();
  return a > b;
}

}  // namespace

void TellCollation(Collation collation) {
  userCollation = collation;
}

std::vector<std::size_t> SortedOrder(const std::vector<std::string>& names) {
  if (const Collation told = userCollation) return told(names);
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t i, std::size_t j) { return SortsBefore(names[i], names[j]); });
  return order;
}

}  // namespace kwo::platform
