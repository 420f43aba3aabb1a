// request [--smoke]: what a request costs, from the moment it is sent to the new file. The helper
// against a service that does the same with bare sd-bus and system calls, on a private bus, on
// tmpfs.

#include <linux/magic.h>
#include <sys/statfs.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/request/Requester.h"
#include "bench/request/Service.h"
#include "bench/support/Figure.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {
namespace {

constexpr auto helperName = "net.brellow.QuennelHelper";
constexpr auto referenceName = "net.brellow.QuennelBench.Reference";

/// A folder on tmpfs where there is one: a disk's filesystem would be most of what is measured.
std::string fastFolder() {
  struct statfs status {};
  const bool isMemory = statfs("/dev/shm", &status) == 0 && status.f_type == TMPFS_MAGIC;
  return isMemory ? "/dev/shm" : "";
}

/// The helper's home: a template and the settings that name it. What follows the creation is
/// switched off, and the helper stays until it is stopped.
class Home {
 public:
  Home() {
    std::filesystem::create_directory(_folder / "targets");
    std::ofstream(templateFile()) << std::string(4096, 'q');
    std::ofstream(_folder / "Q4T7N2W9X5.net.brellow.Quennel.plist") << settings();
    if (test::Process({QUENNEL_CTL, "grant", targets()}, environment()).wait() != 0) {
      throw std::runtime_error("quennelctl cannot grant " + targets());
    }
  }

  std::string templateFile() const { return _folder / "template.txt"; }
  std::string targets() const { return _folder / "targets"; }

  test::Process::Environment environment() const {
    return {{"HOME", _folder.path()},
            {"XDG_CONFIG_HOME", _folder.path()},
            {"XDG_DATA_HOME", _folder / "data"},
            {"XDG_CACHE_HOME", _folder / "cache"}};
  }
  test::PrivateBus::Services services() const {
    return {{helperName, QUENNEL_HELPER},
            {referenceName, QUENNEL_REFERENCE " " + std::string(referenceName) + " " +
                                templateFile() + " New txt"}};
  }

 private:
  std::string settings() const {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
  <key>fileTemplates</key>
  <array><dict>
    <key>title</key><string>Text</string>
    <key>prefix</key><string>New</string>
    <key>suffix</key><string>txt</string>
    <key>filePath</key><string>)" +
           templateFile() + R"(</string>
    <key>executable</key><false/>
    <key>enabled</key><true/>
  </dict></array>
  <key>skipFilename</key><true/>
  <key>showFileOnCreation</key><false/>
  <key>openFileOnCreation</key><false/>
  <key>playSound</key><false/>
  <key>runInBackground</key><true/>
</dict></plist>
)";
  }

  test::TemporaryDirectory _folder{fastFolder()};
};

class RequestBenchmark {
 public:
  explicit RequestBenchmark(Report& report) : _report(report) {}
  RequestBenchmark(const RequestBenchmark&) = delete;
  RequestBenchmark& operator=(const RequestBenchmark&) = delete;
  ~RequestBenchmark() {
    _helper.stop();
    _reference.stop();
  }

  void run() {
    measureColdStart();
    measureLatency();
    measureThroughput();
    measureMemory();
    measureWakeUps();
  }

 private:
  void measureColdStart() {
    const auto coldStart = [](Service& service) {
      const double milliseconds = service.requestToFile();
      stop(service);
      return milliseconds;
    };
    const auto medians = compare(
        rounds(100), [&] { return coldStart(_helper); }, [&] { return coldStart(_reference); });
    add("request to file, helper not running", "ms", medians, 1.4);
  }

  static void stop(Service& service) {
    if (!service.stop()) {
      throw std::runtime_error("a service does not end when it is told to");
    }
  }

  void measureLatency() {
    const auto medians = compare(
        rounds(1000), [&] { return _helper.requestToFile() * 1000; },
        [&] { return _reference.requestToFile() * 1000; });
    add("request to file, helper running", "us", medians, 1.5);
  }

  void measureThroughput() {
    const int count = rounds(2000);
    const auto medians = compare(
        rounds(11), [&] { return _helper.requestsPerSecond(count); },
        [&] { return _reference.requestsPerSecond(count); });
    _report.add({"requests in a row",
                 "1/s",
                 medians.ours,
                 medians.reference,
                 {Goal::Kind::RatioAtLeast, 0.5}});
  }

  /// Each alone, since two that run share their pages, and after a few requests.
  void measureMemory() {
    std::vector<Memory> ours;
    std::vector<Memory> reference;
    for (int round = 0; round < rounds(5); ++round) {
      ours.push_back(memoryAlone(_helper, _reference));
      reference.push_back(memoryAlone(_reference, _helper));
    }
    const auto medianOf = [](const std::vector<Memory>& all, double Memory::*part) {
      std::vector<double> values;
      for (const auto& memory : all) {
        values.push_back(memory.*part);
      }
      return median(values);
    };
    const auto addPart = [&](const char* name, double Memory::*part) {
      add(name, "kB", {medianOf(ours, part), medianOf(reference, part)}, 1.6);
    };
    addPart("idle memory, proportional (PSS)", &Memory::proportional);
    addPart("idle memory, resident (RSS)", &Memory::resident);
    addPart("idle memory, private", &Memory::private_);
  }

  static Memory memoryAlone(Service& measured, Service& other) {
    stop(other);
    stop(measured);
    for (int i = 0; i < 3; ++i) {
      measured.requestToFile();
    }
    return measured.memory();
  }

  void measureWakeUps() {
    _helper.requestToFile();
    _reference.requestToFile();
    const int seconds = _report.isSmoke() ? 1 : 5;
    _report.add({"wake-ups in " + std::to_string(seconds) + " s of idling",
                 "",
                 _helper.wakeUpsWithin(seconds),
                 _reference.wakeUpsWithin(seconds),
                 // The watcher's thread looks once a second at whether it is still wanted.
                 {Goal::Kind::OursAtMost, static_cast<double>(seconds)}});
  }

  void add(const std::string& name, const std::string& unit, const Medians& medians, double limit) {
    _report.add({name, unit, medians.ours, medians.reference, {Goal::Kind::RatioAtMost, limit}});
  }

  int rounds(int measuring) const { return _report.isSmoke() ? 3 : measuring; }

  Report& _report;
  Home _home;
  test::PrivateBus _bus{_home.services(), _home.environment()};
  TargetFolders _folders{_home.targets()};
  Requester _requester{_bus.address()};
  Service _helper{helperName, _requester, _folders};
  Service _reference{referenceName, _requester, _folders};
};

}  // namespace
}  // namespace quennel::bench

int main(int argc, char** argv) {
  quennel::bench::Report report(argc, argv);
  try {
    quennel::bench::RequestBenchmark(report).run();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "request: %s\n", failure.what());
    return 1;
  }
  return report.exitStatus();
}
