#pragma once

#include <cstdint>

#include "base/shared.h"

namespace kwo {

/// Band edges in lines: rows by version index x 3 + sample rate index.
extern const short kLongBands[9][23];
/// The same for short blocks, in lines over all three windows.
extern const short kShortBands[9][14];

/// Bits of the scale factors by scalefac_compress, ISO/IEC 11172-3 clause 2.4.2.7.
extern const unsigned char kSlen[2][16];

/// Scale factors up to the end of each partition: groups 0 to 5 of ISO/IEC 13818-3, 6 for MPEG-1;
/// rows long, short, mixed.
extern const unsigned char kPartitions[7][3][5];

/// Preemphasis, ISO/IEC 11172-3 Table B.6.
extern const unsigned char kPretab[22];

/// Powers that the requantisation looks up, and the intensity ratios (left, right).
struct Layer3Tables {
  float pow43[8207];       ///< i to the power 4/3
  float scalePower[65];    ///< 2 to the power -i/2
  float gainPower[256];    ///< 2 to the power (i - 210)/4
  float ratios[3][32][2];  ///< by intensity scale and position
};

const Layer3Tables& GetLayer3Tables();

/// The butterflies' coefficients: process-wide, so that the last setting holds for all decoders.
extern Shared<float> aliasCs[8];
extern Shared<float> aliasCa[8];

/// Fills both from the standard's eight values, enlarged by `k`.  Any thread.
void SetAliasCoefficients(double k);

}  // namespace kwo
