#pragma once

#include <cstring>

namespace kwo {
inline namespace KWO_KERNELS {

/// As many doubles side by side as one register of this instruction set holds, one per subband or
/// time slot, unless the build tells how many.
#if !defined(KWO_LANES) && defined(__AVX512F__)
#define KWO_LANES 8
#elif !defined(KWO_LANES) && defined(__AVX__)
#define KWO_LANES 4
#elif !defined(KWO_LANES)
#define KWO_LANES 2
#endif
constexpr int kLanes = KWO_LANES;

#if defined(__GNUC__)
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));
typedef float FloatLanes __attribute__((vector_size(kLanes * sizeof(float))));
typedef float Quad __attribute__((vector_size(4 * sizeof(float))));

template <typename Vector>
inline Vector LoadVector(const void* from) {
  Vector vector;
  std::memcpy(&vector, from, sizeof vector);
  return vector;
}

template <typename Vector>
inline void StoreVector(const Vector& vector, void* to) {
  std::memcpy(to, &vector, sizeof vector);
}

// GCC alone would make two halves of it.
inline Lanes Widened(FloatLanes floats) {
#if KWO_LANES == 8 && defined(__AVX512F__) && !defined(__clang__)
  constexpr int kAllLanes = -1, kRoundAsSet = 4;
  return __builtin_ia32_cvtps2pd512_mask(floats, Lanes{}, kAllLanes, kRoundAsSet);
#elif KWO_LANES == 4 && defined(__AVX__) && !defined(__clang__)
  return __builtin_ia32_cvtps2pd256(floats);
#else
  return __builtin_convertvector(floats, Lanes);
#endif
}

inline FloatLanes Rounded(Lanes doubles) {
  return __builtin_convertvector(doubles, FloatLanes);
}

// Four by four: rows become columns.
inline void Transpose(Quad* quads) {
  const Quad low = __builtin_shufflevector(quads[0], quads[1], 0, 4, 1, 5);
  const Quad high = __builtin_shufflevector(quads[0], quads[1], 2, 6, 3, 7);
  const Quad low2 = __builtin_shufflevector(quads[2], quads[3], 0, 4, 1, 5);
  const Quad high2 = __builtin_shufflevector(quads[2], quads[3], 2, 6, 3, 7);
  quads[0] = __builtin_shufflevector(low, low2, 0, 1, 4, 5);
  quads[1] = __builtin_shufflevector(low, low2, 2, 3, 6, 7);
  quads[2] = __builtin_shufflevector(high, high2, 0, 1, 4, 5);
  quads[3] = __builtin_shufflevector(high, high2, 2, 3, 6, 7);
}

// For each lane the four floats at `from + lane * stride`; four rows of lanes.
inline void LoadColumns(const float* from, int stride, Lanes* rows) {
  Quad quads[kLanes];
  for (int lane = 0; lane < kLanes; ++lane) quads[lane] = LoadVector<Quad>(from + lane * stride);
#if KWO_LANES == 8
  Transpose(quads);
  Transpose(quads + 4);
  for (int i = 0; i < 4; ++i)
    rows[i] = Widened(__builtin_shufflevector(quads[i], quads[4 + i], 0, 1, 2, 3, 4, 5, 6, 7));
#elif KWO_LANES == 4
  Transpose(quads);
  for (int i = 0; i < 4; ++i) rows[i] = Widened(quads[i]);
#else
  rows[0] = Widened(__builtin_shufflevector(quads[0], quads[1], 0, 4));
  rows[1] = Widened(__builtin_shufflevector(quads[0], quads[1], 1, 5));
  rows[2] = Widened(__builtin_shufflevector(quads[0], quads[1], 2, 6));
  rows[3] = Widened(__builtin_shufflevector(quads[0], quads[1], 3, 7));
#endif
}

// The other way: for each lane four floats side by side at `to + lane * stride`.
inline void StoreColumns(const FloatLanes* rows, float* to, int stride) {
#if KWO_LANES == 8
  Quad quads[8];
  for (int i = 0; i < 4; ++i) {
    quads[i] = __builtin_shufflevector(rows[i], rows[i], 0, 1, 2, 3);
    quads[4 + i] = __builtin_shufflevector(rows[i], rows[i], 4, 5, 6, 7);
  }
  Transpose(quads);
  Transpose(quads + 4);
#elif KWO_LANES == 4
  Quad quads[4] = {rows[0], rows[1], rows[2], rows[3]};
  Transpose(quads);
#else
  const Quad first = __builtin_shufflevector(rows[0], rows[1], 0, 2, 1, 3);
  const Quad second = __builtin_shufflevector(rows[2], rows[3], 0, 2, 1, 3);
  const Quad quads[2] = {__builtin_shufflevector(first, second, 0, 1, 4, 5),
                         __builtin_shufflevector(first, second, 2, 3, 6, 7)};
#endif
  for (int lane = 0; lane < kLanes; ++lane) StoreVector(quads[lane], to + lane * stride);
}

inline FloatLanes Reversed(FloatLanes lanes) {
#if KWO_LANES == 8
  return __builtin_shufflevector(lanes, lanes, 7, 6, 5, 4, 3, 2, 1, 0);
#elif KWO_LANES == 4
  return __builtin_shufflevector(lanes, lanes, 3, 2, 1, 0);
#else
  return __builtin_shufflevector(lanes, lanes, 1, 0);
#endif
}
#else
#error "The kernels need vectors as GCC and Clang have them"
#endif

}  // namespace KWO_KERNELS
}  // namespace kwo
