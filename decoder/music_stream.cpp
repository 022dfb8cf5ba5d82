#include "decoder/music_stream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "decoder/frame_header.h"
#include "decoder/xing_header.h"

namespace kwo {
namespace {

constexpr int kDecoderDelay = 529;  // samples, of the filterbanks
constexpr int kXingReach = 192;

// The overlap, the synthesis, and the frame that the reservoir is whole in.
constexpr int kSettlingFrames = 3;
constexpr int kMostRunUpFrames = 48;

// Decoder frames until nothing is left of what was decoded in front of them, in a song whose frames
// have `bitRate` at least.
int RunUpFrames(const FrameHeader& header, int bitRate) {
  if (header.layerIndex != 2) return kSettlingFrames;
  const int longestReservoir = header.Lsf() ? 255 : 511;
  const int payload = std::max(1, header.PayloadBytes(bitRate));
  const int samples = (longestReservoir + payload - 1) / payload * header.Samples();
  return std::min((samples + kFrameSamples - 1) / kFrameSamples + kSettlingFrames,
                  kMostRunUpFrames);
}

}  // namespace

int MusicStream::Open(MpegDecoder* songDecoder, InputStream* songStream, int* sampleRateOut,
                      int* channelsOut, int decimationWanted, int channelsWanted) {
  Shutdown();
  decoder = songDecoder;
  song = songStream;
  decimation = std::clamp(decimationWanted, 0, 2);
  outputChannels = channelsWanted;
  first = ReadFirstFrame();
  if (StartDecoder(sampleRateOut, channelsOut) != 0) return -1;
  sampleBytes = *channelsOut * 4;
  BeginStream(STREAM_READABLE | STREAM_SEEKABLE, 0, Measure());
  return 0;
}

// From the song's first frame on.
int MusicStream::StartDecoder(int* sampleRateOut, int* channelsOut) {
  return decoder->Open(song, sampleRateOut, channelsOut, 0, decimation, outputChannels);
}

MusicStream::FirstFrame MusicStream::ReadFirstFrame() {
  FirstFrame frame = {};
  unsigned char bytes[kXingReach] = {};
  song->Seek(0);
  const int available = song->Read(bytes, sizeof bytes);
  frame.known = available >= FrameHeader::kBytes && ParseFrameHeader(bytes, frame.header);
  frame.bitRate = frame.known ? frame.header.BitRateAt(1) : 0;
  frame.telling =
      frame.known && frame.header.layerIndex == 2 && ParseXingHeader(bytes, available, frame.told);
  if (!frame.telling || frame.told.variableRate) return frame;
  // In slow songs the first frame has a higher rate than the others, to have room.
  frame.bitRate = frame.header.BitRate();
  FrameHeader second;
  song->Seek(frame.header.FrameBytes());
  if (song->Read(bytes, FrameHeader::kBytes) == FrameHeader::kBytes &&
      ParseFrameHeader(bytes, second) && second.SameStream(frame.header) && !second.FreeFormat())
    frame.bitRate = second.BitRate();
  return frame;
}

// Takes what the song's first frame tells, leaves the decoder where the music begins, and gives the
// music's length.
std::int64_t MusicStream::Measure() {
  const XingHeader& told = first.told;
  const std::int64_t whole = decoder->Control(CTL_LENGTH);
  musicBegin = 0;
  endTold = atEnd = holdingBack = false;
  runUpFrames = first.known ? RunUpFrames(first.header, first.bitRate) : kSettlingFrames;
  if (!first.telling || (told.delay == 0 && told.padding == 0)) return whole;
  musicBegin = PcmBytes(first.header.Samples() + told.delay + kDecoderDelay);
  decoder->Read(nullptr, static_cast<int>(musicBegin));
  const std::int64_t samples =
      std::int64_t{told.xingFrames} * first.header.Samples() - told.delay - told.padding;
  endTold = told.Has(XingHeader::kFrames) && told.Has(XingHeader::kBytes) && samples > 0 &&
            std::abs(song->Control(CTL_LENGTH) - told.xingBytes) <= first.header.FrameBytes();
  if (!endTold) return std::max<std::int64_t>(0, whole - musicBegin);
  if (told.variableRate) {
    // The decoder ends with a frame of tail, of which its delay is music.
    heldBytes = static_cast<int>(PcmBytes(told.padding + kFrameSamples - kDecoderDelay));
    held.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(heldBytes)]);
  }
  return PcmBytes(samples);
}

std::int64_t MusicStream::PcmBytes(std::int64_t samples) const {
  return (samples >> decimation) * sampleBytes;
}

int MusicStream::Close() {
  decoder = nullptr;
  CloseBase();
  held.reset();
  return 0;
}

int MusicStream::RawRead(void* buffer, int count) {
  if (atEnd || !decoder) return 0;
  if (holdingBack) return ReadHeldBack(static_cast<unsigned char*>(buffer), count);
  if (endTold) count = static_cast<int>(std::min<std::int64_t>(count, length - position));
  return decoder->Read(buffer, count);
}

std::int64_t MusicStream::RawSeek(std::int64_t target) {
  if (!decoder) return position;
  atEnd = target >= length;
  holdingBack = false;
  if (atEnd) return length;
  const std::int64_t frameBytes = PcmBytes(kFrameSamples);
  const std::int64_t place = musicBegin + target;
  const std::int64_t runUpBegin = std::max<std::int64_t>(0, place / frameBytes - runUpFrames);
  if (Layer3()) {
    // Only a new start clears the overlap, which the first frames of the song would add.
    int rate, channels;
    StartDecoder(&rate, &channels);
  }
  if (runUpBegin > 0 || !Layer3()) decoder->Seek(runUpBegin * frameBytes);
  if (runUpBegin > 0 && first.telling && !first.told.variableRate)
    song->Seek(FramePlace(runUpBegin));
  decoder->Read(nullptr, static_cast<int>(place - runUpBegin * frameBytes));
  if (held && runUpBegin > 0) HoldBack();
  return target;
}

// Where decoder frame `frame` (1 or more) begins in a song whose frames have one size but for the
// first.  The decoder takes that one's rate for the song's; it has read nothing yet since its seek.
std::int64_t MusicStream::FramePlace(std::int64_t frame) const {
  const std::int64_t samplesBehindFirst = frame * kFrameSamples - first.header.Samples();
  return first.header.FrameBytes() +
         samplesBehindFirst / 8 * first.bitRate / first.header.SampleRate();
}

void MusicStream::HoldBack() {
  heldAt = 0;
  holdingBack = true;
  atEnd = decoder->Read(held.get(), heldBytes) < heldBytes;
}

// For each byte that goes out of the ring a newer one comes in.  Where none comes any more, what is
// left is not the music's.
int MusicStream::ReadHeldBack(unsigned char* buffer, int count) {
  int delivered = 0;
  while (delivered < count) {
    const int piece = std::min(count - delivered, heldBytes - heldAt);
    unsigned char* oldest = held.get() + heldAt;
    std::memcpy(buffer + delivered, oldest, static_cast<std::size_t>(piece));
    const int got = decoder->Read(oldest, piece);
    delivered += got;
    if (got < piece) break;
    heldAt = (heldAt + piece) % heldBytes;
  }
  return delivered;
}

}  // namespace kwo
