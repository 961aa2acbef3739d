#pragma once

#include "quorvel/base/Export.h"

namespace quorvel {

/// The platform's legacy code pages.
///
/// They follow the locale that the process has set with `setlocale` (its
/// LC_CTYPE category; environment variables alone change nothing): the numbers
/// that a Windows system of that language and territory would use, 1252 and
/// 437 in the "C" locale and for languages without legacy code pages. The
/// codeset of the locale does not matter.
///
/// The locale is asked at each call. As for any use of `setlocale`, no thread
/// may change it meanwhile; with both numbers overridden it is not asked.
class QUORVEL_API Psdk {
 public:
  static int getAnsiCodePage();
  static int getOemCodePage();

  /// Overrides both for the whole process; 0 gives that one back to the
  /// locale. The numbers are not checked. Any thread may call it at any time.
  static void setCodePages(int ansi, int oem);
};

}  // namespace quorvel
