#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/linux/autostart/DesktopAutostart.h"
#include "tests/support/Process.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

class DesktopAutostartTest : public testing::Test {
 protected:
  TemporaryDirectory config;
  const std::string entry = config / "autostart/net.brellow.QuennelHelper.desktop";
  DesktopAutostart autostart{config / "autostart", "/opt/quennel/bin/quennelhelper"};
};

}  // namespace

TEST_F(DesktopAutostartTest, EntryStartsTheHelperWhereItIs) {
  EXPECT_TRUE(autostart.setEnabled(true));
  EXPECT_TRUE(autostart.isEnabled());
  EXPECT_NE(contents(entry).find("\nExec=\"/opt/quennel/bin/quennelhelper\"\n"), std::string::npos);
  EXPECT_NE(contents(entry).find("\nTryExec=/opt/quennel/bin/quennelhelper\n"), std::string::npos);
}

TEST_F(DesktopAutostartTest, DesktopsAcceptTheEntry) {
  if (!isInstalled("desktop-file-validate")) {
    GTEST_SKIP() << "desktop-file-validate is not installed";
  }
  DesktopAutostart odd(config / "autostart", "/my \"$100% \\ `folder`/quennelhelper");
  EXPECT_TRUE(odd.setEnabled(true));
  EXPECT_NE(contents(entry).find(R"(Exec="/my \\"\\$100%% \\\\ \\`folder\\`/quennelhelper")"),
            std::string::npos);
  Process validate({"desktop-file-validate", entry});
  EXPECT_EQ(validate.wait(), 0) << validate.output() << validate.errorOutput();
}

TEST_F(DesktopAutostartTest, EntryThatTheUserChangedIsLeftAlone) {
  EXPECT_TRUE(autostart.setEnabled(true));
  std::ofstream(entry) << "[Desktop Entry]\nHidden=true\n";
  EXPECT_TRUE(autostart.setEnabled(true));
  EXPECT_EQ(contents(entry), "[Desktop Entry]\nHidden=true\n");
}

TEST_F(DesktopAutostartTest, EntryIsRemovedWhenItIsNotWantedAnyMore) {
  EXPECT_TRUE(autostart.setEnabled(true));
  EXPECT_TRUE(autostart.setEnabled(false));
  EXPECT_FALSE(std::filesystem::exists(entry));
  EXPECT_FALSE(autostart.isEnabled());
  EXPECT_TRUE(autostart.setEnabled(false));
}

TEST_F(DesktopAutostartTest, FolderThatCannotBeMadeIsReported) {
  std::ofstream(config / "autostart") << "a file in its place";
  Error error;
  EXPECT_FALSE(autostart.setEnabled(true, &error));
  EXPECT_NE(error.code, 0);
  EXPECT_FALSE(sentenceOf(error).empty());
}

}  // namespace quennel::test
