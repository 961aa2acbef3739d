#pragma once

#include "quorvel/kernel/Progress.hpp"

namespace quorvel::utf7 {

/// What stands for itself beside letters and digits: the rest of set D of RFC 2152
/// and the white space that its rule 3 adds.
inline constexpr char directPunctuation[] = "'(),-./:? \t\r\n";

}  // namespace quorvel::utf7

namespace quorvel::kernel {

/// The run of base64 that a text stands in.
struct Utf7Run {
  bool isOpen = false;
  bool hasDigits = false;  ///< counts for reading only
  bool operator==(const Utf7Run&) const = default;
};

/// UTF-7 and UTF-16 in host order. Both begin outside of a run or behind a
/// multiple of eight digits of one, which are three units.
struct Utf7 {
  using Loop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        Utf7Run& run);

  /// Two bytes of room for each input byte. Stops at the end, in front of a byte
  /// above 7F that is in no run, or behind a multiple of eight digits of a run
  /// that goes on with fewer, when the end of the input follows these or they do
  /// not end the run as they should.
  Loop* toUtf16;

  /// Four bytes of room for each unit; an even number of bytes. Stops at the end,
  /// or behind a multiple of three units of a run when the end of the input
  /// follows fewer.
  Loop* fromUtf16;
};

namespace scalar {
Utf7::Loop utf7ToUtf16;
Utf7::Loop utf16ToUtf7;
}  // namespace scalar

namespace avx2 {
Utf7::Loop utf7ToUtf16;
Utf7::Loop utf16ToUtf7;
}  // namespace avx2

}  // namespace quorvel::kernel
