// Decodes a whole song to raw floats, with nothing but the audio source in the way.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

#include "decoder/file_input_stream.h"
#include "decoder/mpeg_decoder.h"
#include "engine/audio_source.h"

namespace {

constexpr char kUsage[] =
    "usage: decode_song [--whole] SONG OUT.f32\n"
    "Writes the music of an MP3, MP2 or WAV file as raw little-endian 32-bit floats, interleaved,\n"
    "at the 16-bit scale.  Channels, rate, the length that the song tells and the length that it\n"
    "has go to stderr.\n"
    "--whole: all that the decoder plays of an MP3 or MP2 file as it stands, with what the "
    "encoder\n"
    "has added to the music.\n";

int Fail(const char* what, const char* name) {
  std::fprintf(stderr, "decode_song: %s: %s\n", what, name);
  return 1;
}

// Reads all samples into the file and gives their bytes, or -1 if they can't be written.
long long Write(const std::function<int(float*, int)>& read, std::FILE* out) {
  std::setvbuf(out, nullptr, _IONBF, 0);
  static float samples[9 * 2 * 1152];
  long long total = 0;
  int got;
  while ((got = read(samples, sizeof samples)) > 0) {
    const auto size = static_cast<std::size_t>(got);
    if (std::fwrite(samples, 1, size, out) != size) return -1;
    total += got;
  }
  return total;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && (!std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "--help"))) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  const bool whole = argc > 1 && !std::strcmp(argv[1], "--whole");
  if (argc != (whole ? 4 : 3)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const char* path = argv[argc - 2];
  const char* outPath = argv[argc - 1];
  auto source = std::make_unique<kwo::AudioSource>();
  kwo::FileInputStream file;
  auto decoder = std::make_unique<kwo::MpegDecoder>();
  int rate, channels;
  const bool opened = whole ? file.Open(path, 2) == 0 && decoder->Open(&file, &rate, &channels) == 0
                            : source->Open(path) != 0;
  if (!opened) return Fail("not a song that can be opened", path);
  if (!whole) {
    if (source->Kind() == kwo::SourceKind::kNothing)
      return Fail("the name does not end in .mp3, .mp2 or .wav", path);
    rate = source->sampleRate;
    channels = source->channels;
  }
  std::FILE* out = std::fopen(outPath, "wb");
  if (!out) return Fail("cannot be written", outPath);
  const long long total = Write(
      [&](float* samples, int size) {
        return whole ? decoder->Read(samples, size) : source->Read(samples, size);
      },
      out);
  if (std::fclose(out) != 0 || total < 0) return Fail("cannot be written", outPath);
  const std::int64_t told = whole ? decoder->Control(kwo::CTL_LENGTH) : source->Length();
  const double bytesPerSecond = 4.0 * channels * rate;
  std::fprintf(stderr, "%d channels, %d Hz, %.3f seconds told, %.3f decoded\n", channels, rate,
               static_cast<double>(told) / bytesPerSecond,
               static_cast<double>(total) / bytesPerSecond);
  decoder->Shutdown();
  file.Shutdown();
  return 0;
}
