#pragma once

#include <set>
#include <string>
#include <vector>

#include "platform/Sound.h"
#include "tests/support/CallLog.h"

namespace quennel::test {

class FakeSound : public Sound {
 public:
  explicit FakeSound(CallLog& log) : _log(log) {}

  std::vector<std::string> played;
  /// What the bundle has no resource of.
  std::set<std::string> missing;

  void playSoundNamed(const std::string& name) override {
    if (missing.contains(name)) {
      return;
    }
    played.push_back(name);
    _log.add("sound");
  }

 private:
  CallLog& _log;
};

}  // namespace quennel::test
