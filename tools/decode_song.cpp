// Decodes a whole song to raw floats, with nothing but the audio source in the way.

#include <cstdio>
#include <cstring>
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

// A song that can be read; lengths in bytes of its samples.
class Song {
 public:
  virtual ~Song() = default;
  virtual int Read(float* samples, int size) = 0;
  virtual long long Length() = 0;
  int rate = 0, channels = 0;
};

// What a listener gets.
class Music : public Song {
 public:
  bool Open(const char* path) {
    if (!source.Open(path)) return false;
    rate = source.sampleRate;
    channels = source.channels;
    return true;
  }
  bool HasReader() const { return source.Kind() != kwo::SourceKind::kNothing; }
  int Read(float* samples, int size) override { return source.Read(samples, size); }
  long long Length() override { return source.Length(); }

 private:
  kwo::AudioSource source;
};

// The decoder on the file as it stands.
class WholeFile : public Song {
 public:
  ~WholeFile() override {
    decoder.Shutdown();
    file.Shutdown();
  }
  bool Open(const char* path) {
    return file.Open(path, 2) == 0 && decoder.Open(&file, &rate, &channels) == 0;
  }
  int Read(float* samples, int size) override { return decoder.Read(samples, size); }
  long long Length() override { return decoder.Control(kwo::CTL_LENGTH); }

 private:
  kwo::FileInputStream file;
  kwo::MpegDecoder decoder;
};

// Gives the bytes of all samples, or -1 if they can't be written.
long long Write(Song& song, std::FILE* out) {
  std::setvbuf(out, nullptr, _IONBF, 0);
  static float samples[9 * 2 * 1152];
  long long total = 0;
  int got;
  while ((got = song.Read(samples, sizeof samples)) > 0) {
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
  std::unique_ptr<Song> song;
  if (whole) {
    auto file = std::make_unique<WholeFile>();
    if (!file->Open(path)) return Fail("not a song that can be opened", path);
    song = std::move(file);
  } else {
    auto music = std::make_unique<Music>();
    if (!music->Open(path)) return Fail("not a song that can be opened", path);
    if (!music->HasReader()) return Fail("the name does not end in .mp3, .mp2 or .wav", path);
    song = std::move(music);
  }
  std::FILE* out = std::fopen(outPath, "wb");
  if (!out) return Fail("cannot be written", outPath);
  const long long total = Write(*song, out);
  if (std::fclose(out) != 0 || total < 0) return Fail("cannot be written", outPath);
  const double bytesPerSecond = 4.0 * song->channels * song->rate;
  std::fprintf(stderr, "%d channels, %d Hz, %.3f seconds told, %.3f decoded\n", song->channels,
               song->rate, static_cast<double>(song->Length()) / bytesPerSecond,
               static_cast<double>(total) / bytesPerSecond);
  return 0;
}
