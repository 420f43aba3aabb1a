#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// An xdg-open, the first in PATH, that writes down what it is asked to open.
class OpenerStandIn {
 public:
  OpenerStandIn() {
    std::ofstream(_folder / "xdg-open")
        << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" << _folder / "opened"
        << "'\n";
    std::filesystem::permissions(_folder / "xdg-open", std::filesystem::perms::owner_all);
  }

  /// A line for each.
  std::string opened() const {
    std::ostringstream text;
    text << std::ifstream(_folder / "opened").rdbuf();
    return text.str();
  }

  /// From now on PATH finds no xdg-open.
  void remove() { _pathWithout.emplace("PATH", _folder / "nothing-here"); }

 private:
  TemporaryDirectory _folder;
  EnvironmentVariable _path{"PATH", _folder.path() + ":" + std::getenv("PATH")};
  std::optional<EnvironmentVariable> _pathWithout;
};

}  // namespace quennel::test
