// What another project does with the library: it converts, derives from its
// classes, and prints what `expected.txt` holds.

#include <cstdio>
#include <string_view>

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/LogBase.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"
#include "quorvel/names/CharsetNaming.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/_qvUtf.h"

namespace {

class TaggedConverter : public quorvel::EncodingConvert {
 public:
  const char* tag = "tagged";
};

bool convertAndPrint(std::string_view text) {
  const quorvel::EncodingConvert& base = TaggedConverter();
  const auto* tagged = dynamic_cast<const TaggedConverter*>(&base);
  if (!tagged) return false;

  TaggedConverter converter;
  quorvel::StringBuffer lines;
  quorvel::TextLog log(lines);
  log.m_verboseLogging = true;
  quorvel::DataBuffer out;
  const bool converted = converter.EncConvert(quorvel::CharsetNaming::GetCodePage("UTF-8"),
                                              quorvel::CharsetNaming::GetCodePage("UTF-16LE"),
                                              reinterpret_cast<const unsigned char*>(text.data()),
                                              static_cast<unsigned int>(text.size()), out, log);
  for (unsigned int i = 0; i < out.getSize(); ++i) {
    std::printf("%02X%c", *out.getDataAt2(i), i + 1 < out.getSize() ? ' ' : '\n');
  }
  std::fputs(lines.getString(), stdout);
  return converted && !converter.m_hadError && quorvel::g_allow_4byte_utf8;
}

}  // namespace

int main() { return convertAndPrint("Gr\xC3\xBC\xC3\x9F") ? 0 : 1; }
