#pragma once

#include "quorvel/base/Export.h"

namespace quorvel {

/// The platform's legacy code pages.
///
/// They follow the locale that the process has set with `setlocale` (its
/// LC_CTYPE category; environment variables alone change nothing): the numbers
/// that a Windows system of that language and territory would use, 1252 and
/// 437 in the "C" locale and for languages without legacy code pages.
class QUORVEL_API Psdk {
 public:
  static int getAnsiCodePage();
  static int getOemCodePage();

  /// Overrides both for the whole process; 0 gives that one back to the
  /// locale. The numbers are not checked. Any thread may call it.
  static void setCodePages(int ansi, int oem);
};

}  // namespace quorvel
