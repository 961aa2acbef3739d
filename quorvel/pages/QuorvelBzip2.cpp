#include "quorvel/pages/QuorvelBzip2.h"

#include <bzlib.h>

#include <algorithm>

namespace quorvel {

namespace {

constexpr unsigned char magic[4] = {0xE1, 0xA7, 0x94, 0xB3};
constexpr unsigned int headerLength = 8;
constexpr unsigned int bytesPerBlock = 32768;

// Closes the decompressor whichever way the scope is left.
struct Stream {
  bz_stream state = {};
  bool isOpen = BZ2_bzDecompressInit(&state, 0, 0) == BZ_OK;
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    if (isOpen) BZ2_bzDecompressEnd(&state);
  }
};

bool hasHeader(const DataBuffer& in) {
  return in.getSize() >= headerLength && std::equal(magic, magic + sizeof magic, in.getData2());
}

// Appends what one stream gives, `length` bytes exactly. Null when it did, else
// the reason why not; then part of it may have been appended.
const char* decompress(const unsigned char* in, unsigned int inLen, unsigned int length,
                       DataBuffer& out) {
  Stream stream;
  if (!stream.isOpen) return "out of memory";
  // The library's interface takes a plain pointer but only reads from it.
  stream.state.next_in = reinterpret_cast<char*>(const_cast<unsigned char*>(in));
  stream.state.avail_in = inLen;
  for (int status = BZ_OK; status != BZ_STREAM_END;) {
    // One byte more than is due shows a stream that does not stop in time.
    const unsigned int block = length < bytesPerBlock ? length + 1 : bytesPerBlock;
    unsigned char* room = out.growBy(block);
    if (!room) return "out of memory";
    stream.state.next_out = reinterpret_cast<char*>(room);
    stream.state.avail_out = block;
    status = BZ2_bzDecompress(&stream.state);
    if (status == BZ_MEM_ERROR) return "out of memory";
    if (status != BZ_OK && status != BZ_STREAM_END) return "the bzip2 stream is damaged";
    const unsigned int written = block - stream.state.avail_out;
    if (written > length) return "the bzip2 stream is longer than announced";
    if (status == BZ_OK && stream.state.avail_in == 0 && written == 0) {
      return "the bzip2 stream is truncated";
    }
    out.keepWritten(written);
    length -= written;
  }
  if (length) return "the bzip2 stream is shorter than announced";
  return stream.state.avail_in ? "bytes follow the bzip2 stream" : nullptr;
}

}  // namespace

unsigned int QuorvelBzip2::announcedLength(const DataBuffer& in) {
  if (!hasHeader(in)) return 0;
  const unsigned char* header = in.getData2();
  unsigned int length = 0;
  for (int i = 7; i >= 4; --i) length = length << 8 | header[i];
  return length;
}

bool QuorvelBzip2::unBzipWithHeader(DataBuffer& in, DataBuffer& out, LogBase* log) {
  const unsigned char* data = in.getData2();
  const unsigned int sizeBefore = out.getSize();
  const char* fault = "no header of a compressed block";
  if (hasHeader(in)) {
    fault = decompress(data + headerLength, in.getSize() - headerLength, announcedLength(in), out);
  }
  if (!fault) return true;
  out.shorten(sizeBefore);
  if (log) log->logError(fault);
  return false;
}

}  // namespace quorvel
