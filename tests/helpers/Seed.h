#pragma once

#include <cstdlib>
#include <random>

/// What the environment asks of the tests that try random cases. Without it each
/// run tries the same; `script/soak` tells every run to try others.
namespace quorvel::test_seed {

inline unsigned int environmentNumber(const char* name) {
  const char* value = std::getenv(name);
  return value ? static_cast<unsigned int>(std::strtoul(value, nullptr, 10)) : 0;
}

/// The `number`th sequence of this run; there may be up to a thousand.
inline unsigned int seedOf(unsigned int number) {
  static const unsigned int run = environmentNumber("QUORVEL_SEED");
  return run * 1000 + number;
}

/// Of the cases that need only be tried on the best target: whether to try them
/// on every one.
inline bool isForEachTarget() {
  static const bool isAsked = environmentNumber("QUORVEL_EACH_TARGET") != 0;
  return isAsked;
}

/// The `number`th sequence of random numbers of this run.
struct Random : std::mt19937 {
  explicit Random(unsigned int number) : std::mt19937(seedOf(number)) {}
};

}  // namespace quorvel::test_seed
