#include "quorvel/kernel/Target.hpp"

#include <atomic>

namespace quorvel::kernel {

namespace {

bool hasAvx2() {
#ifdef QUORVEL_WITH_AVX2
  // Conversions may run before the constructor that would do this.
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
         __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
#else
  return false;
#endif
}

constexpr Utf scalarUtf{scalar::utf8ToUtf16, scalar::utf16ToUtf8, scalar::utf16ToUtf8WithoutPairs,
                        scalar::utf8ToUtf32, scalar::utf32ToUtf8};
constexpr Iso2022 scalarIso2022{scalar::jisToShiftJis, scalar::shiftJisToJis, scalar::isoToKsc,
                                scalar::kscToIso};
constexpr Utf7 scalarUtf7{scalar::utf7ToUtf16, scalar::utf16ToUtf7};
#ifdef QUORVEL_WITH_AVX2
constexpr Utf avx2Utf{avx2::utf8ToUtf16, avx2::utf16ToUtf8, avx2::utf16ToUtf8WithoutPairs,
                      avx2::utf8ToUtf32, avx2::utf32ToUtf8};
constexpr Iso2022 avx2Iso2022{avx2::jisToShiftJis, avx2::shiftJisToJis, avx2::isoToKsc,
                              avx2::kscToIso};
constexpr Utf7 avx2Utf7{avx2::utf7ToUtf16, avx2::utf16ToUtf7};
#endif

constexpr int notChosenYet = -1;

// An int, not a Target: so that it has a value before any constructor has run.
std::atomic<int> chosen{notChosenYet};

Target best() { return canRun(Target::avx2) ? Target::avx2 : Target::scalar; }

}  // namespace

bool canRun(Target target) { return target == Target::scalar || hasAvx2(); }

Target currentTarget() {
  const int target = chosen.load(std::memory_order_relaxed);
  if (target != notChosenYet) return static_cast<Target>(target);
  const Target found = best();
  chosen.store(static_cast<int>(found), std::memory_order_relaxed);
  return found;
}

void setTarget(Target target) { chosen.store(static_cast<int>(target), std::memory_order_relaxed); }

const Utf& utfOf([[maybe_unused]] Target target) {
#ifdef QUORVEL_WITH_AVX2
  if (target == Target::avx2) return avx2Utf;
#endif
  return scalarUtf;
}

const Table& tableOf([[maybe_unused]] Target target) {
#ifdef QUORVEL_WITH_AVX2
  if (target == Target::avx2) return avx2::table;
#endif
  return scalar::table;
}

const Iso2022& iso2022Of([[maybe_unused]] Target target) {
#ifdef QUORVEL_WITH_AVX2
  if (target == Target::avx2) return avx2Iso2022;
#endif
  return scalarIso2022;
}

const Utf7& utf7Of([[maybe_unused]] Target target) {
#ifdef QUORVEL_WITH_AVX2
  if (target == Target::avx2) return avx2Utf7;
#endif
  return scalarUtf7;
}

}  // namespace quorvel::kernel
