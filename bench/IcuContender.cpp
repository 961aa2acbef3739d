// Conversions by ICU.

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/ustring.h>

#include <vector>

#include "Contender.h"

namespace quorvel::bench {

namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

bool isUtf16(const std::string& name) { return name == "UTF-16LE"; }
bool isUtf8(const std::string& name) { return name == "UTF-8"; }

struct Callbacks {
  UConverterToUCallback decoding;
  UConverterFromUCallback encoding;
  const char* context;
};

Callbacks callbacksFor(OnError onError) {
  switch (onError) {
    case OnError::skip:
      return {UCNV_TO_U_CALLBACK_SKIP, UCNV_FROM_U_CALLBACK_SKIP, nullptr};
    case OnError::substitute:
      return {UCNV_TO_U_CALLBACK_SUBSTITUTE, UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr};
    case OnError::escape:
      return {UCNV_TO_U_CALLBACK_ESCAPE, UCNV_FROM_U_CALLBACK_ESCAPE, UCNV_ESCAPE_XML_HEX};
    case OnError::stop:
    case OnError::convert:
      break;
  }
  return {UCNV_TO_U_CALLBACK_STOP, UCNV_FROM_U_CALLBACK_STOP, nullptr};
}

Converter open(const std::string& name, OnError onError) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &status));
  if (U_FAILURE(status)) return nullptr;
  const Callbacks callbacks = callbacksFor(onError);
  ucnv_setToUCallBack(converter.get(), callbacks.decoding, callbacks.context, nullptr, nullptr,
                      &status);
  ucnv_setFromUCallBack(converter.get(), callbacks.encoding, callbacks.context, nullptr, nullptr,
                        &status);
  if (onError == OnError::substitute && !isUtf8(name) && !isUtf16(name)) {
    ucnv_setSubstChars(converter.get(), "?", 1, &status);
  }
  ucnv_setFallback(converter.get(), false);
  return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

class DirectContender : public Contender {
 public:
  DirectContender(Converter from, Converter to, std::size_t largest)
      : m_from(std::move(from)), m_to(std::move(to)), m_room(roomFor(largest)) {}

  bool convert(std::string_view text) override {
    UErrorCode status = U_ZERO_ERROR;
    const char* in = text.data();
    char* out = m_room.data();
    UChar* pivotIn = m_pivot;
    UChar* pivotOut = m_pivot;
    ucnv_convertEx(m_to.get(), m_from.get(), &out, m_room.data() + m_room.size(), &in,
                   in + text.size(), m_pivot, &pivotIn, &pivotOut, m_pivot + std::size(m_pivot),
                   true, true, &status);
    m_size = static_cast<std::size_t>(out - m_room.data());
    return U_SUCCESS(status);
  }

  std::string_view result() const override { return {m_room.data(), m_size}; }

 private:
  Converter m_from;
  Converter m_to;
  std::vector<char> m_room;
  std::size_t m_size = 0;
  UChar m_pivot[4096];
};

// By way of the whole text in UTF-16, which is one of the two ends where that
// end is UTF-16 anyway.
class UnitsContender : public Contender {
 public:
  UnitsContender(Converter from, Converter to, bool isFromUtf16, bool isToUtf16,
                 std::size_t largest)
      : m_from(std::move(from)),
        m_to(std::move(to)),
        m_isFromUtf16(isFromUtf16),
        m_isToUtf16(isToUtf16),
        m_units(isFromUtf16 ? 0 : roomFor(largest) / sizeof(UChar)),
        m_room(isToUtf16 ? 0 : roomFor(largest)) {}

  bool convert(std::string_view text) override {
    UErrorCode status = U_ZERO_ERROR;
    const auto* units = reinterpret_cast<const UChar*>(text.data());
    auto numUnits = static_cast<int32_t>(text.size() / sizeof(UChar));
    if (!m_isFromUtf16) {
      numUnits = decode(text, status);
      units = m_units.data();
    }
    m_size = m_isToUtf16 ? sizeof(UChar) * static_cast<std::size_t>(numUnits)
                         : static_cast<std::size_t>(encode(units, numUnits, status));
    return U_SUCCESS(status);
  }

  std::string_view result() const override {
    if (m_isToUtf16) return {reinterpret_cast<const char*>(m_units.data()), m_size};
    return {m_room.data(), m_size};
  }

 private:
  // Without a converter, that side is UTF-8 and has functions of its own.
  int32_t decode(std::string_view text, UErrorCode& status) {
    const auto room = static_cast<int32_t>(m_units.size());
    const auto length = static_cast<int32_t>(text.size());
    if (m_from) {
      return ucnv_toUChars(m_from.get(), m_units.data(), room, text.data(), length, &status);
    }
    int32_t numUnits = 0;
    u_strFromUTF8(m_units.data(), room, &numUnits, text.data(), length, &status);
    return numUnits;
  }

  int32_t encode(const UChar* units, int32_t numUnits, UErrorCode& status) {
    const auto room = static_cast<int32_t>(m_room.size());
    if (m_to) {
      return ucnv_fromUChars(m_to.get(), m_room.data(), room, units, numUnits, &status);
    }
    int32_t numBytes = 0;
    u_strToUTF8(m_room.data(), room, &numBytes, units, numUnits, &status);
    return numBytes;
  }

  Converter m_from;
  Converter m_to;
  bool m_isFromUtf16;
  bool m_isToUtf16;
  std::vector<UChar> m_units;
  std::vector<char> m_room;
  std::size_t m_size = 0;
};

}  // namespace

std::unique_ptr<Contender> makeIcu(const std::string& from, const std::string& to, IcuWay way,
                                   std::size_t largest, OnError onError) {
  Converter source = open(from, onError);
  Converter target = open(to, onError);
  if (!source || !target) return nullptr;
  if (way == IcuWay::direct) {
    return std::make_unique<DirectContender>(std::move(source), std::move(target), largest);
  }
  if (way == IcuWay::strings) {
    if (onError != OnError::stop) return nullptr;
    if (!isUtf8(from) && !isUtf8(to)) return nullptr;
    if (isUtf8(from)) source.reset();
    if (isUtf8(to)) target.reset();
  }
  return std::make_unique<UnitsContender>(std::move(source), std::move(target), isUtf16(from),
                                          isUtf16(to), largest);
}

}  // namespace quorvel::bench
