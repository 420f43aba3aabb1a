#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/keys/DisplayFollower.h"
#include "tests/keys/ListeningSocket.h"
#include "tests/support/Deadline.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;

/// A desktop that binds everything as long as it is there.
class Desktop : public HotKeyBackend {
 public:
  Desktop(const bool& isThere, HotKeyListener& listener) : _isThere(isThere), _listener(listener) {}

  bool bind(const Request& request, Error* error) override {
    _numbers.push_back(request.number);
    return _isThere || failWith(error, ECONNREFUSED, Error::Kind::UnreachableDisplay);
  }
  void unbind(HotKeyNumber number) override { std::erase(_numbers, number); }
  bool isAlive() const override { return !_hasEnded; }
  void end() {
    _hasEnded = true;
    for (const HotKeyNumber number : _numbers) {
      _listener.hotKeyLost(number);
    }
  }

 private:
  const bool& _isThere;
  HotKeyListener& _listener;
  std::vector<HotKeyNumber> _numbers;
  bool _hasEnded = false;
};

/// A program at display 5 that registers its one key anew whenever it may be had.
class DisplayFollowerTest : public testing::Test {
 protected:
  DisplayFollowerTest() {
    registration = center.addObserver(
        [this] {
          ++timesMayBeHad;
          registerKey();
        },
        [this] { ++timesLeft; });
  }

  void follow(const std::string& display) {
    follower.emplace(
        loop, center,
        DisplayFollower::Means{.display = display,
                               .canUse = [this](const std::string&) { return isLetIn; },
                               .moveTo = [this](const std::string& next) { moves.push_back(next); },
                               .socketFolder = folder.path()});
  }
  void registerKey() { center.registerHotKey(actions.hotKey("a", "Ctrl+Alt+N")); }
  bool hasKey() const { return center.allHotKeys().size() == 1; }
  void endDesktop() {
    isThere = false;
    desktop->end();
    settle();
  }
  void startServer(int number) {
    servers.push_back(std::make_unique<ListeningSocket>(folder / ("X" + std::to_string(number))));
  }
  bool runUntil(const std::function<bool()>& condition, Deadline deadline = Deadline()) {
    while (!condition()) {
      if (deadline.hasPassed()) {
        return false;
      }
      pollfd polled{loop.descriptor(), POLLIN, 0};
      poll(&polled, 1, 1);
      loop.serve();
    }
    return true;
  }
  /// All that is due.
  void settle() {
    runUntil([] { return false; }, Deadline(std::chrono::milliseconds(50)));
  }
  /// The server that was started last answers.
  void answer() {
    ASSERT_TRUE(runUntil([this] { return servers.back()->isAsked(); }));
    servers.back()->turnDown();
    settle();
  }

  TemporaryDirectory folder;
  EventRunLoop loop;
  HotKeyActions actions;
  bool isThere = true;
  bool isLetIn = true;
  Desktop* desktop = nullptr;
  std::vector<std::unique_ptr<ListeningSocket>> servers;
  Names moves;
  int timesMayBeHad = 0;
  int timesLeft = 0;
  DesktopHotKeyCenter center{
      loop, [this](HotKeyListener& listener, Error* error) -> std::unique_ptr<HotKeyBackend> {
        if (!isThere) {
          failWith(error, ECONNREFUSED, Error::Kind::UnreachableDisplay);
          return nullptr;
        }
        auto opened = std::make_unique<Desktop>(isThere, listener);
        desktop = opened.get();
        return opened;
      }};
  std::unique_ptr<Registration> registration;
  std::optional<DisplayFollower> follower;
};

}  // namespace

TEST_F(DisplayFollowerTest, KeysMayBeHadAgainWhenTheirDisplayAnswersAgain) {
  follow(":5");
  registerKey();
  endDesktop();
  EXPECT_EQ(timesLeft, 1);
  startServer(5);
  EXPECT_EQ(timesMayBeHad, 0);
  isThere = true;
  answer();
  EXPECT_TRUE(runUntil([this] { return hasKey(); }));
  EXPECT_EQ(timesMayBeHad, 1);
  EXPECT_EQ(moves, Names{});
}

