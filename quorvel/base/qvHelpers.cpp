#include "quorvel/base/qvHelpers.h"

#include <bit>
#include <cstring>
#include <limits>
#include <new>

namespace quorvel {

unsigned int qvStrLen(const char* text) {
  if (!text) return 0;
  const std::size_t length = std::strlen(text);
  constexpr unsigned int most = std::numeric_limits<unsigned int>::max();
  return length > most ? most : static_cast<unsigned int>(length);
}

int qvStrNCmp(const char* a, const char* b, int n) {
  return n > 0 ? std::strncmp(a, b, static_cast<std::size_t>(n)) : 0;
}

bool qvIsBigEndian() { return std::endian::native == std::endian::big; }

bool qvIsLittleEndian() { return std::endian::native == std::endian::little; }

unsigned char* qvNewUnsignedChar(unsigned int n) { return new (std::nothrow) unsigned char[n]; }

}  // namespace quorvel
