// Layer III from 576 values a granule and channel to subband samples: ISO/IEC 11172-3 clauses
// 2.4.3.4.7 to 2.4.3.4.10, with the effects that work on the spectrum.

#include <algorithm>
#include <cstring>

#include "decoder/layer3_tables.h"
#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

constexpr int kNoPosition = 7;
constexpr int kLargestPower = 64;  // last entry of scalePower

// First of `bands` bands whose lower edge lies above `line`; `bands` if none does.
int FirstBandAbove(const short* edges, int first, int bands, int line) {
  while (first < bands && edges[first] <= line) ++first;
  return first;
}

// Fills four at a time; what is filled too far, the next band fills anew.
void FillFactors(double* factors, int count, double factor) {
  for (int i = 0; i < count; i += 4) std::fill_n(factors + i, 4, factor);
}

// The cursors of the echo: process-wide, one slot apart from each other for ever.
Shared<int> enhancerCursors[5] = {4, 3, 2, 1, 0};

}  // namespace

int MpegDecoder::LongBands(const GranuleInfo& record) const {
  if (record.blockType != BLOCK_SHORT) return 22;
  return record.mixedBlock ? (Lsf() ? 6 : 8) : 0;
}

// What the lines are multiplied by, one factor for each two in the order in which they are coded:
// no band has an odd number of lines, nor has a window of one.
void MpegDecoder::FindFactors(const GranuleInfo& record, const int* store, double* factors) const {
  const Layer3Tables& tables = GetLayer3Tables();
  const double gain = tables.gainPower[record.globalGain];
  const auto power = [&](int exponent) {
    return tables.scalePower[std::min(exponent, kLargestPower)];
  };
  const short* longEdges = kLongBands[BandRow()];
  const int longBands = LongBands(record);
  factors[kLines / 2] = 0;  // a last quad reads it
  for (int band = 0; band < longBands; ++band) {
    const int preemphasis = record.preflag ? kPretab[band] : 0;
    const double factor = power((store[band] + preemphasis) << record.scalefacScale) * gain;
    FillFactors(factors + longEdges[band] / 2, (longEdges[band + 1] - longEdges[band]) / 2, factor);
  }
  if (record.blockType != BLOCK_SHORT) return;
  store += longBands;
  double windowGain[3];
  for (int window = 0; window < 3; ++window)
    windowGain[window] = power(record.subblockGain[window]) * gain;
  const short* edges = kShortBands[BandRow()];
  for (int band = record.mixedBlock ? 3 : 0; band < 13; ++band) {
    const int width = (edges[band + 1] - edges[band]) / 3;
    double* of = factors + edges[band] / 2;
    for (int window = 0; window < 3; ++window, of += width / 2)
      FillFactors(of, width / 2, power(*store++ << record.scalefacScale) * windowGain[window]);
  }
}

void MpegDecoder::StereoProcess(const GranuleInfo& record1, const int* store1) {
  const int limit = kLines >> output_.decimation;
  float* left = spectrum[0];
  float* right = spectrum[1];
  const int lines = std::max(layer3_.activeLines[0], layer3_.activeLines[1]);
  if (frame_.modeExtension == 0) return;
  if (frame_.modeExtension == EXTENSION_MS) {
    layer3_.activeLines[0] = layer3_.activeLines[1] = lines;
    Kernels().midSide(left, right, std::min(lines, limit));
    return;
  }
  FindIntensityPositions(record1, store1);
  layer3_.activeLines[0] = layer3_.activeLines[1] = lines;
  const auto& ratios = GetLayer3Tables().ratios[record1.intensityScale];
  const int end = std::min(lines, limit);
  for (int line = 0, next; line < end; line = next) {
    const int place = layer3_.intensityPosition[line];
    next = line + 1;
    while (next < end && layer3_.intensityPosition[next] == place) ++next;
    if (place != kNoPosition) {
      for (int i = line; i < next; ++i) right[i] = left[i] * ratios[place][1];
      Kernels().scaleLines(left + line, next - line, ratios[place][0]);
    } else if (frame_.modeExtension & EXTENSION_MS) {
      Kernels().midSide(left + line, right + line, next - line);
    }
  }
}

