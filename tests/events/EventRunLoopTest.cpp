#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/events/EventRunLoop.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

long countOfWaits() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_nvcsw;
}

bool becomesReadable(int descriptor, std::chrono::milliseconds within) {
  pollfd polled{descriptor, POLLIN, 0};
  return poll(&polled, 1, static_cast<int>(within.count())) == 1;
}

TEST(EventRunLoop, DelayedWorkRunsOnTime) {
  EventRunLoop loop;
  const auto start = Clock::now();
  auto ran = start;
  loop.dispatchAfter(20ms, [&] {
    ran = Clock::now();
    loop.terminate();
  });
  loop.run();
  EXPECT_GE(ran - start, 20ms);
  EXPECT_LT(ran - start, 1s);
}

TEST(EventRunLoop, ADelayCountsFromTheCallAndNotFromTheLastTurnOfTheLoop) {
  EventRunLoop loop;
  EXPECT_TRUE(loop.serve());
  std::this_thread::sleep_for(30ms);  // the user looks at a panel, the loop does not turn
  const auto start = Clock::now();
  auto ran = start;
  loop.dispatchAfter(20ms, [&] {
    ran = Clock::now();
    loop.terminate();
  });
  loop.run();
  EXPECT_GE(ran - start, 20ms);
}

TEST(EventRunLoop, TheDescriptorWakesAModalLoopForDelayedWorkQueuedBesideIt) {
  EventRunLoop loop;
  bool ran = false;
  loop.dispatchAfter(5ms, [&] { ran = true; });  // no turn of the loop between this and the wait
  EXPECT_TRUE(becomesReadable(loop.descriptor(), 10s));
  EXPECT_TRUE(loop.serve());
  EXPECT_TRUE(ran);
}

TEST(EventRunLoop, DelayedWorkOfAnotherThreadMovesTheNextWakeUpForward) {
  EventRunLoop loop;
  bool ranMuchLater = false;
  loop.dispatchAfter(1h, [&] { ranMuchLater = true; });
  std::thread other([&] { loop.dispatchAfter(10ms, [&] { loop.terminate(); }); });
  loop.run();
  other.join();
  EXPECT_FALSE(ranMuchLater);
}

TEST(EventRunLoop, DoesNotWakeUpWhileNothingIsDue) {
  EventRunLoop loop;
  long waitsBefore = 0;
  long waitsAfter = 0;
  loop.dispatchAfter(1h, [] {});
  loop.dispatchAfter(10ms, [&] { waitsBefore = countOfWaits(); });
  loop.dispatchAfter(300ms, [&] {
    waitsAfter = countOfWaits();
    loop.terminate();
  });
  loop.run();
  EXPECT_EQ(waitsAfter - waitsBefore, 1);  // the one that ended with this work
}

TEST(EventRunLoop, WorkQueuedByAnEventCallbackRunsOutsideTheDispatchAndMayServe) {
  EventRunLoop loop;
  const FileDescriptor event(eventfd(1, EFD_NONBLOCK));
  std::vector<std::string> log;
  struct Context {
    EventRunLoop& loop;
    std::vector<std::string>& log;
  } context{loop, log};
  sd_event_source* source = nullptr;
  const auto queueWork = [](sd_event_source*, int descriptor, std::uint32_t, void* data) {
    auto* const seen = static_cast<Context*>(data);
    eventfd_t ignored = 0;
    eventfd_read(descriptor, &ignored);
    seen->log.push_back("event");
    seen->loop.dispatchAsync([seen] {
      seen->loop.dispatchAsync([seen] { seen->log.push_back("served"); });
      EXPECT_TRUE(seen->loop.serve());
      seen->log.push_back("work ends");
      seen->loop.terminate();
    });
    return 0;
  };
  ASSERT_GE(sd_event_add_io(loop.handle(), &source, event.get(), POLLIN, queueWork, &context), 0);
  const EventSource owned(source);
  loop.run();
  EXPECT_EQ(log, (std::vector<std::string>{"event", "served", "work ends"}));
}

class EventRunLoopSignal : public testing::TestWithParam<int> {};

TEST_P(EventRunLoopSignal, TerminatesTheLoopThroughTheHandler) {
  EventRunLoop loop;
  bool handled = false;
  loop.setWillTerminateHandler([&] { handled = true; });
  loop.dispatchAsync([] { raise(GetParam()); });
  loop.run();
  EXPECT_TRUE(handled);
}

INSTANTIATE_TEST_SUITE_P(Each, EventRunLoopSignal, testing::Values(SIGTERM, SIGINT, SIGHUP));

}  // namespace
}  // namespace quennel::test
