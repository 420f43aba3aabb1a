#include "tests/app/AppDelegateTest.h"

#include "tests/support/FakePlatform.h"

namespace quennel::test {

AppDelegate& AppDelegateTest::launch() {
  delegate = std::make_unique<AppDelegate>(platformOf(fakes));
  fakes.runLoop.setWillTerminateHandler([this] { delegate->applicationWillTerminate(); });
  delegate->applicationWillFinishLaunching();
  delegate->applicationDidFinishLaunching();
  fakes.runLoop.runUntilIdle();
  return *delegate;
}

void AppDelegateTest::open(const std::string& url) {
  fakes.urlEvents.open(url);
  fakes.runLoop.runUntilIdle();
}

void AppDelegateTest::command(const std::string& name, const std::string& object) {
  fakes.distributedNotificationCenter.postNotification(
      {.name = name, .object = object, .userInfo = {}}, true);
  fakes.runLoop.runUntilIdle();
}

}  // namespace quennel::test
