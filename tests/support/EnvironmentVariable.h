#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace quennel::test {

/// Sets (with no value: removes) a variable of the environment, and restores it at the end.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::optional<std::string>& value)
      : _name(std::move(name)) {
    if (const char* const before = std::getenv(_name.c_str())) {
      _before = before;
    }
    set(value);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { set(_before); }

 private:
  void set(const std::optional<std::string>& value) {
    value ? setenv(_name.c_str(), value->c_str(), 1) : unsetenv(_name.c_str());
  }

  std::string _name;
  std::optional<std::string> _before;
};

}  // namespace quennel::test
