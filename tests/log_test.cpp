#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <stdexcept>
#include <string>

#include "quorvel/base/LogContextExitor.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/base/StreamLog.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"

namespace quorvel {
namespace {

// Everything that a sink can be told, two contexts deep.
void report(LogBase& log) {
  StringBuffer name;
  name.append("x-unknown");
  log.logInfo("before");
  log.openContext("EncConvert", false);
  log.LogDataLong("fromCodePage", 1252);
  log.openContext("convert_a", true);
  log.LogDataLong("inDataLen", -1);
  log.LogDataSb("charsetName", name);
  log.logInfo("converting from utf-16 to utf-8");
  log.logError("Unrecognized fromCharset");
  log.closeContext();
  log.LogDataLong("toCodePage", 65001);
  log.closeContext();
  log.logError("after");
}

constexpr const char* reported =
    "before\n"
    "EncConvert:\n"
    "  fromCodePage: 1252\n"
    "  convert_a:\n"
    "    inDataLen: -1\n"
    "    charsetName: x-unknown\n"
    "    converting from utf-16 to utf-8\n"
    "    error: Unrecognized fromCharset\n"
    "  toCodePage: 65001\n"
    "error: after\n";

TEST(TextLog, WritesIndentedLines) {
  StringBuffer text;
  TextLog log(text);
  report(log);
  EXPECT_STREQ(text.getString(), reported);
}

TEST(TextLog, AppendsToTheText) {
  StringBuffer text;
  text.append("earlier\n");
  TextLog log(text);
  log.logInfo("later");
  EXPECT_STREQ(text.getString(), "earlier\nlater\n");
}

TEST(StreamLog, WritesIndentedLines) {
  std::ostringstream stream;
  StreamLog log(stream);
  report(log);
  EXPECT_EQ(stream.str(), reported);
}

// Formatting state of the stream is the caller's and shows in no line.
TEST(StreamLog, WritesTheSameWhateverTheStreamsFormat) {
  std::ostringstream stream;
  stream << std::hex << std::showpos;
  StreamLog log(stream);
  report(log);
  EXPECT_EQ(stream.str(), reported);
}

TEST(NullLog, TakesEverything) {
  NullLog log;
  report(log);
  EXPECT_FALSE(log.m_verboseLogging);
}

TEST(Log, IsNotVerboseAtFirst) {
  StringBuffer text;
  EXPECT_FALSE(TextLog(text).m_verboseLogging);
  std::ostringstream stream;
  EXPECT_FALSE(StreamLog(stream).m_verboseLogging);
}

TEST(TextLog, WritesTheSameWhenVerbose) {
  StringBuffer text;
  TextLog log(text);
  log.m_verboseLogging = true;
  report(log);
  EXPECT_STREQ(text.getString(), reported);
}

TEST(TextLog, WritesEmptyAndExtremeValues) {
  StringBuffer text;
  TextLog log(text);
  log.logInfo("");
  log.logError("");
  log.LogDataSb("charsetName", StringBuffer());
  log.LogDataLong("smallest", LONG_MIN);
  log.LogDataLong("largest", LONG_MAX);
  log.LogDataLong("zero", 0);
  EXPECT_EQ(text.getString(), "\nerror: \ncharsetName: \nsmallest: " + std::to_string(LONG_MIN) +
                                  "\nlargest: " + std::to_string(LONG_MAX) + "\nzero: 0\n");
}

TEST(TextLog, WritesALongLineWhole) {
  StringBuffer text;
  TextLog log(text);
  const std::string longLine(5000, 'x');
  log.logInfo(longLine.c_str());
  EXPECT_EQ(text.getString(), longLine + "\n");
}

TEST(TextLog, WritesControlBytesInHexadecimal) {
  StringBuffer name;
  const char forged[] = "x\nerror: \0forged\r\x1B[2J\x7F";
  name.appendN(forged, sizeof forged - 1);
  StringBuffer text;
  TextLog log(text);
  log.LogDataSb("charsetName", name);
  log.logInfo("a\tb");
  log.logError("\x1F ~\x80\\");
  log.openContext("c\n", false);
  log.LogDataLong("d\n", 1);
  EXPECT_STREQ(text.getString(),
               "charsetName: x\\x0Aerror: \\x00forged\\x0D\\x1B[2J\\x7F\n"
               "a\\x09b\n"
               "error: \\x1F ~\x80\\\n"
               "c\\x0A:\n"
               "  d\\x0A: 1\n");
}

TEST(StreamLog, WritesControlBytesInHexadecimal) {
  std::ostringstream stream;
  StreamLog log(stream);
  log.logInfo("a\nb");
  EXPECT_EQ(stream.str(), "a\\x0Ab\n");
}

TEST(TextLog, StaysAtTheMarginWhenClosedTooOften) {
  StringBuffer text;
  TextLog log(text);
  log.closeContext();
  log.closeContext();
  log.openContext("a", false);
  log.logInfo("b");
  EXPECT_STREQ(text.getString(), "a:\n  b\n");
}

/// Writes down what it is told, and throws the number of its choice when told
/// a thing of its choice.
class ThrowingLog : public LogBase {
 public:
  std::string told;
  std::string throwAt;

