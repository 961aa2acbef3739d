#pragma once

// What little the library asks of C strings, of the host's byte order and of the
// allocator, with sizes of 32 bits as everywhere in its interface.

#include "quorvel/base/Export.h"

namespace quorvel {

/// Number of bytes before the terminating NUL of `text`; 0 for null.
/// A longer text than 32 bits can count is reported as 0xFFFFFFFF.
QUORVEL_API unsigned int qvStrLen(const char* text);

/// Compares the first `n` bytes of `a` and `b`, stopping at a NUL in both.
/// Returns 0 when they are equal, else the sign of the first difference as
/// unsigned bytes. A negative `n` compares nothing.
QUORVEL_API int qvStrNCmp(const char* a, const char* b, int n);

/// True on a host that stores the high byte first.
QUORVEL_API bool qvIsBigEndian();

/// True on a host that stores the low byte first.
QUORVEL_API bool qvIsLittleEndian();

/// A new array of `n` bytes with indeterminate content, or null when memory
/// cannot be had; never throws. The caller owns it and frees it with
/// `delete[]`, or hands it to `DataBuffer::takeData`.
QUORVEL_API unsigned char* qvNewUnsignedChar(unsigned int n);

}  // namespace quorvel
