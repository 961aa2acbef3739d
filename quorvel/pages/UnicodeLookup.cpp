#include "quorvel/pages/UnicodeLookup.h"

#include <new>

namespace quorvel {

UnicodeLookup* UnicodeLookup::createNewObject() { return new (std::nothrow) UnicodeLookup; }

UnicodeLookup::~UnicodeLookup() = default;

}  // namespace quorvel
