#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

bool isMapped(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(library) != std::string::npos) {
      return true;
    }
  }
  return false;
}

TEST(StaticLibrary, TheModuleWorksInAProgramWithItsOwnCopyOfTheLibrary) {
  const FreshSession session;
  const EnvironmentVariable platform("QT_QPA_PLATFORM", "offscreen");
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface(loop, bundle, USER_INTERFACE_MODULE);
  ASSERT_FALSE(isMapped("libstdc++")) << "the program has no copy of its own";

  EXPECT_EQ(userInterface.localizedDescriptionOfFileExtension("txt"), "plain text document");
  EXPECT_TRUE(isMapped("libstdc++")) << "the module has brought another";

  bool served = false;
  loop.dispatchAfter(std::chrono::milliseconds(20), [&] {
    served = true;
    loop.terminate();
  });
  const std::string longText(1000, 'x');
  EXPECT_EQ(userInterface.runModal({longText, longText, AlertStyle::Critical, {longText, "Last"}}),
            UserInterface::alertFirstButtonReturn + 1);
  EXPECT_TRUE(served);
}

}  // namespace
}  // namespace quennel::test
