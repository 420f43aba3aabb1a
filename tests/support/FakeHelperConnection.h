#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/HelperConnection.h"

namespace quennel::test {

/// A helper that is spoken to by nobody else.
class FakeHelperConnection : public HelperConnection {
 public:
  bool isRunning = true;
  std::vector<HelperKey> boundKeys;
  /// No operation reaches the helper, because of this.
  std::optional<HelperSilence> silence;

  std::vector<std::string> openedURLs;
  std::vector<std::string> commands;
  std::vector<std::string> performed;

  Result<void, HelperSilence> open(const std::string& url) override {
    if (silence) {
      return *silence;
    }
    openedURLs.push_back(url);
    return {};
  }

  Result<bool, HelperSilence> notify(const std::string& command) override {
    if (silence) {
      return *silence;
    }
    commands.push_back(command);
    return isRunning;
  }

  Result<bool, HelperSilence> perform(const std::string& action) override {
    if (silence) {
      return *silence;
    }
    performed.push_back(action);
    return isRunning;
  }

  Result<std::vector<HelperKey>, HelperSilence> keys() override {
    if (silence) {
      return *silence;
    }
    return boundKeys;
  }
};

}  // namespace quennel::test
