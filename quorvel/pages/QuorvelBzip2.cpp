// Decompression of packed tables by libbz2, which is trusted with the bytes but not
// with their length: room grows with what the stream gives and never beyond one
// byte more than the header announces.

#include "quorvel/pages/QuorvelBzip2.h"

#include <bzlib.h>

#include <algorithm>
#include <cstddef>
#include <new>

#include "quorvel/pages/Unpacking.hpp"

namespace quorvel {

namespace {

constexpr unsigned char magic[4] = {0xE1, 0xA7, 0x94, 0xB3};
constexpr unsigned int headerLength = 8;
constexpr unsigned int bytesPerBlock = 32768;

// The decompressor gets its memory where everything else here gets it, so that
// a program that replaces `operator new` has it all.
void* allocate(void*, int count, int size) {
  if (count <= 0 || size <= 0) return nullptr;
  return ::operator new(static_cast<std::size_t>(count) * static_cast<std::size_t>(size),
                        std::nothrow);
}

void deallocate(void*, void* block) { ::operator delete(block, std::nothrow); }

bz_stream emptyStream() {
  bz_stream state = {};
  state.bzalloc = allocate;
  state.bzfree = deallocate;
  return state;
}

// Closes the decompressor whichever way the scope is left.
struct Stream {
  bz_stream state = emptyStream();
  bool isOpen = BZ2_bzDecompressInit(&state, 0, 0) == BZ_OK;
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    if (isOpen) BZ2_bzDecompressEnd(&state);
  }
};

constexpr Decompressed whole = {Unpacked::whole, nullptr};
constexpr Decompressed outOfMemory = {Unpacked::outOfMemory, "out of memory"};

constexpr Decompressed damaged(const char* fault) { return {Unpacked::damaged, fault}; }

bool hasHeader(const DataBuffer& in) {
  return in.getSize() >= headerLength && std::equal(magic, magic + sizeof magic, in.getData2());
}

// Appends what one stream gives, `length` bytes exactly, or part of it.
Decompressed decompress(const unsigned char* in, unsigned int inLen, unsigned int length,
                        DataBuffer& out) {
  Stream stream;
  if (!stream.isOpen) return outOfMemory;
  // The library's interface takes a plain pointer but only reads from it.
  stream.state.next_in = reinterpret_cast<char*>(const_cast<unsigned char*>(in));
  stream.state.avail_in = inLen;
  for (int status = BZ_OK; status != BZ_STREAM_END;) {
    // One byte more than is due shows a stream that does not stop in time.
    const unsigned int block = length < bytesPerBlock ? length + 1 : bytesPerBlock;
    unsigned char* room = out.growBy(block);
    if (!room) return outOfMemory;
    stream.state.next_out = reinterpret_cast<char*>(room);
    stream.state.avail_out = block;
    status = BZ2_bzDecompress(&stream.state);
    if (status == BZ_MEM_ERROR) return outOfMemory;
    if (status != BZ_OK && status != BZ_STREAM_END) return damaged("the bzip2 stream is damaged");
    const unsigned int written = block - stream.state.avail_out;
    if (written > length) return damaged("the bzip2 stream is longer than announced");
    if (status == BZ_OK && stream.state.avail_in == 0 && written == 0) {
      return damaged("the bzip2 stream is truncated");
    }
    out.keepWritten(written);
    length -= written;
  }
  if (length) return damaged("the bzip2 stream is shorter than announced");
  return stream.state.avail_in ? damaged("bytes follow the bzip2 stream") : whole;
}

}  // namespace

unsigned int QuorvelBzip2::announcedLength(const DataBuffer& in) {
  if (!hasHeader(in)) return 0;
  const unsigned char* header = in.getData2();
  unsigned int length = 0;
  for (int i = 7; i >= 4; --i) length = length << 8 | header[i];
  return length;
}

Decompressed decompressBlock(const DataBuffer& in, DataBuffer& out) {
  if (!hasHeader(in)) return damaged("no header of a compressed block");
  const unsigned int sizeBefore = out.getSize();
  const Decompressed result = decompress(in.getData2() + headerLength, in.getSize() - headerLength,
                                         QuorvelBzip2::announcedLength(in), out);
  if (result.state != Unpacked::whole) out.shorten(sizeBefore);
  return result;
}

bool QuorvelBzip2::unBzipWithHeader(DataBuffer& in, DataBuffer& out, LogBase* log) {
  const Decompressed result = decompressBlock(in, out);
  if (result.fault && log) log->logError(result.fault);
  return result.state == Unpacked::whole;
}

}  // namespace quorvel
