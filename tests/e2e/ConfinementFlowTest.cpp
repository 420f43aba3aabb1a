#include <filesystem>

#include "tests/e2e/HelperTest.h"
#include "tests/support/LoopMount.h"

namespace quennel::test {
namespace {

class ConfinementFlow : public HelperTest {
 protected:
  /// A folder of that name that nothing grants.
  std::string outside(const std::string& name) const {
    std::filesystem::create_directories(_root / name);
    return _root / name;
  }
  /// Asks for a note where none may be made: the question goes to standard error, unanswered.
  void expectQuestion(const std::string& requested) {
    Process helper = startHelper({requestFor(requested, "0")});
    EXPECT_TRUE(eventually([&] {
      return helper.errorOutput().find("would like to access your working directory. (" +
                                       requested + ")") != std::string::npos;
    })) << helper.errorOutput();
    EXPECT_EQ(helper.terminate(), 0);
    EXPECT_FALSE(exists(requested + "/note.txt"));
  }
};

TEST_F(ConfinementFlow, InAFolderThatWasNotGrantedNoFileIsMade) {
  expectQuestion(outside("other"));
}

TEST_F(ConfinementFlow, AGrantCoversTheFoldersBelow) {
  std::filesystem::create_directories(in("a/b"));
  open({requestFor(in("a/b"), "0")});
  EXPECT_TRUE(eventuallyExists(in("a/b/note.txt")));
}

TEST_F(ConfinementFlow, ALinkLeadsOutOfNoGrant) {
  std::filesystem::create_directory_symlink(outside("other"), in("link"));
  expectQuestion(in("link"));
}

TEST_F(ConfinementFlow, AReferenceToTheParentLeadsOutOfNoGrant) {
  outside("other");
  expectQuestion(in("../other"));
}

TEST_F(ConfinementFlow, AFolderThatTookThePlaceOfTheGrantedOneIsNotGranted) {
  std::filesystem::rename(folder(), _root / "moved");
  outside("folder");
  expectQuestion(folder());
}

TEST_F(ConfinementFlow, AFolderTemplateIsMadeWholeInsideTheGrant) {
  open({requestFor(folder(), "2"), requestFor(folder(), "2")});
  EXPECT_TRUE(eventuallyExists(in("project-1/src/main.c")));
}

TEST_F(ConfinementFlow, AVolumeThatComesWhileTheSettingsAreGarbageTakesNoGrantAway) {
  const LoopMount before("tmpfs");
  if (!before) {
    GTEST_SKIP() << before.reason();
  }
  const std::string whole = contents(settingsPath());
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  write(settingsPath(), "garbage");
  const LoopMount volume("tmpfs");
  ASSERT_TRUE(volume) << volume.reason();
  // The first may still be served before the volume is noticed, the second not.
  open({requestFor(folder(), "0")});
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note-2.txt"))) << helper.errorOutput();
  write(settingsPath(), whole);
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note-3.txt"))) << helper.errorOutput();
}

}  // namespace
}  // namespace quennel::test
