#include "tests/e2e/desktop/DesktopTest.h"

#include <cstdlib>

namespace quennel::test {

void DesktopTest::SetUp() {
  if (const auto program = XServer::missingProgram()) {
    GTEST_SKIP() << "no " << *program;
  }
  _desktop.emplace();
  HelperTest::SetUp();
}

std::string DesktopTest::waitForWindow(const std::string& title,
                                       const std::string& otherThan) const {
  std::string window = desktop().waitForActiveWindow(title, otherThan);
  EXPECT_NE(window, "") << "no window '" << title << "'";
  return window;
}

void DesktopTest::waitUntilGone(const std::string& title) const {
  EXPECT_TRUE(desktop().waitForNoActiveWindow(title)) << title;
}

Process::Environment DesktopTest::environment() const {
  auto variables = HelperTest::environment();
  variables["DISPLAY"] = std::getenv("DISPLAY");
  // The toolkit's own looks, whatever the desktop around the tests is.
  for (const char* const name :
       {"XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORM", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE"}) {
    variables[name] = "";
  }
  return variables;
}

}  // namespace quennel::test
