// The back end of all layers: subband samples to PCM.  The polyphase synthesis of ISO/IEC 11172-3
// clause 2.4.3.2.2 with a window of our own.

#include <cmath>
#include <cstring>
#include <numbers>

#include "decoder/mpeg_decoder.h"

namespace kwo {
namespace {

constexpr int kDefaultMatrixSize = 9;
constexpr float kDefaultMatrix[kDefaultMatrixSize] = {1, 0, 1, 0, 1, 1, 0.5f, 0.5f, 1};

struct SynthesisTables {
  SynthesisWeights weights[3];  // by decimation
  double secants[32];
};

// The prototype curve: a cosine series over 512 points with its peak of 37,519 in the middle.
double Prototype(int n) {
  const float coefficients[8] = {
      0.5f,
      -static_cast<float>(std::sqrt(0.9999277960573325)),
      static_cast<float>(std::sqrt(0.9924951124314516)),
      -static_cast<float>(std::sqrt(0.8832327678591261)),
      static_cast<float>(std::sqrt(0.5)),
      -0.341712207f,
      0.0866307542f,
      -0.00849729031f,
  };
  double sum = 0;
  for (int j = 0; j < 8; ++j) sum += coefficients[j] * std::cos(0.01227184630308513 * j * n);
  return 8192.0 * sum;
}

float WindowEntry(int row, int column) {
  const double h = Prototype(row + 32 * column);
  return static_cast<float>(column & 2 ? -h : h);
}

// The buffers' rotation in the classic form picks, for the slot that lies j slots back, the window
// column j of the front sample's row and column 15 - j of its mirror's, with alternating signs.
void BuildWeights(SynthesisWeights& weights, int decimation) {
  const int rows = 16 >> decimation;
  for (int row = 0; row <= rows; ++row) {
    for (int back = 0; back < 16; ++back) {
      const float front = WindowEntry(row << decimation, back);
      weights.front[row][back] = back % 2 == 0 ? -front : front;
      weights.rear[row][back] = -WindowEntry(row << decimation, 15 - back);
    }
  }
}

const SynthesisTables& Tables() {
  static const SynthesisTables tables = [] {
    SynthesisTables built{};
    for (int decimation = 0; decimation < 3; ++decimation)
      BuildWeights(built.weights[decimation], decimation);
    for (int m = 1; m <= 16; m *= 2)
      for (int k = 0; k < m; ++k)
        built.secants[m + k] =
            static_cast<float>(0.5 / std::cos((2 * k + 1) * std::numbers::pi / (4 * m)));
    return built;
  }();
  return tables;
}

void StoreSample(float value, float* out) {
  *out = value;
}

void StoreSample(float value, std::int16_t* out) {
  const float clamped = value > 32767.0f ? 32767.0f : value < -32768.0f ? -32768.0f : value;
  *out = static_cast<std::int16_t>(clamped);
}

template <typename Sample>
void StoreMono(const float* samples, int count, Sample* out) {
  for (int i = 0; i < count; ++i) StoreSample(samples[i], out + i);
}

template <typename Sample>
void StorePair(const float* left, const float* right, int count, Sample* out) {
  for (int i = 0; i < count; ++i) {
    StoreSample(left[i], out + 2 * i);
    StoreSample(right[i], out + 2 * i + 1);
  }
}

}  // namespace

void MpegDecoder::ResetOutputMatrix() {
  for (int i = 0; i < kDefaultMatrixSize; ++i) output_.outputMatrix[i] = kDefaultMatrix[i];
}

void MpegDecoder::SynthesisSetup() {
  SynthesisReset();
  if (output_.outputChannels == 0) output_.outputChannels = output_.streamChannels;
  output_.downmix = output_.duplicate = 0;
  if (output_.outputChannels == -2) {
    output_.outputChannels = 2;
    output_.duplicate = 1;
    output_.downmix = output_.streamChannels == 2;
  } else {
    output_.outputChannels = output_.outputChannels == 1 ? 1 : 2;
    output_.downmix = output_.streamChannels == 2 && output_.outputChannels == 1;
    output_.duplicate = output_.streamChannels == 1 && output_.outputChannels == 2;
  }
  output_.dctChannels = output_.downmix || output_.duplicate || output_.streamChannels == 1 ? 1 : 2;
  output_.matrixOn = 0;
  output_.bandGainsOn = 0;
}

void MpegDecoder::SynthesisReset() {
  std::memset(synthBuffers, 0, sizeof synthBuffers);
}

void MpegDecoder::SynthesizeFrame(void* output) {
  MixChannels();
  if (output_.bandGainsOn) ApplyBandGains();
  const SynthesisTables& tables = Tables();
  for (int channel = 0; channel < output_.dctChannels; ++channel)
    Kernels().synthesize(channelPcm[channel], subbandSamples[channel][0], synthBuffers[channel],
                         tables.weights[output_.decimation], tables.secants, output_.decimation);
  if (output) WritePcm(output);
}

// The stereo stage, with the output matrix m[row][column] as nine factors row by row.
void MpegDecoder::MixChannels() {
  const bool mixing = output_.matrixOn || effects_.wideOn;
  if (!mixing && !output_.downmix) return;
  float* left = subbandSamples[0][0];
  float* right = subbandSamples[1][0];
  const float m00 = output_.outputMatrix[0], m01 = output_.outputMatrix[1];
  const float m10 = output_.outputMatrix[3], m11 = output_.outputMatrix[4];
  const float share0 = mixing ? float{output_.outputMatrix[6]} : 0.5f;
  const float share1 = mixing ? float{output_.outputMatrix[7]} : 0.5f;
  const float mono = output_.outputMatrix[8];
  constexpr int kCount = kFrameSlots * kSubbands;
  if (output_.downmix) {
    for (int i = 0; i < kCount; ++i) left[i] = share0 * left[i] + share1 * right[i];
  } else if (output_.streamChannels == 2) {
    for (int i = 0; i < kCount; ++i) {
      const float l = left[i], r = right[i];
      left[i] = m00 * l + m01 * r;
      right[i] = m10 * l + m11 * r;
    }
  } else {
    for (int i = 0; i < kCount; ++i) left[i] *= mono;
  }
}

void MpegDecoder::ApplyBandGains() {
  const int bands = kSubbands >> output_.decimation;
  const int channels = output_.downmix || output_.streamChannels == 1 ? 1 : 2;
  float gains[kSubbands];
  for (int band = 0; band < bands; ++band) gains[band] = output_.bandGains[band];
  for (int channel = 0; channel < channels; ++channel)
    for (auto& slot : subbandSamples[channel])
      for (int band = 0; band < bands; ++band) slot[band] *= gains[band];
}

void MpegDecoder::WritePcm(void* output) {
  const int count = kFrameSamples >> output_.decimation;
  const float* left = channelPcm[0];
  const float* right = channelPcm[output_.duplicate ? 0 : 1];
  if (output_.duplicate && (output_.matrixOn || effects_.wideOn)) {
    const float leftFactor = output_.outputMatrix[2], rightFactor = output_.outputMatrix[5];
    for (int i = 0; i < count; ++i) {
      const float sample = left[i];
      channelPcm[0][i] = sample * leftFactor;
      channelPcm[1][i] = sample * rightFactor;
    }
    right = channelPcm[1];
  }
  if (output_.bytesPerSample == 4) {
    auto* out = static_cast<float*>(output);
    output_.outputChannels == 2 ? StorePair(left, right, count, out) : StoreMono(left, count, out);
  } else {
    auto* out = static_cast<std::int16_t*>(output);
    output_.outputChannels == 2 ? StorePair(left, right, count, out) : StoreMono(left, count, out);
  }
}

void MpegDecoder::SetOutputMatrix(const float* matrix) {
  bool isDefault = true;
  for (int i = 0; matrix && i < kDefaultMatrixSize; ++i)
    isDefault = isDefault && matrix[i] == kDefaultMatrix[i];
  if (!isDefault)
    for (int i = 0; i < kDefaultMatrixSize; ++i) output_.outputMatrix[i] = matrix[i];
  output_.matrixOn = !isDefault;
}

void MpegDecoder::SetBandGains(const float* gains) {
  bool neutral = true;
  for (int band = 0; gains && band < kSubbands; ++band) neutral = neutral && gains[band] == 1.0f;
  if (!neutral) {
    const int fold = 1 << output_.decimation;
    for (int band = 0; band < kSubbands / fold; ++band) {
      float sum = 0;
      for (int i = 0; i < fold; ++i) sum += gains[fold * band + i];
      output_.bandGains[band] = sum / static_cast<float>(fold);
    }
  }
  output_.bandGainsOn = !neutral;
}

}  // namespace kwo
