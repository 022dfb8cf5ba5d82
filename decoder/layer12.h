#pragma once

#include <cstdint>

namespace kwo {

typedef float FourFloats __attribute__((vector_size(4 * sizeof(float))));
typedef std::int32_t FourWords __attribute__((vector_size(4 * sizeof(std::int32_t))));

/// A Layer II quantisation class, ISO/IEC 11172-3 Table B.4.
struct QuantClass {
  /// The three signed samples of each code word, where one holds three; null otherwise.
  const FourFloats* groups;
  int bits;    ///< of a code word
  int offset;  ///< taken from the code to give the signed sample
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
