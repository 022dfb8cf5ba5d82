#pragma once

/// The Limiter: one gain for all voices, which follows the peaks of the last second and a half.
/// Render thread only.
namespace kwo::Limiter {

/// Takes the measure of a block of `count` values that will be enlarged by `peakGain`.
void Measure(const float* values, int count, float peakGain);

/// The gain to apply, never above 1.0.
float Gain();

/// Back to the state of a fresh process.
void Reset();

}  // namespace kwo::Limiter
