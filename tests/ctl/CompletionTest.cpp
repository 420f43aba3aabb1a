#include <filesystem>

#include "tests/ctl/QuennelctlTest.h"

namespace quennel::test {
namespace {

class CompletionTest : public QuennelctlTest {
 protected:
  /// What bash offers for the last of `words`, one a line.
  std::string offered(const std::string& words) const {
    const std::string script = "source " COMPLETIONS
                               "/quennelctl.bash; compopt() { :; }; "
                               "COMP_WORDS=(" QUENNELCTL " " +
                               words +
                               "); "
                               "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _quennelctl; "
                               "printf '%s\\n' \"${COMPREPLY[@]}\"";
    Process bash({"bash", "-c", script}, environment);
    EXPECT_EQ(bash.wait(), 0) << bash.errorOutput();
    return bash.output();
  }
};

}  // namespace

TEST_F(CompletionTest, BashOffersCommands) {
  EXPECT_EQ(offered("t"), "template\n");
  EXPECT_EQ(offered("sh"), "shortcuts\n");
  EXPECT_EQ(offered("template ''"), "list\nadd\nedit\nremove\nmove\n--help\n");
}

TEST_F(CompletionTest, BashOffersOptions) {
  EXPECT_EQ(offered("template list --p"), "--plain\n");
  EXPECT_EQ(offered("template add --e"), "--executable\n--enabled\n");
  EXPECT_EQ(offered("template edit 0 --t"), "--title\n");
  EXPECT_EQ(offered("template edit 0 --sh"), "--shortcut\n");
}

TEST_F(CompletionTest, BashOffersSettingsAndTheirValues) {
  EXPECT_EQ(offered("set s"), "skipFilename\nshowFileOnCreation\n");
  EXPECT_EQ(offered("set playSound ''"), "yes\nno\n");
  EXPECT_EQ(offered("get f"), "fileTemplates\n");
}

TEST_F(CompletionTest, BashOffersTheTemplatesThatAreThere) {
  const std::string file = makeFile("a");
  ASSERT_EQ(run({"template", "add", file}).status, 0);
  ASSERT_EQ(run({"template", "add", file}).status, 0);
  EXPECT_EQ(offered("template remove ''"), "0\n1\n");
  EXPECT_EQ(offered("template move 0 ''"), "0\n1\n");
  EXPECT_EQ(offered("new ''"), "0\n1\n");
}

TEST_F(CompletionTest, BashOffersFilesWithBlanksInTheirNames) {
  const std::string file = makeFile("my file.md");
  EXPECT_EQ(offered("template add " + folder.path() + "/my"), file + "\n");
  EXPECT_EQ(offered("template add --file " + folder.path() + "/my"), file + "\n");
}

TEST_F(CompletionTest, BashOffersFoldersToGrantAndGrantsToRevoke) {
  const std::string granted = folder / "my folder";
  std::filesystem::create_directory(granted);
  makeFile("my file");
  EXPECT_EQ(offered("grant " + folder.path() + "/my"), granted + "\n");
  EXPECT_EQ(offered("revoke ''"), "\n");
  ASSERT_EQ(run({"grant", granted}).status, 0);
  EXPECT_EQ(offered("revoke ''"), granted + "\n");
  EXPECT_EQ(offered("g"), "get\ngrant\ngrants\n");
}

TEST_F(CompletionTest, ZshUnderstandsItsFile) {
  if (!isInstalled("zsh")) {
    GTEST_SKIP() << "zsh is not installed";
  }
  Process zsh({"zsh", "-n", COMPLETIONS "/quennelctl.zsh"});
  EXPECT_EQ(zsh.wait(), 0) << zsh.errorOutput();
}

}  // namespace quennel::test
