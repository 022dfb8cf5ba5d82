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
  const unsigned act = byte % 8;
  const int bit = byte >> 3 & 1;
  if (act == 0) decoder.Seek(static_cast<std::int64_t>(byte) * 20011);
  if (act == 1) decoder.Peek(buffer, static_cast<int>(byte) * 50);
  if (act == 2) decoder.SetEnhancer(byte >> 3 & 3);
  if (act == 2) decoder.SetVocalReducer(byte >> 5 & 1);
  if (act == 3) decoder.SetWideStereo(bit);
  if (act == 3) decoder.SetCrystalizer(byte >> 4 & 1);
  if (act == 4) decoder.SetLineGains(values);
  if (act == 4) decoder.SetEqualiserSwitch(bit);
  if (act == 5) decoder.Control(kwo::CTL_OUTPUT_MATRIX + (byte >> 3) % 3, values);
  if (act >= 6) decoder.Read(buffer, static_cast<int>(byte) * 100);
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
