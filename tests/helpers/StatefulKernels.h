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
  Stop why;
  bool operator==(const Ended&) const = default;
};

/// One direction: its loop, the room that it is promised for each byte, the
/// conversion that uses it, and what that must do.
template <typename State>
struct StatefulDirection {
  const char* name;
  kernel::StatefulLoop<State>& (*loopOf)(const kernel::Loops&);
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
        return isNot(direction, text, ended, plain) << "\nfrom state " << &state - states;
      }
    }
    return testing::AssertionSuccess();
  }

  /// Whether the loop gives the same when it gets the text in pieces of up to
  /// `longest` bytes, what it leaves in front of the next.
  template <typename State, std::size_t numStates>
  testing::AssertionResult agreesInPieces(const State (&states)[numStates],
                                          const StatefulDirection<State>& direction,
                                          std::string_view text, std::size_t longest,
                                          test_text::Random& random) const {
    for (const State& state : states) {
      const Ended<State> whole = run(direction, Target::scalar, text, Edge::back, state);
      Ended<State> got{{}, 0, state, Stop::end};
      std::string pending;
      for (std::size_t from = 0; from < text.size() && got.why != Stop::met;) {
        const std::size_t length = 1 + test_text::below(random, longest);
        pending += text.substr(from, length);
        from += std::min(length, text.size() - from);
        const Ended<State> ended = run(direction, GetParam(), pending, Edge::back, got.state);
        pending.erase(0, ended.consumed);
        if (ended.why != Stop::met && pending.size() >= 4) return testing::AssertionFailure();
        got = {got.bytes + ended.bytes, got.consumed + ended.consumed, ended.state, ended.why};
      }
      if (!(got == whole)) return isNot(direction, text, got, whole) << "\nin pieces";
    }
    return testing::AssertionSuccess();
  }

 private:
  template <typename State>
  static testing::AssertionResult isNot(const StatefulDirection<State>& direction,
                                        std::string_view text, const Ended<State>& got,
                                        const Ended<State>& expected) {
    return testing::AssertionFailure()
           << direction.name << " of " << quorvel_test::hex(text) << "\nstopped at " << got.consumed
           << " for " << nameOf(got.why) << ", not " << expected.consumed << " for "
           << nameOf(expected.why) << (got.state == expected.state ? "" : ", with another state")
           << "\nwrote " << quorvel_test::hex(got.bytes) << "\nnot   "
           << quorvel_test::hex(expected.bytes);
  }

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
    const Progress progress =
        direction.loopOf(kernel::loopsOf(target))(in, in + text.size(), out, state);
    return {{reinterpret_cast<char*>(out), static_cast<std::size_t>(progress.out - out)},
            static_cast<std::size_t>(progress.in - in),
            state,
            progress.why};
  }

  static constexpr std::size_t most = 1U << 18;
  const Target m_before = kernel::currentTarget();
  FencedBytes m_in{most};
  FencedBytes m_out{4 * most};
};

}  // namespace quorvel::test_kernels
