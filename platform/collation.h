#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kwo::platform {

/// The places of `names` in the order in which the user's language sorts them: punctuation counts,
/// case is the last difference, equal ones keep their order.  Any thread.
std::vector<std::size_t> SortedOrder(const std::vector<std::string>& names);

}  // namespace kwo::platform
