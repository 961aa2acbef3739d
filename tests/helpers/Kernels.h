#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "quorvel/kernel/Target.hpp"
#include "tests/helpers/Bytes.h"
#include "tests/helpers/Memory.h"
#include "tests/helpers/RandomText.h"
#include "tests/reference/TranscodeReference.h"

/// Runs the kernels of one target between pages that may not be touched and
/// compares them with a step by step.
namespace quorvel::test_kernels {

using kernel::Loop;
using kernel::Target;
using reference::Transcoded;

enum class Edge { front, back };
inline constexpr Edge edges[] = {Edge::front, Edge::back};

/// Readable and writable bytes between two pages that are neither: what goes a
/// byte past either edge ends the test run, however it is done.
class FencedBytes {
 public:
  explicit FencedBytes(std::size_t most)
      : m_size((most + page - 1) / page * page), m_mapping(m_size + 2 * page) {
    if (mprotect(m_mapping.data() + page, m_size, PROT_READ | PROT_WRITE) != 0) {
      throw std::runtime_error("mprotect");
    }
  }

  unsigned char* at(Edge edge, std::size_t size) const {
    if (size > m_size) throw std::length_error("FencedBytes");
    return m_mapping.data() + page + (edge == Edge::front ? 0 : m_size - size);
  }

 private:
  static constexpr std::size_t page = 65536;  // or a part of that

  std::size_t m_size;
  test_memory::Mapping m_mapping;
};

/// One direction: its loop on each target, the room that it is promised, and what
/// it must do.
struct Direction {
  const char* name;
  Loop& (*loopOf)(const kernel::Loops&);
  std::size_t roomPerTwoBytes;
  Transcoded (*expected)(std::string_view);
  bool (*isCutOff)(std::string_view rest);  // of what it leaves
  std::size_t unit;                         // the bytes that a text grows and shrinks by
};

inline const char* nameOf(Stop why) {
  return why == Stop::end ? "the end" : why == Stop::cutOff ? "a cut" : "something";
}

/// What a loop did with a text.
struct Ran {
  Transcoded text;
  Stop why;
  bool operator==(const Ran&) const = default;
};

class KernelTest : public testing::TestWithParam<Target> {
 protected:
  void SetUp() override {
    if (!kernel::canRun(GetParam())) GTEST_SKIP() << "not on this machine";
  }

  /// Whether the loop does what it must with the bytes at either edge of what
  /// it may touch.
  testing::AssertionResult agrees(const Direction& direction, std::string_view text) const {
    const Ran expected = expectedOf(direction, text);
    for (const Edge edge : edges) {
      const testing::AssertionResult result =
          isSame(direction, text, run(direction, text, edge), expected);
      if (!result) return result;
    }
    return testing::AssertionSuccess();
  }

  /// Whether the loop gives the same when it gets the text in pieces of up to
  /// `longest` bytes, what it leaves in front of the next.
  testing::AssertionResult agreesInPieces(const Direction& direction, std::string_view text,
                                          std::size_t longest, test_text::Random& random) const {
    Ran got{{}, Stop::end};
    std::string pending;
    for (std::size_t from = 0; from < text.size() && got.why != Stop::met;) {
      const std::size_t length = 1 + test_text::below(random, longest);
      pending += text.substr(from, length);
      from += std::min(length, text.size() - from);
      const Ran ran = run(direction, pending, Edge::back);
      got.text.bytes += ran.text.bytes;
      got.text.consumed += ran.text.consumed;
      got.why = ran.why;
      pending.erase(0, ran.text.consumed);
      if (pending.size() >= 4 && ran.why != Stop::met) {
        return testing::AssertionFailure()
               << direction.name << " left " << quorvel_test::hex(pending);
      }
    }
    return isSame(direction, text, got, expectedOf(direction, text));
  }

  /// As `agrees`, and again with what stands behind each place where it stops.
  testing::AssertionResult agreesThroughout(const Direction& direction,
                                            std::string_view text) const {
    while (true) {
      testing::AssertionResult result = agrees(direction, text);
      const std::size_t consumed = direction.expected(text).consumed;
      if (!result || text.size() - consumed < direction.unit) return result;
      text.remove_prefix(consumed + direction.unit);
    }
  }

 private:
  static Ran expectedOf(const Direction& direction, std::string_view text) {
    const Transcoded expected = direction.expected(text);
    const std::string_view rest = text.substr(expected.consumed);
    return {expected, rest.empty()               ? Stop::end
                      : direction.isCutOff(rest) ? Stop::cutOff
                                                 : Stop::met};
  }

  static testing::AssertionResult isSame(const Direction& direction, std::string_view text,
                                         const Ran& got, const Ran& expected) {
    if (got == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << direction.name << " of " << quorvel_test::hex(text) << "\nstopped at "
           << got.text.consumed << " for " << nameOf(got.why) << ", not " << expected.text.consumed
           << " for " << nameOf(expected.why) << "\nwrote " << quorvel_test::hex(got.text.bytes)
           << "\nnot   " << quorvel_test::hex(expected.text.bytes);
  }

  Ran run(const Direction& direction, std::string_view text, Edge edge) const {
    unsigned char* in = m_in.at(edge, text.size());
    text.copy(reinterpret_cast<char*>(in), text.size());
    unsigned char* out = m_out.at(edge, text.size() * direction.roomPerTwoBytes / 2);
    const Progress progress =
        direction.loopOf(kernel::loopsOf(GetParam()))(in, in + text.size(), out);
    return {{{reinterpret_cast<char*>(out), static_cast<std::size_t>(progress.out - out)},
             static_cast<std::size_t>(progress.in - in)},
            progress.why};
  }

  static constexpr std::size_t most = 5U << 20;
  FencedBytes m_in{most};
  FencedBytes m_out{4 * most};
};

inline std::string targetName(const testing::TestParamInfo<Target>& info) {
  return kernel::nameOf(info.param);
}

}  // namespace quorvel::test_kernels
