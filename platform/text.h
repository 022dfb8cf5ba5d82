#pragma once

#include <cstdint>

/// One line of text into pixels.
namespace kwo::platform {

struct Font;

/// A font whose line is `height` pixels high.  Where `face` isn't to be had, the desktop's plain
/// one.  Null if there is none at all.  Main thread.
Font* CreateFont(const char* face, int height);
void DeleteFont(Font* font);

/// 24-bit, bottom-up pixels.
struct TextTarget {
  std::uint8_t* bits;
  int stride, width, height;
};

/// Draws `text` over what is there, with its line's top left corner at (x, y), counted from the
/// top, and cuts it at the picture's edges.  Bytes that are not UTF-8 are read as Windows-1252, and
/// glyphs that the font lacks come from others.  `color` is 0x00BBGGRR.  Any thread.
void DrawTextLine(const TextTarget& target, const char* text, const Font& font, std::uint32_t color,
                  int x, int y);

/// Pixels that a line of text takes from its start to where the next letter would stand.  Any
/// thread.
int TextWidth(const char* text, const Font& font);

}  // namespace kwo::platform
