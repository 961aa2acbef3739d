#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tools/LastBlock.h"
#include "tools/MappingFile.h"
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
