#include "platform/text.h"

#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstddef>

#include "base/shared.h"
#include "platform/desktop/qt/main_window.h"

namespace kwo::platform {

struct Font {
  QFont font;
  int ascent;
  int height;
};

namespace {

constexpr int kOverhang = 3;  // rows that a fall-back's glyphs may take above and below the line

// The label's rows between the bitmap, from the bottom, and the desktop's picture, from the top.
KWO_MAY_TEAR void FetchRow(const std::uint8_t* from, std::uint32_t* to, int count) {
  for (int x = 0; x < count; ++x, from += 3)
    to[x] = 0xFF000000u | static_cast<std::uint32_t>(from[2]) << 16 |
            static_cast<std::uint32_t>(from[1]) << 8 | from[0];
}

KWO_MAY_TEAR void StoreRow(const std::uint32_t* from, std::uint8_t* to, int count) {
  for (int x = 0; x < count; ++x, to += 3) {
    to[0] = static_cast<std::uint8_t>(from[x]);
    to[1] = static_cast<std::uint8_t>(from[x] >> 8);
    to[2] = static_cast<std::uint8_t>(from[x] >> 16);
  }
}

}  // namespace

Font* CreateFont(const char* face, int height) {
  QFont font;
  font.setFamilies({QString::fromUtf8(face), "DejaVu Sans", "Noto Sans", "Sans Serif"});
  font.setHintingPreference(QFont::PreferFullHinting);
  font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
  int pixels = height;
  font.setPixelSize(pixels);
  while (pixels > 1 && QFontMetrics(font).height() > height) font.setPixelSize(--pixels);
  return new Font{font, QFontMetrics(font).ascent(), height};
}

void DeleteFont(Font* font) {
  delete font;
}

void DrawTextLine(const TextTarget& target, const char* text, const Font& font, std::uint32_t color,
                  int x, int y) {
  const int top = std::clamp(y - kOverhang, 0, target.height);
  const int bottom = std::clamp(y + font.height + kOverhang, top, target.height);
  const int rows = bottom - top;
  if (rows == 0 || !*text) return;
  // One for each thread, so that a line of the usual size takes no memory anew.
  thread_local QImage line;
  if (line.width() < target.width || line.height() < rows)
    line = QImage(std::max(line.width(), target.width), std::max(line.height(), rows),
                  QImage::Format_RGB32);
  const auto row = [&](int i) {
    return target.bits + std::ptrdiff_t{target.height - 1 - top - i} * target.stride;
  };
  for (int i = 0; i < rows; ++i)
    FetchRow(row(i), reinterpret_cast<std::uint32_t*>(line.scanLine(i)), target.width);
  {
    QPainter painter(&line);
    painter.setFont(font.font);
    painter.setPen(QColor(color & 255, color >> 8 & 255, color >> 16 & 255));
    painter.drawText(x, y - top + font.ascent, FromBytes(text));
  }
  for (int i = 0; i < rows; ++i)
    StoreRow(reinterpret_cast<const std::uint32_t*>(line.constScanLine(i)), row(i), target.width);
}

int TextWidth(const char* text, const Font& font) {
  return QFontMetrics(font.font).horizontalAdvance(FromBytes(text));
}

}  // namespace kwo::platform
