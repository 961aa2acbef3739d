// UTF-7 (RFC 2152): ASCII text in which "+" begins a run of base64 over UTF-16,
// high byte first, without padding. "-" ends a run and is absorbed; so does any
// other character that is no base64 digit, and stands for itself. "+-" is "+".

#include <cstddef>

#include "quorvel/base/BlockRunner.hpp"
#include "quorvel/kernel/Target.hpp"
#include "quorvel/kernel/Utf16Unit.hpp"
#include "quorvel/kernel/Utf7Text.hpp"
#include "quorvel/kernel/Utf8Sequence.hpp"
#include "quorvel/unicode/_qvUtf.h"

namespace quorvel {

namespace {

constexpr unsigned int mostBytesPerUnit = 4;

// contract: any ASCII character may stand for itself outside of a run, those too that
// RFC 2152 wants encoded. Readers of mail rely on it: "{" and "~" come that way.
//
// Drops the left-over bits or the missing digits of a bad run, puts U+FFFD for a byte
// that is no ASCII, and goes on. Each byte becomes at most one unit.
Progress decode(const unsigned char* in, const unsigned char* end, unsigned char* out,
                kernel::Utf7Reading& run, bool& isClean) {
  while (true) {
    const Progress progress = kernel::loops().utf7ToUtf16(in, end, out, run);
    if (progress.why == Stop::end) return progress;
    isClean = false;
    in = progress.in;
    out = progress.out;
    if (!run.isOpen) out = putUnit(replacementCharacter, out);
    if (!run.isOpen || *in == '-') ++in;
    run = {};
  }
}

}  // namespace

bool _qvUtf::Utf7ToUtf16_xe(DataBuffer& in, DataBuffer& out) {
  kernel::Utf7Reading run;
  bool isClean = true;
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    return decode(p, stop, room, run, isClean);
  };
  const unsigned char* p = in.getData2();
  const unsigned char* end = p + in.getSize();
  return runInBlocks(loop, p, end, 4, out) == end && isClean && (!run.isOpen || utf7::isWhole(run));
}

bool _qvUtf::Utf16XEToUtf7(DataBuffer& in, DataBuffer& out) {
  kernel::Utf7Writing run;
  const auto loop = [&](const unsigned char* p, const unsigned char* stop, unsigned char* room) {
    return kernel::loops().utf16ToUtf7(p, stop, room, run);
  };
  const unsigned int numUnits = in.getSize() / 2;
  const unsigned char* p = in.getData2();
  const unsigned char* end = p + std::size_t{2} * numUnits;
  if (runInBlocks(loop, p, end, mostBytesPerUnit, out) != end) return false;
  unsigned char* room = out.growBy(1);
  if (!room) return false;
  out.keepWritten(static_cast<unsigned int>(utf7::endRun(run, room) - room));
  return in.getSize() % 2 == 0;
}

}  // namespace quorvel
