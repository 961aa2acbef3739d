#pragma once

#include "quorvel/base/Progress.h"

namespace quorvel {

/// UTF-8 to UTF-16, two bytes of room for each input byte. Stops at the end or
/// in front of the first ill-formed sequence, one cut off by the end included.
/// ASCII comes out low byte first whatever the host, everything else in host
/// order: on the little-endian hosts that matter the result is UTF-16LE.
Progress utf8ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out);

/// UTF-16 in host order (an even number of bytes, any alignment) to UTF-8,
/// three bytes of room for each unit. U+0000 is dropped, a lone low surrogate
/// written as three bytes. Stops at the end or in front of the first unit that
/// may need more than itself looked at: the marker unit U+FDEF, or a high
/// surrogate that no low surrogate follows.
Progress utf16ToUtf8(const unsigned char* in, const unsigned char* end, unsigned char* out);

/// As `utf16ToUtf8`, but stops in front of every high surrogate, for output
/// without sequences of four bytes.
Progress utf16ToUtf8WithoutPairs(const unsigned char* in, const unsigned char* end,
                                 unsigned char* out);

/// Writes any UTF-16 unit, a surrogate too, as a UTF-8 style sequence of three
/// bytes and returns the position behind it.
unsigned char* writeThreeBytes(unsigned int unit, unsigned char* out);

/// The UTF-16 unit in host order at `p`, which need not be aligned.
unsigned int loadUnit(const unsigned char* p);

inline bool isSurrogate(unsigned int unit) { return (unit & 0xF800) == 0xD800; }
inline bool isHighSurrogate(unsigned int unit) { return (unit & 0xFC00) == 0xD800; }
inline bool isLowSurrogate(unsigned int unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace quorvel
