#pragma once

#include "quorvel/kernel/Progress.hpp"

/// The inner loops: free functions over raw pointers that stop in front of the
/// first thing they cannot do and say how far they came. Every target has the
/// same ones and they do the same to the byte; `Target.h` chooses.
///
/// None reads outside [in, end) or writes outside the room that it is promised,
/// not even bytes that it takes back.
namespace quorvel::kernel {

using Loop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out);

/// The one ordinary unit in front of which the loops to UTF-8 stop: their caller
/// may read a marker there.
inline constexpr unsigned int undecidedUnit = 0xFDEF;

/// Between UTF-8 and the wider forms.
struct Utf {
  /// Two bytes of room for each input byte. Stops at the end or in front of the
  /// first ill-formed sequence, one cut off by the end included. ASCII comes out
  /// low byte first whatever the host, everything else in host order: on the
  /// little-endian hosts that matter the result is UTF-16LE.
  Loop* utf8ToUtf16;

  /// UTF-16 in host order (an even number of bytes, any alignment), three bytes
  /// of room for each unit. U+0000 is dropped, a lone low surrogate written as
  /// three bytes. Stops at the end or in front of the first unit that may need
  /// more than itself looked at: `undecidedUnit`, or a high surrogate
  /// that no low surrogate follows.
  Loop* utf16ToUtf8;

  /// As `utf16ToUtf8`, but stops in front of every high surrogate, for output
  /// without sequences of four bytes.
  Loop* utf16ToUtf8WithoutPairs;

  /// As `utf8ToUtf16`, but UTF-32 in host order throughout, with four bytes of
  /// room for each input byte.
  Loop* utf8ToUtf32;

  /// UTF-32 in host order (any alignment), as much room as input. Stops at the
  /// last whole unit or in front of the first that is no scalar value.
  Loop* utf32ToUtf8;
};

namespace scalar {
Loop utf8ToUtf16;
Loop utf16ToUtf8;
Loop utf16ToUtf8WithoutPairs;
Loop utf8ToUtf32;
Loop utf32ToUtf8;
}  // namespace scalar

/// x86-64 with AVX2, BMI, BMI2 and POPCNT; only there where the compiler can
/// make it.
namespace avx2 {
Loop utf8ToUtf16;
Loop utf16ToUtf8;
Loop utf16ToUtf8WithoutPairs;
Loop utf8ToUtf32;
Loop utf32ToUtf8;
}  // namespace avx2

}  // namespace quorvel::kernel
