#pragma once

namespace quorvel {

/// The code pages that routes and the command know by number. All else that a route
/// asks about a page stands in its row (CodePages.hpp).
inline constexpr int codePageEbcdicUs = 37;
inline constexpr int codePageShiftJis = 932;
inline constexpr int codePageKorean = 949;
inline constexpr int codePageUtf16le = 1200;
inline constexpr int codePageUtf16be = 1201;
inline constexpr int codePageUtf32le = 12000;
inline constexpr int codePageUtf32be = 12001;
inline constexpr int codePageUsAscii = 20127;
inline constexpr int codePageIso2022JpFirst = 50220;
inline constexpr int codePageIso2022JpLast = 50222;
inline constexpr int codePageIso2022Kr = 50225;
inline constexpr int codePageGsm = 55000;
inline constexpr int codePageUtf7 = 65000;
inline constexpr int codePageUtf8 = 65001;
inline constexpr int codePageUtf32leToo = 65005;
inline constexpr int codePageUtf32beToo = 65006;

constexpr bool isUtf16(int codePage) {
  return codePage == codePageUtf16le || codePage == codePageUtf16be;
}

constexpr bool isUtf32(int codePage) {
  return codePage == codePageUtf32le || codePage == codePageUtf32be ||
         codePage == codePageUtf32leToo || codePage == codePageUtf32beToo;
}

/// Whether a UTF-16 or UTF-32 code page stores the high byte first.
constexpr bool isBigEndian(int codePage) {
  return codePage == codePageUtf16be || codePage == codePageUtf32be ||
         codePage == codePageUtf32beToo;
}

constexpr bool isIso2022Jp(int codePage) {
  return codePage >= codePageIso2022JpFirst && codePage <= codePageIso2022JpLast;
}

// Two families, with the numbers that no page has.
constexpr bool isWindows125x(int codePage) { return codePage >= 1250 && codePage <= 1258; }
constexpr bool isIso8859(int codePage) { return codePage >= 28591 && codePage <= 28605; }

}  // namespace quorvel
