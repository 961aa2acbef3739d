// The GSM 03.38 default alphabet (3GPP TS 23.038, section 6.2.1), one septet
// per byte: a basic table of 128 places and an extension table that the escape
// 1B leads to.

#include <algorithm>
#include <array>
#include <cstddef>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/GsmText.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

constexpr unsigned char escape = 0x1B;

// The basic table. The escape has no character of its own: 0.
//
// contract: 09 is the capital U+00C7, as the table of the standard prints it, and the
// small letter has no place, where others take it for the same. Gateways that compare
// what they sent with what came back rely on it.
constexpr std::array<char16_t, 128> basicTable = {
    0x0040, 0x00A3, 0x0024, 0x00A5, 0x00E8, 0x00E9, 0x00F9, 0x00EC,  // 00
    0x00F2, 0x00C7, 0x000A, 0x00D8, 0x00F8, 0x000D, 0x00C5, 0x00E5,  // 08
    0x0394, 0x005F, 0x03A6, 0x0393, 0x039B, 0x03A9, 0x03A0, 0x03A8,  // 10
    0x03A3, 0x0398, 0x039E, 0x0000, 0x00C6, 0x00E6, 0x00DF, 0x00C9,  // 18
    0x0020, 0x0021, 0x0022, 0x0023, 0x00A4, 0x0025, 0x0026, 0x0027,  // 20
    0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F,  // 28
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  // 30
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F,  // 38
    0x00A1, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,  // 40
    0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F,  // 48
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,  // 50
    0x0058, 0x0059, 0x005A, 0x00C4, 0x00D6, 0x00D1, 0x00DC, 0x00A7,  // 58
    0x00BF, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,  // 60
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F,  // 68
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077,  // 70
    0x0078, 0x0079, 0x007A, 0x00E4, 0x00F6, 0x00F1, 0x00FC, 0x00E0,  // 78
};

struct Extension {
  unsigned char septet;
  char16_t unit;
};

constexpr std::array<Extension, 10> extensionTable = {{
    {0x0A, 0x000C},
    {0x14, 0x005E},
    {0x28, 0x007B},
    {0x29, 0x007D},
    {0x2F, 0x005C},
    {0x3C, 0x005B},
    {0x3D, 0x007E},
    {0x3E, 0x005D},
    {0x40, 0x007C},
    {0x65, 0x20AC},
}};

// The character that `septet` stands for behind an escape, 0 for none.
char16_t extendedCharacter(unsigned char septet) {
  for (const Extension& row : extensionTable) {
    if (row.septet == septet) return row.unit;
  }
  return 0;
}

struct Decoded {
  char16_t unit;  // 0 for no character
  unsigned int length;
};

Decoded decodeOne(const unsigned char* p, const unsigned char* end) {
  if (*p == escape && end - p > 1) {
    if (const char16_t unit = extendedCharacter(p[1])) return {unit, 2};
  }
  return {*p < basicTable.size() ? basicTable[*p] : char16_t{0}, 1};
}

// What a character is written as; a length of 0 means that it has no place.
struct Septets {
  unsigned char bytes[2];
  unsigned int length;
};

Septets septetsOf(char32_t character) {
  if (character == 0) return {{}, 0};  // the escape's place is no character
  const auto* place = std::find(basicTable.begin(), basicTable.end(), character);
  if (place != basicTable.end()) {
    return {{static_cast<unsigned char>(place - basicTable.begin())}, 1};
  }
  for (const Extension& row : extensionTable) {
    if (row.unit == character) return {{escape, row.septet}, 2};
  }
  return {{}, 0};
}

// Converts characters one by one with `convertOne(p, end, out)`, which moves both
// positions on and says whether nothing was lost; at most `mostBytesPerTwo` bytes for
// two that it takes. A character may go past the end of a block, not past that of
// the text.
template <typename ConvertOne>
GsmResult convert(const unsigned char* p, unsigned int n, unsigned int mostBytesPerTwo,
                  const ConvertOne& convertOne, DataBuffer& out) {
  if (n == 0) return GsmResult::clean;
  const unsigned char* end = p + n;
  bool isClean = true;
  const auto loop = [&](const unsigned char* in, const unsigned char* stop, unsigned char* room) {
    Position at{in, room};
    while (at.in < stop) isClean &= convertOne(at, end);
    return Progress{at.in, at.out, Stop::end};
  };
  if (!runInBlocks(loop, p, end, mostBytesPerTwo, out)) return GsmResult::outOfMemory;
  return isClean ? GsmResult::clean : GsmResult::lossy;
}

}  // namespace

GsmResult gsmToUtf8(const unsigned char* p, unsigned int n, DataBuffer& out) {
  const auto decode = [](Position& at, const unsigned char* end) {
    const Decoded decoded = decodeOne(at.in, end);
    at = {at.in + decoded.length,
          encodeUtf8(decoded.unit ? decoded.unit : replacementCharacter, at.out)};
    return decoded.unit != 0;
  };
  return convert(p, n, 6, decode, out);
}

GsmResult utf8ToGsm(const unsigned char* p, unsigned int n, DataBuffer& out) {
  const auto encode = [](Position& at, const unsigned char* end) {
    const Utf8Sequence sequence = decodeUtf8(at.in, static_cast<std::size_t>(end - at.in));
    const Septets septets = sequence.isWellFormed ? septetsOf(sequence.codePoint) : Septets{};
    if (septets.length == 0) *at.out++ = '?';
    at = {at.in + sequence.length, std::copy_n(septets.bytes, septets.length, at.out)};
    return septets.length != 0;
  };
  return convert(p, n, 4, encode, out);
}

GsmCharacter gsmCharacterAt(const unsigned char* p, std::size_t available) {
  const Decoded decoded = decodeOne(p, p + available);
  if (decoded.unit == 0) return {std::nullopt, 1};
  return {decoded.unit, decoded.length};
}

GsmSeptets gsmSeptetsOf(char32_t character) {
  const Septets septets = septetsOf(character);
  return {{septets.bytes[0], septets.bytes[1]}, septets.length};
}

bool _qvUtf::gsm_to_utf8(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase&) {
  return gsmToUtf8(p, n, out) == GsmResult::clean;
}

bool _qvUtf::utf8_to_gsm(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase&) {
  return utf8ToGsm(p, n, out) == GsmResult::clean;
}

}  // namespace quorvel
