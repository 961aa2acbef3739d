#pragma once

namespace quorvel::kernel {

/// Which byte of a unit stands first.
enum class Order { lowFirst, highFirst };

}  // namespace quorvel::kernel
