// Why the loops of Utf8ToUnitsScalar.hpp stopped.

#include "quorvel/kernel/Utf8ToUnitsScalar.hpp"

#include "quorvel/kernel/Utf8Sequence.hpp"

namespace quorvel::kernel::scalar::utf8_to_units {

Stop whyStoppedAt(const unsigned char* in, const unsigned char* end) {
  if (in == end) return Stop::end;
  return isCutOff(in, end) ? Stop::cutOff : Stop::met;
}

}  // namespace quorvel::kernel::scalar::utf8_to_units
