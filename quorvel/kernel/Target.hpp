#pragma once

#include "quorvel/kernel/Loops.hpp"

// Chooses the inner loops by what the machine can run.
//
// What lies where in this directory:
//
//   Loops.hpp                     every loop, and what it promises
//   Progress.hpp                  what a loop reports
//   SourceToDestinationTarget.cpp one direction for one target: the loop from UTF-8
//                                 to UTF-16 with AVX2 is in Utf8ToUtf16Avx2.cpp. A
//                                 `Page` is any code page by its table; `Units` are
//                                 those of UTF-16 or UTF-32
//   NameTarget.hpp                what several files of that target stand on, such as
//                                 Iso2022Avx2.hpp; nobody else includes it
//   LoopTables.hpp and ...Text    tables, states and facts about an encoding, the
//                                 same for all targets
//
// The scalar loops are plain C++ and judge everything step by step. Those of other
// targets do what is common, many bytes at once, and hand the rest to them.

namespace quorvel::kernel {

/// The instruction sets that there are loops for, the plainest first.
enum class Target { scalar, avx2 };

inline constexpr Target allTargets[] = {Target::scalar, Target::avx2};

const char* nameOf(Target target);

/// Whether this build has the loops of `target` and this machine can run them.
bool canRun(Target target);

/// Which one is taken where `target` cannot be run; plainer than `target`, the
/// scalar one excepted.
Target fallbackOf(Target target);

/// The best that the machine can run, or what `setTarget` said last.
Target currentTarget();

/// For tests and measurements; `target` must be one that can be run. Conversions
/// under way in other threads may end on the target that they began on.
void setTarget(Target target);

/// The loops of one target, and of the current one.
const Loops& loopsOf(Target target);
const Loops& loops();

}  // namespace quorvel::kernel
