// UTF-8 one character at a time. Whole texts go through the loops of the kernel, by
// way of support/Transcode.cpp.

#include <algorithm>

#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

bool g_allow_4byte_utf8 = true;

int _qvUtf::NumUtf8Bytes(const unsigned char* p, int n) {
  if (n <= 0) return 0;
  const unsigned int lead = *p;
  const int announced = lead < 0xC0 || lead > 0xF7 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return std::min(announced, n);
}

unsigned int _qvUtf::utf16FromUtf8(const unsigned char* p, unsigned int& consumed) {
  const Utf8Sequence sequence = decodeUtf8(p, 4);
  consumed = sequence.length;
  return sequence.isWellFormed ? utf16Units(sequence.codePoint) : 0;
}

bool _qvUtf::oneUtf32ToUtf8(unsigned int codePoint, char* out, unsigned int& n) {
  n = 0;
  if (!isScalarValue(codePoint)) return false;
  auto* begin = reinterpret_cast<unsigned char*>(out);
  n = static_cast<unsigned int>(encodeUtf8(codePoint, begin) - begin);
  return true;
}

}  // namespace quorvel
