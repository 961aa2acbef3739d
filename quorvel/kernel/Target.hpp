#pragma once

#include "quorvel/kernel/Iso2022.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/PageTables.hpp"
#include "quorvel/kernel/Utf7Run.hpp"

namespace quorvel::kernel {

/// The instruction sets that kernels are written for, the plainest first.
enum class Target { scalar, avx2 };

inline constexpr Target allTargets[] = {Target::scalar, Target::avx2};

constexpr const char* nameOf(Target target) { return target == Target::scalar ? "scalar" : "avx2"; }

/// Whether this build has the kernels of `target` and this machine can run them.
bool canRun(Target target);

/// The best that the machine can run, or what `setTarget` said last.
Target currentTarget();

/// For tests and measurements; `target` must be one that can be run. Conversions
/// under way in other threads may end on the target that they began on.
void setTarget(Target target);

/// The loops of one target, and of the current one.
const Utf& utfOf(Target target);
const Table& tableOf(Target target);
const Iso2022& iso2022Of(Target target);
inline const Utf& utf() { return utfOf(currentTarget()); }
inline const Table& table() { return tableOf(currentTarget()); }
inline const Iso2022& iso2022() { return iso2022Of(currentTarget()); }
const Utf7& utf7Of(Target target);
inline const Utf7& utf7() { return utf7Of(currentTarget()); }

}  // namespace quorvel::kernel
