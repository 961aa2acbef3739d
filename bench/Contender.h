#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace quorvel::bench {

/// One way to carry out a conversion, with whatever it keeps between two calls:
/// open converters and room for the result.
class Contender {
 public:
  virtual ~Contender() = default;

  /// To be called before the first conversion, and when another contender has
  /// converted since the last.
  virtual void getReady() {}

  /// Converts a whole text, which must be aligned as an allocation is. False
  /// when anything in it could not be converted.
  virtual bool convert(std::string_view text) = 0;

  /// What the last conversion gave.
  virtual std::string_view result() const = 0;
};

/// What becomes of what cannot be converted.
enum class OnError {
  stop,        ///< the conversion has failed
  skip,        ///< nothing
  substitute,  ///< a question mark, or U+FFFD where ICU decodes
  escape,      ///< "&#x", its number or bytes in hexadecimal, ";"
  convert,     ///< ours alone: the bytes converted to the destination by themselves
};

/// The most bytes that a text of `numBytes` can become in any encoding here.
constexpr std::size_t roomFor(std::size_t numBytes) { return 4 * numBytes + 64; }

/// `EncodingConvert`, with the kernels of one of `runnableTargets`.
std::unique_ptr<Contender> makeQuorvel(int from, int to, const std::string& target,
                                       OnError onError);

/// The ways in which users of quorvel/text convert. Between two conversions all but
/// `convert` keep the Transcoder and what they write to.
enum class TextWay {
  string,   ///< `Transcoder::push` of the whole text, into a string
  pieces,   ///< `Transcoder::push` of 64 KiB at a time, each into 64 KiB of room at most
  convert,  ///< `convert`, which makes a Transcoder and a string
  stream,   ///< as pieces, but every text is the next piece of one that does not end
};

const char* nameOf(TextWay way);

/// quorvel/text, with the kernels of one of `runnableTargets`; null for
/// `OnError::convert`. `largest` is the size of the largest text to come.
std::unique_ptr<Contender> makeText(int from, int to, TextWay way, const std::string& target,
                                    std::size_t largest, OnError onError);

/// glibc's iconv; null when it does not know a name. `largest` is the size of
/// the largest text to come.
std::unique_ptr<Contender> makeIconv(const std::string& from, const std::string& to,
                                     std::size_t largest, OnError onError);

/// The ways in which ICU's users convert.
enum class IcuWay {
  direct,   ///< ucnv_convertEx, in chunks
  units,    ///< the whole text to UChar and from there, by ucnv_toUChars and ucnv_fromUChars
  strings,  ///< as units, but for UTF-8 u_strFromUTF8 and u_strToUTF8
};

/// ICU; null when it does not know a name or the way does not fit.
std::unique_ptr<Contender> makeIcu(const std::string& from, const std::string& to, IcuWay way,
                                   std::size_t largest, OnError onError);

}  // namespace quorvel::bench
