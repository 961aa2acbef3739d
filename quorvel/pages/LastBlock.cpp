// The one table that is not a page's: rows 89 to 92 of ISO-2022-JP, which no formula
// gives. Packed like the others, published like the others.

#include "quorvel/pages/LastBlock.hpp"

#include <atomic>
#include <memory>

#include "quorvel/base/qvHelpers.h"
#include "quorvel/pages/ContentCoding.h"
#include "quorvel/pages/SjisLastBlock.hpp"

namespace quorvel::tableRegistry {

namespace {

std::atomic<const unsigned char*> lastBlockSlot;

}  // namespace

// Threads that come here first at the same time each unpack a block; the one
// that publishes its own first wins and the others let theirs go.
const unsigned char* lastBlock() {
  if (const unsigned char* published = lastBlockSlot.load(std::memory_order_acquire)) {
    return published;
  }
  unsigned int size = 0;
  std::unique_ptr<const unsigned char[]> block(
      ContentCoding().decodeBase64(sjisLastBlockText, qvStrLen(sjisLastBlockText), &size));
  if (!block) return nullptr;
  const unsigned char* published = nullptr;
  const bool isFirst = lastBlockSlot.compare_exchange_strong(
      published, block.get(), std::memory_order_acq_rel, std::memory_order_acquire);
  return isFirst ? block.release() : published;
}

void releaseLastBlock() { delete[] lastBlockSlot.exchange(nullptr, std::memory_order_acq_rel); }

}  // namespace quorvel::tableRegistry
