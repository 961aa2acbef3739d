#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tools/LastBlock.h"
#include "tools/MappingFile.h"
#include "tools/PackedExtras.h"
#include "tools/PackedTables.h"
#include "tools/PackedText.h"
#include "tools/TableBytes.h"

namespace {

namespace fs = std::filesystem;

using testing::EndsWith;
using testing::StartsWith;

// A directory of mapping files that vanishes with the test.
class Packing : public testing::Test {
 protected:
  Packing() : m_directory(fs::temp_directory_path() / uniqueName()) {
    fs::create_directory(m_directory);
  }
  ~Packing() override { fs::remove_all(m_directory); }

  fs::path write(const std::string& name, const std::string& text) {
    std::ofstream(m_directory / name, std::ios::binary) << text;
    return m_directory / name;
  }

  std::string packed(const std::string& text) {
    return pack::packedText(pack::tableBytes(pack::MappingFile(write("100.txt", text))));
  }

  // What the packer says about a file, from its name on.
  std::string complaint(const std::string& text) {
    write("100.txt", text);
    return complaintAboutDirectory();
  }

  std::string complaintAboutDirectory() {
    try {
      pack::packTables(m_directory);
    } catch (const pack::InputError& error) {
      const std::string what = error.what();
      EXPECT_THAT(what, StartsWith(m_directory.string()));
      return what.substr(m_directory.string().size() + 1);
    }
    return "none";
  }

  fs::path m_directory;

