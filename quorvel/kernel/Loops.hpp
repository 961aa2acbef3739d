#pragma once

#include "quorvel/kernel/Iso2022State.hpp"
#include "quorvel/kernel/Progress.hpp"
#include "quorvel/kernel/Utf7State.hpp"

// The inner loops: free functions over raw pointers that stop in front of the
// first thing they cannot do and say how far they came and why no further. Every
// target has the same ones and they do the same to the byte; Target.hpp chooses.
//
// None reads outside [in, end) or writes outside the room that it is promised, not
// even bytes that it takes back. None knows a policy: what becomes of the thing in
// front of which it stopped is for its caller.
//
// All begin anywhere and take input of any length, so a text may come in pieces: a
// loop that stops with `Stop::cutOff` wants what is left in front of the next.

namespace quorvel::kernel {

struct BytesToUnits;
struct PairsToUnits;
struct UnitsToBytes;
struct UnitsToPairs;

/// The one ordinary unit in front of which the loops to UTF-8 stop: their caller
/// may read a marker there.
inline constexpr unsigned int undecidedUnit = 0xFDEF;

/// The text, and where the result goes.
using Loop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out);

/// The same with a table.
template <typename Table>
using TableLoop = Progress(const Table& table, const unsigned char* in, const unsigned char* end,
                           unsigned char* out);

/// A loop over a text whose bytes mean something by what came before them. `state`
/// is all of that: whoever keeps it may stop and go on between any two calls.
template <typename State>
using StatefulLoop = Progress(const unsigned char* in, const unsigned char* end, unsigned char* out,
                              State& state);

/// Multibyte text: starts no character at or behind `stop`, but looks at the bytes
/// behind, up to `end`.
using PairsLoop = Progress(const PairsToUnits& table, const unsigned char* in,
                           const unsigned char* stop, const unsigned char* end, unsigned char* out);

/// The loops of one target. They are references: one that is forgotten does not
/// compile, and one that is another target's says so where the target is defined.
struct Loops {
  // --- UTF-8 and the wider forms, which are in little-endian order -----------

  /// Two bytes of room for each input byte. Stops in front of the first ill-formed
  /// sequence.
  Loop& utf8ToUtf16;

  /// Three bytes of room for each unit. U+0000 is dropped, a lone low surrogate
  /// written as three bytes. Stops in front of the first unit that may need more
  /// than itself looked at: `undecidedUnit`, or a high surrogate that no low one
  /// follows.
  Loop& utf16ToUtf8;

  /// As `utf16ToUtf8`, but stops in front of every high surrogate, for output
  /// without sequences of four bytes.
  Loop& utf16ToUtf8WithoutPairs;

  /// As `utf16ToUtf8`, but every character becomes itself, U+0000 and `undecidedUnit`
  /// too, and it stops in front of every lone surrogate.
  Loop& utf16ToUtf8Strictly;

  /// As much room as input, which it may be. Takes characters, and stops in front of
  /// every surrogate that is no half of a pair.
  Loop& utf16ToUtf16;

  /// The same into the other byte order and out of it, elsewhere than the input.
  Loop& utf16ToUtf16Be;
  Loop& utf16BeToUtf16;

  /// As `utf8ToUtf16`, with four bytes of room for each input byte.
  Loop& utf8ToUtf32;

  /// As much room as input. Stops in front of the first unit that is no scalar
  /// value.
  Loop& utf32ToUtf8;

  // --- Code pages and UTF-16 (LoopTables.hpp) --------------------------------
  // They stop in front of the first thing that has no mapping.

  /// Two bytes of room for each byte.
  TableLoop<BytesToUnits>& bytesToUnits;

  /// Two bytes of room for each byte from `in` to `stop` and for one more. A pair
  /// is tried before its first byte alone; a first byte at the very end is taken
  /// alone if it has a unit, so text in pieces wants a `stop` in front of the last
  /// byte of all but the last piece.
  PairsLoop& pairsToUnits;

  /// One byte of room for each unit. U+0000 without a mapping is the byte 00.
  TableLoop<UnitsToBytes>& unitsToBytes;

  /// The same to codes of up to two bytes, with two bytes of room for each unit.
  TableLoop<UnitsToPairs>& unitsToPairs;

