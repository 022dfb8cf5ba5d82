#include "toolkit/skin_description.h"

#include <algorithm>
#include <cstddef>

namespace kwo {

SkinDescription skin;

namespace {

void SetDefaults() {
  skin.TransparentColor = 0xFFFF00;
  skin.FontColor = 0x00FF00;
  skin.SelectedSongColor = 0x64FF64;
  skin.CurrentSongColor = 0xFF0000;
  skin.TopEffect = skin.MainEffect = skin.PlaylistEffect = skin.MixerEffect =
      skin.BackgroundEffect = 0;
}

constexpr std::int64_t kMaxNumber = 0x7FFFFFFF;

bool IsSpace(char letter) {
  return letter == ' ' || (letter >= '\t' && letter <= '\r');
}

bool IsDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

// Reads tokens and numbers off the front of a text, over white space of any kind.
class TokenReader {
 public:
  explicit TokenReader(std::string_view text) : rest(text) {}

  // Empty at the end of the text.
  std::string_view Token() {
    SkipSpace();
    std::size_t length = 0;
    while (length < rest.size() && !IsSpace(rest[length])) ++length;
    const std::string_view token = rest.substr(0, length);
    rest.remove_prefix(length);
    return token;
  }

  // A decimal number as far as it goes; false, with the text left as it is, where there is none.
  bool Number(int& value) {
    SkipSpace();
    std::size_t length = !rest.empty() && (rest[0] == '-' || rest[0] == '+');
    const bool negative = length > 0 && rest[0] == '-';
    const std::size_t start = length;
    std::int64_t number = 0;
    for (; length < rest.size() && IsDigit(rest[length]); ++length)
      number = std::min(kMaxNumber, number * 10 + (rest[length] - '0'));
    if (length == start) return false;
    rest.remove_prefix(length);
    value = static_cast<int>(negative ? -number : number);
    return true;
  }

 private:
  void SkipSpace() {
    while (!rest.empty() && IsSpace(rest[0])) rest.remove_prefix(1);
  }

  std::string_view rest;
};

std::uint32_t Color(int low, int middle, int high) {
  return static_cast<std::uint32_t>(low & 255) | static_cast<std::uint32_t>(middle & 255) << 8 |
         static_cast<std::uint32_t>(high & 255) << 16;
}

void ReadColor(TokenReader& reader) {
  const std::string_view name = reader.Token();
  int a, b, c;
  if (!reader.Number(a) || !reader.Number(b) || !reader.Number(c)) return;
  if (name == "TRANSPARENT") skin.TransparentColor = Color(c, b, a);
  if (name == "FONT") skin.FontColor = Color(a, b, c);
  if (name == "CURRENTSONG") skin.CurrentSongColor = Color(a, b, c);
  if (name == "SELECTEDSONG") skin.SelectedSongColor = Color(a, b, c);
}

void ReadWindow(TokenReader& reader, platform::Rectangle& window) {
  platform::Rectangle read;
  if (reader.Number(read.x) && reader.Number(read.y) && reader.Number(read.width) &&
      reader.Number(read.height))
    window = read;
}

constexpr struct {
  std::string_view word;
  int mode;
} kOperands[] = {{"ADD", 1}, {"SUB", 2}, {"AVE", 3}, {"1", 1}};

constexpr struct {
  std::string_view word;
  int* variable;
} kTargets[] = {{"TOGB", &skin.TopEffect},
                {"MAGB", &skin.MainEffect},
                {"PLGB", &skin.PlaylistEffect},
                {"MIGB", &skin.MixerEffect},
                {"BK", &skin.BackgroundEffect}};

void ReadEffect(TokenReader& reader) {
  const std::string_view target = reader.Token();
  const std::string_view operand = reader.Token();
  int mode = 0;
  for (const auto& known : kOperands)
    if (known.word == operand) mode = known.mode;
  for (const auto& known : kTargets)
    if (known.word == target) *known.variable = mode;
}

}  // namespace

void ParseSkinDescription(std::string_view text, platform::Rectangle& window) {
  SetDefaults();
  TokenReader reader(text);
  for (;;) {
    const std::string_view token = reader.Token();
    if (token.empty()) return;
    if (token == "COLOR") ReadColor(reader);
    if (token == "WINDOW") ReadWindow(reader, window);
    if (token == "EFFECT") ReadEffect(reader);
  }
}

}  // namespace kwo
