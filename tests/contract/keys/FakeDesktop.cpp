#include <optional>

#include "tests/contract/keys/HotKeyDesktop.h"
#include "tests/support/FakeHotKeyCenter.h"
#include "tests/support/FakeRunLoop.h"

namespace quennel::test {
namespace {

class FakeDesktop final : public HotKeyDesktop {
 public:
  FakeDesktop() { _center.emplace(_runLoop); }

  PTHotKeyCenter& center() override { return *_center; }
  void destroyCenter() override { _center.reset(); }
  RunLoop& runLoop() override { return _runLoop; }
  void press(const std::string& accelerator) override { _center->press(accelerator); }
  void holdByAnotherProgram(const std::string& accelerator) override {
    _center->holdByAnotherProgram(accelerator);
  }
  void end() override { _center->endDesktop(); }

 private:
  FakeRunLoop _runLoop;
  std::optional<FakeHotKeyCenter> _center;
};

}  // namespace

std::unique_ptr<HotKeyDesktop> makeFakeDesktop() { return std::make_unique<FakeDesktop>(); }

}  // namespace quennel::test
