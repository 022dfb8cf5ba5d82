#include "decoder/mpeg_decoder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "decoder/header_tables.h"
#include "decoder/layer12.h"
#include "decoder/layer3_tables.h"

namespace kwo {
namespace {

// The byte of the file at `percent` of the song, by the 100 points of the length header.
std::int64_t XingSeekPoint(const unsigned char* toc, std::int64_t fileBytes, float percent) {
  percent = std::clamp(percent, 0.0f, 100.0f);
  const int a = std::min(static_cast<int>(percent), 99);
  const float fa = toc[a];
  const float fb = a < 99 ? toc[a + 1] : 256.0f;
  const float fx = fa + (fb - fa) * (percent - static_cast<float>(a));
  return static_cast<std::int64_t>(static_cast<double>(fileBytes) * fx * 0.00390625);
}

int MpegFramesInDecoderFrame(int layerIndex, int versionIndex) {
  if (layerIndex == MPEG_LAYER_1) return 3;
  return layerIndex == MPEG_LAYER_3 && versionIndex != MPEG_VERSION_1 ? 2 : 1;
}

}  // namespace

MpegDecoder::MpegDecoder() {
  ResetOutputMatrix();
  std::memset(inputBuffer, 0, sizeof inputBuffer);
  std::memset(subbandSamples, 0, sizeof subbandSamples);
  std::memset(enhancerRing, 0, sizeof enhancerRing);
  SetEnhancer(0);
  SetCrystalizer(0);
  SetWideStereo(0);
  SetVocalReducer(0);
  SetEqualiserSwitch(0);
  SetLineGains(nullptr);
}

int MpegDecoder::Open(InputStream* compressed, int* sampleRateOut, int* channelsOut,
                      int integerSamples, int decimationWanted, int channelsWanted) {
  Shutdown();
  SetCrystalizer(crystalizerOn);
  source = compressed;
  refillThreshold = source->Flags() & STREAM_SEEKABLE ? 2048 : kInputCapacity;
  ResetInput();
  outputChannels = channelsWanted;
  decimation = std::clamp(decimationWanted, 0, 2);
  bytesPerSample = integerSamples ? 2 : 4;
  firstFrame = 1;
  if (!DecodeFrame(framePcm)) return -1;
  firstFrame = 0;
  *sampleRateOut = kSampleRates[refSampleRateIndex] >> (refVersion + decimation);
  *channelsOut = outputChannels;
  BeginStream(STREAM_READABLE | (sourceUnseekable ? 0 : STREAM_SEEKABLE), 0,
              std::int64_t{frameTotal} * frameBytes);
  return 0;
}

int MpegDecoder::DecodeFrame(void* destination) {
  if (firstFrame) return DecodeFirstFrame(destination);
  if (endOfInput) return 0;
  // Behind the last frame comes one more, in which what it has left behind rings out.
  if (!ReadFrameHeader(0)) endOfInput = 1;
  DecodeLayer();
  SynthesizeFrame(destination);
  frameHeld = destination == framePcm;
  return 1;
}

int MpegDecoder::DecodeFirstFrame(void* destination) {
  sourceUnseekable = !(source->Flags() & STREAM_SEEKABLE);
  int bitRate = 0;
  if (!FindFirstHeader(&bitRate)) return 0;
  if (sourceUnseekable) bitRate = 0;
  endOfInput = 0;
  if (!ReadFrameHeader(1) || !InitLayer(bitRate)) return 0;
  frameTotal = ReckonFrameTotal(bitRate);
  DecodeLayer();
  StartStream();
  SynthesizeFrame(destination);
  frameHeld = destination == framePcm;
  return 1;
}

void MpegDecoder::DecodeLayer() {
  if (refLayer == MPEG_LAYER_1) {
    DecodeLayer1();
  } else if (refLayer == MPEG_LAYER_2) {
    DecodeLayer2();
  } else {
    DecodeLayer3();
  }
}

void MpegDecoder::StartStream() {
  streamChannels = refMode == MODE_SINGLE_CHANNEL ? 1 : 2;
  SynthesisSetup();
  frameOffset = 0;
  frameNumber = 1;
  frameBytes = (outputChannels * bytesPerSample * kFrameSamples) >> decimation;
}

// Bytes of a decoder frame as whole slots and a fraction.
int MpegDecoder::InitLayer(int bitRate) {
  if (refLayer > MPEG_LAYER_3 || refVersion == kReservedVersion ||
      kSampleRates[refSampleRateIndex] == 0)
    return 0;
  if (refLayer == MPEG_LAYER_3) InitLayer3();
  if (bitRate == 0) return 1;
  slotBytes = refLayer == MPEG_LAYER_1 ? 4 : 1;
  slotDivisor = kSampleRates[refSampleRateIndex] >> refVersion;
  const int numerator = (refLayer == MPEG_LAYER_1 ? 36 : 144) * bitRate;
  slotsPerFrame = numerator / slotDivisor;
  slotRemainder = numerator % slotDivisor;
  return 1;
}

int MpegDecoder::ReckonFrameTotal(int bitRate) {
  if (bitRate == 0) return 0;
  if (hasXingHeader && xing.Has(XingHeader::kFrames) && xing.xingFrames > 0) {
    const int each = MpegFramesInDecoderFrame(refLayer, refVersion);
    // What no song has, however high, leaves room to count on.
    constexpr int kMostFrames = 1 << 30;
    const int frames = std::min(xing.xingFrames, kMostFrames);
    return frames / each + (frames % each != 0);
  }
  const double bytes = static_cast<double>(source->Control(CTL_LENGTH)) + slotBytes;
  const double slots = static_cast<double>(slotsPerFrame) * slotDivisor + slotRemainder;
  const double frames = bytes / (slots * slotBytes) * slotDivisor;
  return static_cast<int>(std::min(std::floor(frames + 0.5), 2147483647.0));
}

int MpegDecoder::RawRead(void* buffer, int count) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  int delivered = 0;
  while (delivered < count) {
    if (frameOffset == frameBytes) {
      // Behind a read of odd length the caller's memory is no place for samples.
      const bool aligned =
          reinterpret_cast<std::uintptr_t>(bytes + delivered) % alignof(float) == 0;
      if (aligned && count - delivered >= frameBytes) {
        if (!DecodeFrame(bytes + delivered)) break;
        ++frameNumber;
        delivered += frameBytes;
        continue;
      }
      if (!DecodeFrame(framePcm)) break;
      frameOffset = 0;
      ++frameNumber;
    }
    const int piece = std::min(frameBytes - frameOffset, count - delivered);
    std::memcpy(bytes + delivered, framePcm + frameOffset, static_cast<std::size_t>(piece));
    frameOffset += piece;
    delivered += piece;
  }
  return delivered;
}