 private:
  static std::string uniqueName() {
    static int count = 0;
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("quorvel_") + test->name() + "_" + std::to_string(++count);
  }
};

const std::string head = "table _Enc_x\nlower-half ascii\n";

// --- What is packed ---------------------------------------------------------

TEST_F(Packing, PacksAFewMappingsUncompressed) {
  EXPECT_EQ("xYXWArCAAQIEAMAEAAQAAAA==",
            packed("# A comment.\n" + head +
                   "\n80: 20AC .... .... .... .... .... .... .... .... .... .... .... .... .... "
                   ".... ....\n"
                   "8140: 3000 3001 .... .... .... .... .... .... .... .... .... .... .... .... "
                   ".... ....\n"));
}

TEST_F(Packing, PacksAnEmptyMapping) { EXPECT_EQ("xYXUAAAA=", packed(head)); }

TEST_F(Packing, PacksAnEmptyListOfChanges) {
  EXPECT_EQ("xYWQAAAAAAA==", packed("table _Enc_x\nchanges 932\n"));
}

TEST_F(Packing, ReadsLinesThatEndInCarriageReturns) {
  EXPECT_EQ("xYXUgoAAAAAA=", packed("table _Enc_x\r\nlower-half ascii\r\n\r\n00A0> 20\r\n"));
}

TEST_F(Packing, GivesAPageTheTableOfAnother) {
  write("100.txt", head + "00A0> 20\n");
  write("101.txt", "table _Enc_y\nsame-as 100\n");
  write("102.txt", "same-as 100\n");
  const std::vector<pack::PackedTable> tables = pack::packTables(m_directory);
  ASSERT_EQ(2U, tables.size());
  EXPECT_EQ("_Enc_y", tables[1].name);
  EXPECT_EQ(tables[0].text, tables[1].text);
}

// --- What is refused --------------------------------------------------------

const std::string blanks = " .... .... .... .... .... .... .... .... .... .... .... .... .... ....";
const std::string row80 = "80: 20AC 20AD" + blanks + "\n";

TEST_F(Packing, AcceptsWhatTheRefusedFilesAreMadeFrom) {
  EXPECT_EQ("none", complaint(head + row80));
}

TEST_F(Packing, RefusesACharacterThatStandsTwice) {
  EXPECT_EQ("100.txt:4: error: this character already stands in line 3",
            complaint(head + row80 + "90: 20AC ...." + blanks + "\n"));
  EXPECT_EQ("100.txt:4: error: this character already stands in line 3",
            complaint(head + row80 + "20AD> 3F\n"));
  EXPECT_EQ("100.txt:3: error: this character already stands in line 3",
            complaint(head + "80: 20AC 20AC" + blanks + "\n"));
}

TEST_F(Packing, RefusesRowsOutOfOrder) {
  EXPECT_EQ("100.txt:4: error: out of order", complaint(head + row80 + row80));
  EXPECT_EQ("100.txt:4: error: out of order",
            complaint(head + "8140: 3000 ...." + blanks + "\n" + row80));
  EXPECT_EQ("100.txt:4: error: out of order", complaint(head + "00A5> 5C\n00A0> 20\n"));
}

TEST_F(Packing, RefusesCodesOutOfRange) {
  EXPECT_EQ("100.txt:3: error: lead byte out of range: 2040",
            complaint(head + "2040: 20AC 20AD" + blanks + "\n"));
  EXPECT_EQ("100.txt:3: error: lead byte out of range: 0020", complaint(head + "00A0> 0020\n"));
  EXPECT_EQ("100.txt:3: error: the lower half is ASCII and not listed",
            complaint(head + "20: 20AC 20AD" + blanks + "\n"));
  EXPECT_EQ("100.txt:3: error: 00 always is U+0000 and cannot be listed",
            complaint("table _Enc_x\nlower-half listed\n00: 20AC 20AD" + blanks + "\n"));
}

TEST_F(Packing, RefusesWhatIsNoCode) {
  EXPECT_EQ("100.txt:3: error: not a code of two or four digits: 8",
            complaint(head + "8: 20AC 20AD" + blanks + "\n"));
  EXPECT_EQ("100.txt:3: error: not a code of two or four digits: 8g",
            complaint(head + "00A0> 8g\n"));
  EXPECT_EQ("100.txt:3: error: no code", complaint(head + "00A0>\n"));
  EXPECT_EQ("100.txt:3: error: codes of different lengths", complaint(head + "00A0> 20 8140\n"));
}

TEST_F(Packing, RefusesWhatIsNoCharacter) {
  EXPECT_EQ("100.txt:3: error: not a character: 20ac", complaint(head + "20ac> 80\n"));
  EXPECT_EQ("100.txt:3: error: not a character: 0000", complaint(head + "0000> 80\n"));
  EXPECT_EQ("100.txt:3: error: a surrogate: D800", complaint(head + "D800> 80\n"));
}

TEST_F(Packing, RefusesRowsOfAnotherForm) {
  EXPECT_EQ("100.txt:3: error: a row has sixteen columns", complaint(head + "80: 20AC\n"));
  EXPECT_EQ("100.txt:3: error: a row begins at a multiple of 10",
            complaint(head + "81: 20AC 20AD" + blanks + "\n"));
}

TEST_F(Packing, RefusesLinesThatMeanNothing) {
  EXPECT_EQ("100.txt:3: error: not understood", complaint(head + "colour red\n"));
  EXPECT_EQ("100.txt:3: error: not understood", complaint(head + "80 20AC 20AD\n"));
  EXPECT_EQ("100.txt:4: error: stands behind the codes it concerns",
            complaint(head + row80 + "lower-half listed\n"));
  EXPECT_EQ("100.txt:2: error: neither ascii nor listed: none",
            complaint("table _Enc_x\nlower-half none\n"));
}

TEST_F(Packing, RefusesFilesThatDoNotSayWhatTheyAre) {
  EXPECT_EQ("100.txt:1: error: needs one of lower-half, same-as and changes",
            complaint("table _Enc_x\n"));
  EXPECT_EQ("100.txt:2: error: needs one of lower-half, same-as and changes",
            complaint("lower-half ascii\nsame-as 101\n"));
  EXPECT_EQ("100.txt:1: error: names no table", complaint("lower-half ascii\n"));
  EXPECT_EQ("100.txt:1: error: not a name for a table: Enc-x",
            complaint("table Enc-x\nlower-half ascii\n"));
}

TEST_F(Packing, RefusesReferencesThatLeadNowhere) {
  EXPECT_EQ("100.txt:2: error: no such code page", complaint("table _Enc_x\nsame-as 101\n"));
  EXPECT_EQ("100.txt:2: error: no such code page", complaint("table _Enc_x\nchanges 101\n"));
  EXPECT_EQ("100.txt:2: error: not the number of a code page: x",
            complaint("table _Enc_x\nsame-as x\n"));
  EXPECT_EQ("100.txt:2: error: that page does not list its mapping itself",
            complaint("table _Enc_x\nsame-as 100\n"));
}

TEST_F(Packing, RefusesTwoPagesThatNameOneTable) {
  write("99.txt", head);
  EXPECT_EQ("100.txt:1: error: another page has this table: _Enc_x", complaint(head));
}

TEST_F(Packing, RefusesChangesThatListRows) {
  EXPECT_EQ("100.txt:3: error: changes are listed from Unicode",
            complaint("table _Enc_x\nchanges 932\n" + row80));
  EXPECT_EQ("100.txt:3: error: only changes can remove", complaint(head + "remove 00A0\n"));
}

TEST_F(Packing, RefusesRecordsThatRepeatACodeAtOnce) {
  EXPECT_EQ("100.txt:4: error: the packed list cannot repeat a code at once",
            complaint(head + "00A0> 20\n00A1> 20\n"));
}

// --- Facts beyond the tables ---------------------------------------------------

// A page 100 with the code 80 and ASCII, and what stands beside it in extra/.
class PackingExtras : public Packing {
 protected:
  PackingExtras() {
    fs::create_directory(m_directory / "extra");
    write("100.txt", head + row80);
    write("extra/54936.txt", "lower-half ascii\n8140: 4E02 4E04" + blanks + "\n");
  }

