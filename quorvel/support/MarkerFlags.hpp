#pragma once

// The two flags that tell the steps about markers (PassthroughMarker.hpp). The pivot
// (Pivot.cpp) sets them for each of its halves and clears both at the end, the direct
// routes (Routes.cpp) clear both; they are fields of the converter because anybody
// may read them and call a handler.

#include "quorvel/support/EncodingConvert.h"
#include "quorvel/support/ScopedRestore.hpp"

namespace quorvel {

/// The two marker flags of a converter, which are always written together.
struct Markers {
  bool emit;
  bool honor;
};

inline constexpr Markers emitting{true, false};
inline constexpr Markers honouring{false, true};
inline constexpr Markers neither{false, false};

inline void setMarkers(EncodingConvert& converter, const Markers& markers) {
  converter.m_emitPassthroughMarkers = markers.emit;
  converter.m_honorPassthroughMarkers = markers.honor;
}

/// Puts the flags back at the end of the scope.
class ScopedMarkers {
 public:
  explicit ScopedMarkers(EncodingConvert& converter)
      : m_emit(converter.m_emitPassthroughMarkers), m_honor(converter.m_honorPassthroughMarkers) {}

 private:
  ScopedRestore<bool> m_emit;
  ScopedRestore<bool> m_honor;
};

}  // namespace quorvel
