// The routes of the table-driven code pages, none of which has a table yet:
// there is nothing that either could convert.

#include "quorvel/support/EncodingConvert.h"

namespace quorvel {

bool EncodingConvert::convertToUnicodeHC(int, const unsigned char* in, unsigned int inLen,
                                         DataBuffer&, LogBase&) {
  return !in || inLen == 0;
}

bool EncodingConvert::convertFromUnicodeHC(int, const unsigned char* in, unsigned int inLen,
                                           DataBuffer&, LogBase&) {
  return !in || inLen == 0;
}

}  // namespace quorvel
