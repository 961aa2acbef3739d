// Conversions by EncodingConvert.

#include <utility>

#include "Contender.h"
#include "Rows.h"
#include "Targets.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/support/EncodingConvert.h"

namespace quorvel::bench {

namespace {

int actionFor(OnError onError) {
  switch (onError) {
    case OnError::stop:
    case OnError::skip:
      return 0;
    case OnError::substitute:
      return 1;
    case OnError::escape:
      return 2;
    case OnError::convert:
      return 6;
  }
  return 0;
}

class QuorvelContender : public Contender {
 public:
  QuorvelContender(int from, int to, std::string target, OnError onError)
      : m_from(from), m_to(to), m_target(std::move(target)) {
    m_converter.setErrorAction(actionFor(onError));
    m_converter.setDefBytes(reinterpret_cast<const unsigned char*>("?\0"), to == utf16le ? 2 : 1);
  }

  void getReady() override { useTarget(m_target); }

  // The result tells nothing: that of UTF-7 to UTF-16LE is false whatever
  // happened. What came out is compared with the peers' in any case.
  bool convert(std::string_view text) override {
    m_out.clear();
    m_converter.EncConvert(m_from, m_to, reinterpret_cast<const unsigned char*>(text.data()),
                           static_cast<unsigned int>(text.size()), m_out, m_log);
    return m_out.getSize() > 0;
  }

  std::string_view result() const override {
    return {reinterpret_cast<const char*>(m_out.getData2()), m_out.getSize()};
  }

 private:
  int m_from;
  int m_to;
  std::string m_target;
  EncodingConvert m_converter;
  DataBuffer m_out;
  NullLog m_log;
};

}  // namespace

std::unique_ptr<Contender> makeQuorvel(int from, int to, const std::string& target,
                                       OnError onError) {
  return std::make_unique<QuorvelContender>(from, to, target, onError);
}

}  // namespace quorvel::bench
