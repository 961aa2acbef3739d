// The list of targets and the choice among them. A new one is a row here and a name
// in `Target`, in the same order; CONTRIBUTING.md tells the rest.

#include "quorvel/kernel/Target.hpp"

#include <atomic>
#include <bit>
#include <cstddef>
#include <iterator>

namespace quorvel::kernel {

static_assert(std::endian::native == std::endian::little,
              "Quorvel runs on little-endian machines only");

namespace {

constexpr Loops scalarLoops{
    .utf8ToUtf16 = scalar::utf8ToUtf16,
    .utf16ToUtf8 = scalar::utf16ToUtf8,
    .utf16ToUtf8WithoutPairs = scalar::utf16ToUtf8WithoutPairs,
    .utf16ToUtf8Strictly = scalar::utf16ToUtf8Strictly,
    .utf16ToUtf16 = scalar::utf16ToUtf16,
    .utf16ToUtf16Be = scalar::utf16ToUtf16Be,
    .utf16BeToUtf16 = scalar::utf16BeToUtf16,
    .utf8ToUtf32 = scalar::utf8ToUtf32,
    .utf32ToUtf8 = scalar::utf32ToUtf8,
    .bytesToUnits = scalar::bytesToUnits,
    .pairsToUnits = scalar::pairsToUnits,
    .unitsToBytes = scalar::unitsToBytes,
    .unitsToPairs = scalar::unitsToPairs,
    .iso2022JpToShiftJis = scalar::iso2022JpToShiftJis,
    .shiftJisToIso2022Jp = scalar::shiftJisToIso2022Jp,
    .iso2022KrToKsc = scalar::iso2022KrToKsc,
    .kscToIso2022Kr = scalar::kscToIso2022Kr,
    .utf7ToUtf16 = scalar::utf7ToUtf16,
    .utf16ToUtf7 = scalar::utf16ToUtf7,
};

bool always() { return true; }

#ifdef QUORVEL_WITH_AVX2
constexpr Loops avx2Loops{
    .utf8ToUtf16 = avx2::utf8ToUtf16,
    .utf16ToUtf8 = avx2::utf16ToUtf8,
    .utf16ToUtf8WithoutPairs = avx2::utf16ToUtf8WithoutPairs,
    .utf16ToUtf8Strictly = avx2::utf16ToUtf8Strictly,
    .utf16ToUtf16 = avx2::utf16ToUtf16,
    .utf16ToUtf16Be = avx2::utf16ToUtf16Be,
    .utf16BeToUtf16 = avx2::utf16BeToUtf16,
    .utf8ToUtf32 = avx2::utf8ToUtf32,
    .utf32ToUtf8 = avx2::utf32ToUtf8,
    .bytesToUnits = avx2::bytesToUnits,
    .pairsToUnits = avx2::pairsToUnits,
    .unitsToBytes = avx2::unitsToBytes,
    .unitsToPairs = avx2::unitsToPairs,
    .iso2022JpToShiftJis = avx2::iso2022JpToShiftJis,
    .shiftJisToIso2022Jp = avx2::shiftJisToIso2022Jp,
    .iso2022KrToKsc = avx2::iso2022KrToKsc,
    .kscToIso2022Kr = avx2::kscToIso2022Kr,
    .utf7ToUtf16 = avx2::utf7ToUtf16,
    .utf16ToUtf7 = avx2::utf16ToUtf7,
};

bool hasAvx2() {
  // Conversions may run before the constructor that would do this.
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
         __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
}
#else
constexpr const Loops& avx2Loops = scalarLoops;

bool hasAvx2() { return false; }
#endif

struct Row {
  Target target;
  const char* name;
  bool (*isSupported)();
  const Loops& loops;
  Target fallback;
};

constexpr Row rows[] = {
    {Target::scalar, "scalar", always, scalarLoops, Target::scalar},
    {Target::avx2, "avx2", hasAvx2, avx2Loops, Target::scalar},
};

constexpr bool areInOrder() {
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    if (rows[i].target != allTargets[i] || rows[i].fallback > rows[i].target) return false;
    if (i != 0 && rows[i].fallback == rows[i].target) return false;
  }
  return std::size(rows) == std::size(allTargets);
}
static_assert(areInOrder());

const Row& rowOf(Target target) { return rows[static_cast<std::size_t>(target)]; }

// Null before the first choice: so that it has a value before any constructor has
// run.
std::atomic<const Row*> chosen{nullptr};

const Row& choose() {
  const Row* row = std::end(rows) - 1;
  while (!row->isSupported()) row = &rowOf(row->fallback);
  chosen.store(row, std::memory_order_relaxed);
  return *row;
}

const Row& current() {
  const Row* row = chosen.load(std::memory_order_relaxed);
  return row ? *row : choose();
}

}  // namespace

const char* nameOf(Target target) { return rowOf(target).name; }

bool canRun(Target target) { return rowOf(target).isSupported(); }

Target fallbackOf(Target target) { return rowOf(target).fallback; }

Target currentTarget() { return current().target; }

void setTarget(Target target) { chosen.store(&rowOf(target), std::memory_order_relaxed); }

const Loops& loopsOf(Target target) { return rowOf(target).loops; }

const Loops& loops() { return current().loops; }

}  // namespace quorvel::kernel