  std::string complaintAbout(const std::string& name, const std::string& text) {
    write("extra/" + name, text);
    try {
      pack::packExtras(m_directory);
    } catch (const pack::InputError& error) {
      return std::string(error.what()).substr((m_directory / "extra").string().size() + 1);
    }
    return "none";
  }

  std::string aboutReadOnly(const std::string& text) {
    return complaintAbout("100.read-only.txt", text);
  }
  std::string aboutBestFit(const std::string& text) {
    return complaintAbout("100.best-fit.txt", text);
  }
  std::string aboutWhole(const std::string& text) { return complaintAbout("54936.txt", text); }
};

TEST_F(PackingExtras, PacksReadOnlyCodesByTheirLead) {
  EXPECT_EQ("none", aboutReadOnly("8140< 20AC ...." + blanks + "\n8FA2A0< .... 02D8" + blanks));
  const auto lists = pack::packExtras(m_directory).readOnly;
  ASSERT_EQ(2U, lists.size());
  EXPECT_EQ(0U, lists[0].lead);
  EXPECT_EQ("xeHUAQIGsIAAA", lists[0].text);
  EXPECT_EQ(0x8FU, lists[1].lead);
  EXPECT_EQ("xeHUAoaLYAgAA", lists[1].text);
}

TEST_F(PackingExtras, PacksBestFitsByCharacter) {
  EXPECT_EQ("none", aboutBestFit("# A comment.\n0100> 41 61\n0300> 80\n"));
  write("101.txt", "same-as 100\n");
  EXPECT_EQ("none", complaintAbout("101.best-fit.txt", "same-as 100\n"));
  const auto lists = pack::packExtras(m_directory).bestFits;
  ASSERT_EQ(2U, lists.size());
  ASSERT_EQ(3U, lists[0].records.size());
  EXPECT_EQ(0x0101U, lists[0].records[1].unit);
  EXPECT_EQ(0x61U, lists[0].records[1].code);
  EXPECT_EQ(100, lists[1].sameAs);
}

TEST_F(PackingExtras, RefusesNamesThatTellNoPageOrKind) {
  EXPECT_EQ("100.worst-fit.txt:1: error: the file is not named after a page and a kind",
            complaintAbout("100.worst-fit.txt", "0100> 41\n"));
  fs::remove(m_directory / "extra/100.worst-fit.txt");
  EXPECT_EQ("x.best-fit.txt:1: error: the file is not named after a page and a kind",
            complaintAbout("x.best-fit.txt", "0100> 41\n"));
}

TEST_F(PackingExtras, RefusesLinesOfOtherKinds) {
  const std::string refusal = ":1: error: has no place in a file of this kind";
  EXPECT_EQ("100.read-only.txt" + refusal, aboutReadOnly("0100> 41\n"));
  EXPECT_EQ("100.read-only.txt" + refusal, aboutReadOnly("same-as 101\n"));
  EXPECT_EQ("100.read-only.txt" + refusal, aboutReadOnly("8140: 20AC ...." + blanks));
  fs::remove(m_directory / "extra/100.read-only.txt");
  EXPECT_EQ("100.best-fit.txt" + refusal, aboutBestFit("8140< 20AC ...." + blanks));
  EXPECT_EQ("100.best-fit.txt" + refusal, aboutBestFit("lower-half ascii\n"));
}

TEST_F(PackingExtras, RefusesReadOnlyCodesThatThePageHasOrThatStandTwice) {
  write("100.txt", head + row80 + "8140: 3000 3001" + blanks + "\n");
  EXPECT_EQ("100.read-only.txt:2: error: the page has a code of these",
            aboutReadOnly("\n8140< 4E00 ...." + blanks));
  EXPECT_EQ("100.read-only.txt:2: error: out of order",
            aboutReadOnly("8150< 4E00 ...." + blanks + "\n8150< 4E01 ...." + blanks));
  EXPECT_EQ("100.read-only.txt:1: error: lead byte out of range: 4040",
            aboutReadOnly("4040< 4E00 ...." + blanks));
  EXPECT_EQ("100.read-only.txt:1: error: not a code: 80", aboutReadOnly("80< 4E00 ...." + blanks));
  EXPECT_EQ("100.read-only.txt:1: error: a row has sixteen columns", aboutReadOnly("8150< 4E00"));
  EXPECT_EQ("100.read-only.txt:1: error: says nothing", aboutReadOnly("# Nothing.\n"));
}

TEST_F(PackingExtras, RefusesBestFitsThatNobodyNeedsOrNobodyCanRead) {
  EXPECT_EQ("100.best-fit.txt:2: error: the page has a character of these",
            aboutBestFit("0100> 41\n20AC> 45\n"));
  EXPECT_EQ("100.best-fit.txt:1: error: the page lacks a code of these",
            aboutBestFit("0100> DC\n"));
  EXPECT_EQ("100.best-fit.txt:2: error: out of order", aboutBestFit("0101> 41\n0100> 41\n"));
  EXPECT_EQ("100.best-fit.txt:2: error: out of order", aboutBestFit("0100> 41 41\n0101> 41\n"));
  EXPECT_EQ("100.best-fit.txt:1: error: codes of different lengths",
            aboutBestFit("0100> 41 8140\n"));
  EXPECT_EQ("100.best-fit.txt:1: error: not a code: 4g", aboutBestFit("0100> 4g\n"));
  EXPECT_EQ("100.best-fit.txt:1: error: no code", aboutBestFit("0100>\n"));
  EXPECT_EQ("100.best-fit.txt:1: error: a surrogate: D800", aboutBestFit("D800> 41\n"));
}

TEST_F(PackingExtras, RefusesReferencesThatLeadNowhere) {
  EXPECT_EQ("100.best-fit.txt:1: error: that page lists no best fits itself",
            aboutBestFit("same-as 101\n"));
  EXPECT_EQ("100.best-fit.txt:2: error: lists codes and is the same as another page",
            aboutBestFit("same-as 101\n0100> 41\n"));
  fs::remove(m_directory / "extra/100.best-fit.txt");
  EXPECT_EQ("101.best-fit.txt:1: error: no such code page",
            complaintAbout("101.best-fit.txt", "0100> 41\n"));
}

TEST_F(PackingExtras, RefusesRangesOfAnotherForm) {
  const auto about = [this](const std::string& line) {
    const std::string complaint = aboutWhole("lower-half ascii\n81308130..81308139: 0080\n" + line);
    return complaint.substr(complaint.find(':') + 1);
  };
  EXPECT_EQ("none", about("81308230..81308230< 0080\n90308130..E3329A35: 10000\n"));
  EXPECT_EQ("3: error: out of order", about("81308139..81308230: 0100\n"));
  EXPECT_EQ("3: error: not a range of four-byte codes", about("81308230..8130823A: 0100\n"));
  EXPECT_EQ("3: error: not a range of four-byte codes", about("81308231..81308230: 0100\n"));
  EXPECT_EQ("3: error: not the first of characters", about("81308230..81308231: 100\n"));
  EXPECT_EQ("3: error: not the first of characters", about("90308130..E3329A36: 10000\n"));
  EXPECT_EQ("3: error: surrogates among the characters", about("81308230..81308231: D7FF\n"));
  EXPECT_EQ("3: error: a character that already stands in line 2",
            about("81308230..81308231: 007F\n"));
  EXPECT_EQ("3: error: a character that already stands in line 2", about("0089> 8140\n"));
}

TEST_F(PackingExtras, RefusesAWholePageThatContradictsItself) {
  const std::string row = "8140: 4E02 4E04" + blanks + "\n";
  EXPECT_EQ("54936.txt:3: error: a character that already stands in line 2",
            aboutWhole("lower-half ascii\n" + row + "8150: 4E02 ...." + blanks));
  EXPECT_EQ("54936.txt:3: error: this code already stands in line 2",
            aboutWhole("lower-half ascii\n" + row + "8140< 3000 ...." + blanks));
  EXPECT_EQ("54936.txt:1: error: needs lower-half", aboutWhole(row));
}

// --- The last block ---------------------------------------------------------

TEST_F(Packing, RefusesALastBlockThatIsNotWhole) {
  const auto complain = [this](const std::string& text) -> std::string {
    try {
      pack::packLastBlock(pack::InputFile(write("block.txt", text)));
    } catch (const pack::InputError& error) {
      return error.what();
    }
    return "none";
  };
  EXPECT_THAT(complain("89-01: FA5C\n"), EndsWith("block.txt:1: error: no code for cell 89-02:"));
  EXPECT_THAT(complain("\n89-02: FA5C\n"),
              EndsWith("block.txt:2: error: expected the label 89-01:"));
  EXPECT_THAT(complain("89-01: FA7F\n"),
              EndsWith("block.txt:1: error: not a two-byte Shift_JIS code: FA7F"));
  std::string row = "89-01:";
  for (int i = 0; i < 377; ++i) row += " FA5C";
  EXPECT_THAT(complain(row), EndsWith("block.txt:1: error: more codes than cells"));
}

TEST_F(Packing, RefusesAFileThatIsNotThere) {
  EXPECT_THROW(pack::InputFile(m_directory / "absent.txt"), pack::InputError);
}

}  // namespace
