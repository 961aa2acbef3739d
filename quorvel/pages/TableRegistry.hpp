#pragma once

#include <cstddef>

#include "quorvel/base/LogBase.h"
#include "quorvel/pages/PageTables.hpp"

namespace quorvel {

struct CodePage;

/// The process-wide tables, all that there are. Each is built on first use, by
/// whoever comes first, and then read by all without a lock until `release`: a
/// builder makes a private table and publishes it, whole, only if none has been
/// published meanwhile. What they are is in PageTables.hpp, what they are made of
/// in FlatTables.hpp; the one of ISO-2022-JP is in LastBlock.hpp.
namespace tableRegistry {

/// Makes sure that the table of a code page exists. False, after an error line,
/// when memory ran out; true does not mean that there is a table, as a number
/// without one is fine.
bool ensureToUnicode(int codePage, LogBase& log);
bool ensureFromUnicode(int codePage, LogBase& log);

/// The published table of a code page, or null.
const ToUnicodeTable* toUnicode(int codePage);
const FromUnicodeTable* fromUnicode(int codePage);
const ToUnicodeTable* toUnicode(const CodePage& page);
const FromUnicodeTable* fromUnicode(const CodePage& page);

/// The bytes of memory that the published tables take.
std::size_t size();

/// Makes `release` call `others` too. Whoever keeps tables of another kind says so
/// when it makes the first; a program that has none does not link what makes them.
void alsoRelease(void (*others)());

/// Frees all that is published but the tables of the pages that no conversion
/// takes. No conversion may be in progress.
void release();

}  // namespace tableRegistry

}  // namespace quorvel
