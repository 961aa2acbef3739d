// Line ends that are rewritten: what ends a line, what becomes of it, and that neither
// pieces nor room nor losses change it.

#include <gtest/gtest.h>

#include "tests/helpers/TextPieces.h"

namespace quorvel::test_text {
namespace {

using quorvel_test::byteString;
using quorvel_test::hex;
using text::LineEnds;
using text::Options;

Options withEnds(LineEnds lineEnds) {
  Options options;
  options.lineEnds = lineEnds;
  return options;
}

std::string converted(int from, int to, std::string_view source, const Options& options) {
  return text::convert(encodingOf(from), encodingOf(to), source, options).text;
}

text::Transcoder transcoderFor(int from, int to, const Options& options) {
  return std::move(*text::Transcoder::make(encodingOf(from), encodingOf(to), options));
}

/// The bytes of a text in an encoding.
std::string in(int encoding, std::string_view utf8) {
  const text::Converted made = text::convert(text::Encoding::utf8(), encodingOf(encoding), utf8);
  EXPECT_TRUE(made.report.isLossless()) << encoding;
  return made.text;
}

/// The losses of a conversion that goes on behind them.
std::string lossesOf(int from, int to, std::string_view source, Options options) {
  std::vector<Loss> losses;
  options.onLoss = [&](const Loss& loss) {
    losses.push_back(loss);
    return text::Action::drop;
  };
  text::convert(encodingOf(from), encodingOf(to), source, options);
  return toShort(losses);
}

// --- What ends a line -------------------------------------------------------------------------

constexpr std::string_view allEnds = "a\nb\r\nc\rd\r\r\n\n\n\re\n\r\n";
constexpr std::string_view allFeeds = "a\nb\nc\nd\n\n\n\n\ne\n\n";
constexpr std::string_view allPairs = "a\r\nb\r\nc\r\nd\r\n\r\n\r\n\r\n\r\ne\r\n\r\n";

TEST(TextLineEnds, AreKeptUnlessAskedFor) {
  EXPECT_EQ(converted(65001, 1252, allEnds, {}), allEnds);
  EXPECT_EQ(Options().lineEnds, LineEnds::keep);
}

TEST(TextLineEnds, AreFeedsReturnsAndPairsOfThem) {
  EXPECT_EQ(converted(65001, 1252, allEnds, withEnds(LineEnds::lf)), allFeeds);
  EXPECT_EQ(converted(65001, 1252, allEnds, withEnds(LineEnds::crLf)), allPairs);
}

TEST(TextLineEnds, AreRewrittenBetweenAnyTwoEncodings) {
  for (const text::Encoding from : text::Encoding::all()) {
    for (const int to : {65001, 1200, 1201, 12000, 65000, 37, 932, 50220, 50225, 54936, 55000}) {
      const std::string source = in(from.number(), allEnds);
      EXPECT_EQ(hex(converted(from.number(), to, source, withEnds(LineEnds::lf))),
                hex(in(to, allFeeds)))
          << from.number() << " to " << to;
      EXPECT_EQ(hex(converted(from.number(), to, source, withEnds(LineEnds::crLf))),
                hex(in(to, allPairs)))
          << from.number() << " to " << to;
    }
  }
}

TEST(TextLineEnds, AreRewrittenBetweenEqualEncodings) {
  for (const text::Encoding both : text::Encoding::all()) {
    const int number = both.number();
    EXPECT_EQ(hex(converted(number, number, in(number, allEnds), withEnds(LineEnds::crLf))),
              hex(in(number, allPairs)))
        << number;
  }
}

TEST(TextLineEnds, AreNextLinesInEbcdicOnly) {
  // NEL is 15 and LF is 25 in most pages, and the other way round in open systems.
  const std::string nextLines = byteString("C1 15 C2 0D 15 C3 0D 25 C4");
  EXPECT_EQ(converted(37, 65001, nextLines, withEnds(LineEnds::lf)), "A\nB\n\nC\nD");
  EXPECT_EQ(converted(37, 65001, nextLines, withEnds(LineEnds::crLf)), "A\r\nB\r\n\r\nC\r\nD");
  EXPECT_EQ(hex(converted(37, 37, nextLines, withEnds(LineEnds::lf))), "C1 25 C2 25 25 C3 25 C4");
  for (const int from : {65001, 1200, 54936}) {
    const std::string source = in(from, "a\u0085\u2028\u2029\v\f");
    EXPECT_EQ(hex(converted(from, from, source, withEnds(LineEnds::crLf))), hex(source)) << from;
  }
  EXPECT_EQ(converted(28591, 28591, "a\x85", withEnds(LineEnds::lf)), "a\x85");
}

TEST(TextLineEnds, AreAskedOfEveryEbcdicPageAndNoOther) {
  for (const text::Encoding from : text::Encoding::all()) {
    const auto made = text::convert(text::Encoding::utf8(), from, "\u0085");
    if (!made.report.isLossless()) continue;
    const bool isEbcdic = from.title().find("EBCDIC") != std::string_view::npos;
    EXPECT_EQ(converted(from.number(), 65001, made.text, withEnds(LineEnds::lf)),
              isEbcdic ? "\n" : "\u0085")
        << from.number();
  }
}

TEST(TextLineEnds, AreOnePairAroundASwitchOfSets) {
  // Of ISO-2022-JP, an escape between the two.
  EXPECT_EQ(converted(50220, 65001, "a\r\x1B(B\nb", withEnds(LineEnds::crLf)), "a\r\nb");
  // Of UTF-7, both in one run of base64, and one of them.
  EXPECT_EQ(converted(65000, 65001, "a+AA0ACg-b", withEnds(LineEnds::lf)), "a\nb");
  EXPECT_EQ(converted(65000, 65001, "a+AA0-\nb", withEnds(LineEnds::lf)), "a\nb");
}

TEST(TextLineEnds, AreOfTheSourceAndNotOfWhatStandsInForALoss) {
  Options options = withEnds(LineEnds::crLf);
  options.malformed = Action::substitute;
  options.substitute = "\n";
  EXPECT_EQ(converted(65001, 1252, "a\r\xFF\nb\xFF\n", options), "a\r\n\n\r\nb\n\r\n");
}

// --- Pieces and room --------------------------------------------------------------------------

std::string manyEnds(int encoding) {
  std::string text;
  const char* const ends[] = {"\n", "\r\n", "\r", "\r\r\n", "\n\r", ""};
  for (std::size_t i = 0; i < 24; ++i) {
    text += std::string(i % 7, static_cast<char>('a' + i % 26));
    text += ends[i % std::size(ends)];
    if (i % 5 == 0) text += "\u3042";
    if (i % 11 == 0) text += "\U0001F600";
  }
  Options options;
  options.unmappable = Action::drop;
  return text::convert(text::Encoding::utf8(), encodingOf(encoding), text, options).text;
}

constexpr int sources[] = {65001, 1200,  1201,  12001, 65000, 37,   932,
                           1252,  51932, 50220, 50225, 54936, 55000};
constexpr int destinations[] = {65001, 1200, 1201, 65000, 50220, 1252, 54936, 37};

/// Losses, so that places have to be found again.
Options losing(LineEnds lineEnds) {
  Options options = withEnds(lineEnds);
  options.malformed = options.unmappable = Action::escape;
  return options;
}

void expectSame(const Result& got, const text::Converted& expected, const std::string& how) {
  ASSERT_TRUE(got.text == expected.text)
      << how << ": " << hex(got.text) << "\n  should be " << hex(expected.text);
  ASSERT_TRUE(got.report == expected.report) << how << ": " << toText(got.report);
}

template <typename Try>
void forAllPairs(const Try& attempt) {
  for (const int from : sources) {
    std::string source = manyEnds(from);
    source.insert(source.size() / 2, "\xFF");
    for (const int to : destinations) {
      for (const LineEnds ends : {LineEnds::lf, LineEnds::crLf}) {
        const text::Converted expected =
            text::convert(encodingOf(from), encodingOf(to), source, losing(ends));
        text::Transcoder transcoder = transcoderFor(from, to, losing(ends));
        const std::string how = std::to_string(from) + " to " + std::to_string(to);
        attempt(transcoder, source, expected, how);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(TextLineEnds, AreTheSameAtEveryCutIntoTwoPieces) {
  forAllPairs([](text::Transcoder& transcoder, const std::string& source,
                 const text::Converted& expected, const std::string& how) {
    for (std::size_t cut = 0; cut <= source.size(); ++cut) {
      transcoder.reset();
      expectSame(convertInRooms(transcoder, cutAt(source, cut), {1024}), expected,
                 how + ", cut at " + std::to_string(cut));
    }
  });
}

TEST(TextLineEnds, AreTheSameInRoomsOfEverySize) {
  forAllPairs([](text::Transcoder& transcoder, const std::string& source,
                 const text::Converted& expected, const std::string& how) {
    for (std::size_t size = 1; size <= 64; ++size) {
      transcoder.reset();
      expectSame(convertInRooms(transcoder, {source}, {size}), expected,
                 how + ", in rooms of " + std::to_string(size));
    }
    transcoder.reset();
    expectSame(convertInRooms(transcoder, singleBytes(source), {1}), expected,
               how + ", byte by byte");
  });
}

TEST(TextLineEnds, AreWrittenBeforeThePieceBehindThemComes) {
  text::Transcoder transcoder = transcoderFor(65001, 1252, withEnds(LineEnds::crLf));
  std::string out;
  EXPECT_TRUE(transcoder.push("a\r", out));
  EXPECT_EQ(out, "a\r\n");
  EXPECT_TRUE(transcoder.push("\n", out));
  EXPECT_EQ(out, "a\r\n");
  EXPECT_TRUE(transcoder.push("\n", out));
  EXPECT_EQ(out, "a\r\n\r\n");
  transcoder.reset();
  out.clear();
  EXPECT_TRUE(transcoder.push("\r", out));
  transcoder.reset();
  EXPECT_TRUE(transcoder.push("\n", out));
  EXPECT_EQ(out, "\r\n\r\n");
}

TEST(TextLineEnds, FillBlocksToTheLastUnit) {
  std::string source(40000, '\n');
  for (std::size_t i = 0; i < source.size(); i += 97) source[i] = 'x';
  for (const std::size_t size : {source.size(), source.size() - 1}) {
    const std::string_view part = std::string_view(source).substr(0, size);
    std::string expected;
    for (const char c : part) expected += c == '\n' ? std::string("\r\n") : std::string(1, c);
    EXPECT_TRUE(converted(65001, 1252, part, withEnds(LineEnds::crLf)) == expected);
    EXPECT_TRUE(converted(1252, 65001, expected, withEnds(LineEnds::lf)) == part);
  }
}

// --- Losses -----------------------------------------------------------------------------------

TEST(TextLineEnds, LeaveLossesWhereTheyAre) {
  for (const LineEnds ends : {LineEnds::keep, LineEnds::lf, LineEnds::crLf}) {
    // A character without a place right behind a pair, between returns, behind a feed.
    EXPECT_EQ(lossesOf(65001, 1252, "a\r\n\u3042\r\u3042\r\r\n\U0001F600\n\u3042", withEnds(ends)),
              "3+3:U+3042 7+3:U+3042 13+4:U+1F600 18+3:U+3042");
    EXPECT_EQ(lossesOf(65001, 1252, "\r\n\xFF\r\xFF\n\xE3\x81", withEnds(ends)), "2+1 4+1 6+2");
    EXPECT_EQ(lossesOf(932, 1252, "\r\n\x82\xA0\r\n\x81\"", withEnds(ends)), "2+2:U+3042 6+1");
    EXPECT_EQ(lossesOf(50220, 1252, "\r\n\x1B$B$\"\x1B(B\r\n\x1B$B$\"", withEnds(ends)),
              "5+2:U+3042 15+2:U+3042");
    EXPECT_EQ(lossesOf(65000, 1252, "\r\n+MEI-\r\n+MEI-", withEnds(ends)),
              "3+3:U+3042 10+3:U+3042");
    EXPECT_EQ(lossesOf(1201, 37, byteString("00 0D 00 0A 30 42 00 0D D8 00"), withEnds(ends)),
              "4+2:U+3042 8+2");
  }
}

TEST(TextLineEnds, LeaveAStopWhereItIs) {
  for (const LineEnds ends : {LineEnds::lf, LineEnds::crLf}) {
    const text::Converted stopped =
        text::convert(text::Encoding::utf8(), encodingOf(1252), "a\r\n\u3042\n", withEnds(ends));
    EXPECT_EQ(stopped.text, ends == LineEnds::lf ? "a\n" : "a\r\n");
    EXPECT_EQ(stopped.report.bytesRead, 3U);
    EXPECT_EQ(toShort(*stopped.report.firstUnmappable), "3+3:U+3042");
  }
}

// --- What there is beside ---------------------------------------------------------------------

TEST(TextLineEnds, FollowAMarkOfEitherOrder) {
  EXPECT_EQ(converted(1200, 65001, byteString("FE FF 00 61 00 0D 00 0A"), withEnds(LineEnds::lf)),
            "a\n");
  Options options = withEnds(LineEnds::crLf);
  options.writesMark = true;
  EXPECT_EQ(hex(converted(1201, 1200, byteString("FF FE 0A 00"), options)), "FF FE 0D 00 0A 00");
}

TEST(TextLineEnds, NeverBecomeMoreThanTheBound) {
  for (const int to : {65001, 1200, 12000, 37, 65000, 50220}) {
    for (const int from : sources) {
      const std::string source = in(from, std::string(50, '\n'));
      const Options options = withEnds(LineEnds::crLf);
      EXPECT_LE(converted(from, to, source, options).size(),
                text::mostBytes(encodingOf(from), encodingOf(to), source.size(), options));
    }
  }
}

TEST(TextLineEnds, AreCountedWithoutOutput) {
  const text::Report report =
      text::check(text::Encoding::utf8(), encodingOf(1252), allEnds, withEnds(LineEnds::crLf));
  EXPECT_EQ(report.bytesWritten, allPairs.size());
  EXPECT_EQ(report.bytesRead, allEnds.size());
}

}  // namespace
}  // namespace quorvel::test_text
