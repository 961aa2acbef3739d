#pragma once

#include <string>
#include <string_view>

namespace qvconv {

/// Where the command says what it has to say.
class Messages {
 public:
  virtual ~Messages() = default;

  /// One line for standard error. What stands in it is kept within the line.
  virtual void complain(const std::string& line) = 0;

  /// A result, for standard output. Throws `OutputError`.
  virtual void print(std::string_view text) = 0;
};

/// Says everything at once.
class DirectMessages : public Messages {
 public:
  void complain(const std::string& line) override;
  void print(std::string_view text) override;
};

}  // namespace qvconv
