#pragma once

#include <cstdint>

namespace kwo {

/// Three signed samples.
struct SampleTriple {
  std::int8_t samples[3];
};

/// A Layer II quantisation class, ISO/IEC 11172-3 Table B.4.
struct QuantClass {
  const SampleTriple* groups;  ///< of each code word, where one holds three samples; null otherwise
  int bits;                    ///< of a code word
  int offset;                  ///< taken from the code to give the signed sample
  float step;
};

/// The Layer II allocation of one subband: bits to read, and the classes that they index; null for
/// no samples.
struct SubbandAllocation {
  int bits;
  const QuantClass* const* classes;
};

struct AllocationTable {
  int subbands;
  const SubbandAllocation* rows;
};

/// Tables B.2a to B.2d of ISO/IEC 11172-3 (0 to 3) and the one of ISO/IEC 13818-3 (4).
const AllocationTable& GetAllocationTable(int selection);

/// Scale factors of Layers I and II, ISO/IEC 11172-3 Table B.1; the forbidden index 63 gives 0.
const float* GetScaleFactorTable();

}  // namespace kwo
