#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

#include "quorvel/base/Export.h"

namespace quorvel::text {

/// The families that encodings belong to.
enum class EncodingKind { unicode, gsm, iso2022, singleByte, multiByte };

/// Who made an encoding, or what for.
enum class EncodingFamily {
  other,
  unicode,
  windows,
  iso8859,
  dos,
  koi8,
  eastAsian,  ///< several bytes or sets, and not a page of Windows
  mac,
  ebcdic,
};

/// What an encoding writes beside ASCII.
enum class EncodingScript {
  any,
  latin,
  cyrillic,
  greek,
  hebrew,
  arabic,
  thai,
  japanese,
  chinese,
  korean,
};

/// One character encoding: a small value, cheap to copy and to compare.
///
/// Every encoding has a number, the Windows-style code page identifier, and
/// names. All that this class hands out is static.
class QUORVEL_API Encoding {
 public:
  /// The encoding of a name or a number in text ("shift_jis", "932", "cp932");
  /// nothing for one that is not known. Names are compared by the loose rule of
  /// UTS #22, section 1.4: letter case, punctuation and leading zeros of numbers do
  /// not matter.
  static std::optional<Encoding> find(std::string_view name);

  /// The encoding with this number; nothing for one that is not served.
  static std::optional<Encoding> find(int number);

  static Encoding utf8();
  static Encoding utf16le();
  static Encoding utf16be();
  static Encoding utf32le();
  static Encoding utf32be();

  int number() const;

  /// The preferred name.
  std::string_view name() const;

  /// What it is, in English.
  std::string_view title() const;

  EncodingKind kind() const;
  EncodingFamily family() const;
  EncodingScript script() const;

  /// How few and how many bytes one character takes, what switches the state in
  /// front of it and behind it included.
  unsigned int leastBytes() const;
  unsigned int mostBytes() const;

  /// Whether what a byte means depends on bytes far in front of it, as in UTF-7 and
  /// ISO-2022.
  bool keepsState() const;

  /// A sequence of names, separated in static storage.
  class QUORVEL_API Names {
   public:
    class iterator {
     public:
      using iterator_category = std::forward_iterator_tag;
      using value_type = std::string_view;
      using difference_type = std::ptrdiff_t;
      using pointer = const std::string_view*;
      using reference = std::string_view;

      iterator() = default;
      iterator(std::string_view rest) : m_rest(rest) {}
      std::string_view operator*() const { return m_rest.substr(0, m_rest.find(' ')); }
      iterator& operator++() {
        const std::size_t end = m_rest.find(' ');
        m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
        return *this;
      }
      iterator operator++(int) {
        const iterator before = *this;
        ++*this;
        return before;
      }
      // Two places in one list differ in how much is left of it.
      bool operator==(const iterator& other) const { return m_rest.size() == other.m_rest.size(); }

     private:
      std::string_view m_rest;
    };

    explicit Names(std::string_view names) : m_names(names) {}
    iterator begin() const { return {m_names}; }
    iterator end() const { return {}; }
    bool empty() const { return m_names.empty(); }

   private:
    std::string_view m_names;
  };

  /// The other names, its number and "cp" before it aside.
  Names aliases() const;

  /// All encodings, in ascending order of the numbers.
  class All;
  static All all();

  bool operator==(const Encoding&) const = default;

 private:
  explicit constexpr Encoding(unsigned int row) : m_row(row) {}
  unsigned int m_row;
};

/// A range of encodings.
class QUORVEL_API Encoding::All {
 public:
  class iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Encoding;
    using difference_type = std::ptrdiff_t;
    using pointer = const Encoding*;
    using reference = Encoding;

    iterator() = default;
    explicit iterator(unsigned int row) : m_row(row) {}
    Encoding operator*() const { return Encoding(m_row); }
    iterator& operator++() {
      ++m_row;
      return *this;
    }
    iterator operator++(int) { return iterator(m_row++); }
    bool operator==(const iterator&) const = default;

   private:
    unsigned int m_row = 0;
  };

  iterator begin() const { return iterator(0); }
  iterator end() const;
  std::size_t size() const;
};

}  // namespace quorvel::text
