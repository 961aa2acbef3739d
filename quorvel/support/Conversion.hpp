#pragma once

// What the steps of a conversion hand each other, from Dispatch.cpp to the last.

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/LogBase.h"
#include "quorvel/pages/CodePages.hpp"

namespace quorvel {

class EncodingConvert;

/// One conversion, as the steps hand it on: who asks, what from, what to. The
/// steps change their copy as they rewrite the source.
struct Conversion {
  EncodingConvert& converter;
  PageRef from;
  PageRef to;
  const unsigned char* data;
  unsigned int numBytes;
  DataBuffer& out;
  LogBase& log;

  /// The text goes on as that in `text`, which has to outlive the conversion.
  void continueWith(int codePage, const DataBuffer& text) {
    from = PageRef(codePage);
    data = text.getData2();
    numBytes = text.getSize();
  }

  /// The conversion of the same text to somewhere else.
  Conversion into(int codePage, DataBuffer& other) const {
    return {converter, from, PageRef(codePage), data, numBytes, other, log};
  }
};

/// What one step gives to the next; short text needs no memory for it.
class ScratchBuffer : public DataBuffer {
 public:
  ScratchBuffer() { lendStorage(m_storage, sizeof m_storage); }
  ScratchBuffer(const ScratchBuffer&) = delete;
  ScratchBuffer& operator=(const ScratchBuffer&) = delete;

 private:
  unsigned char m_storage[512];  // not initialised
};

/// `EncodingConvert::convert_a`.
bool convertByRoute(Conversion conversion);

}  // namespace quorvel
