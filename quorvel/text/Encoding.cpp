#include "quorvel/text/Encoding.h"

#include <algorithm>

#include "quorvel/names/EncodingNames.hpp"
#include "quorvel/pages/CodePageNumbers.hpp"
#include "quorvel/pages/CodePages.hpp"

namespace quorvel::text {

namespace {

// Bytes that a character takes, by what the encoding is.
struct Bytes {
  unsigned int least;
  unsigned int most;
};

Bytes bytesOf(const Encoding& encoding) {
  const int number = encoding.number();
  switch (encoding.kind()) {
    case EncodingKind::unicode:
      if (isUtf32(number)) return {4, 4};
      if (isUtf16(number)) return {2, 4};
      // A pair in a run of its own: "+", six digits, "-".
      return {1, number == codePageUtf7 ? 8U : 4U};
    case EncodingKind::gsm:
      return {1, 2};
    case EncodingKind::iso2022:
      // An escape of three or four bytes on either side of a pair.
      return {1, 8};
    case EncodingKind::singleByte:
      return {1, 1};
    case EncodingKind::multiByte:
      break;
  }
  return {1, number == 54936 ? 4U : number == 51932 ? 3U : 2U};
}

Encoding known(int number) { return *Encoding::find(number); }

}  // namespace

std::optional<Encoding> Encoding::find(std::string_view name) {
  const int number = encodingByName(name);
  return number != 0 ? find(number) : std::nullopt;
}

std::optional<Encoding> Encoding::find(int number) {
  const unsigned int row = rowOfEncoding(number);
  if (row == encodingCount) return std::nullopt;
  return Encoding(row);
}

Encoding Encoding::utf8() { return known(codePageUtf8); }
Encoding Encoding::utf16le() { return known(codePageUtf16le); }
Encoding Encoding::utf16be() { return known(codePageUtf16be); }
Encoding Encoding::utf32le() { return known(codePageUtf32le); }
Encoding Encoding::utf32be() { return known(codePageUtf32be); }

int Encoding::number() const { return encodingAt(m_row).codePage; }
std::string_view Encoding::title() const { return encodingAt(m_row).title; }
std::string_view Encoding::name() const { return *Names(encodingAt(m_row).names).begin(); }

Encoding::Names Encoding::aliases() const {
  const std::string_view names = encodingAt(m_row).names;
  const std::size_t first = name().size();
  return Names(names.substr(std::min(first + 1, names.size())));
}

EncodingKind Encoding::kind() const {
  switch (encodingAt(m_row).kind) {
    case CodePageKind::Unicode:
      return EncodingKind::unicode;
    case CodePageKind::Gsm:
      return EncodingKind::gsm;
    case CodePageKind::Iso2022:
      return EncodingKind::iso2022;
    case CodePageKind::SingleByte:
      return EncodingKind::singleByte;
    case CodePageKind::MultiByte:
      break;
  }
  return EncodingKind::multiByte;
}

EncodingFamily Encoding::family() const {
  switch (encodingAt(m_row).traits.family) {
    case Family::unicode:
      return EncodingFamily::unicode;
    case Family::windows:
      return EncodingFamily::windows;
    case Family::iso8859:
      return EncodingFamily::iso8859;
    case Family::dos:
      return EncodingFamily::dos;
    case Family::koi8:
      return EncodingFamily::koi8;
    case Family::eastAsian:
      return EncodingFamily::eastAsian;
    case Family::mac:
      return EncodingFamily::mac;
    case Family::ebcdic:
      return EncodingFamily::ebcdic;
    case Family::other:
      break;
  }
  return EncodingFamily::other;
}

EncodingScript Encoding::script() const {
  switch (encodingAt(m_row).traits.script) {
    case Script::latin:
      return EncodingScript::latin;
    case Script::cyrillic:
      return EncodingScript::cyrillic;
    case Script::greek:
      return EncodingScript::greek;
    case Script::hebrew:
      return EncodingScript::hebrew;
    case Script::arabic:
      return EncodingScript::arabic;
    case Script::thai:
      return EncodingScript::thai;
    case Script::japanese:
      return EncodingScript::japanese;
    case Script::chinese:
      return EncodingScript::chinese;
    case Script::korean:
      return EncodingScript::korean;
    case Script::any:
      break;
  }
  return EncodingScript::any;
}

unsigned int Encoding::leastBytes() const { return bytesOf(*this).least; }
unsigned int Encoding::mostBytes() const { return bytesOf(*this).most; }

bool Encoding::keepsState() const {
  return kind() == EncodingKind::iso2022 || number() == codePageUtf7;
}

Encoding::All Encoding::all() { return {}; }
Encoding::All::iterator Encoding::All::end() const { return iterator(encodingCount); }
std::size_t Encoding::All::size() const { return encodingCount; }

}  // namespace quorvel::text
