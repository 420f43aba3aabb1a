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
  void revoke(const std::string& granted) const {
    EXPECT_EQ(Process({QUENNEL_CTL, "revoke", granted}, environment()).wait(), 0);
  }
  static bool eventuallyAsks(Process& helper, const std::string& requested) {
    return eventually([&] { return helper.errorOutput().find(requested) != std::string::npos; });
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

TEST_F(ConfinementFlow, AGrantReachesAHelperThatIsRunning) {
  Process helper = startReadyHelper();
  const std::string other = outside("other");
  grant(other);
  open({requestFor(other, "0")});
  EXPECT_TRUE(eventuallyExists(other + "/note.txt")) << helper.errorOutput();
}

TEST_F(ConfinementFlow, OnceAGrantIsRevokedAHelperThatIsRunningMakesNoFileThere) {
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  revoke(folder());
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyAsks(helper, folder())) << helper.errorOutput();
  EXPECT_FALSE(exists(in("note-1.txt")));
}

TEST_F(ConfinementFlow, TheCommandsOfTheMainApplicationEndNoAccess) {
  Process helper = startReadyHelper();
  set("authorizedDirs", PropertyList::Array{});
  command("fileTemplates");
  command("authorizedDirs");
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note.txt"))) << helper.errorOutput();
}

TEST_F(ConfinementFlow, WhatIsUnderWayWhenItsGrantIsRevokedEndsAsItBegan) {
  constexpr int count = 4000;
  for (int index = 0; index < count; ++index) {
    write(_root / ("templates/project/src/" + std::to_string(index)), "text");
  }
  Process helper = startReadyHelper();
  send(requestFor(folder(), "2"));
  ASSERT_TRUE(eventually([&] { return countEntries(folder()) > 0; }));
  revoke(folder());
  EXPECT_EQ(countEntries(in("project/src")), static_cast<std::size_t>(count) + 1);
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyAsks(helper, folder())) << helper.errorOutput();
  EXPECT_EQ(countEntries(folder()), 1u);
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
