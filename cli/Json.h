#pragma once

#include <concepts>
#include <string>
#include <string_view>

/// JSON (RFC 8259) as the command writes it, on one line.
namespace qvconv::json {

/// A string in quotation marks. Ill-formed UTF-8, as in the name of a file, becomes
/// U+FFFD, so that the line stays JSON.
std::string quoted(std::string_view utf8);

/// An object, written member by member.
class Object {
 public:
  Object& add(std::string_view key, std::string_view value) { return addJson(key, quoted(value)); }
  Object& add(std::string_view key, const char* value) { return add(key, std::string_view(value)); }
  Object& add(std::string_view key, std::same_as<bool> auto value) {
    return addJson(key, value ? "true" : "false");
  }
  Object& add(std::string_view key,
              std::integral auto value) requires(!std::same_as<decltype(value), bool>) {
    return addJson(key, std::to_string(value));
  }

  /// A member whose value is JSON already.
  Object& addJson(std::string_view key, std::string_view json) {
    m_members += m_members.empty() ? "" : ",";
    m_members += quoted(key) + ':' + std::string(json);
    return *this;
  }

  std::string text() const { return '{' + m_members + '}'; }

 private:
  std::string m_members;
};

/// An array, written element by element.
class Array {
 public:
  Array& addJson(std::string_view json) {
    m_elements += m_elements.empty() ? "" : ",";
    m_elements += json;
    return *this;
  }
  Array& add(std::string_view value) { return addJson(quoted(value)); }

  std::string text() const { return '[' + m_elements + ']'; }

 private:
  std::string m_elements;
};

}  // namespace qvconv::json
