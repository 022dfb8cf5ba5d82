#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Pictures in floating point, and the BMP files that become of them.
namespace kwo::tools {

/// Light of a pixel; each channel runs from 0 to 255 and may go beyond until it is stored.
struct Color {
  double red = 0, green = 0, blue = 0;

  friend Color operator+(Color a, Color b) {
    return {a.red + b.red, a.green + b.green, a.blue + b.blue};
  }
  friend Color operator*(Color a, double by) { return {a.red * by, a.green * by, a.blue * by}; }
};

constexpr Color Hex(unsigned rgb) {
  return {static_cast<double>(rgb >> 16 & 255), static_cast<double>(rgb >> 8 & 255),
          static_cast<double>(rgb & 255)};
}

inline Color Mix(Color from, Color to, double share) {
  return from * (1 - share) + to * share;
}

/// A picture whose rows count from the top.  A pixel that has not been set is the skin's key.
class Picture {
 public:
  Picture(int columns, int rows)
      : width(columns), height(rows), pixels_(static_cast<std::size_t>(columns * rows)) {}

  void Set(int x, int y, Color color) { At(x, y) = {color, true}; }
  /// What is drawn at (x, y); black where nothing is.
  Color Get(int x, int y) const { return pixels_[static_cast<std::size_t>(y * width + x)].color; }

  bool Drawn(int x, int y) const { return pixels_[static_cast<std::size_t>(y * width + x)].drawn; }

  /// Stores whole numbers in place of the light: what the file will hold.
  void Round();
  /// Rounds, and writes the picture as a 24-bit BMP.  False if the file can't be written.
  bool Save(const std::string& path);

  const int width, height;

 private:
  struct Pixel {
    Color color;
    bool drawn = false;
  };
  Pixel& At(int x, int y) { return pixels_[static_cast<std::size_t>(y * width + x)]; }
  std::vector<Pixel> pixels_;
};

}  // namespace kwo::tools
