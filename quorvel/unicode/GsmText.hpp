#pragma once

// The GSM alphabet for the converter, which must tell lost characters from failure.

#include "quorvel/base/DataBuffer.h"

namespace quorvel {

/// How a transform to or from the GSM alphabet ended: those who do not mind
/// lost characters must still learn that memory ran out.
enum class GsmResult { clean, lossy, outOfMemory };

/// The transforms behind `_qvUtf::gsm_to_utf8` and `_qvUtf::utf8_to_gsm`.
GsmResult gsmToUtf8(const unsigned char* p, unsigned int n, DataBuffer& out);
GsmResult utf8ToGsm(const unsigned char* p, unsigned int n, DataBuffer& out);

}  // namespace quorvel
