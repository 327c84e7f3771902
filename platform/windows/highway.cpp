// Debian builds Highway's library for Linux only. Vector code that chooses its kernels at run time
// needs these two functions of it; everything else is in the headers.

#include <hwy/targets.h>

namespace hwy {

int64_t SupportedTargets() {
  __builtin_cpu_init();
  int64_t targets = HWY_EMU128;
  if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("pclmul") ||
      !__builtin_cpu_supports("aes")) {
    return targets;
  }
  targets |= HWY_SSE4;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
      __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma") &&
      __builtin_cpu_supports("f16c")) {
    targets |= HWY_AVX2;
  }
  return targets;
}

ChosenTarget& GetChosenTarget() {
  static ChosenTarget chosen;
  return chosen;
}

}  // namespace hwy
