// Reads a file of mappings into lines, and lines into words and numbers.

#include "tools/InputFile.h"

#include <charconv>
#include <fstream>
#include <system_error>

namespace pack {

InputError::InputError(const std::filesystem::path& file, unsigned int line,
                       const std::string& what)
    : std::runtime_error(file.string() + ":" + std::to_string(line) + ": error: " + what) {}

InputFile::InputFile(const std::filesystem::path& file) : path(file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file, 1, "cannot be read");
  unsigned int number = 0;
  for (std::string text; std::getline(stream, text);) {
    ++number;
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (!text.empty() && text.front() != '#') lines.push_back({number, text});
  }
  if (number > 0) lastLine = number;
}

void InputFile::fail(const Line& line, const std::string& what) const {
  throw InputError(path, line.number, what);
}

void InputFile::failAtEnd(const std::string& what) const { throw InputError(path, lastLine, what); }

std::vector<std::string_view> splitWords(std::string_view text) {
  std::vector<std::string_view> words;
  while (true) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos) return words;
    text.remove_prefix(start);
    const std::string_view word = text.substr(0, text.find(' '));
    words.push_back(word);
    text.remove_prefix(word.size());
  }
}

int parseCodePage(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  return isNumber && number > 0 && number <= 0xFFFF ? number : 0;
}

int parseHex(std::string_view text, unsigned int digits) {
  if (text.size() != digits) return -1;
  int value = 0;
  for (const char digit : text) {
    const std::size_t place = std::string_view("0123456789ABCDEF").find(digit);
    if (place == std::string_view::npos) return -1;
    value = value * 16 + static_cast<int>(place);
  }
  return value;
}

}  // namespace pack
