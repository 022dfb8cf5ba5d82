// The decoder on any bytes, by every road: all layers, rates, channels and sample forms, reads,
// peeks, seeks, control requests and effects.

#include <cstdint>
#include <memory>

#include "decoder/mpeg_decoder.h"
#include "tests/decoder/bytes_stream.h"

namespace {

void Act(kwo::MpegDecoder& decoder, unsigned byte) {
  static unsigned char buffer[30000];
  float values[kwo::kLines];
  for (float& value : values) value = static_cast<float>(byte) / 64;
  switch (byte % 8) {
    case 0:
      decoder.Seek(static_cast<std::int64_t>(byte) * 20011);
      break;
    case 1:
      decoder.Peek(buffer, static_cast<int>(byte) * 50);
      break;
    case 2:
      decoder.SetEnhancer(byte >> 3 & 3);
      decoder.SetVocalReducer(byte >> 5 & 1);
      break;
    case 3:
      decoder.SetWideStereo(byte >> 3 & 1);
      decoder.SetCrystalizer(byte >> 4 & 1);
      break;
    case 4:
      decoder.SetLineGains(values);
      decoder.SetEqualiserSwitch(byte >> 3 & 1);
      break;
    case 5:
      decoder.Control(kwo::CTL_OUTPUT_MATRIX + (byte >> 3) % 3, values);
      break;
    default:
      decoder.Read(buffer, static_cast<int>(byte) * 100);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kOptions = 12;
  if (size < kOptions) return 0;
  const unsigned options = data[0];
  static constexpr int kChannels[4] = {0, 1, 2, -2};
  kwo::test::BytesStream source(data + kOptions, size - kOptions, (options & 0xC0) != 0);
  auto decoder = std::make_unique<kwo::MpegDecoder>();
  int rate, channels;
  if (decoder->Open(&source, &rate, &channels, options & 1, (options >> 1 & 3) % 3,
                    kChannels[options >> 3 & 3]) == 0) {
    for (std::size_t i = 1; i < kOptions; ++i) Act(*decoder, data[i]);
    static unsigned char buffer[50000];
    for (int i = 0; i < 12 && decoder->Read(buffer, sizeof buffer) > 0; ++i) {
    }
  }
  decoder->Shutdown();
  return 0;
}