TEST_F(DisplayFollowerTest, KeysMayBeHadWhenTheDisplayThatWasMissingAtFirstAnswers) {
  isThere = false;
  follow(":5.0");
  registerKey();
  settle();
  startServer(5);
  isThere = true;
  answer();
  EXPECT_TRUE(runUntil([this] { return hasKey(); }));
}

TEST_F(DisplayFollowerTest, ProgramMovesToAnotherDisplayThatComesWhenItsOwnIsGone) {
  follow("unix:5");
  registerKey();
  endDesktop();
  startServer(6);
  answer();
  EXPECT_TRUE(runUntil([this] { return moves == Names{":6"}; }));
}

TEST_F(DisplayFollowerTest, ProgramStaysWhereItIsNotLetIn) {
  isLetIn = false;
  follow(":5");
  registerKey();
  endDesktop();
  startServer(6);
  answer();
  EXPECT_EQ(moves, Names{});
}

TEST_F(DisplayFollowerTest, ProgramStaysWhileItsOwnDisplayStarts) {
  follow(":5");
  registerKey();
  endDesktop();
  startServer(5);
  startServer(6);
  answer();
  EXPECT_EQ(moves, Names{});
}

TEST_F(DisplayFollowerTest, ProgramStaysWhileItsKeysWork) {
  follow(":5");
  registerKey();
  startServer(6);
  follower->lookAround();
  settle();
  EXPECT_EQ(moves, Names{});
  EXPECT_EQ(timesMayBeHad, 0);
}

TEST_F(DisplayFollowerTest, DisplaysThatAreThereAlreadyAreLookedForOnlyWhenAskedFor) {
  startServer(6);
  follow(":5");
  registerKey();
  endDesktop();
  EXPECT_EQ(moves, Names{});
  follower->lookAround();
  settle();
  answer();
  EXPECT_TRUE(runUntil([this] { return moves == Names{":6"}; }));
}

TEST_F(DisplayFollowerTest, ProgramWithoutADisplayLooksForOneOnlyWhenAskedFor) {
  isThere = false;
  follow("");
  registerKey();
  settle();
  startServer(6);
  EXPECT_EQ(moves, Names{});
  follower->lookAround();
  settle();
  answer();
  EXPECT_TRUE(runUntil([this] { return moves == Names{":6"}; }));
}

TEST_F(DisplayFollowerTest, DisplayOfAnotherMachineIsNotLeft) {
  isThere = false;
  follow("elsewhere:10.0");
  registerKey();
  settle();
  startServer(6);
  follower->lookAround();
  settle();
  EXPECT_EQ(moves, Names{});
}

TEST_F(DisplayFollowerTest, AskingForTheProgramMakesMissingKeysBeTriedAgain) {
  isThere = false;
  follow("");
  registerKey();
  settle();
  isThere = true;
  follower->lookAround();
  settle();
  EXPECT_TRUE(hasKey());
}

TEST(LocalDisplayNumber, IsThatOfADisplayOfThisMachine) {
  EXPECT_EQ(localDisplayNumber(":0"), 0);
  EXPECT_EQ(localDisplayNumber(":12.1"), 12);
  EXPECT_EQ(localDisplayNumber("unix:3"), 3);
  EXPECT_EQ(localDisplayNumber("host:10.0"), std::nullopt);
  EXPECT_EQ(localDisplayNumber("wayland-0"), std::nullopt);
  EXPECT_EQ(localDisplayNumber(":"), std::nullopt);
  EXPECT_EQ(localDisplayNumber(":-1"), std::nullopt);
  EXPECT_EQ(localDisplayNumber(":5x"), std::nullopt);
  EXPECT_EQ(localDisplayNumber(""), std::nullopt);
}

}  // namespace quennel::test
