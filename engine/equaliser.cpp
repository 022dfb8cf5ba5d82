#include "engine/equaliser.h"

#include <algorithm>

namespace kwo {
namespace {

// Where the bands begin, in spectral lines, and how far a lift reaches there.  The 17th closes the
// last band.
constexpr struct {
  int edge;
  double boost;
} kCurve[kEqualiserBands + 1] = {
    {0, 4.8},   {3, 5.1},   {6, 5.4},   {9, 5.7},   {12, 6.0},  {15, 6.3},
    {21, 3.0},  {33, 3.0},  {51, 5.6},  {75, 6.0},  {105, 6.4}, {141, 6.8},
    {183, 7.2}, {231, 7.6}, {285, 8.0}, {345, 8.4}, {576, 5.0},
};
constexpr double kCutReach = 1.5;
constexpr int kLinesPerStep = 3;

double BandGain(float value, int band) {
  return 1.0 + (value - 1.0) * (value < 1.0f ? kCutReach : kCurve[band].boost);
}

}  // namespace

int EqualiserBandLine(int band) {
  return kCurve[band].edge;
}

void EqualiserLineGains(const float* values, float* gains) {
  float bands[kEqualiserBands + 1];
  std::copy_n(values, kEqualiserBands, bands);
  bands[kEqualiserBands] = bands[kEqualiserBands - 1];
  for (int band = 0; band < kEqualiserBands; ++band) {
    const int begin = kCurve[band].edge, end = kCurve[band + 1].edge;
    const double gain = BandGain(bands[band], band);
    const double slope = (BandGain(bands[band + 1], band + 1) - gain) / (end - begin);
    for (int line = begin; line < end; ++line) {
      const int step = line - line % kLinesPerStep;
      gains[line] = static_cast<float>((step - begin) * slope + gain);
    }
  }
}

}  // namespace kwo
