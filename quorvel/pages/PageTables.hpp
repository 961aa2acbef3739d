#pragma once

#include <cstddef>
#include <iterator>
#include <memory>

#include "quorvel/kernel/LoopTables.hpp"
#include "quorvel/pages/ArabicDigits.hpp"

namespace quorvel {

// The tables that the registry publishes: for each direction a few kinds, told by
// `kind`, and `visit` to get at the one that it is. Each holds the flat table of
// its loop and, beside it, the little that the loop leaves open; nothing of what
// it was built from.

/// What one code page is decoded with.
struct ToUnicodeTable {
  enum class Kind { bytes, pairs };

  const Kind kind;

  explicit ToUnicodeTable(Kind of) : kind(of) {}
  ToUnicodeTable(const ToUnicodeTable&) = delete;
  ToUnicodeTable& operator=(const ToUnicodeTable&) = delete;
  virtual ~ToUnicodeTable() = default;

  /// The bytes of memory that it takes.
  virtual std::size_t size() const = 0;
};

/// A page of single bytes.
struct BytesToUnicode final : ToUnicodeTable {
  BytesToUnicode() : ToUnicodeTable(Kind::bytes) {}
  std::size_t size() const override { return sizeof *this; }

  kernel::BytesToUnits flat = {};
};

/// A page that has pairs of bytes too.
struct PairsToUnicode final : ToUnicodeTable {
  PairsToUnicode() : ToUnicodeTable(Kind::pairs) {}
  std::size_t size() const override { return sizeof *this; }

  kernel::PairsToUnits flat = {};
};

template <typename Visitor>
decltype(auto) visit(const ToUnicodeTable& table, const Visitor& visitor) {
  if (table.kind == ToUnicodeTable::Kind::bytes) {
    return visitor(static_cast<const BytesToUnicode&>(table));
  }
  return visitor(static_cast<const PairsToUnicode&>(table));
}

/// What one code page is encoded with.
struct FromUnicodeTable {
  enum class Kind { bytes, bytesAndDigits, pairs };

  const Kind kind;

  explicit FromUnicodeTable(Kind of) : kind(of) {}
  FromUnicodeTable(const FromUnicodeTable&) = delete;
  FromUnicodeTable& operator=(const FromUnicodeTable&) = delete;
  virtual ~FromUnicodeTable() = default;

  virtual std::size_t size() const = 0;

  /// The code of the unit that no loop encodes, laid out like the codes of the
  /// flat table; 0 for none.
  unsigned short rawBytesCode = 0;
};

/// To single bytes.
struct UnicodeToBytes : FromUnicodeTable {
  UnicodeToBytes() : UnicodeToBytes(Kind::bytes) {}
  std::size_t size() const override { return sizeof *this + flat.count; }

  kernel::UnitsToBytes flat = {};
  std::unique_ptr<unsigned char[]> codes;  ///< those of `flat`

 protected:
  explicit UnicodeToBytes(Kind of) : FromUnicodeTable(of) {}
};

/// To single bytes, with both sets of Arabic digits become ASCII digits in `flat`.
struct UnicodeToBytesAndDigits final : UnicodeToBytes {
  UnicodeToBytesAndDigits() : UnicodeToBytes(Kind::bytesAndDigits) {}
  std::size_t size() const override { return sizeof *this + flat.count; }

  /// What the page itself has for them, 0 for none; set by set.
  unsigned char ownDigits[std::size(firstArabicDigits)][10] = {};
};

/// To single bytes and pairs of bytes.
struct UnicodeToPairs final : FromUnicodeTable {
  UnicodeToPairs() : FromUnicodeTable(Kind::pairs) {}
  std::size_t size() const override { return sizeof *this; }

  kernel::UnitsToPairs flat = {};
};

template <typename Visitor>
decltype(auto) visit(const FromUnicodeTable& table, const Visitor& visitor) {
  switch (table.kind) {
    case FromUnicodeTable::Kind::bytes:
      return visitor(static_cast<const UnicodeToBytes&>(table));
    case FromUnicodeTable::Kind::bytesAndDigits:
      return visitor(static_cast<const UnicodeToBytesAndDigits&>(table));
    case FromUnicodeTable::Kind::pairs:
      break;
  }
  return visitor(static_cast<const UnicodeToPairs&>(table));
}

}  // namespace quorvel
