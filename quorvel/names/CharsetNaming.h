#pragma once

#include "quorvel/base/Export.h"
#include "quorvel/base/StringBuffer.h"

namespace quorvel {

/// Charset names and the code page numbers that they stand for.
///
/// The table behind it is constant data: nothing here allocates, locks or
/// throws, and any number of threads may call it at any time, static
/// initialisers included.
class QUORVEL_API CharsetNaming {
 public:
  /// What the library knows of one code page. All texts are static.
  struct Entry {
    int codePage;       ///< the Windows-style number
    const char* title;  ///< what it is, in English
    const char* names;  ///< its names, separated by spaces, the preferred one first;
                        ///< its number and what `GetCodePage` makes of it aside
  };

  /// The code page number for a charset name, 0 when the name is unknown.
  ///
  /// Names are compared by the loose rule of UTS #22, section 1.4: letter
  /// case, punctuation and leading zeros of a number do not matter. A number,
  /// plain or after "cp" or "windows-" ("932", "cp932"), names the code page of
  /// that number if it is served. More than 255 bytes are never a name, and are
  /// not looked at.
  static int GetCodePage(StringBuffer& name);

  /// As above, for NUL-terminated text; 0 for null.
  static int GetCodePage(const char* name);

  /// Number of code pages that the library serves.
  static unsigned int count();

  /// The code page at `index`, in ascending order of the numbers; `index`
  /// must be below `count()`.
  static const Entry& at(unsigned int index);

  /// The entry of a code page, or null for a number that is not served.
  static const Entry* find(int codePage);
};

}  // namespace quorvel