  // --- ISO-2022 (Iso2022State.hpp, Jis.hpp) -----------------------------------

  /// As much room as input. Takes SO and SI, the designations of ASCII, JIS-Roman,
  /// both editions of the kanji set and katakana, ASCII, katakana, kanji outside rows
  /// 89 to 92, and in all sets controls, but line ends in ASCII only. Stops at other
  /// escapes, at bytes above 7F and at what the set in use has no character for.
  StatefulLoop<Iso2022JpReading>& iso2022JpToShiftJis;

  /// Four bytes of room for each input byte. Takes ASCII but SO, SI and escapes,
  /// half-width katakana and pairs with leads up to EF.
  StatefulLoop<JapaneseSet>& shiftJisToIso2022Jp;

  /// As much room as input; the state is whether SO is in force. Takes SO and SI,
  /// the announcement of the set, ASCII, pairs, and in both sets controls, but line ends
  /// in ASCII only. Stops at other escapes, at bytes above 7F and where half a pair stands
  /// alone.
  StatefulLoop<bool>& iso2022KrToKsc;

  /// Two bytes of room for each input byte. Takes ASCII but SO, SI and escapes,
  /// and pairs of KS C 5601.
  StatefulLoop<bool>& kscToIso2022Kr;

  // --- UTF-7 (Utf7State.hpp) -------------------------------------------------

  /// Two bytes of room for each input byte. Stops in front of a byte above 7F that
  /// is in no run, and in front of what ends a run that has no digits or bits left
  /// over; that run is still open then.
  StatefulLoop<Utf7Reading>& utf7ToUtf16;

  /// Four bytes of room for each unit. At the end a run is left open.
  StatefulLoop<Utf7Writing>& utf16ToUtf7;
};

namespace scalar {
Loop utf8ToUtf16;
Loop utf16ToUtf8;
Loop utf16ToUtf8WithoutPairs;
Loop utf16ToUtf8Strictly;
Loop utf16ToUtf16;
Loop utf16ToUtf16Be;
Loop utf16BeToUtf16;
Loop utf8ToUtf32;
Loop utf32ToUtf8;
TableLoop<BytesToUnits> bytesToUnits;
PairsLoop pairsToUnits;
TableLoop<UnitsToBytes> unitsToBytes;
TableLoop<UnitsToPairs> unitsToPairs;
StatefulLoop<Iso2022JpReading> iso2022JpToShiftJis;
StatefulLoop<JapaneseSet> shiftJisToIso2022Jp;
StatefulLoop<bool> iso2022KrToKsc;
StatefulLoop<bool> kscToIso2022Kr;
StatefulLoop<Utf7Reading> utf7ToUtf16;
StatefulLoop<Utf7Writing> utf16ToUtf7;

/// As `Loops::bytesToUnits`, by the units alone. The byte 00 is U+0000 whatever
/// its entry says.
Progress bytesToUnits(const unsigned short* units, const unsigned char* in,
                      const unsigned char* end, unsigned char* out);
}  // namespace scalar

/// x86-64 with AVX2, BMI, BMI2 and POPCNT; only there where the compiler can
/// make it.
namespace avx2 {
Loop utf8ToUtf16;
Loop utf16ToUtf8;
Loop utf16ToUtf8WithoutPairs;
Loop utf16ToUtf8Strictly;
Loop utf16ToUtf16;
Loop utf16ToUtf16Be;
Loop utf16BeToUtf16;
Loop utf8ToUtf32;
Loop utf32ToUtf8;
TableLoop<BytesToUnits> bytesToUnits;
PairsLoop pairsToUnits;
TableLoop<UnitsToBytes> unitsToBytes;
TableLoop<UnitsToPairs> unitsToPairs;
StatefulLoop<Iso2022JpReading> iso2022JpToShiftJis;
StatefulLoop<JapaneseSet> shiftJisToIso2022Jp;
StatefulLoop<bool> iso2022KrToKsc;
StatefulLoop<bool> kscToIso2022Kr;
StatefulLoop<Utf7Reading> utf7ToUtf16;
StatefulLoop<Utf7Writing> utf16ToUtf7;
}  // namespace avx2

}  // namespace quorvel::kernel
