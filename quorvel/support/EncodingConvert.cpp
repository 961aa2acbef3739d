// The settings of a converter. Its conversions begin in ByName.cpp and Dispatch.cpp,
// go on in Routes.cpp and Pivot.cpp and consist of the steps in Decode.cpp,
// Encode.cpp and Transcode.cpp; what errors become stands in ErrorPolicy.cpp.

#include "quorvel/support/EncodingConvert.h"

#include <algorithm>
#include <iterator>

namespace quorvel {

EncodingConvert::~EncodingConvert() = default;

void EncodingConvert::setErrorAction(int action) { m_errorAction = action; }

void EncodingConvert::setAltDestCodepage(int codePage) { m_altDestCodepage = codePage; }

void EncodingConvert::setDefBytes(const unsigned char* bytes, int count) {
  m_numDefBytes = std::clamp(count, 0, static_cast<int>(std::size(m_defBytes)));
  if (bytes) std::copy_n(bytes, m_numDefBytes, m_defBytes);
}

}  // namespace quorvel
