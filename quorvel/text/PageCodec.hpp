#pragma once

#include <memory>

#include "quorvel/pages/CharacterTables.hpp"
#include "quorvel/text/Decoder.hpp"

namespace quorvel::text {

/// The table-driven encodings.
std::unique_ptr<Decoder> makePageDecoder(std::shared_ptr<const ReadingTable> table);
std::unique_ptr<Encoder> makePageEncoder(std::shared_ptr<const WritingTable> table);

}  // namespace quorvel::text
