#pragma once

#include <memory>
#include <unordered_map>

#include "quorvel/base/Export.h"
#include "quorvel/base/LogBase.h"

namespace quorvel {

/// A table from a two-byte key to a value of one or two bytes: one code page in
/// one direction.
///
/// contract: readers probe the primary slots themselves and call `hcLookup` only
/// where a probe does not decide, so the names and the layout of the members below
/// stay. Fill a table in one thread, then read it from any number. Nothing here
/// throws.
class QUORVEL_API HashConvert {
 public:
  /// A new, empty table for `codePage`, or null when memory cannot be had. The
  /// caller owns it and deletes it.
  static HashConvert* createNewObject(int codePage);

  virtual ~HashConvert();
  HashConvert(const HashConvert&) = delete;
  HashConvert& operator=(const HashConvert&) = delete;

  /// Makes `numBuckets` empty slots; called once, before anything is inserted.
  /// When memory cannot be had, or the number is not positive, the table stays
  /// safe to read, maps nothing and takes nothing, and the result is false.
  bool hcInitialize(int numBuckets);

  /// What `hcInsert` takes: ten times the key length plus the value length.
  static constexpr int lengthCodeToByte = 21;
  static constexpr int lengthCodeToPair = 22;

  /// Adds a mapping, if `lengthCode` is one of the two above. A key that is present keeps
  /// its first mapping. False, after an error line, only when memory runs out.
  bool hcInsert(const unsigned char* key, const unsigned char* value, int lengthCode, LogBase& log);

  /// The room that a look-up may need for a value.
  static constexpr unsigned int mostValueBytes = 10;

  /// Looks a two-byte key up wherever it may be stored. On a hit the value is
  /// copied to `out` (room for `mostValueBytes`) and `outLen` becomes its length; on a
  /// miss neither is touched.
  ///
  /// contract: a table that overrides this may give a negative length; what is
  /// converted with it passes over such a key without a word.
  virtual void hcLookup(const unsigned char* key, unsigned char* out, int& outLen) const;

  /// Removes the mapping of a key, if it has one.
  void hcRemove(const unsigned char* key);

  /// Makes `dest`, created and initialised, the to-Unicode counterpart of this
  /// from-Unicode table: two-byte codes become keys, one-byte codes entries of
  /// `m_byteToUnicode`, and the lower-ASCII flag is handed over. Of units that
  /// share a code the lowest is what the code then maps to. False only when
  /// memory runs out; then `dest` lacks mappings.
  bool hcBuildReverse(HashConvert& dest, LogBase& log) const;

  /// Calls `visit(key, value, valueLength)` for every mapping, in no particular
  /// order.
  template <typename Visitor>
  void forEachMapping(Visitor&& visit) const {
    for (unsigned int i = 0; i < m_numBuckets; ++i) {
      const unsigned char* slot = m_buckets + std::size_t{slotLength} * i;
      if (!isEmpty(slot)) visit(slot, slot + 2, slot[4] ? 1 : 2);
    }
    for (const auto& [number, entry] : m_overflow) {
      const unsigned char key[2] = {static_cast<unsigned char>(number),
                                    static_cast<unsigned char>(number >> 8)};
      visit(key, entry.value, entry.isSingleByte ? 1 : 2);
    }
  }

  /// True means that the bytes 00 to 7F are U+0000 to U+007F and not stored.
  void put_IsLowerAscii(bool isLowerAscii) { m_isLowerAscii = isLowerAscii; }
  bool get_IsLowerAscii() const { return m_isLowerAscii; }

  /// The code page that the table was made for.
  int codePage() const { return m_codePage; }

  /// Bytes in a primary slot: key byte 0, key byte 1, value byte 0, value byte
  /// 1, and a byte that is not 0 when the value is its byte 0 alone.
  static constexpr unsigned int slotLength = 5;

  /// Whether a slot is empty: both key bytes are 0. The key 00 00 is therefore
  /// never kept in a slot.
  static bool isEmpty(const unsigned char* slot) { return (slot[0] | slot[1]) == 0; }

  /// The slot that a key belongs to.
  const unsigned char* slotOf(const unsigned char* key) const {
    const unsigned int number = key[0] | static_cast<unsigned int>(key[1]) << 8;
    return m_buckets + std::size_t{slotLength} * (number % m_numBuckets);
  }

  unsigned int m_numBuckets = 1;         ///< number of slots, never 0
  unsigned char* m_buckets = m_noSlots;  ///< the slots, `slotLength` bytes each
  bool m_hasRemovals = false;            ///< an empty slot may hide a key that is stored elsewhere
  int m_direction = 0;                   ///< 1 from Unicode, 2 to Unicode
  unsigned short m_byteToUnicode[256] = {};  ///< to Unicode: the unit of a single byte, 0 for none

 protected:
  explicit HashConvert(int codePage) : m_codePage(codePage) {}

 private:
  struct Entry {
    unsigned char value[2];
    bool isSingleByte;
  };

  bool isPresent(const unsigned char* key) const;

  unsigned char m_noSlots[slotLength] = {};  // one empty slot, until there are others
  std::unique_ptr<unsigned char[]> m_storage;
  std::unordered_map<unsigned short, Entry> m_overflow;
  bool m_isLowerAscii = false;
  int m_codePage;
};

}  // namespace quorvel
