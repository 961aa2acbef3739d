#pragma once

#include <memory>

#include "quorvel/kernel/Order.hpp"
#include "quorvel/text/Decoder.hpp"

namespace quorvel::text {

using kernel::Order;

std::unique_ptr<Decoder> makeUtf8Decoder();
std::unique_ptr<Decoder> makeUtf16Decoder(Order order);
std::unique_ptr<Decoder> makeUtf32Decoder(Order order);
std::unique_ptr<Decoder> makeUtf7Decoder();
std::unique_ptr<Decoder> makeGsmDecoder();

}  // namespace quorvel::text
