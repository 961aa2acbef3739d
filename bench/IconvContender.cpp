#include <iconv.h>

#include <vector>

#include "Contender.h"

namespace quorvel::bench {

namespace {

const iconv_t notKnown = reinterpret_cast<iconv_t>(-1);

class IconvContender : public Contender {
 public:
  IconvContender(iconv_t descriptor, std::size_t largest)
      : m_descriptor(descriptor), m_room(roomFor(largest)) {}
  IconvContender(const IconvContender&) = delete;
  IconvContender& operator=(const IconvContender&) = delete;
  ~IconvContender() override { iconv_close(m_descriptor); }

  bool convert(std::string_view text) override {
    iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char* out = m_room.data();
    std::size_t outLeft = m_room.size();
    const std::size_t irreversible = iconv(m_descriptor, &in, &inLeft, &out, &outLeft);
    m_size = m_room.size() - outLeft;
    return irreversible == 0 && inLeft == 0;
  }

  std::string_view result() const override { return {m_room.data(), m_size}; }

 private:
  iconv_t m_descriptor;
  std::vector<char> m_room;
  std::size_t m_size = 0;
};

}  // namespace

std::unique_ptr<Contender> makeIconv(const std::string& from, const std::string& to,
                                     std::size_t largest) {
  const iconv_t descriptor = iconv_open(to.c_str(), from.c_str());
  if (descriptor == notKnown) return nullptr;
  return std::make_unique<IconvContender>(descriptor, largest);
}

}  // namespace quorvel::bench
