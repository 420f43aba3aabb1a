#pragma once

#include <string>
#include <vector>

#include "platform/Sound.h"
#include "tests/support/CallLog.h"

namespace quennel::test {

class FakeSound : public Sound {
 public:
  explicit FakeSound(CallLog& log) : _log(log) {}

  std::vector<std::string> played;

  void playSoundNamed(const std::string& name) override {
    played.push_back(name);
    _log.add("sound");
  }

 private:
  CallLog& _log;
};

}  // namespace quennel::test
