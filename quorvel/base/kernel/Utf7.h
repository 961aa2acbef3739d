#pragma once

#include "quorvel/base/Progress.h"

namespace quorvel::kernel {

/// The run of base64 that a text stands in.
struct Utf7Run {
  bool isOpen = false;
  bool hasDigits = false;
  bool operator==(const Utf7Run&) const = default;
};

/// UTF-7 to UTF-16.
struct Utf7 {
  using Loop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out,
                        Utf7Run& run);

  /// Two bytes of room for each input byte; UTF-16 in host order. Begins outside
  /// of a run or behind a multiple of eight digits of one. Stops at the end, in
  /// front of a byte above 7F that is in no run, or behind a multiple of eight
  /// digits of a run that goes on with fewer, when the end of the input follows
  /// these or they do not end the run as they should.
  Loop* toUtf16;
};

namespace scalar {
Utf7::Loop utf7ToUtf16;
}

namespace avx2 {
Utf7::Loop utf7ToUtf16;
}

}  // namespace quorvel::kernel
