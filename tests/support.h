#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace kwo::test {

/// A folder of its own for each test, removed behind it.
class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() / ("kwo-" + std::to_string(random()));
    std::filesystem::create_directory(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

inline std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
}

/// A song of tests/data.
inline std::string DataFile(const std::string& name) {
  return std::string(KWO_TEST_DATA) + "/" + name;
}

inline std::string LittleEndian(std::uint64_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
  return bytes;
}

/// A RIFF WAVE file of the given raw samples; `between` stands in front of the data chunk.
inline std::string WavBytes(int channels, int rate, int bits, const std::string& samples,
                            const std::string& between = "") {
  const int frame = channels * bits / 8;
  return "RIFF" + LittleEndian(36 + samples.size(), 4) + "WAVEfmt " + LittleEndian(16, 4) +
         LittleEndian(1, 2) + LittleEndian(channels, 2) + LittleEndian(rate, 4) +
         LittleEndian(rate * frame, 4) + LittleEndian(frame, 2) + LittleEndian(bits, 2) + between +
         "data" + LittleEndian(samples.size(), 4) + samples;
}

/// An ID3v1 tag.
inline std::string Tag(std::string title, std::string artist, std::string album) {
  for (auto* field : {&title, &artist, &album}) field->resize(30);
  return "TAG" + title + artist + album + std::string(35, 0);
}

inline std::string Raw16(const std::vector<std::int16_t>& values) {
  return {reinterpret_cast<const char*>(values.data()), values.size() * 2};
}

/// Noise of the full 16-bit range.
inline std::vector<std::int16_t> Noise(std::size_t count, unsigned seed = 1) {
  std::mt19937 random(seed);
  std::vector<std::int16_t> values(count);
  for (auto& value : values) value = static_cast<std::int16_t>(random());
  return values;
}

}  // namespace kwo::test
