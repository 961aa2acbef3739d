#pragma once

#include <algorithm>
#include <sstream>
#include <string>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/Pivot.hpp"
#include "tests/helpers/Memory.h"
#include "tests/helpers/RecordingLog.h"
#include "tests/helpers/Seed.h"
#include "tests/reference/Converter.h"

/// Runs one conversion through the library and through the reference and says
/// in what they differ.
namespace quorvel::reference {

enum class Route {
  EncConvert,
  convert_a,
  cv_utf8_to_utf16,
  cv_utf16_to_utf8,
  convertToUnicodeHC,
  convertFromUnicodeHC,
  convertToUnicodeByLookup,  // with `lookup`
  convertToUnicodeHCVar,     // with `table`
  convertFromUnicodeHC2,     // with `table`
  pivot,                     // with `blockLength`; the reference takes the whole text
};

/// The state of a converter before it is called.
struct Settings {
  int action = 0;
  int alternate = 0;
  Bytes substitution = {};  // at most 100
  bool allows4ByteUtf8 = true;
  bool emitsMarkers = false;
  bool honorsMarkers = false;
  int fromCodePage = 0;
  int toCodePage = 0;
};

struct Case {
  Route route = Route::EncConvert;
  int from = 0;
  int to = 0;
  Settings settings = {};
  Bytes input = {};
  bool isVerbose = true;
  Bytes before = {};  // what the output holds already
  UnicodeLookup* lookup = nullptr;
  HashConvert* table = nullptr;
  unsigned int blockLength = 0;
};

/// All that a call leaves behind.
struct Result {
  bool result = false;
  bool hadError = false;
  Settings settings = {};
  Bytes out = {};
  quorvel_test::Lines lines = {};
};

namespace differential {

inline EncodingConvert libraryConverter(const Settings& settings) {
  EncodingConvert converter;
  converter.setErrorAction(settings.action);
  converter.setAltDestCodepage(settings.alternate);
  converter.setDefBytes(settings.substitution.data(),
                        static_cast<int>(settings.substitution.size()));
  converter.m_allow4ByteUtf8 = settings.allows4ByteUtf8;
  converter.m_emitPassthroughMarkers = settings.emitsMarkers;
  converter.m_honorPassthroughMarkers = settings.honorsMarkers;
  converter.m_fromCodePage = settings.fromCodePage;
  converter.m_toCodePage = settings.toCodePage;
  return converter;
}

inline Converter referenceConverter(const Settings& settings) {
  Converter converter;
  converter.errorAction = settings.action;
  converter.altDestCodepage = settings.alternate;
  converter.defBytes = settings.substitution;
  converter.allow4ByteUtf8 = settings.allows4ByteUtf8;
  converter.emitMarkers = settings.emitsMarkers;
  converter.honorMarkers = settings.honorsMarkers;
  converter.fromCodePage = settings.fromCodePage;
  converter.toCodePage = settings.toCodePage;
  return converter;
}

inline bool callLibrary(const Case& c, EncodingConvert& converter, const unsigned char* in,
                        DataBuffer& out, LogBase& log) {
  const unsigned int size = quorvel_test::sizeOf(c.input);
  switch (c.route) {
    case Route::EncConvert:
      return converter.EncConvert(c.from, c.to, in, size, out, log);
    case Route::convert_a:
      return converter.convert_a(c.from, c.to, in, size, out, log);
    case Route::cv_utf8_to_utf16:
      return converter.cv_utf8_to_utf16(in, size, out, log);
    case Route::cv_utf16_to_utf8:
      return converter.cv_utf16_to_utf8(in, size, out, log);
    case Route::convertToUnicodeHC:
      return converter.convertToUnicodeHC(c.from, in, size, out, log);
    case Route::convertFromUnicodeHC:
      return converter.convertFromUnicodeHC(c.to, in, size, out, log);
    case Route::convertToUnicodeByLookup:
      return converter.convertToUnicodeByLookup(*c.lookup, in, size, out, log);
    case Route::convertToUnicodeHCVar:
      return converter.convertToUnicodeHCVar(c.table, in, size, out, log);
    case Route::convertFromUnicodeHC2:
      return converter.convertFromUnicodeHC2(c.table, in, size, out, log);
    case Route::pivot: {
      const LogContextExitor context(log, "convert_a", c.isVerbose);
      return pivot({converter, PageRef(c.from), PageRef(c.to), in, size, out, log}, c.blockLength);
    }
  }
  return false;
}

inline bool callReference(const Case& c, Converter& converter, Bytes& out, LogBase& log) {
  const Text in(c.input);
  switch (c.route) {
    case Route::EncConvert:
      return converter.EncConvert(c.from, c.to, in, out, log);
    case Route::convert_a:
    case Route::pivot:
      return converter.convert_a(c.from, c.to, in, out, log);
    case Route::cv_utf8_to_utf16:
      return converter.cv_utf8_to_utf16(in, out, log);
    case Route::cv_utf16_to_utf8:
      return converter.cv_utf16_to_utf8(in, out, log);
    case Route::convertToUnicodeHC:
      return converter.convertToUnicodeHC(c.from, in, out, log);
    case Route::convertFromUnicodeHC:
      return converter.convertFromUnicodeHC(c.to, in, out, log);
    case Route::convertToUnicodeByLookup:
      return converter.convertToUnicodeByLookup(*c.lookup, in, out, log);
    case Route::convertToUnicodeHCVar:
      return converter.convertToUnicodeHCVar(c.table, in, out, log);
    case Route::convertFromUnicodeHC2:
      return converter.convertFromUnicodeHC2(c.table, in, out, log);
  }
  return false;
}

}  // namespace differential

/// The call of the library; `in` holds the bytes of `c.input`, and `out` none yet.
inline Result libraryResult(const Case& c, const unsigned char* in, DataBuffer& out) {
  EncodingConvert converter = differential::libraryConverter(c.settings);
  quorvel_test::RecordingLog log(c.isVerbose);
  out.append(c.before.data(), quorvel_test::sizeOf(c.before));
  Result result;
  result.result = differential::callLibrary(c, converter, in, out, log);
  result.hadError = converter.m_hadError;
  result.settings = c.settings;
  result.settings.action = converter.m_errorAction;
  result.settings.emitsMarkers = converter.m_emitPassthroughMarkers;
  result.settings.honorsMarkers = converter.m_honorPassthroughMarkers;
  result.settings.fromCodePage = converter.m_fromCodePage;
  result.settings.toCodePage = converter.m_toCodePage;
  append(result.out, Text(out));
  result.lines = std::move(log.lines);
  return result;
}

inline Result referenceResult(const Case& c) {
  Converter converter = differential::referenceConverter(c.settings);
  quorvel_test::RecordingLog log(c.isVerbose);
  Result result;
  result.out = c.before;
  result.result = differential::callReference(c, converter, result.out, log);
  result.hadError = converter.hadError;
  result.settings = c.settings;
  result.settings.action = converter.errorAction;
  result.settings.emitsMarkers = converter.emitMarkers;
  result.settings.honorsMarkers = converter.honorMarkers;
  result.settings.fromCodePage = converter.fromCodePage;
  result.settings.toCodePage = converter.toCodePage;
  result.lines = std::move(log.lines);
  return result;
}

namespace differential {

template <typename T>
void compare(std::ostream& report, const char* what, const T& library, const T& reference) {
  if (library != reference) {
    report << "  " << what << ": " << library << ", should be " << reference << '\n';
  }
}

/// Up to 64 bytes from the one at `from` on.
inline std::string excerpt(const Bytes& bytes, std::size_t from) {
  const std::size_t length = std::min<std::size_t>(bytes.size() - from, 64);
  return "at " + std::to_string(from) + ": " + quorvel_test::hex(bytes.data() + from, length);
}

inline std::string differences(const Result& library, const Result& reference) {
  std::ostringstream report;
  compare(report, "result", library.result, reference.result);
  compare(report, "m_hadError", library.hadError, reference.hadError);
  compare(report, "m_errorAction", library.settings.action, reference.settings.action);
  compare(report, "emit", library.settings.emitsMarkers, reference.settings.emitsMarkers);
  compare(report, "honor", library.settings.honorsMarkers, reference.settings.honorsMarkers);
  compare(report, "m_fromCodePage", library.settings.fromCodePage, reference.settings.fromCodePage);
  compare(report, "m_toCodePage", library.settings.toCodePage, reference.settings.toCodePage);
  if (library.out != reference.out) {
    const auto first = std::mismatch(library.out.begin(), library.out.end(), reference.out.begin(),
                                     reference.out.end())
                           .first;
    const auto at = static_cast<std::size_t>(first - library.out.begin());
    const std::size_t from = at < 16 ? 0 : at - 16;
    report << "  output of " << library.out.size() << " bytes, should be " << reference.out.size()
           << ", differs at " << at << "\n    " << excerpt(library.out, from)
           << "\n    should be\n    "
           << excerpt(reference.out, std::min(from, reference.out.size())) << '\n';
  }
  if (library.lines != reference.lines) {
    report << "  log:\n";
    for (const std::string& line : library.lines) report << "    " << line << '\n';
    report << "  should be\n";
    for (const std::string& line : reference.lines) report << "    " << line << '\n';
  }
  return report.str();
}

inline std::string description(const Case& c) {
  constexpr const char* names[] = {"EncConvert",
                                   "convert_a",
                                   "cv_utf8_to_utf16",
                                   "cv_utf16_to_utf8",
                                   "convertToUnicodeHC",
                                   "convertFromUnicodeHC",
                                   "by a lookup",
                                   "to Unicode by a table",
                                   "from Unicode by a table",
                                   "in blocks"};
  std::ostringstream text;
  text << names[static_cast<int>(c.route)] << ' ' << c.from << " to " << c.to << ", action "
       << c.settings.action << ", alternate " << c.settings.alternate << ", "
       << c.settings.substitution.size() << " substitution bytes"
       << (c.settings.emitsMarkers ? ", emits" : "") << (c.settings.honorsMarkers ? ", honors" : "")
       << (c.blockLength ? ", blocks of " + std::to_string(c.blockLength) : "") << ", "
       << c.input.size() << " bytes ";
  if (c.input.size() <= 600) {
    text << quorvel_test::hex(c.input);
  } else {
    text << excerpt(c.input, 0);
  }
  return text.str();
}

}  // namespace differential

/// Compares library and reference. The bytes are placed first so that nothing
/// behind them can be read, then so that nothing before them can and nothing
/// can be written behind the room for the output.
class Comparison {
 public:
  explicit Comparison(std::size_t mostBytes = 65536) : m_in(mostBytes), m_out(mostBytes) {}
  ~Comparison() { kernel::setTarget(m_best); }
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;

