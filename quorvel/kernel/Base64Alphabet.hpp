#pragma once

namespace quorvel {

/// The base64 alphabet (RFC 4648, section 4), which UTF-7 shares.
inline constexpr char base64Digits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace quorvel
