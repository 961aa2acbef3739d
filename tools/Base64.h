#pragma once

#include <string>
#include <vector>

namespace pack {

using Bytes = std::vector<unsigned char>;

/// Standard base64 (RFC 4648, section 4), padded, on one line.
std::string encodeBase64(const Bytes& bytes);

}  // namespace pack
