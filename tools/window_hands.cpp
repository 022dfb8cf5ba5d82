#include "tools/window_hands.h"

#include <cstdint>
#include <fstream>

#include "platform/clock.h"

namespace kwo::tools {
namespace {

// Long enough for the main thread to take the message, and no double press.
constexpr int kTouchMilliseconds = 30;
constexpr int kRestMilliseconds = 600;
constexpr int kDragSteps = 10;

std::uint32_t Crc(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0);
  }
  return ~crc;
}

std::uint32_t Adler(const std::string& bytes) {
  std::uint32_t a = 1, b = 0;
  for (char byte : bytes) {
    a = (a + static_cast<std::uint8_t>(byte)) % 65521;
    b = (b + a) % 65521;
  }
  return b << 16 | a;
}

std::string BigEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

std::string Chunk(const std::string& type, const std::string& data) {
  return BigEndian(static_cast<std::uint32_t>(data.size())) + type + data +
         BigEndian(Crc(type + data));
}

// A zlib stream of stored blocks.
std::string Stored(const std::string& data) {
  constexpr std::size_t kBlock = 65535;
  std::string stream = "\x78\x01";
  for (std::size_t start = 0; start < data.size(); start += kBlock) {
    const std::string block = data.substr(start, kBlock);
    const auto size = static_cast<unsigned>(block.size());
    stream += start + kBlock >= data.size() ? '\1' : '\0';
    for (unsigned word : {size, ~size})
      for (int shift : {0, 8}) stream += static_cast<char>(word >> shift);
    stream += block;
  }
  return stream + BigEndian(Adler(data));
}

platform::Point OnScreen(int x, int y) {
  const platform::Rectangle place = headless::Window().place;
  return {place.x + x, place.y + y};
}

}  // namespace

void Hands::Wait(int milliseconds) const {
  platform::Sleep(milliseconds);
}

void Hands::Move(int x, int y) const {
  headless::MovePointer(OnScreen(x, y));
  Wait(kTouchMilliseconds);
}

void Hands::Down(Button button) const {
  headless::PressButton(button);
  Wait(kTouchMilliseconds);
}

void Hands::Up(Button button) const {
  headless::ReleaseButton(button);
  Wait(kTouchMilliseconds);
}

void Hands::Press(int x, int y, Button button) const {
  Move(x, y);
  Down(button);
  Up(button);
  Wait(kRestMilliseconds);
}

void Hands::DoublePress(int x, int y) const {
  Move(x, y);
  for (int i = 0; i < 2; ++i) {
    Down();
    Up();
  }
  Wait(kRestMilliseconds);
}

void Hands::Drag(int fromX, int fromY, int toX, int toY, Button button) const {
  Move(fromX, fromY);
  Down(button);
  // Where the window follows, its place at the press is what the way is measured from.
  const platform::Rectangle start = headless::Window().place;
  for (int i = 1; i <= kDragSteps; ++i) {
    headless::MovePointer({start.x + fromX + (toX - fromX) * i / kDragSteps,
                           start.y + fromY + (toY - fromY) * i / kDragSteps});
    Wait(kTouchMilliseconds);
  }
  Up(button);
  Wait(kRestMilliseconds);
}

void Hands::Drop(const std::vector<std::string>& paths, bool shift) const {
  headless::SetKey(platform::Key::kShift, shift);
  headless::DropFiles(paths);
  Wait(kRestMilliseconds);
  headless::SetKey(platform::Key::kShift, false);
}

void Hands::Choose(int x, int y, int command) const {
  headless::AnswerMenu(command);
  Press(x, y);
}

bool SaveWindow(const std::string& path) {
  const platform::Rectangle place = headless::Window().place;
  const std::vector<std::uint8_t> pixels = headless::WindowPixels();
  const auto row = static_cast<std::size_t>(place.width) * 4;
  std::string lines;
  for (std::size_t y = 0; y < static_cast<std::size_t>(place.height); ++y) {
    lines += '\0';
    lines.append(reinterpret_cast<const char*>(pixels.data()) + y * row, row);
  }
  std::string header = BigEndian(static_cast<std::uint32_t>(place.width)) +
                       BigEndian(static_cast<std::uint32_t>(place.height));
  header.append("\x08\x06\0\0\0", 5);
  const std::string file = "\x89PNG\r\n\x1a\n" + Chunk("IHDR", header) +
                           Chunk("IDAT", Stored(lines)) + Chunk("IEND", "");
  std::ofstream stream(path, std::ios::binary);
  stream.write(file.data(), static_cast<std::streamsize>(file.size()));
  return stream.flush().good();
}

}  // namespace kwo::tools
