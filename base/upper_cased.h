#pragma once

#include <string>

namespace kwo {

/// `text` in capitals, whatever the user's language: in some, the capital of "i" is no "I".  Only
/// the letters of ASCII change.  Any thread.
inline std::string UpperCased(std::string text) {
  for (char& letter : text)
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
  return text;
}

}  // namespace kwo
