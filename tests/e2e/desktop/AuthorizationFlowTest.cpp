#include <chrono>
#include <filesystem>

#include "settings/AuthorizedDir.h"
#include "settings/SharedSettings.h"
#include "tests/e2e/desktop/DesktopTest.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Requests for files in a folder that was not granted.
class AuthorizationFlow : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    if (!IsSkipped()) {
      // Told apart by its title from the alerts.
      set("localizedStrings", PropertyList::Dictionary{{"Quennel", "Access"}});
      std::filesystem::create_directories(target);
      std::filesystem::create_directories(_root / "unrelated");
    }
  }

  /// Asks for a note and answers the panel's window.
  std::string request() {
    open({requestFor(target, "0")});
    return waitForWindow("Access");
  }
  void choose(const std::string& path) const {
    desktop().type(path);
    desktop().pressKey("Return");
  }
  std::vector<std::string> grants() const {
    std::vector<std::string> paths;
    for (const auto& record : authorizedDirsOf(settings().objectForKey(authorizedDirsKey))) {
      paths.push_back(*authorizedPath(record));
    }
    return paths;
  }
  void expectRefusal(const std::string& choice) {
    request();
    choose(choice);
    waitForWindow("Quennel");
    desktop().pressKey("Return");
    waitUntilGone("Quennel");
    EXPECT_FALSE(isShown("Access"));
    EXPECT_EQ(countEntries(target), 0u);
    EXPECT_EQ(grants(), std::vector<std::string>{folder()});
  }
  void stop(Process& helper) {
    command("quit");
    EXPECT_EQ(helper.wait(), 0);
  }

  const std::string work = _root / "work";
  const std::string target = work + "/app";
};

TEST_F(AuthorizationFlow, TheFolderItselfIsAuthorizedByOneKey) {
  request();
  desktop().pressKey("Return");
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
  EXPECT_EQ(grants(), (std::vector<std::string>{folder(), target}));
}

TEST_F(AuthorizationFlow, AFolderAboveCoversItToo) {
  request();
  choose(work);
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
  EXPECT_EQ(grants(), (std::vector<std::string>{folder(), work}));
}

TEST_F(AuthorizationFlow, TheMouseGoesToTheFolderAboveAndAuthorizesIt) {
  const std::string panel = request();
  const auto [width, height] = desktop().windowSize(panel);
  desktop().click(panel, width - 79, 48);           // "Parent Directory"
  desktop().click(panel, width - 55, height - 55);  // "Authorize"
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
  EXPECT_EQ(grants(), (std::vector<std::string>{folder(), work}));
}

TEST_F(AuthorizationFlow, AnUnrelatedFolderIsRefused) { expectRefusal(_root / "unrelated"); }

TEST_F(AuthorizationFlow, TheRootFolderIsRefused) { expectRefusal("/"); }

TEST_F(AuthorizationFlow, CancellingLeavesNothingBehind) {
  Process helper = startReadyHelper();
  request();
  desktop().pressKey("Escape");
  waitUntilGone("Access");
  stop(helper);
  EXPECT_EQ(countEntries(target), 0u);
  EXPECT_EQ(grants(), std::vector<std::string>{folder()});
}

TEST_F(AuthorizationFlow, TheRunGoesOnWithTheGrantTheNextOneKnowsItAndARevokedOneIsAskedForAgain) {
  Process first = startReadyHelper();
  request();
  choose(work);
  ASSERT_TRUE(eventuallyExists(target + "/note.txt"));
  open({requestFor(target, "0")});
  ASSERT_TRUE(eventuallyExists(target + "/note-1.txt"));
  stop(first);

  Process second = startReadyHelper();
  open({requestFor(target, "0")});
  ASSERT_TRUE(eventuallyExists(target + "/note-2.txt"));
  EXPECT_FALSE(isShown("Access"));
  stop(second);

  ASSERT_EQ(Process({QUENNEL_CTL, "revoke", work}, environment()).wait(), 0);
  request();
  desktop().pressKey("Escape");
  waitUntilGone("Access");
  EXPECT_EQ(countEntries(target), 3u);
}

TEST_F(AuthorizationFlow, RequestsAreServedWhileThePanelIsOpen) {
  request();
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(isShown("Access"));
  desktop().pressKey("Return");
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
}

TEST_F(AuthorizationFlow, TwoRequestsHaveAPanelEach) {
  const std::string first = request();
  open({requestFor(_root / "unrelated", "1")});
  const std::string second = waitForWindow("Access", first);
  desktop().pressKey("Return");
  EXPECT_TRUE(eventuallyExists(_root / "unrelated/script.sh"));
  EXPECT_EQ(waitForWindow("Access", second), first);
  desktop().pressKey("Return");
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
}

TEST_F(AuthorizationFlow, ThePanelStandsAboveNormalWindows) {
  const std::string state = desktop().windowProperty(request(), "_NET_WM_STATE");
  EXPECT_NE(state.find("_NET_WM_STATE_ABOVE"), std::string::npos) << state;
}

TEST_F(AuthorizationFlow, TheQuitCheckEndsTheHelperDuringThePanel) {
  Process helper = startReadyHelper();
  const auto start = Clock::now();
  request();
  EXPECT_EQ(helper.wait(), 0);
  EXPECT_GE(Clock::now() - start, 11s);
  EXPECT_LT(Clock::now() - start, 15s);
  EXPECT_FALSE(isShown("Access"));
  EXPECT_EQ(countEntries(target), 0u);
}

TEST_F(AuthorizationFlow, TheQuitCommandEndsTheHelperDuringThePanel) {
  Process helper = startReadyHelper();
  request();
  stop(helper);
  EXPECT_EQ(countEntries(target), 0u);
}

}  // namespace
}  // namespace quennel::test
