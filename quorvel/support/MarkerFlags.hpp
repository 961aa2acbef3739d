#pragma once

#include "quorvel/support/EncodingConvert.h"

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

inline Markers markersOf(const EncodingConvert& converter) {
  return {converter.m_emitPassthroughMarkers, converter.m_honorPassthroughMarkers};
}

}  // namespace quorvel
