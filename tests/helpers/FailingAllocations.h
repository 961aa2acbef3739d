#pragma once

#include <cstddef>

/// Allocations that fail when a test says so. The program that is linked with
/// FailingAllocations.cpp gets all its memory through it.
namespace quorvel::test_memory {

enum class Failures { one, allFromThereOn };

/// While it lives, the allocation number `number` (the next is 1) fails, and with
/// `allFromThereOn` every later one too; with 0 none does. One at a time, in a program of one
/// thread.
class FailingAllocations {
 public:
  FailingAllocations(long number, Failures failures);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  /// How many have failed.
  long count() const;
};

/// What has been allocated since the program began, freed or not.
struct Allocated {
  std::size_t number;
  std::size_t bytes;
};

Allocated allocatedSoFar();

}  // namespace quorvel::test_memory
