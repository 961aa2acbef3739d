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
#include <stdexcept>
#include <string>

#include "tools/Base64.h"
#include "tools/ExtraSource.h"
#include "tools/InputFile.h"
#include "tools/LastBlock.h"
#include "tools/PackedExtras.h"
#include "tools/PackedTables.h"
#include "tools/PageHead.h"
#include "tools/TableSource.h"

namespace {

namespace fs = std::filesystem;

void writeFile(const fs::path& target, const std::string& text) {
  fs::create_directories(target.parent_path());
  std::ofstream out(target, std::ios::binary);
  out << text;
  if (!out.flush()) throw std::runtime_error(target.string() + ": cannot be written");
}

// Everything is packed before anything is written, so that a failed build
// leaves no half of it behind.
void packAll(const fs::path& codepages, const fs::path& output) {
  const pack::InputFile lastBlock(codepages / "iso2022jp-last-block.txt");
  const std::string lastBlockText = pack::encodeBase64(pack::packLastBlock(lastBlock));
  const std::vector<pack::PackedTable> tables = pack::packTables(codepages);
  const pack::PackedExtras extras = pack::packExtras(codepages);
  writeFile(output / "quorvel/pages/PackedTables.hpp", pack::tablesHeader(tables));
  writeFile(output / "PackedTables.cpp", pack::tablesSource(tables));
  writeFile(output / "SjisLastBlock.cpp", pack::lastBlockSource(lastBlockText));
  writeFile(output / "quorvel/pages/PackedExtras.hpp", pack::extrasHeader());
  writeFile(output / "PackedReadOnly.cpp", pack::readOnlySource(extras));
  writeFile(output / "PackedBestFits.cpp", pack::bestFitsSource(extras));
  writeFile(output / "PackedGb18030.cpp", pack::gb18030Source(extras));
  writeFile(output / "PageHeads.cpp", pack::pageHeadsSource(pack::readPageHeads(codepages)));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: pack_codepages CODEPAGES OUTPUT\n";
    return 2;
  }
  try {
    packAll(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
