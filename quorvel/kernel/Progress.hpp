#pragma once

namespace quorvel {

/// How far a loop came: the first input byte that it did not take, and the
/// position behind what it wrote.
struct Progress {
  const unsigned char* in;
  unsigned char* out;
};

}  // namespace quorvel
