#include "quorvel/base/StringBuffer.h"

#include "quorvel/base/qvHelpers.h"

namespace quorvel {

bool StringBuffer::append(const char* text) { return appendN(text, qvStrLen(text)); }

bool StringBuffer::appendN(const char* text, unsigned int count) {
  if (count == 0) return true;
  const unsigned int length = m_text.getSize();
  if (!m_text.append(text, count)) return false;
  // The NUL stands behind the content, where the next text overwrites it.
  unsigned char* end = m_text.growBy(1);
  const bool fits = end != nullptr;
  if (!fits) {
    m_text.shorten(length);
    end = m_text.growBy(1);  // where the text was
  }
  if (end) *end = '\0';
  return fits;
}

void StringBuffer::weakClear() { m_text.clear(); }

const char* StringBuffer::getString() const {
  const unsigned char* text = m_text.getData2();
  return text ? reinterpret_cast<const char*>(text) : "";
}

unsigned int StringBuffer::getSize() const { return m_text.getSize(); }

}  // namespace quorvel