  void logError(const char* text) override { tell(std::string("error ") + text); }
  void logInfo(const char* text) override { tell(std::string("info ") + text); }
  void LogDataLong(const char* name, long) override { tell(std::string("long ") + name); }
  void LogDataSb(const char* name, const StringBuffer&) override {
    tell(std::string("text ") + name);
  }
  void openContext(const char* name, bool verbose) override {
    tell(std::string(verbose ? "open verbose " : "open ") + name);
  }
  void closeContext() override { tell("close"); }

 private:
  void tell(const std::string& what) {
    told += (told.empty() ? "" : ", ") + what;
    if (what == throwAt) throw std::runtime_error("sink: " + what);
  }
};

// What `work` throws, or "nothing".
template <typename Work>
std::string thrownBy(Work work) {
  try {
    work();
  } catch (const std::exception& exception) {
    return exception.what();
  }
  return "nothing";
}

TEST(LogContext, LastsForTheScope) {
  ThrowingLog log;
  {
    const LogContextExitor context(log, "EncConvert", false);
    log.logInfo("inside");
  }
  EXPECT_EQ(log.told, "open EncConvert, info inside, close");
}

TEST(LogContext, PassesTheVerbosityOn) {
  ThrowingLog log;
  { const LogContextExitor context(log, "convert_a", true); }
  EXPECT_EQ(log.told, "open verbose convert_a, close");
}

TEST(LogContext, GoesByItsArgumentNotByTheSink) {
  ThrowingLog log;
  log.m_verboseLogging = true;
  { const LogContextExitor context(log, "convert_a", false); }
  EXPECT_EQ(log.told, "open convert_a, close");
}

TEST(LogContext, NestsInTheText) {
  StringBuffer text;
  TextLog log(text);
  {
    const LogContextExitor outer(log, "EncConvert", false);
    {
      const LogContextExitor inner(log, "convert_a", false);
      log.logInfo("inner");
    }
    log.logInfo("outer");
  }
  log.logInfo("margin");
  EXPECT_STREQ(text.getString(), "EncConvert:\n  convert_a:\n    inner\n  outer\nmargin\n");
}

bool returnsEarly(LogBase& log) {
  const LogContextExitor context(log, "convert_a", false);
  log.logInfo("leaving");
  return true;
}

TEST(LogContext, ClosesOnAnEarlyReturn) {
  ThrowingLog log;
  EXPECT_TRUE(returnsEarly(log));
  EXPECT_EQ(log.told, "open convert_a, info leaving, close");
}

TEST(LogContext, ClosesWhenAnExceptionPasses) {
  ThrowingLog log;
  const std::string thrown = thrownBy([&] {
    const LogContextExitor outer(log, "EncConvert", false);
    const LogContextExitor inner(log, "convert_a", false);
    throw std::runtime_error("elsewhere");
  });
  EXPECT_EQ(thrown, "elsewhere");
  EXPECT_EQ(log.told, "open EncConvert, open convert_a, close, close");
}

TEST(LogContext, ClosesWhenTheSinkThrowsInside) {
  ThrowingLog log;
  log.throwAt = "error bad";
  const std::string thrown = thrownBy([&] {
    const LogContextExitor context(log, "EncConvert", false);
    log.logError("bad");
  });
  EXPECT_EQ(thrown, "sink: error bad");
  EXPECT_EQ(log.told, "open EncConvert, error bad, close");
}

TEST(LogContext, ThatCannotBeOpenedIsNotClosed) {
  ThrowingLog log;
  log.throwAt = "open convert_a";
  const std::string thrown = thrownBy([&] {
    const LogContextExitor outer(log, "EncConvert", false);
    const LogContextExitor inner(log, "convert_a", false);
  });
  EXPECT_EQ(thrown, "sink: open convert_a");
  EXPECT_EQ(log.told, "open EncConvert, open convert_a, close");
}

TEST(LogContext, PassesOnWhatTheSinkThrowsAtTheEnd) {
  ThrowingLog log;
  log.throwAt = "close";
  EXPECT_EQ(thrownBy([&] { const LogContextExitor context(log, "EncConvert", false); }),
            "sink: close");
}

TEST(LogContext, LetsTheFirstExceptionPassWhenTheSinkThrowsToo) {
  ThrowingLog log;
  log.throwAt = "close";
  const std::string thrown = thrownBy([&] {
    const LogContextExitor outer(log, "EncConvert", false);
    const LogContextExitor inner(log, "convert_a", false);
    throw std::runtime_error("first");
  });
  EXPECT_EQ(thrown, "first");
  EXPECT_EQ(log.told, "open EncConvert, open convert_a, close, close");
}

// A conversion that a destructor runs while another exception passes.
struct ReportsWhenDestroyed {
  ThrowingLog& log;
  std::string& thrown;
  ~ReportsWhenDestroyed() {
    thrown = thrownBy([&] { const LogContextExitor context(log, "EncConvert", false); });
  }
};

TEST(LogContext, PassesTheSinksExceptionOnInsideACleanup) {
  ThrowingLog log;
  log.throwAt = "close";
  std::string thrownInside;
  const std::string thrown = thrownBy([&] {
    const ReportsWhenDestroyed cleanup{log, thrownInside};
    throw std::runtime_error("first");
  });
  EXPECT_EQ(thrownInside, "sink: close");
  EXPECT_EQ(thrown, "first");
}

// A text sink of its own making, whose line can fail.
class FailingLines : public IndentedLog {
 public:
  std::string lines;
  bool fail = false;

 protected:
  void writeLine(std::string_view line) override {
    if (fail) throw std::runtime_error("full");
    lines += line;
  }
};

TEST(IndentedLog, KeepsItsDepthWhenALineFails) {
  FailingLines log;
  log.openContext("a", false);
  log.fail = true;
  EXPECT_EQ(thrownBy([&] { const LogContextExitor context(log, "b", false); }), "full");
  EXPECT_EQ(thrownBy([&] { log.logInfo("c"); }), "full");
  log.fail = false;
  log.logInfo("d");
  log.closeContext();
  log.logInfo("e");
  EXPECT_EQ(log.lines, "a:\n  d\ne\n");
}

// A stream device that takes nothing.
class FullDevice : public std::streambuf {};

TEST(StreamLog, PassesOnWhatTheStreamThrows) {
  FullDevice device;
  std::ostream stream(&device);
  StreamLog log(stream);
  log.logInfo("dropped");
  EXPECT_TRUE(stream.bad());
  stream.clear();
  stream.exceptions(std::ios::badbit);
  EXPECT_THROW(log.logInfo("thrown"), std::ios_base::failure);
}

}  // namespace
}  // namespace quorvel
