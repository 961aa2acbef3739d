#pragma once

namespace quorvel::tableRegistry {

/// The 376 two-byte Shift_JIS codes of rows 89 to 92 of ISO-2022-JP, as
/// `Japanese::GetSjisFrom2022_LastBlock` has them. Unpacked on the first call and
/// published as the tables are; null when memory runs out.
const unsigned char* lastBlock();

/// Frees the block; `release` does so too.
void releaseLastBlock();

}  // namespace quorvel::tableRegistry
