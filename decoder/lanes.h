#pragma once

#include <cstring>

namespace kwo {
inline namespace KWO_KERNELS {

/// Eight doubles side by side, one per subband or time slot.
#if defined(__GNUC__)
typedef double Lanes __attribute__((vector_size(64)));
#else
struct Lanes {
  double values[8];
  double operator[](int i) const { return values[i]; }
  double& operator[](int i) { return values[i]; }
};
inline Lanes operator+(Lanes a, const Lanes& b) {
  for (int i = 0; i < 8; ++i) a[i] += b[i];
  return a;
}
inline Lanes operator-(Lanes a, const Lanes& b) {
  for (int i = 0; i < 8; ++i) a[i] -= b[i];
  return a;
}
inline Lanes operator*(Lanes a, const Lanes& b) {
  for (int i = 0; i < 8; ++i) a[i] *= b[i];
  return a;
}
inline Lanes operator*(Lanes a, double b) {
  for (int i = 0; i < 8; ++i) a[i] *= b;
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
