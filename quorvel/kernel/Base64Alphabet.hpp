#pragma once

// The digits of base64 alone, for what may include no function (Avx2.hpp).

namespace quorvel {

/// The base64 alphabet (RFC 4648, section 4), which UTF-7 shares.
inline constexpr char base64Digits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace quorvel
