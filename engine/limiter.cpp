#include "engine/limiter.h"

#include <algorithm>

namespace kwo::Limiter {
namespace {

constexpr int kWindow = 32;  // voice blocks; each window is a fresh batch

float limiterHistory[kWindow];
int limiterIndex = 0;
float limiterWindowMin = 1.0f;
float limiterGain = 1.0f;

// What keeps the block's peaks inside 16 bits.  A block without a negative or without a positive
// value is judged by the other side alone.
float CorrectionFactor(float high, float low) {
  const float limitHigh = high != 0.0f ? 32767.0f / high : 0.0f;
  const float limitLow = low != 0.0f ? -32768.0f / low : 0.0f;
  if (limitLow > limitHigh && limitHigh != 0.0f) return limitHigh;
  return limitLow != 0.0f ? limitLow : 1.0f;
}

}  // namespace

void Measure(const float* values, int count, float peakGain) {
  float high = 0.0f, low = 0.0f;
  for (int i = 0; i < count; ++i) {
    high = std::max(high, values[i]);
    low = std::min(low, values[i]);
  }
  limiterHistory[limiterIndex++] = CorrectionFactor(high * peakGain, low * peakGain);
  if (limiterIndex == kWindow) {
    limiterIndex = 0;
    limiterWindowMin = std::min(1.0f, *std::min_element(limiterHistory, limiterHistory + kWindow));
  }
  float x = limiterWindowMin;
  for (int i = 0; i < 4; ++i) x = (x + limiterGain) * 0.5f;
  limiterGain = x;
}

float Gain() {
  return limiterGain;
}

void Reset() {
  limiterIndex = 0;
  limiterWindowMin = limiterGain = 1.0f;
}

}  // namespace kwo::Limiter
