// UTF-16 in either byte order, checked, 32 bytes at a time: every low surrogate must
// stand behind a high one, and no high one elsewhere. A high one at the end of the
// vector is left for the next.

#include "quorvel/kernel/Avx2.hpp"
#include "quorvel/kernel/Loops.hpp"
#include "quorvel/kernel/Order.hpp"

namespace quorvel::kernel::avx2 {

namespace {

constexpr std::ptrdiff_t vectorLength = 32;
constexpr std::ptrdiff_t blockLength = 2 * vectorLength;

inline __m256i exchanged(__m256i units) {
  return _mm256_or_si256(_mm256_slli_epi16(units, 8), _mm256_srli_epi16(units, 8));
}

inline __m256i haveBits(__m256i units, int mask, int value) {
  const __m256i masked = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(mask)));
  return _mm256_cmpeq_epi16(masked, _mm256_set1_epi16(static_cast<short>(value)));
}

// How many bytes of the vector may be taken: all, all but a high surrogate at the end,
// or none. Each unit has two bits in a mask.
inline std::ptrdiff_t bytesInPairs(__m256i units) {
  const unsigned int highs = highBits(haveBits(units, 0xFC00, 0xD800));
  const unsigned int lows = highBits(haveBits(units, 0xFC00, 0xDC00));
  if (highs << 2 != lows) return 0;
  return (highs >> 31) != 0 ? vectorLength - 2 : vectorLength;
}

template <Order source, Order destination>
Position takeBlock(const Position& at) {
  const auto inOrder = [](__m256i units) {
    return source == Order::lowFirst ? units : exchanged(units);
  };
  const auto asWritten = [](__m256i units) {
    return source == destination ? units : exchanged(units);
  };
  const __m256i first = load(at.in);
  const __m256i second = load(at.in + vectorLength);
  const __m256i areSurrogates = _mm256_or_si256(haveBits(inOrder(first), 0xF800, 0xD800),
                                                haveBits(inOrder(second), 0xF800, 0xD800));
  if (_mm256_testz_si256(areSurrogates, areSurrogates) != 0) {
    store(asWritten(first), at.out);
    store(asWritten(second), at.out + vectorLength);
    return {at.in + blockLength, at.out + blockLength};
  }
  const std::ptrdiff_t length = bytesInPairs(inOrder(first));
  if (length != 0) store(asWritten(first), at.out);
  return {at.in + length, at.out + length};
}

template <Order source, Order destination, Loop& byStep>
Progress move(Position at, const unsigned char* end) {
  return takeBlocks(at, end, blockLength, blockLength, takeBlock<source, destination>, byStep);
}

}  // namespace

Progress utf16ToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::lowFirst, Order::lowFirst, scalar::utf16ToUtf16>({in, out}, end);
}

Progress utf16ToUtf16Be(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::lowFirst, Order::highFirst, scalar::utf16ToUtf16Be>({in, out}, end);
}

Progress utf16BeToUtf16(const unsigned char* in, const unsigned char* end, unsigned char* out) {
  return move<Order::highFirst, Order::lowFirst, scalar::utf16BeToUtf16>({in, out}, end);
}

}  // namespace quorvel::kernel::avx2
