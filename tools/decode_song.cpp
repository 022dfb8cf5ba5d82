// Decodes a whole song to raw floats, with nothing but the audio source in the way.

#include <cstdio>
#include <cstring>
#include <memory>

#include "engine/audio_source.h"

namespace {

constexpr char kUsage[] =
    "usage: decode_song SONG OUT.f32\n"
    "Writes the samples of an MP3, MP2 or WAV file as raw little-endian 32-bit floats, "
    "interleaved,\n"
    "at the 16-bit scale.  Channels, rate and length go to stderr.\n";

int Fail(const char* what, const char* name) {
  std::fprintf(stderr, "decode_song: %s: %s\n", what, name);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help"))) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (argc != 3) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  auto source = std::make_unique<kwo::AudioSource>();
  if (!source->Open(argv[1])) return Fail("not a song that can be opened", argv[1]);
  if (source->Kind() == kwo::SourceKind::kNothing)
    return Fail("the name does not end in .mp3, .mp2 or .wav", argv[1]);
  std::FILE* out = std::fopen(argv[2], "wb");
  if (!out) return Fail("cannot be written", argv[2]);
  std::setvbuf(out, nullptr, _IONBF, 0);
  static float samples[9 * 2 * 1152];
  long long total = 0;
  int got;
  bool written = true;
  while (written && (got = source->Read(samples, sizeof samples)) > 0) {
    total += got;
    written = std::fwrite(samples, 1, static_cast<std::size_t>(got), out) ==
              static_cast<std::size_t>(got);
  }
  if (std::fclose(out) != 0 || !written) return Fail("cannot be written", argv[2]);
  const double frames = static_cast<double>(total) / 4 / source->channels;
  std::fprintf(stderr, "%d channels, %d Hz, %.3f seconds\n", int{source->channels},
               int{source->sampleRate}, frames / source->sampleRate);
  return 0;
}
