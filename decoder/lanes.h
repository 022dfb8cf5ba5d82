#pragma once

#include <cstring>

namespace kwo {
inline namespace KWO_KERNELS {

/// As many doubles side by side as one register of this instruction set holds, one per subband or
/// time slot.
#if defined(__AVX512F__)
constexpr int kLanes = 8;
#elif defined(__AVX__)
constexpr int kLanes = 4;
#else
constexpr int kLanes = 2;
#endif

#if defined(__GNUC__)
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));
typedef float FloatLanes __attribute__((vector_size(kLanes * sizeof(float))));
#else
struct Lanes {
  double values[kLanes];
  double operator[](int i) const { return values[i]; }
  double& operator[](int i) { return values[i]; }
};
inline Lanes operator+(Lanes a, const Lanes& b) {
  for (int i = 0; i < kLanes; ++i) a[i] += b[i];
  return a;
}
inline Lanes operator-(Lanes a, const Lanes& b) {
  for (int i = 0; i < kLanes; ++i) a[i] -= b[i];
  return a;
}
inline Lanes operator*(Lanes a, const Lanes& b) {
  for (int i = 0; i < kLanes; ++i) a[i] *= b[i];
  return a;
}
inline Lanes operator*(Lanes a, double b) {
  for (int i = 0; i < kLanes; ++i) a[i] *= b;
  return a;
}
inline Lanes operator*(double a, const Lanes& b) {
  return b * a;
}
inline Lanes& operator+=(Lanes& a, const Lanes& b) {
  return a = a + b;
}
#endif

}  // namespace KWO_KERNELS
}  // namespace kwo
