// Packs the mapping files of codepages/ into the C++ sources that the library
// carries its tables in:
//
//     pack_codepages CODEPAGES OUTPUT
//
// reads the directory CODEPAGES and writes into the directory OUTPUT. The build
// runs it. Input that is not in order ends the build, with file and line.

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "Base64.h"
#include "InputFile.h"
#include "LastBlock.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t charactersPerLine = 80;

std::string lastBlockSource(const fs::path& codepages) {
  const pack::InputFile file(codepages / "iso2022jp-last-block.txt");
  const std::string text = pack::encodeBase64(pack::packLastBlock(file));
  std::string source =
      "#include \"quorvel/base/SjisLastBlock.h\"\n\n"
      "namespace quorvel {\n\n"
      "const char sjisLastBlockText[] =";
  for (std::size_t i = 0; i < text.size(); i += charactersPerLine) {
    source += "\n    \"" + text.substr(i, charactersPerLine) + '"';
  }
  return source + ";\n\n}  // namespace quorvel\n";
}

void writeFile(const fs::path& target, const std::string& text) {
  std::ofstream out(target, std::ios::binary);
  out << text;
  if (!out.flush()) throw std::runtime_error(target.string() + ": cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: pack_codepages CODEPAGES OUTPUT\n";
    return 2;
  }
  try {
    // Everything is packed before anything is written, so that a failed build
    // leaves no half of it behind.
    const std::string lastBlock = lastBlockSource(argv[1]);
    writeFile(fs::path(argv[2]) / "SjisLastBlock.cpp", lastBlock);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
