#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/support/Figure.h"
#include "bench/watch/OtherWatchers.h"
#include "bench/watch/Watchers.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {
namespace {

using MakeWatcher = std::function<std::unique_ptr<Watcher>()>;

std::vector<std::string> makeFiles(const test::TemporaryDirectory& folder, int count) {
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back(folder / ("file" + std::to_string(i)));
    std::ofstream(paths.back()) << "text";
  }
  return paths;
}

void appendTo(const std::string& path, int times) {
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
  for (int i = 0; i < times; ++i) {
    if (::write(file.get(), "x", 1) != 1) {
      std::abort();
    }
  }
}

/// Microseconds from a write to the delegate, over files here and there.
double latency(const MakeWatcher& make, const std::vector<std::string>& paths, int samples) {
  const auto watcher = make();
  watcher->add(paths);
  std::vector<double> values;
  for (int i = 0; i < samples; ++i) {
    const auto& path = paths[static_cast<std::size_t>(i) * 7919 % paths.size()];
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    watcher->arrivals().waitForSilence();
    const int before = watcher->arrivals().count();
    const auto start = Arrivals::Clock::now();
    if (::write(file.get(), "x", 1) != 1) {
      std::abort();
    }
    const auto seen = watcher->arrivals().waitForMoreThan(before);
    values.push_back(std::chrono::duration<double, std::micro>(seen - start).count());
  }
  return median(values);
}

double cpuMilliseconds(int whose) {
  rusage usage{};
  ::getrusage(whose, &usage);
  const auto milliseconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

/// What all threads but this one, which appends, spend.
double cpuOfAppends(const MakeWatcher& make, const std::string& path, int appends) {
  const auto watcher = make();
  watcher->add({path});
  const auto others = [] { return cpuMilliseconds(RUSAGE_SELF) - cpuMilliseconds(RUSAGE_THREAD); };
  const double before = others();
  appendTo(path, appends);
  watcher->arrivals().waitForSilence();
  return others() - before;
}

double addingTime(const MakeWatcher& make, const std::vector<std::string>& paths) {
  const auto watcher = make();
  return millisecondsOf([&] { watcher->add(paths); });
}

double privateBytes() {
  std::ifstream lines("/proc/self/smaps_rollup");
  double kilobytes = 0;
  for (std::string word; lines >> word;) {
    if (word == "Private_Clean:" || word == "Private_Dirty:") {
      double value = 0;
      lines >> value;
      kilobytes += value;
    }
  }
  return kilobytes * 1024;
}

/// Private memory for each path beyond the path itself, in a process of its own.
double memoryPerPath(const MakeWatcher& make, const std::vector<std::string>& paths) {
  int ends[2];
  if (::pipe(ends) != 0) {
    std::abort();
  }
  const pid_t child = ::fork();
  if (child == 0) {
    const auto watcher = make();
    const double before = privateBytes();
    watcher->add(paths);
    const double perPath = (privateBytes() - before) / static_cast<double>(paths.size());
    const double value = perPath - static_cast<double>(paths.back().size() + 1);
    _exit(::write(ends[1], &value, sizeof value) == sizeof value ? 0 : 1);
  }
  double value = 0;
  const bool isRead = ::read(ends[0], &value, sizeof value) == sizeof value;
  ::waitpid(child, nullptr, 0);
  ::close(ends[0]);
  ::close(ends[1]);
  return isRead ? value : -1;
}

void measure(Report& report, const MakeWatcher& ours, const MakeWatcher& bare) {
  const test::TemporaryDirectory folder("/dev/shm");
  const int most = report.isSmoke() ? 200 : 50'000;
  const auto paths = makeFiles(folder, most);
  const Goal atMost12{Goal::Kind::RatioAtMost, 1.2};
  for (const int count : report.isSmoke() ? std::vector{1, 200} : std::vector{1, 1000, 50'000}) {
    const std::vector some(paths.begin(), paths.begin() + count);
    const auto of = [&](const MakeWatcher& make) {
      return [&] { return latency(make, some, report.isSmoke() ? 5 : 100); };
    };
    const auto found = compare(report.isSmoke() ? 1 : 7, of(ours), of(bare));
    report.add({"watch: write to delegate, files " + std::to_string(count), "us", found.ours,
                found.reference, atMost12});
  }
  const int appends = report.isSmoke() ? 1000 : 100'000;
  const auto cpu = compare(
      report.isSmoke() ? 1 : 9, [&] { return cpuOfAppends(ours, paths[0], appends); },
      [&] { return cpuOfAppends(bare, paths[0], appends); });
  report.add({"watch: CPU for 100000 appends", "ms", cpu.ours, cpu.reference, atMost12});
  const auto adding = compare(
      report.isSmoke() ? 1 : 7, [&] { return addingTime(ours, paths); },
      [&] { return addingTime(bare, paths); });
  report.add({"watch: add 50000 files",
              "ms",
              adding.ours,
              adding.reference,
              {Goal::Kind::RatioAtMost, 1.5}});
}

/// Beside what a program would otherwise use.
void measureBeside(Report& report, const MakeWatcher& ours, const MakeWatcher& other,
                   const std::string& name, double limit) {
  const test::TemporaryDirectory folder("/dev/shm");
  const auto paths = makeFiles(folder, report.isSmoke() ? 200 : 50'000);
  const int rounds = report.isSmoke() ? 1 : 3;
  const Goal goal{Goal::Kind::RatioAtMost, limit};
  const auto latencyOf = [&](const MakeWatcher& make) {
    return [&] { return latency(make, paths, report.isSmoke() ? 5 : 100); };
  };
  const auto seen = compare(rounds, latencyOf(ours), latencyOf(other));
  report.add({"watch: write to delegate, beside " + name, "us", seen.ours, seen.reference, goal});
  const auto added = compare(
      rounds, [&] { return addingTime(ours, paths); }, [&] { return addingTime(other, paths); });
  report.add({"watch: add files, beside " + name, "ms", added.ours, added.reference, goal});
}

void measureMemory(Report& report, const MakeWatcher& bare) {
  const test::TemporaryDirectory folder("/dev/shm");
  const auto paths = makeFiles(folder, report.isSmoke() ? 200 : 50'000);
  const MakeWatcher ours = [] {
    static EventRunLoop runLoop;
    return std::make_unique<OurWatcher>(runLoop);
  };
  report.add({"watch: private memory per path of 50000",
              "B",
              memoryPerPath(ours, paths),
              memoryPerPath(bare, paths),
              {Goal::Kind::OursAtMost, 300}});
}

}  // namespace
}  // namespace quennel::bench

int main(int argumentCount, char** arguments) {
  using namespace quennel;
  using namespace quennel::bench;
  Report report(argumentCount, arguments);
  const MakeWatcher bare = [] { return std::make_unique<BareWatcher>(); };
  measureMemory(report, bare);  // forks, so before there are threads
  const QCoreApplication application(argumentCount, arguments);
  EventRunLoop runLoop;
  const MakeWatcher ours = [&] { return std::make_unique<OurWatcher>(runLoop); };
  std::thread measuring([&] {
    measure(report, ours, bare);
    measureBeside(report, ours, std::make_unique<QtWatcher>, "QFileSystemWatcher", 1);
    measureBeside(report, ours, std::make_unique<InotifywaitWatcher>, "inotifywait", 1.5);
    runLoop.dispatchAsync([&] { runLoop.terminate(); });
  });
  runLoop.run();
  measuring.join();
  return report.exitStatus();
}
