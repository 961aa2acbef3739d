// Every allocation of every operation fails once, by itself and with all that
// follow: the call says so or is right all the same, and the next one is right.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvel/base/NullLog.h"
#include "quorvel/pages/ContentCoding.h"
#include "quorvel/pages/QuorvelBzip2.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/Japanese.h"
#include "tests/helpers/Conversion.h"
#include "tests/helpers/FailingAllocations.h"
#include "tests/helpers/Tables.h"
#include "tools/Base64.h"

namespace {

using namespace quorvel_test;
using quorvel::DataBuffer;
using quorvel::EncodingConvert;
using quorvel::HashConvert;
using quorvel::LogBase;
using quorvel::NullLog;
using quorvel::StringBuffer;
using quorvel::test_memory::FailingAllocations;
using quorvel::test_memory::Failures;

using Call = std::function<bool(EncodingConvert&, const Bytes&, DataBuffer&, LogBase&)>;

/// An operation with all that it needs.
struct Operation {
  std::string name;
  EncodingConvert converter;
  Bytes input;
  Call call;
};

enum class Tables { absent, present };

constexpr std::string_view kBefore = "2E 2E";

/// One call, of which the allocations fail that `arm` says.
struct Attempt {
  Outcome outcome;
  long failures;
};

Attempt attempt(const Operation& operation, long number, Failures failures) {
  EncodingConvert converter = operation.converter;
  DataBuffer out = bufferOf(kBefore);
  NullLog log;
  bool result = false;
  long count = 0;
  {
    const FailingAllocations failing(number, failures);
    result = operation.call(converter, operation.input, out, log);
    count = failing.count();
  }
  return {{result, converter.m_hadError, hex(out)}, count};
}

Outcome undisturbed(const Operation& operation) {
  return attempt(operation, 0, Failures::one).outcome;
}

/// Lets each allocation of the operation fail in turn. `isHonest` says of an
/// attempt in which one failed whether it may end so.
template <typename IsHonest>
void failEach(const Operation& operation, Tables tables, Failures failures,
              const IsHonest& isHonest) {
  EncodingConvert::cleanupMemory();
  const Outcome expected = undisturbed(operation);
  for (long number = 1;; ++number) {
    if (tables == Tables::absent) EncodingConvert::cleanupMemory();
    const Attempt disturbed = attempt(operation, number, failures);
    if (disturbed.failures == 0) {
      EXPECT_EQ(disturbed.outcome, expected);
      return;
    }
    SCOPED_TRACE(operation.name + ", allocation " + std::to_string(number) +
                 (failures == Failures::one ? "" : " and all that follow"));
    ASSERT_TRUE(isHonest(disturbed.outcome, expected)) << disturbed.outcome;
    ASSERT_EQ(undisturbed(operation), expected) << "the call behind the failed one";
  }
}

bool isFailureOrRight(const Outcome& outcome, const Outcome& expected) {
  const std::string before = hex(bytes(kBefore));
  return outcome == expected || (!outcome.result && outcome.out.starts_with(before));
}

template <typename IsHonest>
void failEverywhere(const Operation& operation, const IsHonest& isHonest) {
  for (const Tables tables : {Tables::absent, Tables::present}) {
    for (const Failures failures : {Failures::one, Failures::allFromThereOn}) {
      failEach(operation, tables, failures, isHonest);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

void failEverywhere(const Operation& operation) { failEverywhere(operation, isFailureOrRight); }

Operation conversion(int from, int to, std::string_view input, EncodingConvert converter = {}) {
  return {std::to_string(from) + " to " + std::to_string(to) + ", action " +
              std::to_string(converter.m_errorAction),
          std::move(converter), bytes(input),
          [=](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
            return used.EncConvert(from, to, in.data(), sizeOf(in), out, log);
          }};
}

std::string repeated(std::string_view text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += std::string(text) + " ";
  return result;
}

// --- Tables -------------------------------------------------------------------

using Ensure = bool (*)(int, LogBase&);

/// The table is asked for, and then used.
Operation ensuring(Ensure ensure, int codePage, int from, int to, std::string_view input) {
  Operation use = conversion(from, to, input);
  use.name = "the table of " + std::to_string(codePage) + " for " + use.name;
  use.call = [=, convert = use.call](EncodingConvert& used, const Bytes& in, DataBuffer& out,
                                     LogBase& log) {
    return ensure(codePage, log) && convert(used, in, out, log);
  };
  return use;
}

struct Page {
  int codePage;
  std::string_view text;
};

constexpr Page kPages[] = {
    {1252, "41 80 E9 FF"},
    {37, "C1 4A 5A E0"},
    {1256, "41 80 C7 E1 32"},
    {28596, "41 C7 E1 32"},
    {932, "41 82 A0 93 FA 96 7B B1 FC 4B"},
    {936, "41 B0 A1 C4 E3 80 FD 9B"},
    {10001, "41 A0 FD FE 85 40 82 A0"},
    {52936, "41 B0 A1 C4 E3"},
    {1361, "41 88 61 D3 BD"},
};

TEST(MemoryFailure, OfABuilderIsToldAndForgotten) {
  for (const auto& [codePage, text] : kPages) {
    failEverywhere(ensuring(EncodingConvert::ensureHashToUnicode, codePage, codePage, 1200, text));
    const std::string units = convert(codePage, 1200, text).out;
    failEverywhere(
        ensuring(EncodingConvert::ensureHashFromUnicode, codePage, 1200, codePage, units));
    if (HasFatalFailure()) return;
  }
}

/// A table of a caller's, made by `make`, and what it then has for some keys.
Operation building(std::string name, std::function<bool(HashConvert&, LogBase&)> make) {
  return {
      std::move(name), {}, {}, [=](EncodingConvert&, const Bytes&, DataBuffer& out, LogBase& log) {
        const std::unique_ptr<HashConvert> table(HashConvert::createNewObject(1));
        if (!table || !table->hcInitialize(2) || !make(*table, log)) return false;
        for (const int low : {0x00, 0x20, 0x40, 0x41, 0x42, 0x80, 0x81}) {
          unsigned char code[HashConvert::mostValueBytes];
          for (const int high : {0x00, 0x20, 0x30, 0x40, 0x41, 0xAC}) {
            const unsigned char key[2] = {static_cast<unsigned char>(low),
                                          static_cast<unsigned char>(high)};
            int length = 0;
            table->hcLookup(key, code, length);
            if (!out.append(code, static_cast<unsigned int>(length))) return false;
          }
        }
        return true;
      }};
}

// Two slots, so that most keys stand in each other's way.
const Bytes kList =
    bytes("61 75  80 AC 20  00  40 81 00 30  01 00 01 00  01 00 40 00  01 00 41 00  00 00");
const Bytes kChanges = bytes("61 64  00 30 00 00  90 01 30  91 20 40  00  81 90 AC 20  00 00");

TEST(MemoryFailure, OfACallersTableIsTold) {
  const std::string packed = "x" + pack::encodeBase64(kList);
  const std::string changes = "x" + pack::encodeBase64(kChanges);
  for (const bool fromUnicode : {true, false}) {
    failEverywhere(building("buildHash", [&, fromUnicode](HashConvert& table, LogBase& log) {
      return EncodingConvert::buildHash(packed.c_str(), table, fromUnicode, log);
    }));
    failEverywhere(
        building("buildFromComplete", [&, fromUnicode](HashConvert& table, LogBase& log) {
          return EncodingConvert::buildFromComplete(kList.data() + 2, table, fromUnicode, log);
        }));
  }
  failEverywhere(building("buildFromDiffs", [&](HashConvert& table, LogBase& log) {
    return EncodingConvert::buildFromDiffs(kChanges.data() + 2, table, log);
  }));
  failEverywhere(building("a list and its changes", [&](HashConvert& table, LogBase& log) {
    return EncodingConvert::buildHash(packed.c_str(), table, true, log) &&
           EncodingConvert::buildHash(changes.c_str(), table, true, log);
  }));
  failEverywhere(building("hcBuildReverse", [&](HashConvert& table, LogBase& log) {
    const std::unique_ptr<HashConvert> other(HashConvert::createNewObject(1));
    return other && other->hcInitialize(2) &&
           EncodingConvert::buildFromComplete(kList.data() + 2, *other, true, log) &&
           other->hcBuildReverse(table, log);
  }));
}

TEST(MemoryFailure, OfAnInsertionIsToldAndLogged) {
  struct Errors : NullLog {
    void logError(const char* text) override { last = text; }
    const char* last = "";
  };
  const auto table = emptyTable(1);
  const unsigned char keys[3][2] = {{0x01, 0x30}, {0x02, 0x30}, {0x03, 0x30}};
  const unsigned char value[2] = {0x81, 0x40};
  Errors log;
  EXPECT_TRUE(table->hcInsert(keys[0], value, HashConvert::lengthCodeToPair, log));
  {
    const FailingAllocations failing(1, Failures::one);
    EXPECT_FALSE(table->hcInsert(keys[1], value, HashConvert::lengthCodeToPair, log));
    EXPECT_TRUE(table->hcInsert(keys[0], value, HashConvert::lengthCodeToPair, log))
        << "it is there";
    EXPECT_TRUE(table->hcInsert(keys[2], value, 11, log)) << "nothing to insert";
  }
  EXPECT_STREQ(log.last, "Out of memory for a mapping.");
  EXPECT_TRUE(table->hcInsert(keys[1], value, HashConvert::lengthCodeToPair, log));
  EXPECT_EQ(lookUp(*table, "02 30"), "81 40");
}

TEST(MemoryFailure, IsNotMistakenForDamagedText) {
  const auto table = emptyTable(3);
  NullLog log;
  for (const char* damaged : {"", "x", "c", "xAAA", "x=AAA", "xAAA*", "cAAAA", "c4aeUsxAAAABC"}) {
    EXPECT_TRUE(EncodingConvert::buildHash(damaged, *table, true, log)) << damaged;
    EXPECT_EQ(table->m_direction, 0) << damaged;
  }
  const FailingAllocations failing(1, Failures::allFromThereOn);
  EXPECT_FALSE(EncodingConvert::buildHash("xAAA*", *table, true, log));
}

// --- Codings ------------------------------------------------------------------

TEST(MemoryFailure, OfACodingIsTold) {
  const Bytes stream = bytes(
      "E1 A7 94 B3 0A 00 00 00 42 5A 68 31 31 41 59 26 53 59 88 02 FA C1 00 00 00 04 00 3F F0 20 "
      "00 22 01 A6 98 40 0C 15 5E 68 E3 E9 8B B9 22 9C 28 48 44 01 7D 60 80");
  failEverywhere({"unBzipWithHeader",
                  {},
                  stream,
                  [](EncodingConvert&, const Bytes& in, DataBuffer& out, LogBase& log) {
                    DataBuffer lent;
                    lent.borrowData(const_cast<unsigned char*>(in.data()), sizeOf(in));
                    return quorvel::QuorvelBzip2().unBzipWithHeader(lent, out, &log);
                  }});
  failEverywhere(
      {"decodeBase64ToDb", {}, {}, [](EncodingConvert&, const Bytes&, DataBuffer& out, LogBase&) {
         const std::string_view text = "QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVo=";
         return quorvel::ContentCoding::decodeBase64ToDb(
             text.data(), static_cast<unsigned int>(text.size()), out);
       }});
  failEverywhere(
      {"decodeBase64", {}, {}, [](EncodingConvert&, const Bytes&, DataBuffer& out, LogBase&) {
         unsigned int length = 0;
         const std::unique_ptr<unsigned char[]> block(
             quorvel::ContentCoding().decodeBase64("QUJD", 4, &length));
         return block && out.append(block.get(), length);
       }});
}

TEST(MemoryFailure, OfTheLastBlockOfIso2022JpIsToldAndForgotten) {
  failEverywhere(
      {"the last block", {}, {}, [](EncodingConvert&, const Bytes&, DataBuffer& out, LogBase&) {
         const auto* block = quorvel::Japanese::GetSjisFrom2022_LastBlock();
         return block && out.append(block, 752);
       }});
}

// --- Conversions --------------------------------------------------------------

/// Words with kana and kanji, some of the last rows.
constexpr std::string_view kShiftJis = "82 A0 93 FA 96 7B FC 4B 41";

TEST(MemoryFailure, OfAConversionIsToldAndForgotten) {
  const std::string latin = repeated("63 61 66 E9 20 80", 40);
  const std::string utf8 = repeated("63 C3 A9 E3 81 82 E2 82 AC F0 9F 98 80", 20);
  const std::string japanese = repeated(kShiftJis, 20);
  const std::string iso2022Jp = convert(932, 50220, japanese).out;
  const std::string iso2022Kr = convert(949, 50225, "B0 A1 B0 A2 41").out;
  const std::string utf7 = convert(65001, 65000, utf8).out;
  const std::string utf32 = convert(65001, 12000, utf8).out;
  const std::string utf32be = convert(65001, 12001, utf8).out;
  const std::string gsm = repeated("41 00 1B 65 1B", 20);
  const std::string utf16 = convert(65001, 1200, utf8).out;
  const Operation operations[] = {
      conversion(1252, 65001, latin),       conversion(1252, 932, latin),
      conversion(1252, 1200, latin),        conversion(949, 1200, "B0 A1 41"),
      conversion(932, 65001, japanese),     conversion(932, 10001, japanese),
      conversion(65001, 1252, utf8),        conversion(65001, 932, utf8),
      conversion(65001, 1200, utf8),        conversion(65001, 949, utf8),
      conversion(65001, 12000, utf8),       conversion(65001, 12001, utf8),
      conversion(65001, 65000, utf8),       conversion(65001, 55000, utf8),
      conversion(65001, 50220, utf8),       conversion(65001, 50225, utf8),
      conversion(1252, 12000, latin),       conversion(1252, 65000, latin),
      conversion(1200, 65001, utf16),       conversion(1200, 936, utf16),
      conversion(1201, 65001, utf16),       conversion(1201, 28596, utf16),
      conversion(65000, 65001, utf7),       conversion(65000, 932, utf7),
      conversion(12000, 65001, utf32),      conversion(12001, 1361, utf32be),
      conversion(50220, 65001, iso2022Jp),  conversion(50220, 932, iso2022Jp),
      conversion(932, 50221, japanese),     conversion(1252, 50222, latin),
      conversion(50225, 65001, iso2022Kr),  conversion(949, 50225, "B0 A1 B0 A2 41"),
      conversion(55000, 65001, gsm),        conversion(55000, 1252, gsm),
      conversion(1252, 55000, latin),       conversion(10004, 65001, "C1 C2 41 B0 B1"),
      conversion(20127, 65001, "41 E9 42"), conversion(65001, 1256, "D9 A3 D8 A7 41"),
  };
  for (const Operation& operation : operations) {
    failEverywhere(operation);
    if (HasFatalFailure()) return;
  }
}

// Without a table what the pivot gives is nothing, and is kept all the same: only
// the flag tells.
TEST(MemoryFailure, OnTheWayToUtf16beIsToldByTheFlag) {
  const auto isHonest = [](const Outcome& outcome, const Outcome& expected) {
    return isFailureOrRight(outcome, expected) || outcome.hadError;
  };
  failEverywhere(conversion(1252, 1201, repeated("63 61 66 E9 20 80", 40)), isHonest);
  failEverywhere(conversion(65001, 1201, repeated("63 C3 A9 E3 81 82", 20)), isHonest);
}

TEST(MemoryFailure, OfAConversionByNameIsToldAndForgotten) {
  const std::string latin = repeated("63 61 66 E9 20 80", 40);
  const auto operation = [&](const char* name, const Call& call) {
    failEverywhere(Operation{name, {}, bytes(latin), call});
  };
  const auto named = [](const char* name) {
    auto text = std::make_shared<StringBuffer>();
    text->append(name);
    return text;
  };
  const auto latin1 = named("windows-1252");
  const auto japanese = named("shift_jis");
  operation("ChConvert",
            [=](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.ChConvert(*latin1, *japanese, in.data(), sizeOf(in), out, log, false);
            });
  operation("ChConvert2",
            [=](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.ChConvert2(*latin1, 65001, in.data(), sizeOf(in), out, log);
            });
  operation(
      "ChConvert2p", [](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
        return used.ChConvert2p("a name that needs memory", 1252, in.data(), sizeOf(in), out, log);
      });
  operation("ChConvert3",
            [=](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.ChConvert3(1252, *japanese, in.data(), sizeOf(in), out, log);
            });
  operation("ChConvert3p",
            [](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.ChConvert3p(1252, "iso-8859-15", in.data(), sizeOf(in), out, log);
            });
  operation("MultiByteToAnsi",
            [](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.MultiByteToAnsi(37, in.data(), static_cast<int>(in.size()), out, log);
            });
  operation("OemToMultiByte",
            [](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
              return used.OemToMultiByte(65001, reinterpret_cast<const char*>(in.data()),
                                         static_cast<int>(in.size()), out, log);
            });
}

// What an error action writes is not checked, but for the flag: memory may fail
// it alone. All else is as above.
bool isFailureOrLacksText(const Outcome& outcome, const Outcome& expected) {
  return isFailureOrRight(outcome, expected) ||
         (outcome.result == expected.result && outcome.hadError == expected.hadError &&
          outcome.out.size() < expected.out.size());
}

TEST(MemoryFailure, OfAnErrorActionIsForgotten) {
  const std::string japanese = repeated(std::string(kShiftJis) + " FD 81 20", 6);
  const std::string broken = repeated("63 C3 A9 E3 81 FF E2 82 AC F0 9F 98 80", 6);
  for (const EncodingConvert& converter :
       {withSubstitute("3F 3F"), withAction(2), withAlternate(936), withAction(7)}) {
    for (const auto& [from, to] : {std::pair(932, 1252), std::pair(932, 65001),
                                   std::pair(932, 10001), std::pair(932, 1200)}) {
      failEverywhere(conversion(from, to, japanese, converter), isFailureOrLacksText);
    }
    for (const int to : {1252, 932, 1200, 28596, 50220}) {
      failEverywhere(conversion(65001, to, broken, converter), isFailureOrLacksText);
    }
    if (HasFatalFailure()) return;
  }
}

// A mark or a copy that finds no memory goes without a word.
TEST(MemoryFailure, OfAMarkOrACopyIsForgotten) {
  const auto isAny = [](const Outcome&, const Outcome&) { return true; };
  const std::string latin = repeated("63 61 66 E9 20 80", 40);
  failEverywhere({"EncConvertWithPreamble",
                  {},
                  bytes(latin),
                  [](EncodingConvert& used, const Bytes& in, DataBuffer& out, LogBase& log) {
                    return used.EncConvertWithPreamble(1252, 65001, in.data(), sizeOf(in), out,
                                                       log);
                  }},
                 isAny);
  failEverywhere(conversion(1252, 1252, latin), isAny);
}

}  // namespace
