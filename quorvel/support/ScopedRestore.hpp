#pragma once

namespace quorvel {

/// Puts a variable back to its present value at the end of the scope,
/// whichever way the scope is left.
template <typename T>
class ScopedRestore {
 public:
  explicit ScopedRestore(T& variable) : m_variable(variable), m_value(variable) {}
  ~ScopedRestore() { m_variable = m_value; }
  ScopedRestore(const ScopedRestore&) = delete;
  ScopedRestore& operator=(const ScopedRestore&) = delete;

 private:
  T& m_variable;
  T m_value;
};

}  // namespace quorvel
