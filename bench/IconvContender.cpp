// Conversions by the iconv of glibc.

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Contender.h"

namespace quorvel::bench {

namespace {

const iconv_t notKnown = reinterpret_cast<iconv_t>(-1);
constexpr auto failed = static_cast<std::size_t>(-1);

// Around iconv, what its users write: a loop that handles what it stops at.
class IconvContender : public Contender {
 public:
  IconvContender(iconv_t descriptor, const std::string& from, const std::string& to,
                 std::size_t largest, OnError onError)
      : m_descriptor(descriptor),
        m_room(roomFor(largest)),
        m_isFromUtf8(from == "UTF-8"),
        m_isFromUtf16(from == "UTF-16LE"),
        m_isToUtf16(to.rfind("UTF-16LE", 0) == 0),
        m_isIgnoring(to.find("//IGNORE") != std::string::npos),
        m_onError(onError) {}
  IconvContender(const IconvContender&) = delete;
  IconvContender& operator=(const IconvContender&) = delete;
  ~IconvContender() override { iconv_close(m_descriptor); }

  bool convert(std::string_view text) override {
    iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char* out = m_room.data();
    std::size_t outLeft = m_room.size();
    std::size_t irreversible = 0;
    for (const char* last = nullptr;; last = in) {
      irreversible = iconv(m_descriptor, &in, &inLeft, &out, &outLeft);
      if (irreversible != failed || inLeft == 0) break;
      if (m_onError == OnError::stop || errno == E2BIG || outLeft < mostPerError) return false;
      // With "//IGNORE" it has gone on and tells only that there was something.
      if (m_isIgnoring && in != last) continue;
      const std::size_t length = lengthAt({in, inLeft});
      writeFor({in, length}, out, outLeft);
      in += length;
      inLeft -= length;
    }
    m_size = m_room.size() - outLeft;
    return m_onError != OnError::stop || irreversible == 0;
  }

  std::string_view result() const override { return {m_room.data(), m_size}; }

 private:
  static constexpr std::size_t mostPerError = 64;

  // The bytes to go past: a character where there is one to be seen.
  std::size_t lengthAt(std::string_view text) const {
    std::size_t length = 1;
    if (m_isFromUtf16) length = (text[text.size() > 1 ? 1 : 0] & 0xFC) == 0xD8 ? 4 : 2;
    if (m_isFromUtf8) {
      while (length < text.size() && (text[length] & 0xC0) == 0x80) ++length;
    }
    return std::min(length, text.size());
  }

  void writeFor(std::string_view bytes, char*& out, std::size_t& outLeft) const {
    if (m_onError == OnError::skip) return;
    if (m_onError == OnError::substitute) return put("?", out, outLeft);
    put("&#x", out, outLeft);
    for (const char byte : bytes) {
      const auto value = static_cast<unsigned char>(byte);
      put({&"0123456789ABCDEF"[value >> 4], 1}, out, outLeft);
      put({&"0123456789ABCDEF"[value & 15], 1}, out, outLeft);
    }
    put(";", out, outLeft);
  }

  void put(std::string_view ascii, char*& out, std::size_t& outLeft) const {
    const char* const begin = out;
    for (const char byte : ascii) {
      *out++ = byte;
      if (m_isToUtf16) *out++ = 0;
    }
    outLeft -= static_cast<std::size_t>(out - begin);
  }

  iconv_t m_descriptor;
  std::vector<char> m_room;
  std::size_t m_size = 0;
  bool m_isFromUtf8;
  bool m_isFromUtf16;
  bool m_isToUtf16;
  bool m_isIgnoring;
  OnError m_onError;
};

}  // namespace

std::unique_ptr<Contender> makeIconv(const std::string& from, const std::string& to,
                                     std::size_t largest, OnError onError) {
  const iconv_t descriptor = iconv_open(to.c_str(), from.c_str());
  if (descriptor == notKnown) return nullptr;
  return std::make_unique<IconvContender>(descriptor, from, to, largest, onError);
}

}  // namespace quorvel::bench