  /// "" when they agree, on the best target or, each so many cases, on every one.
  std::string differences(const Case& c) {
    const Result expected = referenceResult(c);
    ++m_count;
    for (const kernel::Target target : kernel::allTargets) {
      if (!isDue(target)) continue;
      kernel::setTarget(target);
      const std::string report = differencesFrom(expected, c);
      if (report.empty()) continue;
      return differential::description(c) + "\n  on " + nameOf(target) + '\n' + report;
    }
    return "";
  }

 private:
  static constexpr unsigned int casesPerOtherTarget = 7;

  bool isDue(kernel::Target target) const {
    if (target == m_best) return true;
    return kernel::canRun(target) &&
           (test_seed::isForEachTarget() || m_count % casesPerOtherTarget == 0);
  }

  std::string differencesFrom(const Result& expected, const Case& c) {
    const std::string_view text = Text(c.input).asString();
    DataBuffer own;
    const std::string report =
        differential::differences(libraryResult(c, m_in.place(text), own), expected);
    if (!report.empty()) return report;
    DataBuffer lent;
    lendRoom(c, lent);
    return differential::differences(libraryResult(c, m_in.placeAtStart(text), lent), expected);
  }

  /// As much as is asked for at first where two bytes of input can become so and
  /// so many, a number that changes from case to case: then what a loop may write
  /// ends where nothing can be written. What does not fit moves elsewhere.
  void lendRoom(const Case& c, DataBuffer& out) {
    constexpr unsigned int mostPerTwoBytes = 10;
    const auto room = static_cast<std::size_t>(
        c.before.size() + mostOutput(c.input.size(), 1 + m_count % mostPerTwoBytes));
    if (room <= m_out.size()) out.lendStorage(m_out.room(room), static_cast<unsigned int>(room));
  }

  const kernel::Target m_best = kernel::currentTarget();
  unsigned int m_count = 0;
  quorvel::test_memory::GuardedBytes m_in;
  quorvel::test_memory::GuardedBytes m_out;
};

}  // namespace quorvel::reference
