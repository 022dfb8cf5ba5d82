#include "decoder/kernels.h"

namespace kwo {

namespace kernels_plain {
extern const DecoderKernels kernels;
}
#ifdef KWO_X86_KERNELS
namespace kernels_avx2 {
extern const DecoderKernels kernels;
}
namespace kernels_avx512 {
extern const DecoderKernels kernels;
}
#endif

namespace {

struct Choice {
  const DecoderKernels* usable[4] = {&kernels_plain::kernels, nullptr, nullptr, nullptr};
  int count = 1;

  Choice() {
#ifdef KWO_X86_KERNELS
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) return;
    usable[count++] = &kernels_avx2::kernels;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512dq") ||
        !__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512bw"))
      return;
    usable[count++] = &kernels_avx512::kernels;
#endif
  }
};

const Choice choice;

}  // namespace

const DecoderKernels& Kernels() {
  return *choice.usable[choice.count - 1];
}

const DecoderKernels* const* AllKernels() {
  return choice.usable;
}

}  // namespace kwo
