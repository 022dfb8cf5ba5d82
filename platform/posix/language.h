#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kwo::platform {

/// The user's language, as "ko" or "zh_TW": names that are not UTF-8 are in its code page.  Until
/// then, and for one that none belongs to, that is Windows-1252.  Any thread.
void TellLanguage(const std::string& language);

/// How the user's language sorts names, for `SortedOrder`.  Any thread.
using Collation = std::vector<std::size_t> (*)(const std::vector<std::string>& names);
void TellCollation(Collation collation);

}  // namespace kwo::platform
