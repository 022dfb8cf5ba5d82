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
  SetCrystalizer(effects_.crystalizerOn);
  input_.source = compressed;
  input_.refillThreshold = input_.source->Flags() & STREAM_SEEKABLE ? 2048 : kInputCapacity;
  ResetInput();
  output_.outputChannels = channelsWanted;
  output_.decimation = std::clamp(decimationWanted, 0, 2);
  output_.bytesPerSample = integerSamples ? 2 : 4;
  progress_.firstFrame = 1;
  if (!DecodeFrame(framePcm)) return -1;
  progress_.firstFrame = 0;
  *sampleRateOut =
      kSampleRates[first_.refSampleRateIndex] >> (first_.refVersion + output_.decimation);
  *channelsOut = output_.outputChannels;
  BeginStream(STREAM_READABLE | (input_.sourceUnseekable ? 0 : STREAM_SEEKABLE), 0,
              std::int64_t{progress_.frameTotal} * progress_.frameBytes);
  return 0;
}

int MpegDecoder::DecodeFrame(void* destination) {
  if (progress_.firstFrame) return DecodeFirstFrame(destination);
  if (input_.endOfInput) return 0;
  // Behind the last frame comes one more, in which what it has left behind rings out.
  if (!ReadFrameHeader(0)) input_.endOfInput = 1;
  DecodeLayer();
  SynthesizeFrame(destination);
  progress_.frameHeld = destination == framePcm;
  return 1;
}

int MpegDecoder::DecodeFirstFrame(void* destination) {
  input_.sourceUnseekable = !(input_.source->Flags() & STREAM_SEEKABLE);
  int bitRate = 0;
  if (!FindFirstHeader(&bitRate)) return 0;
  if (input_.sourceUnseekable) bitRate = 0;
  input_.endOfInput = 0;
  if (!ReadFrameHeader(1) || !InitLayer(bitRate)) return 0;
  progress_.frameTotal = ReckonFrameTotal(bitRate);
  DecodeLayer();
  StartStream();
  SynthesizeFrame(destination);
  progress_.frameHeld = destination == framePcm;
  return 1;
}

void MpegDecoder::DecodeLayer() {
  if (first_.refLayer == MPEG_LAYER_1) {
    DecodeLayer1();
  } else if (first_.refLayer == MPEG_LAYER_2) {
    DecodeLayer2();
  } else {
    DecodeLayer3();
  }
}

void MpegDecoder::StartStream() {
  output_.streamChannels = first_.refMode == MODE_SINGLE_CHANNEL ? 1 : 2;
  SynthesisSetup();
  progress_.frameOffset = 0;
  progress_.frameNumber = 1;
  progress_.frameBytes =
      (output_.outputChannels * output_.bytesPerSample * kFrameSamples) >> output_.decimation;
}

// Bytes of a decoder frame as whole slots and a fraction.
int MpegDecoder::InitLayer(int bitRate) {
  if (first_.refLayer > MPEG_LAYER_3 || first_.refVersion == kReservedVersion ||
      kSampleRates[first_.refSampleRateIndex] == 0)
    return 0;
  if (first_.refLayer == MPEG_LAYER_3) InitLayer3();
  if (bitRate == 0) return 1;
  slots_.slotBytes = first_.refLayer == MPEG_LAYER_1 ? 4 : 1;
  slots_.slotDivisor = kSampleRates[first_.refSampleRateIndex] >> first_.refVersion;
  const int numerator = (first_.refLayer == MPEG_LAYER_1 ? 36 : 144) * bitRate;
  slots_.slotsPerFrame = numerator / slots_.slotDivisor;
  slots_.slotRemainder = numerator % slots_.slotDivisor;
  return 1;
}

int MpegDecoder::ReckonFrameTotal(int bitRate) {
  if (bitRate == 0) return 0;
  if (hasXingHeader && xing.Has(XingHeader::kFrames) && xing.xingFrames > 0) {
    const int each = MpegFramesInDecoderFrame(first_.refLayer, first_.refVersion);
    // What no song has, however high, leaves room to count on.
    constexpr int kMostFrames = 1 << 30;
    const int frames = std::min(xing.xingFrames, kMostFrames);
    return frames / each + (frames % each != 0);
  }
  const double bytes = static_cast<double>(input_.source->Control(CTL_LENGTH)) + slots_.slotBytes;
  const double slots =
      static_cast<double>(slots_.slotsPerFrame) * slots_.slotDivisor + slots_.slotRemainder;
  const double frames = bytes / (slots * slots_.slotBytes) * slots_.slotDivisor;
  return static_cast<int>(std::min(std::floor(frames + 0.5), 2147483647.0));
}

