#pragma once

#include <memory>

#include "quorvel/text/Decoder.hpp"
#include "quorvel/text/UnicodeDecoders.hpp"

namespace quorvel::text {

std::unique_ptr<Encoder> makeUtf8Encoder();
std::unique_ptr<Encoder> makeUtf16Encoder(Order order);
std::unique_ptr<Encoder> makeUtf32Encoder(Order order);
std::unique_ptr<Encoder> makeUtf7Encoder();
std::unique_ptr<Encoder> makeGsmEncoder();

}  // namespace quorvel::text
