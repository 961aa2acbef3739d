// What a code page that was only just added does: each line is a conversion,
// with its result and whether there was an error, or a row of the list of names.

#include <cstdio>
#include <string_view>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/names/CharsetNaming.h"
#include "quorvel/support/EncodingConvert.h"

namespace {

void convertAndPrint(int from, int to, std::string_view text) {
  quorvel::EncodingConvert converter;
  converter.setErrorAction(2);
  quorvel::NullLog log;
  quorvel::DataBuffer out;
  const bool isWhole =
      converter.EncConvert(from, to, reinterpret_cast<const unsigned char*>(text.data()),
                           static_cast<unsigned int>(text.size()), out, log);
  std::printf("%d to %d:", from, to);
  for (unsigned int i = 0; i < out.getSize(); ++i) std::printf(" %02X", *out.getDataAt2(i));
  std::printf(", %s%s\n", isWhole ? "true" : "false", converter.m_hadError ? ", error" : "");
}

// The first and the last pair, a trail below 40, a single byte, ASCII.
constexpr std::string_view pairs = "\xA1\x21\xA4\xFE\xA2\x7E\xA2\xA1\x80z";
constexpr std::string_view units = "\x21\x4E\xFE\x51\x7E\x4F\xA1\x4F\xAC\x20z\0";
constexpr std::string_view utf8 = "\xE4\xB8\xA1\xE5\x87\xBE\xE4\xBD\xBE\xE4\xBE\xA1\xE2\x82\xACz";

}  // namespace

int main() {
  for (const int page : {40000, 40001}) {
    convertAndPrint(page, 1200, pairs);
    convertAndPrint(page, 65001, pairs);
    convertAndPrint(1200, page, {units.data(), 12});
    convertAndPrint(65001, page, utf8);
    convertAndPrint(65001, page, "\xC2\xA0|\xC3\xA9|");
    convertAndPrint(page, 1200, "\xA1 z\xA5!z\xA1");
  }
  convertAndPrint(40000, 936, pairs.substr(0, 4));
  for (unsigned int i = 0; i < quorvel::CharsetNaming::count(); ++i) {
    const quorvel::CharsetNaming::Entry& entry = quorvel::CharsetNaming::at(i);
    if (entry.codePage < 38598 || entry.codePage > 50220) continue;
    std::printf("%d | %s | %s\n", entry.codePage, entry.title, entry.names);
  }
  for (const char* name : {"X_Made_Up", "PAIRS", "cp40001"}) {
    std::printf("%s: %d\n", name, quorvel::CharsetNaming::GetCodePage(name));
  }
}