// Above its last value channel 1 carries positions instead of scale factors.
void MpegDecoder::FindIntensityPositions(const GranuleInfo& record1, const int* store1) {
  std::memset(layer3_.intensityPosition, kNoPosition, sizeof layer3_.intensityPosition);
  const float* right = spectrum[1];
  int longBands = LongBands(record1);
  auto positionOf = [&](int stored) {
    // MPEG-1 knows the positions 0 to 6; a larger one says nothing.
    return record1.intensityScale == 2 ? std::min(stored, kNoPosition) : std::min(stored, 31);
  };
  if (record1.blockType == BLOCK_SHORT) {
    const short* edges = kShortBands[BandRow()];
    const int first = record1.mixedBlock ? 3 : 0;
    const int* positions = store1 + longBands;
    for (int window = 0; window < 3; ++window) {
      int top = 573 + window;
      while (top >= edges[first] && right[top] == 0.0f) top -= 3;
      const int begin = FirstBandAbove(edges, first, 13, top);
      if (begin > 3) longBands = 0;
      int place = kNoPosition;
      for (int band = begin; band < 13; ++band) {
        if (band < 12) place = positionOf(positions[(band - first) * 3 + window]);
        for (int line = edges[band] + window; line < edges[band + 1]; line += 3)
          layer3_.intensityPosition[line] = static_cast<unsigned char>(place);
      }
    }
  }
  const short* edges = kLongBands[BandRow()];
  int top = edges[longBands] - 1;
  while (top >= 0 && right[top] == 0.0f) --top;
  int place = kNoPosition;
  for (int band = FirstBandAbove(edges, 0, longBands, top); band < longBands; ++band) {
    if (band < 21) place = positionOf(store1[band]);
    std::memset(layer3_.intensityPosition + edges[band], place,
                static_cast<std::size_t>(edges[band + 1] - edges[band]));
  }
}

// "T. Enhancer": an echo of up to four granules over the upper lines.
void MpegDecoder::EnhanceTreble() {
  constexpr int kFirstLine = 99;
  static constexpr float kWeights[2][4] = {{0.5f, 0.2f, 0, 0}, {0.75f, 0.5f, 0.25f, 0.125f}};
  if (effects_.enhancerCleared) {
    effects_.enhancerCleared = 0;
    std::memset(enhancerRing, 0, sizeof enhancerRing);
  }
  int cursors[5];
  for (int i = 0; i < 5; ++i) cursors[i] = enhancerCursors[i];
  const int value = effects_.enhancerValue;
  auto& now = enhancerRing[cursors[0]];
  std::memcpy(now[0], spectrum[0], sizeof now[0]);
  // Channel 1 of a one-channel stream is never filled.
  if (ChannelsNow() == 2) std::memcpy(now[1], spectrum[1], sizeof now[1]);
  if (value == 1 || value == 2) {
    const float* weights = kWeights[value - 1];
    const int echoes = value == 1 ? 2 : 4;
    for (int channel = 0; channel < ChannelsNow(); ++channel) {
      for (int line = kFirstLine; line < kLines; ++line) {
        double sum = now[channel][line];
        for (int echo = 0; echo < echoes; ++echo)
          sum += double{weights[echo]} * enhancerRing[cursors[echo + 1]][channel][line];
        spectrum[channel][line] = static_cast<float>(sum);
      }
      layer3_.activeLines[channel] = kLines;
    }
  }
  for (int i = 0; i < 5; ++i) enhancerCursors[i] = (cursors[i] + 1) & 7;
}

