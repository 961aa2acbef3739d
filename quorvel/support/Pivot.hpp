#pragma once

// The way between two encodings that lead through UTF-16.

#include "quorvel/support/Conversion.hpp"

namespace quorvel {

/// Source text that is taken through the pivot at a time: what it becomes stays
/// in the nearest cache, and its scratch on the stack.
inline constexpr unsigned int sourceBytesPerBlock = 8192;

/// The shortest block that is sure to hold a character.
inline constexpr unsigned int fewestBytesPerBlock = 4;

/// The length of the blocks in which the pivot takes a text. It is that of the
/// whole text
/// - where the log is verbose, as that shows the length of the whole pivot;
/// - for the error action that converts again, as its conversions reset what
///   others have noted: all of the text is decoded before any of it is encoded;
/// - where the destination has no table, which shows when all is decoded;
/// - where the whole pivot might be more than a buffer can hold, which fails
///   before anything is written.
unsigned int pivotBlockLength(const Conversion& conversion);

/// Converts between two code pages, not both UTF-8, by way of UTF-16: decodes a
/// block of `blockLength` bytes (`fewestBytesPerBlock` or more), encodes it, goes
/// on. Each step goes on where it was, so that result, fields, bytes and log are
/// those of the text as one block, unless memory runs out: what earlier blocks
/// gave is in the output then.
bool pivot(const Conversion& conversion, unsigned int blockLength);

}  // namespace quorvel
