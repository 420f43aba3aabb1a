#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/FileError.h"
#include "platform/linux/base/FileLock.h"
#include "platform/linux/settings/PropertyListFile.h"
#include "tests/settings/SettingsTest.h"

namespace quennel::test {
namespace {

using std::chrono::milliseconds;

/// Runs `work` in a process of its own, which exits with 0 when it answers true.
pid_t inProcess(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(work() ? 0 : 1);
  }
  return child;
}

int statusOf(pid_t child) {
  int status = -1;
  return waitpid(child, &status, 0) == child ? status : -1;
}

class Concurrency : public SettingsTest {};

bool countUp(const std::string& path, int times) {
  PropertyListUserDefaults defaults(path);
  for (int count = 0; count < times; ++count) {
    const bool isStored = defaults.updateObjectForKey(
        "count", [](auto value) { return PropertyList((value ? value->integerValue() : 0) + 1); });
    if (!isStored) {
      return false;
    }
  }
  return true;
}

}  // namespace

TEST_F(Concurrency, TwoProcessesThatWriteDifferentKeysLoseNothing) {
  constexpr int count = 50;
  const auto writeKeys = [&](const std::string& prefix) {
    return inProcess([=, path = path] {
      PropertyListUserDefaults own(path);
      for (int number = 0; number < count; ++number) {
        own.setObject(number, prefix + std::to_string(number));
        if (!own.synchronize()) {
          return false;
        }
      }
      return true;
    });
  };
  const pid_t first = writeKeys("a");
  const pid_t second = writeKeys("b");
  EXPECT_EQ(statusOf(first), 0);
  EXPECT_EQ(statusOf(second), 0);
  EXPECT_EQ(dictionaryWithContentsOfFile(path)->size(), 2U * count);
}

TEST_F(Concurrency, FourProcessesThatCountLoseNoIncrement) {
  std::vector<pid_t> children;
  for (int process = 0; process < 4; ++process) {
    children.push_back(inProcess([path = path] { return countUp(path, 50); }));
  }
  for (const pid_t child : children) {
    EXPECT_EQ(statusOf(child), 0);
  }
  EXPECT_EQ(defaults.objectForKey("count"), PropertyList(200));
}

TEST_F(Concurrency, AReaderNeverSeesAPartOfAFile) {
  ASSERT_TRUE(store(std::string(100'000, 'x'), "padding"));
  const pid_t writer = inProcess([path = path] { return countUp(path, 100); });
  int status = 0;
  int reads = 0;
  while (waitpid(writer, &status, WNOHANG) == 0) {
    ASSERT_TRUE(dictionaryWithContentsOfFile(path));
    ++reads;
  }
  EXPECT_EQ(status, 0);
  EXPECT_GT(reads, 0);
  EXPECT_EQ(defaults.objectForKey("count"), PropertyList(100));
}

TEST_F(Concurrency, AKilledWriterLeavesAWholeFileAndNoLock) {
  std::int64_t last = 0;
  for (int round = 0; round < 20; ++round) {
    const pid_t writer = inProcess([path = path] { return countUp(path, 1'000'000); });
    // Some progress first, so that every round kills it at work.
    while (defaults.objectForKey("count").value_or(0).integerValue() <= last) {
      std::this_thread::yield();
    }
    kill(writer, SIGKILL);
    statusOf(writer);
    const auto contents = dictionaryWithContentsOfFile(path);
    ASSERT_TRUE(contents);
    last = contents->at("count").integerValue();
  }
  EXPECT_TRUE(countUp(path, 1));
  EXPECT_EQ(defaults.objectForKey("count"), PropertyList(last + 1));
}

TEST_F(Concurrency, ALockThatIsNotGivenBackIsAnErrorAfterTheDeadline) {
  const FileLock held(folder / "lock", milliseconds(0));
  const auto start = std::chrono::steady_clock::now();
  try {
    const FileLock second(folder / "lock", milliseconds(50));
    FAIL() << "locked twice";
  } catch (const FileError& error) {
    EXPECT_EQ(error.code().value(), ETIMEDOUT);
    EXPECT_EQ(error.path(), folder / "lock");
  }
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(50));
}

TEST_F(Concurrency, ALockIsTakenAsSoonAsItIsGivenBack) {
  auto held = std::make_unique<FileLock>(folder / "lock", milliseconds(0));
  std::thread releasing([&] { held.reset(); });
  EXPECT_NO_THROW(FileLock(folder / "lock", std::chrono::minutes(1)));
  releasing.join();
}

TEST_F(Concurrency, ALockFileThatWasRemovedMeanwhileGuardsNothing) {
  FileDescriptor removed(open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(removed.get(), LOCK_EX), 0);
  std::thread removing([&] {
    std::this_thread::yield();
    unlink((folder / "lock").c_str());
    removed.reset();
  });
  const FileLock lock(folder / "lock", std::chrono::minutes(1));
  removing.join();
  EXPECT_THROW(FileLock(folder / "lock", milliseconds(0)), FileError);
}

}  // namespace quennel::test