// "Vocal Reducer": what both channels share goes.  A one-channel stream stays as it is.
void MpegDecoder::ReduceVocals() {
  if (ChannelsNow() == 1) return;
  for (int line = 15; line < 252; ++line) {
    const float left = spectrum[0][line], right = spectrum[1][line];
    spectrum[0][line] = left - right;
    spectrum[1][line] = right - left;
  }
  for (int& lines : layer3_.activeLines)
    lines = std::max({layer3_.activeLines[0], layer3_.activeLines[1], lines});
}

void MpegDecoder::HybridSynthesis(const GranuleInfo& record, int channel, int firstSlot) {
  constexpr int kBatch = 8;
  float* values = spectrum[channel];
  const int subbands = kSubbands >> output_.decimation;
  const int mixedBands = kShortBands[BandRow()][3] / kSubbandLines;
  int aliasBands = subbands;
  if (record.blockType == BLOCK_SHORT) aliasBands = record.mixedBlock ? mixedBands : 0;
  int activeBands = (layer3_.activeLines[channel] + kSubbandLines - 1) / kSubbandLines;
  if (const int boundaries = std::min(aliasBands - 1, activeBands); boundaries > 0) {
    float cs[8], ca[8];
    for (int i = 0; i < 8; ++i) {
      cs[i] = aliasCs[i];
      ca[i] = aliasCa[i];
    }
    Kernels().reduceAliases(values, boundaries, cs, ca);
    activeBands = std::min(activeBands + 1, kSubbands);
  }
  if (effects_.eqOn) {
    float gains[kLines];
    for (int line = 0; line < kLines; ++line) gains[line] = effects_.lineGains[line];
    Kernels().applyGains(values, gains, kLines);
  }
  const int longWindowBands = record.mixedBlock ? mixedBands : 0;
  for (int band = 0; band < subbands; band += kBatch) {
    float* out = subbandSamples[channel][firstSlot] + band;
    float* old = overlap[channel][0] + band;
    const float* lines = values + kSubbandLines * band;
    if (band >= activeBands) {
      TakeOverlap(out, old);
    } else if (band == 0 && longWindowBands > 0 && record.blockType != BLOCK_NORMAL) {
      TransformMixed(out, lines, old, record.blockType, longWindowBands);
    } else {
      Kernels().imdct(out, lines, old, record.blockType);
    }
  }
}

// What a granule of zero lines gives for eight subbands.
void MpegDecoder::TakeOverlap(float* out, float* old) {
  for (int i = 0; i < kGranuleSlots; ++i, out += kSubbands, old += kSubbands) {
    for (int band = 0; band < 8; ++band) {
      out[band] = i & band & 1 ? -old[band] : old[band];
      old[band] = 0.0f;
    }
  }
}

// The eight lowest subbands, of which the first `longBands` keep the normal window.
void MpegDecoder::TransformMixed(float* out, const float* lines, float* old, int blockType,
                                 int longBands) {
  float longOut[kGranuleSlots][kSubbands], longOld[kGranuleSlots][kSubbands];
  for (int i = 0; i < kGranuleSlots; ++i)
    std::memcpy(longOld[i], old + kSubbands * i, 8 * sizeof(float));
  Kernels().imdct(longOut[0], lines, longOld[0], BLOCK_NORMAL);
  Kernels().imdct(out, lines, old, blockType);
  const std::size_t size = static_cast<std::size_t>(longBands) * sizeof(float);
  for (int i = 0; i < kGranuleSlots; ++i) {
    std::memcpy(out + kSubbands * i, longOut[i], size);
    std::memcpy(old + kSubbands * i, longOld[i], size);
  }
}

// The rest of a decoder frame when the input has ended.
void MpegDecoder::RingOut(int firstGranule) {
  for (int granule = firstGranule; granule < 2; ++granule)
    for (int channel = 0; channel < 2; ++channel)
      for (int band = 0; band < kSubbands; band += 8)
        TakeOverlap(subbandSamples[channel][kGranuleSlots * granule] + band,
                    overlap[channel][0] + band);
}

}  // namespace kwo
