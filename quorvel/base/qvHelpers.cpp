#include "quorvel/base/qvHelpers.h"

#include <bit>
#include <cstring>
#include <limits>
#include <new>

namespace quorvel {

// Much of the library reads and writes units as the host lays them out, and every
// byte of its results is promised for the low byte first.
static_assert(std::endian::native == std::endian::little,
              "Quorvel runs on little-endian hosts only");

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
