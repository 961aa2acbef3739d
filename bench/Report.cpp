#include "Report.h"

#include <gnu/libc-version.h>
#include <unicode/uversion.h>

#include <cstdarg>
#include <cstdio>
#include <fstream>

namespace quorvel::bench {

namespace {

[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return text;
}

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

std::string megabytes(const Figure& figure) {
  return figure.way.empty() ? "-" : format("%.0f", figure.speed / 1e6);
}

std::string times(const Figure& figure) {
  return figure.way.empty() ? "-" : format("%.2f", figure.ourRatio);
}

std::string ours(const Result& result) { return format("%.2f", result.ratioToFaster()); }

}  // namespace

std::string describeMachine() {
  return processorName() + "; " QUORVEL_BUILD_KIND "; glibc " + gnu_get_libc_version() +
         "; ICU " U_ICU_VERSION;
}

std::string asMarkdown(const std::vector<Result>& results) {
  std::string text =
      "| from | to | text | Quorvel MB/s | glibc MB/s | ICU MB/s | x glibc | x ICU | x faster |\n"
      "|---:|---:|---|---:|---:|---:|---:|---:|---:|\n";
  for (const Result& result : results) {
    text +=
        format("| %d | %d | %s | %s | %s | %s | %s | %s | %s |\n", result.row.from->codePage,
               result.row.to->codePage, result.row.language->name, megabytes(result.ours).c_str(),
               megabytes(result.glibc).c_str(), megabytes(result.icu).c_str(),
               times(result.glibc).c_str(), times(result.icu).c_str(), ours(result).c_str());
  }
  return text;
}

std::string asCsv(const std::vector<Result>& results) {
  std::string text =
      "from,to,text,bytes,quorvel_mb_s,glibc_mb_s,icu_mb_s,x_glibc,x_icu,x_faster,glibc_way,"
      "icu_way\n";
  for (const Result& result : results) {
    text += format("%d,%d,%s,%zu,%s,%s,%s,%s,%s,%s,%s,%s\n", result.row.from->codePage,
                   result.row.to->codePage, result.row.language->name, result.numBytes,
                   megabytes(result.ours).c_str(), megabytes(result.glibc).c_str(),
                   megabytes(result.icu).c_str(), times(result.glibc).c_str(),
                   times(result.icu).c_str(), ours(result).c_str(), result.glibc.way.c_str(),
                   result.icu.way.c_str());
  }
  return text;
}

std::string asProgress(const Result& result) {
  return format("%-36s %7s MB/s   glibc %6s (x %s)   ICU %6s (x %s)", result.row.name().c_str(),
                megabytes(result.ours).c_str(), megabytes(result.glibc).c_str(),
                times(result.glibc).c_str(), megabytes(result.icu).c_str(),
                times(result.icu).c_str());
}

}  // namespace quorvel::bench
