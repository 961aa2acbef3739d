#pragma once

namespace quorvel {

/// The bytes that announce raw bytes inside a UTF-16 pivot; a count byte and
/// then the raw bytes follow. Handlers write them in this order and the table
/// encoder looks for this order, the unit U+EFFD.
inline constexpr unsigned char passthroughMarker[2] = {0xFD, 0xEF};

/// The unit that the UTF-16 to UTF-8 transcoder takes for the marker: in host
/// order, so on a little-endian host the bytes stand the other way round than
/// the handlers write them. Readers of its output rely on the difference.
inline constexpr unsigned int passthroughMarkerUnit = 0xFDEF;

/// A count byte above this is no count: only the marker is taken away.
inline constexpr unsigned int mostPassthroughBytes = 5;

}  // namespace quorvel
