// The chain of streams from any bytes to music: the song's bounds, its tags, the first frame's
// words on length and delay, and seeks.

#include <memory>

#include "decoder/music_stream.h"
#include "decoder/song_stream.h"
#include "tests/decoder/bytes_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kSeeks = 4;
  if (size < kSeeks) return 0;
  kwo::test::BytesStream file(data + kSeeks, size - kSeeks);
  auto song = std::make_unique<kwo::SongStream>();
  auto decoder = std::make_unique<kwo::MpegDecoder>();
  kwo::MusicStream music;
  song->Open(&file);
  static unsigned char buffer[60001];
  song->Read(buffer, 1 + data[0] * 100);
  song->Seek(data[1] * 100);
  song->Read(buffer, sizeof buffer);
  int rate, channels;
  if (music.Open(decoder.get(), song.get(), &rate, &channels, data[0] % 3, 0) == 0) {
    const std::int64_t length = music.Control(kwo::CTL_LENGTH);
    for (std::size_t i = 0; i < kSeeks; ++i) {
      music.Seek(length / 250 * data[i]);
      music.Read(buffer, sizeof buffer);
    }
  }
  music.Shutdown();
  decoder->Shutdown();
  song->Shutdown();
  return 0;
}
