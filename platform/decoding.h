#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Names and tags are bytes of no told encoding; here they become text.  Any thread.
namespace kwo::platform {

/// Paths, file names and display names have so many characters at most, as `Decoded` reads them.
constexpr std::size_t kMostCharacters = 255;
constexpr std::size_t kMostBytes = 4 * kMostCharacters;

/// `bytes` as UTF-8.  Read run by run, a run being the bytes of 0x80 and above between others: one
/// that is valid UTF-8 is that; so is one spoilt only by a sequence cut off at its end, which is
/// left out, if there is a whole sequence in any such run of the text.  Any other is in the code
/// page of the user's language, where a character's second byte may lie below 0x80.
std::string Decoded(std::string_view bytes);

/// The number of characters.
std::size_t CharacterCount(std::string_view bytes);

/// The first `kMostCharacters`, as UTF-8.
std::string FirstCharacters(std::string_view bytes);

/// Whether there are no more than `kMostCharacters`.
bool IsOfNameLength(std::string_view bytes);

}  // namespace kwo::platform
