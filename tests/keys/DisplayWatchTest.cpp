#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/keys/DisplayWatch.h"
#include "tests/keys/ListeningSocket.h"
#include "tests/support/Deadline.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using Numbers = std::vector<int>;

class DisplayWatchTest : public testing::Test {
 protected:
  bool runUntil(const std::function<bool()>& condition, Deadline deadline = Deadline()) {
    while (!condition()) {
      if (deadline.hasPassed()) {
        return false;
      }
      pollfd polled{_loop.descriptor(), POLLIN, 0};
      poll(&polled, 1, 1);
      _loop.serve();
    }
    return true;
  }
  bool tellsWithin(std::chrono::milliseconds time) {
    return runUntil([this] { return !told.empty(); }, Deadline(time));
  }
  void answer(ListeningSocket& server) {
    ASSERT_TRUE(runUntil([&] { return server.isAsked(); }));
    server.turnDown();
  }
  bool comesToTell(const Numbers& numbers) {
    return runUntil([&] { return told == numbers; });
  }
  /// Whether the one told last stays it, until a display that comes now is told of.
  bool tellsNothingMore() {
    const Numbers before = told;
    ListeningSocket last(folder + "/X99");
    _watch.start();
    _watch.lookAround();
    answer(last);
    Numbers expected = before;
    expected.push_back(99);
    return comesToTell(expected);
  }

  TemporaryDirectory _root;
  const std::string folder = _root / "sockets";
  EventRunLoop _loop;
  Numbers told;
  DisplayWatch _watch{_loop, [this](int number) { told.push_back(number); }, folder};
};

}  // namespace

TEST_F(DisplayWatchTest, TellsOfADisplayThatComesWhenItAnswersAndNotBefore) {
  std::filesystem::create_directory(folder);
  _watch.start();
  ListeningSocket server(folder + "/X7");
  EXPECT_FALSE(tellsWithin(std::chrono::milliseconds(300)));
  answer(server);
  EXPECT_TRUE(comesToTell({7}));
}

TEST_F(DisplayWatchTest, TellsNothingOfOneThatWasThereBeforeUnlessItLooksAround) {
  std::filesystem::create_directory(folder);
  ListeningSocket server(folder + "/X7");
  _watch.start();
  EXPECT_FALSE(tellsWithin(std::chrono::milliseconds(200)));
  _watch.lookAround();
  answer(server);
  EXPECT_TRUE(comesToTell({7}));
}

TEST_F(DisplayWatchTest, WaitsForTheFolderThatTheFirstServerMakes) {
  _watch.start();
  std::filesystem::create_directory(folder);
  ListeningSocket server(folder + "/X3");
  EXPECT_FALSE(tellsWithin(std::chrono::milliseconds(300)));
  answer(server);
  EXPECT_TRUE(comesToTell({3}));
}

TEST_F(DisplayWatchTest, TellsNothingOfASocketThatNobodyServes) {
  std::filesystem::create_directory(folder);
  ListeningSocket(folder + "/X7").stop();
  _watch.lookAround();
  EXPECT_FALSE(_watch.isThere(7));
  EXPECT_TRUE(tellsNothingMore());
}

TEST_F(DisplayWatchTest, TellsNothingOfAServerThatHangsUp) {
  std::filesystem::create_directory(folder);
  ListeningSocket server(folder + "/X7");
  _watch.lookAround();
  ASSERT_TRUE(runUntil([&] { return server.isAsked(); }));
  server.hangUp();
  server.stop();
  EXPECT_TRUE(tellsNothingMore());
}

TEST_F(DisplayWatchTest, TellsNothingOfWhatIsNoDisplay) {
  std::filesystem::create_directory(folder);
  ListeningSocket other(folder + "/X7.lock");
  std::ofstream(folder + "/X8") << "no socket";
  _watch.lookAround();
  EXPECT_TRUE(tellsNothingMore());
}

TEST_F(DisplayWatchTest, KnowsWhoIsThereWithoutWaitingForAnAnswer) {
  std::filesystem::create_directory(folder);
  const ListeningSocket server(folder + "/X7");
  EXPECT_TRUE(_watch.isThere(7));
  EXPECT_FALSE(_watch.isThere(8));
}

}  // namespace quennel::test
