// Base64, in which packed tables are kept. The decoder fills a block whose length
// it knows beforehand and gives it up when it meets anything that is not base64.

#include "quorvel/pages/ContentCoding.h"

#include "quorvel/base/qvHelpers.h"
#include "quorvel/kernel/Base64Digits.hpp"
#include "quorvel/pages/Unpacking.hpp"

namespace quorvel {

namespace {

unsigned int countPadding(const unsigned char* text, unsigned int len) {
  unsigned int padding = 0;
  while (padding < 2 && padding < len && text[len - 1 - padding] == '=') ++padding;
  return padding;
}

unsigned int decodedLength(const unsigned char* text, unsigned int len) {
  return len / 4 * 3 - countPadding(text, len);
}

// Decodes well-formed text of a length divisible by 4 to exactly
// `decodedLength` bytes; false for anything else.
bool decode(const unsigned char* text, unsigned int len, unsigned char* out) {
  const unsigned int digits = len - countPadding(text, len);
  unsigned int bits = 0;
  unsigned int bitCount = 0;
  for (unsigned int i = 0; i < digits; ++i) {
    const unsigned int digit = base64DigitValue(text[i]);
    if (digit == noBase64Digit) return false;
    bits = bits << 6 | digit;
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      *out++ = static_cast<unsigned char>(bits >> bitCount);
      bits &= (1U << bitCount) - 1;
    }
  }
  return bits == 0;
}

}  // namespace

Unpacked unpackBase64(const char* text, unsigned int len, DataBuffer& out) {
  if (len == 0) return Unpacked::whole;
  if (!text || len % 4) return Unpacked::damaged;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  const unsigned int length = decodedLength(bytes, len);
  unsigned char* room = out.growBy(length);
  if (!room) return Unpacked::outOfMemory;
  if (!decode(bytes, len, room)) return Unpacked::damaged;
  out.keepWritten(length);
  return Unpacked::whole;
}

bool ContentCoding::decodeBase64ToDb(const char* text, unsigned int len, DataBuffer& out) {
  return unpackBase64(text, len, out) == Unpacked::whole;
}

unsigned char* ContentCoding::decodeBase64(const char* text, unsigned int len,
                                           unsigned int* outLen) {
  *outLen = 0;
  if (len % 4 || (len && !text)) return nullptr;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  const unsigned int length = len ? decodedLength(bytes, len) : 0;
  unsigned char* block = qvNewUnsignedChar(length);
  if (!block) return nullptr;
  if (len && !decode(bytes, len, block)) {
    delete[] block;
    return nullptr;
  }
  *outLen = length;
  return block;
}

}  // namespace quorvel
