#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "quorvel/kernel/Target.hpp"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Kernels.h"

/// Runs conversions on one target, and their kernels, which keep a state from call
/// to call, between pages that may not be touched.
namespace quorvel::test_kernels {

/// What a conversion gives, and the flag that it ends with.
struct Converted {
  std::string bytes;
  bool flag;
  bool operator==(const Converted&) const = default;
};

/// What a kernel leaves behind.
template <typename State>
struct Ended {
  std::string bytes;
  std::size_t consumed;
  State state;
  bool operator==(const Ended&) const = default;
};

/// One direction: its loop, the room that it is promised for each byte, the
/// conversion that uses it, and what that must do.
template <typename State>
struct StatefulDirection {
  const char* name;
  Progress (*(*loopOf)(Target))(const unsigned char*, const unsigned char*, unsigned char*, State&);
  std::size_t room;
  Converted (*convert)(const unsigned char* in, std::size_t size);
  Converted (*expected)(std::string_view text);
};

class StatefulKernelTest : public testing::TestWithParam<Target> {
 protected:
  void SetUp() override {
    if (!kernel::canRun(GetParam())) GTEST_SKIP() << "not on this machine";
    kernel::setTarget(GetParam());
  }
  void TearDown() override { kernel::setTarget(m_before); }

  /// Whether the conversion does what it must, and the loop the same as the scalar
  /// one from whichever state, with the bytes at either edge of what it may touch.
  template <typename State, std::size_t numStates>
  testing::AssertionResult agreesFrom(const State (&states)[numStates],
                                      const StatefulDirection<State>& direction,
                                      std::string_view text) const {
    const Converted expected = direction.expected(text);
    for (const Edge edge : edges) {
      const Converted got = direction.convert(placed(text, edge), text.size());
      if (!(got == expected)) {
        return testing::AssertionFailure()
               << direction.name << " of " << quorvel_test::hex(text) << "\ngave " << got.flag
               << ", " << quorvel_test::hex(got.bytes) << "\nnot  " << expected.flag << ", "
               << quorvel_test::hex(expected.bytes);
      }
      for (const State& state : states) {
        const Ended<State> plain = run(direction, Target::scalar, text, edge, state);
        const Ended<State> ended = run(direction, GetParam(), text, edge, state);
        if (ended == plain) continue;
        return testing::AssertionFailure()
               << direction.name << " of " << quorvel_test::hex(text) << "\nfrom state "
               << &state - states << " stopped at " << ended.consumed << ", not " << plain.consumed
               << ", wrote " << quorvel_test::hex(ended.bytes) << "\nnot "
               << quorvel_test::hex(plain.bytes);
      }
    }
    return testing::AssertionSuccess();
  }

 private:
  unsigned char* placed(std::string_view text, Edge edge) const {
    unsigned char* in = m_in.at(edge, text.size());
    text.copy(reinterpret_cast<char*>(in), text.size());
    return in;
  }

  template <typename State>
  Ended<State> run(const StatefulDirection<State>& direction, Target target, std::string_view text,
                   Edge edge, State state) const {
    const unsigned char* in = placed(text, edge);
    unsigned char* out = m_out.at(edge, text.size() * direction.room);
    const Progress progress = (*direction.loopOf(target))(in, in + text.size(), out, state);
    return {{reinterpret_cast<char*>(out), static_cast<std::size_t>(progress.out - out)},
            static_cast<std::size_t>(progress.in - in),
            state};
  }

  static constexpr std::size_t most = 1U << 18;
  const Target m_before = kernel::currentTarget();
  FencedBytes m_in{most};
  FencedBytes m_out{4 * most};
};

}  // namespace quorvel::test_kernels
