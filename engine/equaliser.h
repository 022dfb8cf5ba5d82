#pragma once

namespace kwo {

constexpr int kEqualiserBands = 16;
constexpr int kEqualiserValues = kEqualiserBands + 1;  ///< the bands, then the master value

/// The spectral line, of 576, at which a band's value holds in full.
int EqualiserBandLine(int band);

/// The gain of each of the 576 spectral lines for 16 band values, 1.0 neutral.  A lift reaches much
/// further than a cut, and the gain steps every three lines.
void EqualiserLineGains(const float* bands, float* gains);

}  // namespace kwo
