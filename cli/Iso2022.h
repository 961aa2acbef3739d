#pragma once

#include "quorvel/base/DataBuffer.h"

namespace qvconv {

/// Whether a code page is an ISO-2022 encoding, Japanese or Korean.
bool isIso2022(int codePage);

/// The code page that an ISO-2022 encoding is read as and written from.
int pageBehindIso2022(int codePage);

/// Between an ISO-2022 encoding and the code page behind it. True when all of
/// the text arrived, which conversions of the library do not tell here.
bool readIso2022(int codePage, const quorvel::DataBuffer& text, quorvel::DataBuffer& out);
bool writeIso2022(int codePage, const quorvel::DataBuffer& text, quorvel::DataBuffer& out);

}  // namespace qvconv
