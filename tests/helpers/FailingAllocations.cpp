#include "tests/helpers/FailingAllocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace quorvel::test_memory {

namespace {

long untilFailure = 0;  // 0: none fails
bool isLasting = false;
long failed = 0;
Allocated allocated{};

bool mustFail() {
  if (untilFailure == 0 || --untilFailure != 0) return false;
  if (isLasting) untilFailure = 1;
  ++failed;
  return true;
}

void* allocate(std::size_t size) noexcept {
  ++allocated.number;
  allocated.bytes += size;
  return mustFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

}  // namespace

FailingAllocations::FailingAllocations(long number, Failures failures) {
  untilFailure = number;
  isLasting = failures == Failures::allFromThereOn;
  failed = 0;
}

FailingAllocations::~FailingAllocations() { untilFailure = 0; }

long FailingAllocations::count() const { return failed; }

Allocated allocatedSoFar() { return allocated; }

}  // namespace quorvel::test_memory

// The library asks for no more than ordinary alignment.

void* operator new(std::size_t size) {
  if (void* block = quorvel::test_memory::allocate(size)) return block;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return quorvel::test_memory::allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return quorvel::test_memory::allocate(size);
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
