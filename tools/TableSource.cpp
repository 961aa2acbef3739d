// Writes the header and the source that hold the packed tables, as text.

#include "tools/TableSource.h"

#include <string_view>

namespace pack {

namespace {

constexpr std::string_view constantPrefix = "_Enc_";
constexpr std::size_t charactersPerLine = 80;
// Beyond its flag, a piece of a long text has this many characters.
constexpr std::size_t charactersPerPiece = 400;

bool isConstant(const PackedTable& table) { return table.name.starts_with(constantPrefix); }

std::string quoted(std::string_view text, std::string_view indent) {
  std::string lines;
  for (std::size_t i = 0; i < text.size(); i += charactersPerLine) {
    lines += '\n';
    lines += indent;
    lines += '"';
    lines += text.substr(i, charactersPerLine);
    lines += '"';
  }
  return lines;
}

std::string declaration(const PackedTable& table) {
  const std::string what = isConstant(table) ? "extern const char " + table.name + "[]"
                                             : "bool " + table.name + "(StringBuffer& text)";
  return what + ";  // " + std::to_string(table.codePage) + "\n";
}

// The pieces in a row, each appended behind the one before.
std::string appendPieces(std::string_view text) {
  std::string calls;
  std::size_t end = 1 + charactersPerPiece;
  for (std::size_t start = 0; start < text.size(); start = end, end += charactersPerPiece) {
    if (start > 0) calls += " &&\n         ";
    calls += "text.append(" + quoted(text.substr(start, end - start), "             ") + ")";
  }
  return calls;
}

std::string function(const PackedTable& table) {
  const std::string result =
      table.sameAs.empty() ? appendPieces(table.text) : table.sameAs + "(text)";
  return "bool " + table.name + "(StringBuffer& text) {\n  return " + result + ";\n}\n";
}

}  // namespace

std::string textConstant(const std::string& name, std::string_view text) {
  return "const char " + name + "[] =" + quoted(text, "    ") + ";\n";
}

std::string tablesHeader(const std::vector<PackedTable>& tables) {
  std::string text =
      "#pragma once\n\n"
      "#include \"quorvel/base/StringBuffer.h\"\n\n"
      "// The packed tables, made from codepages/ by pack_codepages. A function appends\n"
      "// the text to a buffer and returns false when memory runs out.\n"
      "// NOLINTBEGIN(bugprone-reserved-identifier)\n\n"
      "namespace quorvel {\n\n";
  for (const PackedTable& table : tables) text += declaration(table);
  return text + "\n}  // namespace quorvel\n\n// NOLINTEND(bugprone-reserved-identifier)\n";
}

std::string tablesSource(const std::vector<PackedTable>& tables) {
  std::string text =
      "#include \"quorvel/pages/PackedTables.hpp\"\n\n"
      "namespace quorvel {\n";
  for (const PackedTable& table : tables) {
    text += '\n';
    text += isConstant(table) ? textConstant(table.name, table.text) : function(table);
  }
  return text + "\n}  // namespace quorvel\n";
}

std::string lastBlockSource(const std::string& text) {
  return "#include \"quorvel/pages/SjisLastBlock.hpp\"\n\n"
         "namespace quorvel {\n\n" +
         textConstant("sjisLastBlockText", text) + "\n}  // namespace quorvel\n";
}

}  // namespace pack
