#pragma once

#include <memory>

#include "quorvel/pages/CharacterTables.hpp"
#include "quorvel/text/Decoder.hpp"

namespace quorvel::text {

/// ISO-2022-JP (RFC 1468, with half-width katakana by ESC ( I), over the table of
/// Shift_JIS, and ISO-2022-KR (RFC 1557), over that of Unified Hangul.
std::unique_ptr<Decoder> makeJapaneseDecoder(std::shared_ptr<const ReadingTable> shiftJis);
std::unique_ptr<Encoder> makeJapaneseEncoder(std::shared_ptr<const WritingTable> shiftJis);
std::unique_ptr<Decoder> makeKoreanDecoder(std::shared_ptr<const ReadingTable> hangul);
std::unique_ptr<Encoder> makeKoreanEncoder(std::shared_ptr<const WritingTable> hangul);

}  // namespace quorvel::text
