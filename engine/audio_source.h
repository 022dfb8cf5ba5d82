#pragma once

#include <cstdint>
#include <memory>

#include "base/shared.h"
#include "decoder/file_input_stream.h"
#include "decoder/mpeg_decoder.h"
#include "decoder/music_stream.h"
#include "decoder/song_stream.h"
#include "engine/equaliser.h"
#include "engine/wav_reader.h"

namespace kwo {

enum class SourceKind : int { kNothing = 0, kMpeg = 1, kWav = 3 };

constexpr int kMaxPath = 1021;  ///< with the closing zero

/// What the main page shows of the song, word by word; all zero while no song is open.
enum SourceInfo : int {
  INFO_KIND,
  INFO_MPEG_VERSION,  ///< 1 or 2; 0 for WAV
  INFO_LAYER,         ///< 1 to 3; 0 for WAV
  INFO_BIT_RATE,      ///< bits per second of the first frame; 0 with a length header or for WAV
  INFO_CHANNELS,
  INFO_SAMPLE_RATE,  ///< Hz
  INFO_SECONDS,
  INFO_WORDS
};

/// One opened song behind one Voice: picks a reader by the ending of the file name and gives
/// interleaved float samples of 16-bit scale.  Lengths and positions are decoded bytes: 4 for each
/// sample of each channel.
///
/// An MPEG song is a chain of streams: the file, the song in it, the decoder, the music in that.
///
/// `Open` and `Close` must not overlap with anything else but reads of `info`; `Read`, `Seek`,
/// `Length`, `Position` and the setters belong to the thread that renders.
class AudioSource {
 public:
  AudioSource() = default;
  ~AudioSource();
  AudioSource(const AudioSource&) = delete;
  AudioSource& operator=(const AudioSource&) = delete;

  /// Replaces what the source holds.  1, or 0 if the file can't be opened; a name with none of our
  /// endings opens as nothing and gives 1.
  int Open(const char* name);
  void Close();

  /// Gives the bytes delivered, less than `size` only at the end of the song.
  int Read(float* buffer, int size);
  /// Moves to a whole second; gives the reader's result.
  std::int64_t Seek(int seconds);
  std::int64_t Length();
  std::int64_t Position();

  /// The effects, handed to the decoder; without one nothing happens.
  void SetCrystalizer(int value);
  void SetEnhancer(int value);
  void SetVocalReducer(int value);
  void SetWideStereo(int value);
  void SetEqualiserSwitch(int value);
  /// 16 bands and the master value, 1.0 neutral.
  void SetEqualiserCurve(const float* values);

  SourceKind Kind() const { return kind; }

  Shared<int> info[INFO_WORDS];
  int sampleRate = 44100;
  int channels = 2;
  float eqCompensation = 1.0f;
  float eqValues[kEqualiserValues] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  int eqSwitch = 0;

 private:
  int OpenMpeg();
  int OpenWav();
  void NoteSeconds();

  FileInputStream fileStream;
  SongStream songStream;
  std::unique_ptr<MpegDecoder> decoder;
  MusicStream musicStream;
  std::unique_ptr<WavReader> wavReader;
  int decimation = 0;
  int outputChannels = 0;
  char path[kMaxPath] = {};
  SourceKind kind = SourceKind::kNothing;
};

}  // namespace kwo
