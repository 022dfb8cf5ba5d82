#include "tools/png_writer.h"

#include <fstream>

namespace kwo::tools {
namespace {

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

}  // namespace

bool WritePng(const std::string& path, int width, int height,
              const std::vector<std::uint8_t>& pixels) {
  const auto row = static_cast<std::size_t>(width) * 4;
  std::string lines;
  for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
    lines += '\0';
    lines.append(reinterpret_cast<const char*>(pixels.data()) + y * row, row);
  }
  std::string header =
      BigEndian(static_cast<std::uint32_t>(width)) + BigEndian(static_cast<std::uint32_t>(height));
  header.append("\x08\x06\0\0\0", 5);
  const std::string file = "\x89PNG\r\n\x1a\n" + Chunk("IHDR", header) +
                           Chunk("IDAT", Stored(lines)) + Chunk("IEND", "");
  std::ofstream stream(path, std::ios::binary);
  stream.write(file.data(), static_cast<std::streamsize>(file.size()));
  return stream.flush().good();
}

}  // namespace kwo::tools
