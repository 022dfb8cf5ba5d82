#pragma once

#include <cstdint>
#include <memory>

#include "decoder/frame_header.h"
#include "decoder/input_stream.h"
#include "decoder/mpeg_decoder.h"
#include "decoder/xing_header.h"

namespace kwo {

/// The music in a song, as PCM: what the decoder plays of it, without the samples that the encoder
/// has added in front and behind, so that an album's songs join, and with seeks that are heard as
/// straight decoding is.  Length, position and seek count the music.
///
/// Where the song's first frame does not tell the encoder's samples, all is played.  The end that
/// it tells holds only if the song has the bytes that it tells; a song that was cut or joined is
/// played to its end.
///
/// One thread at a time.  Only `Open` allocates.
class MusicStream : public InputStream {
 public:
  /// Opens `decoder` on `song`, for float samples; both stay the caller's.  The other arguments and
  /// the result are those of `MpegDecoder::Open`.
  int Open(MpegDecoder* songDecoder, InputStream* songStream, int* sampleRateOut, int* channelsOut,
           int decimationWanted, int channelsWanted);

  int Close() override;
  int RawRead(void* buffer, int count) override;
  /// Decodes some frames in front of the target, until nothing of what was decoded before is left
  /// in the sound.  The place is as exact as the song's own reckoning.
  std::int64_t RawSeek(std::int64_t target) override;

 private:
  struct FirstFrame {
    bool known;  // the song begins with it
    FrameHeader header;
    int bitRate;   // of the frames behind it, the lowest that there can be
    bool telling;  // it has what follows
    XingHeader told;
  };

  int StartDecoder(int* sampleRateOut, int* channelsOut);
  FirstFrame ReadFirstFrame();
  bool Layer3() const { return first.known && first.header.layerIndex == 2; }
  std::int64_t Measure();
  std::int64_t PcmBytes(std::int64_t samples) const;
  std::int64_t FramePlace(std::int64_t frame) const;
  void HoldBack();
  int ReadHeldBack(unsigned char* buffer, int count);

  MpegDecoder* decoder = nullptr;
  InputStream* song = nullptr;
  int decimation = 0;
  int outputChannels = 0;
  int sampleBytes = 0;  // of all channels
  FirstFrame first = {};
  int runUpFrames = 0;
  std::int64_t musicBegin = 0;  // in the decoder's PCM
  bool endTold = false;
  bool atEnd = false;

  // A seek in a song of variable rate lands some frames beside its place, so that only the song's
  // last frame tells where it ends: the samples behind the music are held back until they have
  // proved to be that.  A ring, `heldAt` being its oldest byte.
  std::unique_ptr<unsigned char[]> held;
  int heldBytes = 0;
  int heldAt = 0;
  bool holdingBack = false;
};

}  // namespace kwo
