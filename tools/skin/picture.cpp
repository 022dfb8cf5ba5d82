#include "tools/skin/picture.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace kwo::tools {
namespace {

// The key of the skin: nearly black, so that letters blend into it.
constexpr int kKeyRed = 9, kKeyGreen = 0, kKeyBlue = 9;

double Whole(double value) {
  return std::clamp(std::floor(value + 0.5), 0.0, 255.0);
}

void Append(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
}

}  // namespace

void Picture::Round() {
  for (Pixel& pixel : pixels_) {
    Color& color = pixel.color;
    color = {Whole(color.red), Whole(color.green), Whole(color.blue)};
    if (!pixel.drawn) color = {kKeyRed, kKeyGreen, kKeyBlue};
    // A drawn pixel of exactly the key's colour would be a hole.
    if (pixel.drawn && color.red == kKeyRed && color.green == kKeyGreen && color.blue == kKeyBlue)
      color.red = kKeyRed - 1;
  }
}

bool Picture::Save(const std::string& path) {
  Round();
  const int stride = (3 * width + 3) / 4 * 4;
  const auto size = static_cast<std::uint32_t>(stride * height);
  std::string bytes = "BM";
  Append(bytes, 54 + size, 4);
  Append(bytes, 0, 4);
  Append(bytes, 54, 4);
  Append(bytes, 40, 4);
  Append(bytes, static_cast<std::uint32_t>(width), 4);
  Append(bytes, static_cast<std::uint32_t>(height), 4);
  Append(bytes, 1, 2);
  Append(bytes, 24, 2);
  Append(bytes, 0, 4);
  Append(bytes, size, 4);
  for (int i = 0; i < 4; ++i) Append(bytes, 0, 4);
  for (int y = height - 1; y >= 0; --y) {
    for (int x = 0; x < width; ++x) {
      const Color color = Get(x, y);
      for (double channel : {color.blue, color.green, color.red})
        bytes += static_cast<char>(static_cast<int>(channel));
    }
    bytes.append(static_cast<std::size_t>(stride - 3 * width), '\0');
  }
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file.flush().good();
}

}  // namespace kwo::tools
