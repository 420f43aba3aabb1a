#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quennel::test {

/// The order of calls across several fakes.
class CallLog {
 public:
  /// What happens during each call.
  std::function<void(const std::string& call)> during;

  void add(const std::string& call) {
    _calls.push_back(call);
    if (during) {
      during(call);
    }
  }
  const std::vector<std::string>& calls() const { return _calls; }

 private:
  std::vector<std::string> _calls;
};

}  // namespace quennel::test
