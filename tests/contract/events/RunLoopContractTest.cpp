// What every run loop does, run on the real one and on the fake in virtual time.

#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/DispatchSync.h"
#include "platform/linux/events/EventRunLoop.h"
#include "tests/support/FakeRunLoop.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

template <typename Loop>
class RunLoopContract : public testing::Test {
 protected:
  RunLoop::Work note(const std::string& what) {
    return [this, what] { _log.push_back(what); };
  }
  RunLoop::Work terminate() {
    return [this] { _loop.terminate(); };
  }
  bool isReadable() const {
    pollfd polled{_loop.descriptor(), POLLIN, 0};
    return poll(&polled, 1, 0) == 1;
  }

  Loop _loop;
  std::vector<std::string> _log;
};

using Log = std::vector<std::string>;
using Loops = testing::Types<EventRunLoop, FakeRunLoop>;
struct LoopNames {
  template <typename Loop>
  static std::string GetName(int) {
    return std::is_same_v<Loop, FakeRunLoop> ? "Fake" : "Real";
  }
};
TYPED_TEST_SUITE(RunLoopContract, Loops, LoopNames);

TYPED_TEST(RunLoopContract, WorkRunsInTheOrderOfTheCalls) {
  this->_loop.dispatchAsync(this->note("first"));
  this->_loop.dispatchAsync(this->note("second"));
  this->_loop.dispatchAsync(this->terminate());
  this->_loop.run();
  EXPECT_EQ(this->_log, (Log{"first", "second"}));
}

TYPED_TEST(RunLoopContract, QueueingDoesNotRunTheWorkAtOnce) {
  this->_loop.dispatchAsync(this->note("work"));
  this->_loop.dispatchAfter(0ns, this->note("more"));
  EXPECT_TRUE(this->_log.empty());
}

TYPED_TEST(RunLoopContract, DelayedWorkRunsInTheOrderInWhichItBecomesDue) {
  this->_loop.dispatchAfter(30ms, this->terminate());
  this->_loop.dispatchAfter(20ms, this->note("later"));
  this->_loop.dispatchAfter(10ms, this->note("sooner"));
  this->_loop.dispatchAsync(this->note("now"));
  this->_loop.run();
  EXPECT_EQ(this->_log, (Log{"now", "sooner", "later"}));
}

TYPED_TEST(RunLoopContract, ADelayOfZeroOrLessIsDueAtOnceBehindWhatIsDue) {
  this->_loop.dispatchAsync(this->note("first"));
  this->_loop.dispatchAfter(-1h, this->note("second"));
  this->_loop.dispatchAfter(0ns, this->note("third"));
  this->_loop.dispatchAsync(this->note("fourth"));
  EXPECT_TRUE(this->_loop.serve());
  EXPECT_EQ(this->_log, (Log{"first", "second", "third", "fourth"}));
}

TYPED_TEST(RunLoopContract, TheLongestDelayNeverComes) {
  this->_loop.dispatchAfter(std::chrono::nanoseconds::max(), this->note("never"));
  EXPECT_TRUE(this->_loop.serve());
  EXPECT_TRUE(this->_log.empty());
}

TYPED_TEST(RunLoopContract, WorkMayQueueMoreWork) {
  this->_loop.dispatchAsync([this] {
    this->_log.push_back("outer");
    this->_loop.dispatchAsync(this->note("inner"));
    this->_loop.dispatchAsync(this->terminate());
  });
  this->_loop.run();
  EXPECT_EQ(this->_log, (Log{"outer", "inner"}));
}

TYPED_TEST(RunLoopContract, WorkThatKeepsQueueingItselfDoesNotHoldServeForEver) {
  RunLoop::Work again = [this, &again] { this->_loop.dispatchAsync(again); };
  this->_loop.dispatchAsync(again);
  EXPECT_TRUE(this->_loop.serve());
  EXPECT_TRUE(this->isReadable());
}

TYPED_TEST(RunLoopContract, AModalLoopInsideWorkRunsWhatIsQueuedBehindIt) {
  this->_loop.dispatchAsync([this] {
    this->_log.push_back("panel opens");
    EXPECT_TRUE(this->_loop.serve());
    this->_log.push_back("panel closes");
    this->_loop.dispatchAsync(this->terminate());
  });
  this->_loop.dispatchAsync(this->note("meanwhile"));
  this->_loop.run();
  EXPECT_EQ(this->_log, (Log{"panel opens", "meanwhile", "panel closes"}));
}

TYPED_TEST(RunLoopContract, ServeAnswersFalseToEveryModalLoopOnceTerminating) {
  std::vector<bool> answers;
  this->_loop.dispatchAsync([this, &answers] { answers.push_back(this->_loop.serve()); });
  this->_loop.dispatchAsync([this, &answers] { answers.push_back(this->_loop.serve()); });
  this->_loop.dispatchAsync(this->terminate());
  this->_loop.run();
  EXPECT_EQ(answers, (std::vector<bool>{false, false}));
  EXPECT_FALSE(this->_loop.serve());
}

TYPED_TEST(RunLoopContract, NothingThatIsStillQueuedRunsAfterTerminate) {
  this->_loop.dispatchAsync(this->terminate());
  this->_loop.dispatchAsync(this->note("dropped"));
  this->_loop.dispatchAfter(1ms, this->note("dropped"));
  this->_loop.run();
  this->_loop.dispatchAsync(this->note("too late"));
  EXPECT_FALSE(this->_loop.serve());
  this->_loop.run();
  EXPECT_TRUE(this->_log.empty());
}

