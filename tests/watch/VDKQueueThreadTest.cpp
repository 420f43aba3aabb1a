#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeKernelQueue.h"
#include "tests/support/FakeRunLoop.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/TemporaryDirectory.h"
#include "watch/VDKQueue.h"

namespace quennel::test {
namespace {

class ThreadNotingWorkspace final : public FakeWorkspace {
 public:
  using FakeWorkspace::FakeWorkspace;

  std::atomic<std::thread::id> thread;

  void noteFileSystemChanged(std::string_view) override { thread = std::this_thread::get_id(); }
};

/// A watcher with its real thread, on real files. That thread lives as long as the process; the end
/// of the queue factory sees to it that it leaves the test's objects alone.
class AVDKQueueWithItsThread : public ::testing::Test, protected VDKQueueDelegate {
 protected:
  AVDKQueueWithItsThread() { _watcher->setDelegate(this); }

  void receivedNotification(VDKQueue&, std::string_view, std::string_view path) override {
    ++_toldCount;
    _lastPath = path;
    EXPECT_EQ(std::this_thread::get_id(), _mainThread);
  }

  void append(const std::string& path) { std::ofstream(path, std::ios::app) << "x"; }
  bool isToldOf(const std::string& path) {
    return _runLoop.runUntil([&] { return _lastPath == path; });
  }

  TemporaryDirectory _folder;
  CallLog _log;
  FakeRunLoop _runLoop;
  ThreadNotingWorkspace _workspace{_log};
  LocalNotificationCenter _center;
  const std::thread::id _mainThread = std::this_thread::get_id();
  int _toldCount = 0;
  std::string _lastPath;
  InotifyKernelQueueFactory _factory;
  std::shared_ptr<VDKQueue> _watcher = VDKQueue::create({_factory, _runLoop, _workspace, _center});
};

TEST_F(AVDKQueueWithItsThread, TellsTheDelegateOnTheMainThreadAndTheWorkspaceOnItsOwn) {
  append(_folder / "file");
  _watcher->addPath(_folder / "file");
  append(_folder / "file");
  ASSERT_TRUE(isToldOf(_folder / "file"));
  EXPECT_NE(_workspace.thread.load(), std::thread::id());
  EXPECT_NE(_workspace.thread.load(), _mainThread);
}

TEST_F(AVDKQueueWithItsThread, GoesOnWaitingWhenAllPathsAreRemoved) {
  append(_folder / "file");
  _watcher->addPath(_folder / "file");
  _watcher->removeAllPaths();
  append(_folder / "other");
  _watcher->addPath(_folder / "other");
  append(_folder / "other");
  EXPECT_TRUE(isToldOf(_folder / "other"));
}

TEST_F(AVDKQueueWithItsThread, IsNeverDestroyedOnceTheThreadHasStarted) {
  append(_folder / "file");
  _watcher->addPath(_folder / "file");
  const std::weak_ptr<VDKQueue> watcher = _watcher;
  _watcher.reset();
  append(_folder / "file");
  ASSERT_TRUE(isToldOf(_folder / "file"));
  EXPECT_FALSE(watcher.expired());
}

TEST(AVDKQueueThread, ComesBackToItsWaitWhateverTheLastOneAnswered) {
  CallLog log;
  FakeRunLoop runLoop;
  FakeWorkspace workspace(log);
  LocalNotificationCenter center;
  FakeKernelQueueFactory factory;
  FakeKernelQueue& kernel = factory.queue();
  kernel.addFile("/file");
  for (const int answer : {0, -1, 0}) {
    kernel.answerNextWait(answer);
  }
  const auto watcher = VDKQueue::create({factory, runLoop, workspace, center});
  watcher->addPath("/file");
  ASSERT_TRUE(runLoop.runUntil([&] { return kernel.timeouts().size() >= 4; }));
  for (const auto timeout : kernel.timeouts()) {
    EXPECT_EQ(timeout, std::chrono::seconds(1));
  }
}

/// Half a second, or as many seconds as QUENNEL_STRESS_SECONDS says.
std::chrono::duration<double> stressDuration() {
  const char* seconds = std::getenv("QUENNEL_STRESS_SECONDS");
  return std::chrono::duration<double>(seconds ? std::atof(seconds) : 0.5);
}

class AVDKQueueUnderStress : public AVDKQueueWithItsThread {
 protected:
  static constexpr int fileCount = 16;

  std::string file(int number) const { return _folder / ("file" + std::to_string(number)); }

  /// Adds, widens, counts and removes: the threads get in each other's way.
  void addAndRemove(int thread) {
    for (int i = thread; !_stop; ++i) {
      const std::string path = file(i % fileCount);
      _watcher->addPath(path, i % 2 == 0 ? 35 : 64);
      _watcher->addPathToQueue(path, 127);
      EXPECT_LE(_watcher->numberOfWatchedPaths(), std::size_t{fileCount});
      _watcher->removePath(i % 3 == 0 ? path : file((i + 5) % fileCount));
      if (i % 100 == 0) {
        _watcher->removeAllPaths();
      }
    }
  }

  void change() {
    for (int i = 0; !_stop; ++i) {
      const std::string path = file(i % fileCount);
      append(path);
      if (i % 10 == 0) {
        std::filesystem::rename(path, path + ".renamed");
        std::filesystem::rename(path + ".renamed", path);
      }
      if (i % 50 == 0) {
        std::filesystem::remove(path);
        append(path);
      }
    }
  }

  std::atomic<bool> _stop = false;
};

TEST_F(AVDKQueueUnderStress, HoldsWhileEightThreadsAddAndRemovePathsAndEventsFlow) {
  for (int i = 0; i < fileCount; ++i) {
    append(file(i));
  }
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this, i] { addAndRemove(i); });
  }
  threads.emplace_back([this] { change(); });

  const auto end = std::chrono::steady_clock::now() + stressDuration();
  const auto isOver = [&] { return std::chrono::steady_clock::now() >= end && _toldCount > 0; };
  EXPECT_TRUE(_runLoop.runUntil(isOver, std::chrono::minutes(10)));
  _stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }

  _watcher->removeAllPaths();
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 0U);
  append(_folder / "last");
  _watcher->addPath(_folder / "last");
  append(_folder / "last");
  EXPECT_TRUE(isToldOf(_folder / "last"));
}

}  // namespace
}  // namespace quennel::test
