// Writes the header and the sources that hold the facts beyond the tables, as text.

#include "tools/ExtraSource.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>

#include "tools/TableSource.h"

namespace pack {

namespace {

constexpr std::string_view opening =
    "#include \"quorvel/pages/PackedExtras.hpp\"\n\n"
    "namespace quorvel {\n\n";
constexpr std::string_view closing = "\n}  // namespace quorvel\n";

std::string source(const std::string& definitions) {
  return std::string(opening) + definitions + std::string(closing);
}

std::string hex(unsigned int number) {
  char digits[8] = {};
  const auto result = std::to_chars(std::begin(digits), std::end(digits), number, 16);
  return "0x" + std::string(std::begin(digits), result.ptr);
}

// One element of an array of structs, on a line of its own.
std::string element(std::initializer_list<std::string> members) {
  std::string line;
  for (const std::string& member : members) line += (line.empty() ? "    {" : ", ") + member;
  return line + "},\n";
}

std::string array(const std::string& type, const std::string& name, const std::string& elements) {
  return "constexpr " + type + " " + name + "[] = {\n" + elements + "};\n";
}

std::string view(const std::string& type, const std::string& name, const std::string& elements) {
  return "namespace {\n\n" + array(type, name + "Elements", elements) + "\n}  // namespace\n\n" +
         "constinit const std::span<const " + type + "> " + name + "(" + name + "Elements);\n";
}

std::string ranges(const std::string& name, const std::vector<FourByteRange>& list) {
  std::string elements;
  for (const FourByteRange& range : list) {
    elements +=
        element({std::to_string(range.first), std::to_string(range.count), hex(range.character)});
  }
  return view("FourByteRange", name, elements);
}

std::string nameOfBestFits(int codePage) { return "fitsOf" + std::to_string(codePage); }

}  // namespace

std::string extrasHeader() {
  return R"(#pragma once

#include <span>

// Facts about code pages beyond their tables, made from codepages/extra by
// pack_codepages. The converter never sees them.

namespace quorvel {

/// Two-byte codes that a code page reads and never writes, as the text of a packed
/// table; behind a lead byte of their own, if `lead` is not 0. By code page.
struct PackedReadOnly {
  int codePage;
  unsigned char lead;
  const char* text;
};
extern const std::span<const PackedReadOnly> packedReadOnly;

/// A UTF-16 unit that a code page lacks and the code that comes nearest, one byte
/// if it is below 100, else two.
struct BestFit {
  unsigned short unit;
  unsigned short code;
};

/// The best fits of a code page, by unit.
struct BestFits {
  int codePage;
  std::span<const BestFit> fits;
};
extern const std::span<const BestFits> packedBestFits;  ///< by code page

/// GB 18030: the packed table of its one-byte and two-byte codes.
extern const char gb18030Text[];

/// Consecutive four-byte codes for consecutive characters. The codes are counted
/// in their order: 81308130 is 0, the last byte is 30 to 39, the third 81 to FE, the
/// second 30 to 39, the first 81 to FE.
struct FourByteRange {
  unsigned int first;
  unsigned int count;
  char32_t character;
};
extern const std::span<const FourByteRange> gb18030Reads;   ///< by code
extern const std::span<const FourByteRange> gb18030Writes;  ///< by character

}  // namespace quorvel
)";
}

std::string readOnlySource(const PackedExtras& extras) {
  std::string texts = "namespace {\n\n";
  std::string elements;
  for (const ReadOnlyCodes& list : extras.readOnly) {
    const std::string lead = list.lead ? hex(list.lead) : "0";
    const std::string name = "readOnly" + std::to_string(list.codePage) + "Behind" + lead;
    texts += textConstant(name, list.text);
    elements += element({std::to_string(list.codePage), lead, name});
  }
  return source(texts + "\n}  // namespace\n\n" +
                view("PackedReadOnly", "packedReadOnly", elements));
}

std::string bestFitsSource(const PackedExtras& extras) {
  constexpr std::size_t fitsPerLine = 6;
  std::string arrays = "namespace {\n\n";
  std::string elements;
  for (const BestFits& list : extras.bestFits) {
    const int owner = list.sameAs ? list.sameAs : list.codePage;
    elements += element({std::to_string(list.codePage), nameOfBestFits(owner)});
    if (list.sameAs) continue;
    std::string fits;
    for (std::size_t i = 0; i < list.records.size(); ++i) {
      fits += i % fitsPerLine == 0 ? "    {" : " {";
      fits += hex(list.records[i].unit) + ", " + hex(list.records[i].code) + "},";
      if (i % fitsPerLine == fitsPerLine - 1 || i + 1 == list.records.size()) fits += "\n";
    }
    arrays += array("BestFit", nameOfBestFits(list.codePage), fits) + "\n";
  }
  return source(arrays + "}  // namespace\n\n" + view("BestFits", "packedBestFits", elements));
}

std::string gb18030Source(const PackedExtras& extras) {
  std::vector<FourByteRange> written;
  std::copy_if(extras.ranges.begin(), extras.ranges.end(), std::back_inserter(written),
               [](const FourByteRange& range) { return !range.isReadOnly; });
  std::sort(written.begin(), written.end(), [](const FourByteRange& a, const FourByteRange& b) {
    return a.character < b.character;
  });
  return source(textConstant("gb18030Text", extras.gb18030) + "\n" +
                ranges("gb18030Reads", extras.ranges) + "\n" + ranges("gb18030Writes", written));
}

}  // namespace pack
