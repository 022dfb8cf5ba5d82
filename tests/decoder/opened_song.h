#pragma once

#include <memory>
#include <string>
#include <vector>

#include "decoder/file_input_stream.h"
#include "decoder/mpeg_decoder.h"
#include "tests/decoder/bytes_stream.h"
#include "tests/support.h"

namespace kwo {

/// A song opened the way the audio source does it.
struct OpenedSong {
  FileInputStream file;
  std::unique_ptr<MpegDecoder> decoder = std::make_unique<MpegDecoder>();
  int rate = 0, channels = 0, result = -1;

  explicit OpenedSong(const std::string& path, int integers = 0, int decimation = 0,
                      int outChannels = 0) {
    if (file.Open(path.c_str(), 2) == 0)
      result = decoder->Open(&file, &rate, &channels, integers, decimation, outChannels);
  }
  ~OpenedSong() {
    decoder->Shutdown();
    file.Shutdown();
  }
  std::vector<float> ReadAll(std::size_t piece = 30000) {
    return test::ReadAll<std::vector<float>>(*decoder, piece);
  }
  int FrameBytes() const { return channels * 4 * kFrameSamples; }
};

}  // namespace kwo
