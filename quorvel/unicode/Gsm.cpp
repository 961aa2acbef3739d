// The GSM 03.38 default alphabet (3GPP TS 23.038, section 6.2.1), one septet
// per byte: a basic table of 128 places and an extension table that the escape
// 1B leads to.

#include <algorithm>
#include <array>

#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/GsmText.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

constexpr unsigned int bytesPerBlock = 4096;
constexpr unsigned char escape = 0x1B;

// The basic table. The escape has no character of its own: 0.
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

Decoded decodeOne(const unsigned char* p, unsigned int available) {
  if (*p == escape && available > 1) {
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

}  // namespace

GsmResult gsmToUtf8(const unsigned char* p, unsigned int n, DataBuffer& out) {
  constexpr unsigned int mostBytesPerSeptet = 3;
  bool isClean = true;
  while (n) {
    const unsigned int mostCharacters = std::min(n, bytesPerBlock);
    unsigned char* room = out.growBy(mostCharacters * mostBytesPerSeptet);
    if (!room) return GsmResult::outOfMemory;
    unsigned char* end = room;
    for (unsigned int i = 0; n && i < mostCharacters; ++i) {
      const Decoded decoded = decodeOne(p, n);
      isClean = isClean && decoded.unit;
      end = encodeUtf8(decoded.unit ? decoded.unit : replacementCharacter, end);
      p += decoded.length;
      n -= decoded.length;
    }
    out.keepWritten(static_cast<unsigned int>(end - room));
  }
  return isClean ? GsmResult::clean : GsmResult::lossy;
}

GsmResult utf8ToGsm(const unsigned char* p, unsigned int n, DataBuffer& out) {
  constexpr unsigned int mostSeptets = 2;
  bool isClean = true;
  while (n) {
    const unsigned int mostCharacters = std::min(n, bytesPerBlock);
    unsigned char* room = out.growBy(mostCharacters * mostSeptets);
    if (!room) return GsmResult::outOfMemory;
    unsigned char* end = room;
    for (unsigned int i = 0; n && i < mostCharacters; ++i) {
      const Utf8Sequence sequence = decodeUtf8(p, n);
      const Septets septets = sequence.isWellFormed ? septetsOf(sequence.codePoint) : Septets{};
      isClean = isClean && septets.length;
      if (septets.length == 0) *end++ = '?';
      end = std::copy_n(septets.bytes, septets.length, end);
      p += sequence.length;
      n -= sequence.length;
    }
    out.keepWritten(static_cast<unsigned int>(end - room));
  }
  return isClean ? GsmResult::clean : GsmResult::lossy;
}

bool _qvUtf::gsm_to_utf8(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase&) {
  return gsmToUtf8(p, n, out) == GsmResult::clean;
}

bool _qvUtf::utf8_to_gsm(const unsigned char* p, unsigned int n, DataBuffer& out, LogBase&) {
  return utf8ToGsm(p, n, out) == GsmResult::clean;
}

}  // namespace quorvel
