#pragma once

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

class EncodingConvert;

/// Source text that is taken through the pivot at a time: what it becomes stays
/// in the nearest cache, and its scratch on the stack.
inline constexpr unsigned int sourceBytesPerBlock = 8192;

/// The shortest block that is sure to hold a character.
inline constexpr unsigned int fewestBytesPerBlock = 4;

/// Whether `pivotInBlocks` gives what decoding the whole text and then encoding
/// it gives: not with a verbose log, which shows the length of the whole pivot;
/// nor with the error action that converts again, whose nested conversions
/// reset what the others have noted; nor if a side has no table, if there is no text
/// or if the whole pivot might not be had.
bool canPivotInBlocks(const EncodingConvert& converter, int fromCodePage, int toCodePage,
                      unsigned int numBytes, const LogBase& log);

/// Converts between two code pages of which each is UTF-8 or has a table, but
/// not both UTF-8, by way of UTF-16: decodes a block of `blockLength` bytes
/// (`fewestBytesPerBlock` or more), encodes it, goes on. The steps are those of
/// the whole text, and each goes on where it was, so that result, fields, bytes
/// and the contexts in the log are the same.
bool pivotInBlocks(EncodingConvert& converter, int fromCodePage, int toCodePage,
                   const unsigned char* data, unsigned int numBytes, unsigned int blockLength,
                   DataBuffer& out, LogBase& log);

}  // namespace quorvel