int MpegDecoder::RawRead(void* buffer, int count) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  int delivered = 0;
  while (delivered < count) {
    if (progress_.frameOffset == progress_.frameBytes) {
      // Behind a read of odd length the caller's memory is no place for samples.
      const bool aligned =
          reinterpret_cast<std::uintptr_t>(bytes + delivered) % alignof(float) == 0;
      if (aligned && count - delivered >= progress_.frameBytes) {
        if (!DecodeFrame(bytes + delivered)) break;
        ++progress_.frameNumber;
        delivered += progress_.frameBytes;
        continue;
      }
      if (!DecodeFrame(framePcm)) break;
      progress_.frameOffset = 0;
      ++progress_.frameNumber;
    }
    const int piece = std::min(progress_.frameBytes - progress_.frameOffset, count - delivered);
    std::memcpy(bytes + delivered, framePcm + progress_.frameOffset,
                static_cast<std::size_t>(piece));
    progress_.frameOffset += piece;
    delivered += piece;
  }
  return delivered;
}

int MpegDecoder::RawPeek(void* buffer, int count) {
  if (progress_.frameOffset == progress_.frameBytes && DecodeFrame(framePcm)) {
    progress_.frameOffset = 0;
    ++progress_.frameNumber;
  }
  const int piece = std::min(count, progress_.frameBytes - progress_.frameOffset);
  std::memcpy(buffer, framePcm + progress_.frameOffset, static_cast<std::size_t>(piece));
  return piece;
}

std::int64_t MpegDecoder::RawSeek(std::int64_t target) {
  if (input_.sourceUnseekable) return 0;
  target = std::clamp<std::int64_t>(target, 0,
                                    std::int64_t{progress_.frameTotal} * progress_.frameBytes);
  const std::int64_t frame = target / progress_.frameBytes;
  const int offset = static_cast<int>(target % progress_.frameBytes);
  if (progress_.frameHeld && progress_.frameNumber - frame == 1) {
    progress_.frameOffset = offset;
    return frame * progress_.frameBytes + offset;
  }
  input_.source->Seek(SeekOffset(frame, target));
  ResetInput();
  SynthesisReset();
  progress_.frameNumber = static_cast<int>(frame);
  progress_.frameOffset = progress_.frameBytes;
  progress_.frameHeld = 0;
  if (offset != 0 && DecodeFrame(framePcm)) {
    progress_.frameOffset = offset;
    ++progress_.frameNumber;
  }
  if (hasXingHeader) return target;
  return (std::int64_t{progress_.frameNumber} - 1) * progress_.frameBytes + progress_.frameOffset;
}

// Where in the file a frame lies.  With a length header it is the table of contents that knows;
// without its table the frames count as equally long.
std::int64_t MpegDecoder::SeekOffset(std::int64_t frame, std::int64_t target) {
  if (!hasXingHeader)
    return (slots_.slotRemainder * frame / slots_.slotDivisor + slots_.slotsPerFrame * frame) *
           slots_.slotBytes;
  const std::int64_t total = std::int64_t{progress_.frameTotal} * progress_.frameBytes;
  const bool sized = xing.Has(XingHeader::kBytes) && xing.xingBytes > 0;
  const std::int64_t fileBytes = sized ? xing.xingBytes : input_.source->Control(CTL_LENGTH);
  const double share = total > 0 ? static_cast<double>(target) / static_cast<double>(total) : 0.0;
  if (!xing.Has(XingHeader::kToc))
    return static_cast<std::int64_t>(static_cast<double>(fileBytes) * share);
  return XingSeekPoint(xing.toc, fileBytes, static_cast<float>(100.0 * share));
}

std::int64_t MpegDecoder::Control(int code, void* pointer, int value) {
  switch (code) {
    case CTL_POSITION_AT_END:
      return progress_.frameOffset == progress_.frameBytes && input_.endOfInput;
    case CTL_OUTPUT_MATRIX:
      SetOutputMatrix(static_cast<const float*>(pointer));
      return 0;
    case CTL_SUBBAND_GAINS:
      SetBandGains(static_cast<const float*>(pointer));
      return 0;
    case CTL_LINE_GAINS: {
      if (first_.refLayer == MPEG_LAYER_3 || !pointer) return 0;
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
  effects_.enhancerValue = value;
  effects_.enhancerCleared = 1;
}

void MpegDecoder::SetCrystalizer(int value) {
  effects_.crystalizerOn = value > 0;
  SetAliasCoefficients(value > 0 ? 1.38 : 1.0);
}

void MpegDecoder::SetWideStereo(int value) {
  const float unwanted = value > 0 ? 1.0f : -1.0f;
  for (int i = 0; i < 3; ++i) {
    const float coefficient = output_.outputMatrix[i];
    if (coefficient * unwanted > 0) output_.outputMatrix[i] = -coefficient;
  }
  effects_.wideOn = value > 0;
}

void MpegDecoder::SetVocalReducer(int value) {
  if (value >= 0) effects_.vocalOn = value;
}

void MpegDecoder::SetEqualiserSwitch(int value) {
  if (value >= 0) effects_.eqOn = value;
}

void MpegDecoder::SetLineGains(const float* gains) {
  for (int i = 0; i < kLines; ++i) effects_.lineGains[i] = gains ? gains[i] : 1.0f;
}

}  // namespace kwo
