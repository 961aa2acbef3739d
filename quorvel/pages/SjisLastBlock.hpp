#pragma once

namespace quorvel {

/// The base64 text of `Japanese::GetSjisFrom2022_LastBlock`, packed at build
/// time from codepages/iso2022jp-last-block.txt.
extern const char sjisLastBlockText[];

}  // namespace quorvel
