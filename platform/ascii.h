#pragma once

#include <string>

/// Letters of names and keywords, without regard to the user's language: in some, the capital of
/// "i" is no "I".  Any thread.
namespace kwo::platform {

constexpr char UpperCase(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

inline std::string UpperCased(std::string text) {
  for (char& letter : text) letter = UpperCase(letter);
  return text;
}

}  // namespace kwo::platform
