// From the bytes of a table to the text that the library carries: compressed behind a
// header, in base64. PackedList.hpp of the library is the way back.

#include "tools/PackedText.h"

#include <bzlib.h>

#include <stdexcept>

namespace pack {

namespace {

// Blocks of 300 000 bytes hold every table whole.
constexpr int blockSize = 3;

// The header and a bzip2 stream take more than this before they hold anything.
constexpr std::size_t tooShortToCompress = 40;

Bytes compressedBlock(const Bytes& table) {
  const auto size = static_cast<unsigned int>(table.size());
  Bytes block = {0xE1, 0xA7, 0x94, 0xB3};
  for (int shift = 0; shift < 32; shift += 8) {
    block.push_back(static_cast<unsigned char>(size >> shift & 0xFF));
  }
  const std::size_t header = block.size();
  // What the library asks for to be safe: one per cent more, and 600 bytes.
  unsigned int length = size + size / 100 + 600;
  block.resize(header + length);
  std::string source(table.begin(), table.end());
  if (BZ2_bzBuffToBuffCompress(reinterpret_cast<char*>(block.data() + header), &length,
                               source.data(), size, blockSize, 0, 0) != BZ_OK) {
    throw std::runtime_error("bzip2 cannot compress a table");
  }
  block.resize(header + length);
  return block;
}

}  // namespace

std::string packedText(const Bytes& table) {
  if (table.size() < tooShortToCompress) return "x" + encodeBase64(table);
  return "c" + encodeBase64(compressedBlock(table));
}

}  // namespace pack