TYPED_TEST(RunLoopContract, TerminateDestroysWhatIsQueuedAndWhatComesAfter) {
  const auto held = std::make_shared<int>(0);
  this->_loop.dispatchAsync([held] {});
  this->_loop.dispatchAfter(1h, [held] {});
  EXPECT_EQ(held.use_count(), 3);
  this->_loop.terminate();
  EXPECT_EQ(held.use_count(), 1);
  this->_loop.dispatchAsync([held] {});
  EXPECT_EQ(held.use_count(), 1);
}

TYPED_TEST(RunLoopContract, WhatIsDestroyedAtTheEndMayCallTheLoop) {
  struct Caller {
    RunLoop& loop;
    ~Caller() {
      loop.dispatchAsync([] {});
    }
  };
  this->_loop.dispatchAsync([caller = std::make_shared<Caller>(this->_loop)] {});
  this->_loop.terminate();
  EXPECT_TRUE(this->_loop.isTerminating());
}

TYPED_TEST(RunLoopContract, DispatchSyncWaitsForTheWork) {
  std::thread other([this] {
    EXPECT_TRUE(dispatchSync(this->_loop, this->note("work")));
    EXPECT_EQ(this->_log, Log{"work"});
    this->_loop.dispatchAsync(this->terminate());
  });
  this->_loop.run();
  other.join();
}

TYPED_TEST(RunLoopContract, DispatchSyncEndsWithTheLoop) {
  this->_loop.dispatchAsync([this] {
    std::thread other([this] { EXPECT_FALSE(dispatchSync(this->_loop, this->note("work"))); });
    this->_loop.terminate();
    other.join();
  });
  this->_loop.run();
  EXPECT_TRUE(this->_log.empty());
}

TYPED_TEST(RunLoopContract, TheWillTerminateHandlerRunsOnceAndBeforeAnythingIsUnwound) {
  this->_loop.setWillTerminateHandler(this->note("will terminate"));
  this->_loop.dispatchAsync([this] {
    this->_loop.terminate();
    this->_loop.terminate();
    this->_log.push_back("unwinding");
  });
  this->_loop.run();
  EXPECT_EQ(this->_log, (Log{"will terminate", "unwinding"}));
}

TYPED_TEST(RunLoopContract, IsTerminatingFromTheCallOfTerminateOn) {
  EXPECT_FALSE(this->_loop.isTerminating());
  this->_loop.terminate();
  EXPECT_TRUE(this->_loop.isTerminating());
}

TYPED_TEST(RunLoopContract, WorkQueuedByAnotherThreadWakesTheLoop) {
  std::thread other([this] {
    std::this_thread::sleep_for(5ms);  // long enough for the loop to fall asleep, mostly
    this->_loop.dispatchAsync(this->terminate());
  });
  this->_loop.run();
  other.join();
  EXPECT_TRUE(this->_loop.isTerminating());
}

TYPED_TEST(RunLoopContract, WorkOfManyThreadsAllRunsInEachThreadsOrder) {
  constexpr int count = 1000;
  std::vector<std::vector<int>> seen(4);
  int missing = static_cast<int>(seen.size()) * count;
  std::vector<std::thread> threads;
  for (auto& mine : seen) {
    threads.emplace_back([this, &mine, &missing] {
      for (int i = 0; i < count; ++i) {
        this->_loop.dispatchAsync([this, &mine, &missing, i] {
          mine.push_back(i);
          if (--missing == 0) {
            this->_loop.terminate();
          }
        });
      }
    });
  }
  this->_loop.run();
  for (auto& thread : threads) {
    thread.join();
  }
  for (const auto& mine : seen) {
    ASSERT_EQ(mine.size(), std::size_t{count});
    EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
  }
}

TYPED_TEST(RunLoopContract, TheDescriptorIsReadableWhileSomethingIsDue) {
  EXPECT_FALSE(this->isReadable());
  std::thread([this] { this->_loop.dispatchAsync(this->note("work")); }).join();
  EXPECT_TRUE(this->isReadable());
  EXPECT_TRUE(this->_loop.serve());
  EXPECT_FALSE(this->isReadable());
  EXPECT_EQ(this->_log, (Log{"work"}));
}

TYPED_TEST(RunLoopContract, TheDescriptorTellsAModalLoopOfWorkQueuedByTheMainThreadItself) {
  this->_loop.dispatchAsync([this] {
    EXPECT_TRUE(this->_loop.serve());
    this->_loop.dispatchAsync(this->terminate());  // as a button's callback does
    EXPECT_TRUE(this->isReadable());
    EXPECT_FALSE(this->_loop.serve());
  });
  this->_loop.run();
}

TYPED_TEST(RunLoopContract, DelayedWorkDoesNotMakeTheDescriptorReadableBeforeItIsDue) {
  this->_loop.dispatchAfter(1h, this->note("much later"));
  EXPECT_TRUE(this->_loop.serve());
  EXPECT_FALSE(this->isReadable());
}

TYPED_TEST(RunLoopContract, WorkIsDestroyedWithTheLoopWhenItNeverRan) {
  const auto token = std::make_shared<int>(0);
  {
    TypeParam loop;
    loop.dispatchAfter(1h, [token] {});
    EXPECT_EQ(token.use_count(), 2);
  }
  EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace quennel::test