int MpegDecoder::RawPeek(void* buffer, int count) {
  if (frameOffset == frameBytes && DecodeFrame(framePcm)) {
    frameOffset = 0;
    ++frameNumber;
  }
  const int piece = std::min(count, frameBytes - frameOffset);
  std::memcpy(buffer, framePcm + frameOffset, static_cast<std::size_t>(piece));
  return piece;
}

std::int64_t MpegDecoder::RawSeek(std::int64_t target) {
  if (sourceUnseekable) return 0;
  target = std::clamp<std::int64_t>(target, 0, std::int64_t{frameTotal} * frameBytes);
  const std::int64_t frame = target / frameBytes;
  const int offset = static_cast<int>(target % frameBytes);
  if (frameHeld && frameNumber - frame == 1) {
    frameOffset = offset;
    return frame * frameBytes + offset;
  }
  source->Seek(SeekOffset(frame, target));
  ResetInput();
  SynthesisReset();
  frameNumber = static_cast<int>(frame);
  frameOffset = frameBytes;
  frameHeld = 0;
  if (offset != 0 && DecodeFrame(framePcm)) {
    frameOffset = offset;
    ++frameNumber;
  }
  if (hasXingHeader) return target;
  return (std::int64_t{frameNumber} - 1) * frameBytes + frameOffset;
}

// Where in the file a frame lies.  With a length header it is the table of contents that knows;
// without its table the frames count as equally long.
std::int64_t MpegDecoder::SeekOffset(std::int64_t frame, std::int64_t target) {
  if (!hasXingHeader)
    return (slotRemainder * frame / slotDivisor + slotsPerFrame * frame) * slotBytes;
  const std::int64_t total = std::int64_t{frameTotal} * frameBytes;
  const bool sized = xing.Has(XingHeader::kBytes) && xing.xingBytes > 0;
  const std::int64_t fileBytes = sized ? xing.xingBytes : source->Control(CTL_LENGTH);
  const double share = total > 0 ? static_cast<double>(target) / static_cast<double>(total) : 0.0;
  if (!xing.Has(XingHeader::kToc))
    return static_cast<std::int64_t>(static_cast<double>(fileBytes) * share);
  return XingSeekPoint(xing.toc, fileBytes, static_cast<float>(100.0 * share));
}

std::int64_t MpegDecoder::Control(int code, void* pointer, int value) {
  switch (code) {
    case CTL_POSITION_AT_END:
      return frameOffset == frameBytes && endOfInput;
    case CTL_OUTPUT_MATRIX:
      SetOutputMatrix(static_cast<const float*>(pointer));
      return 0;
    case CTL_SUBBAND_GAINS:
      SetBandGains(static_cast<const float*>(pointer));
      return 0;
    case CTL_LINE_GAINS: {
      if (refLayer == MPEG_LAYER_3 || !pointer) return 0;
      const auto* lines = static_cast<const float*>(pointer);
      float gains[kSubbands];
      for (int band = 0; band < kSubbands; ++band) {
        double sum = 0;
        for (int i = 0; i < kSubbandLines; ++i) sum += lines[kSubbandLines * band + i];
        gains[band] = static_cast<float>(sum * 0.055555556f);
      }
      SetBandGains(gains);
      return 0;
    }
    default:
      return InputStream::Control(code, pointer, value);
  }
}

void MpegDecoder::SetEnhancer(int value) {
  if (value < 0) return;
  enhancerValue = value;
  enhancerCleared = 1;
}

void MpegDecoder::SetCrystalizer(int value) {
  crystalizerOn = value > 0;
  SetAliasCoefficients(value > 0 ? 1.38 : 1.0);
}

void MpegDecoder::SetWideStereo(int value) {
  const float unwanted = value > 0 ? 1.0f : -1.0f;
  for (int i = 0; i < 3; ++i) {
    const float coefficient = outputMatrix[i];
    if (coefficient * unwanted > 0) outputMatrix[i] = -coefficient;
  }
  wideOn = value > 0;
}

void MpegDecoder::SetVocalReducer(int value) {
  if (value >= 0) vocalOn = value;
}

void MpegDecoder::SetEqualiserSwitch(int value) {
  if (value >= 0) eqOn = value;
}

void MpegDecoder::SetLineGains(const float* gains) {
  for (int i = 0; i < kLines; ++i) lineGains[i] = gains ? gains[i] : 1.0f;
}

}  // namespace kwo
