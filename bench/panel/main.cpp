// panel [--smoke]: what it costs to show the panel that names a new file, from the request to the
// window on screen, beside a program that shows the toolkit's file dialog and does nothing else.
// And what is left of it in memory when it has closed.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "bench/panel/Screen.h"
#include "bench/request/Requester.h"
#include "bench/support/Figure.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/XServer.h"

namespace quennel::bench {
namespace {

constexpr auto helperName = "net.brellow.QuennelHelper";
constexpr auto panelTitle = "New Text";

/// The home of both: a template, a folder of files for the dialogs to list, and the settings.
class Home {
 public:
  Home() {
    std::filesystem::create_directory(documents());
    for (int number = 0; number < 100; ++number) {
      std::ofstream(documents() + "/file " + std::to_string(number) + ".txt") << number;
    }
    std::ofstream(_folder / "template.txt") << "Dear reader\n";
    std::ofstream(_folder / "Q4T7N2W9X5.net.brellow.Quennel.plist") << settings();
  }

  std::string documents() const { return _folder / "documents"; }
  test::Process::Environment environment() const {
    return {{"HOME", _folder.path()},
            {"XDG_CONFIG_HOME", _folder.path()},
            {"XDG_DATA_HOME", _folder / "data"},
            {"XDG_CACHE_HOME", _folder / "cache"},
            {"DISPLAY", std::getenv("DISPLAY")},
            {"QT_QPA_PLATFORM", "xcb"}};
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
           (_folder / "template.txt") + R"(</string>
    <key>enabled</key><true/>
  </dict></array>
  <key>skipFilename</key><false/>
  <key>runInBackground</key><true/>
</dict></plist>
)";
  }

  test::TemporaryDirectory _folder;
};

class PanelBenchmark {
 public:
  explicit PanelBenchmark(Report& report) : _report(report) {}
  PanelBenchmark(const PanelBenchmark&) = delete;
  PanelBenchmark& operator=(const PanelBenchmark&) = delete;
  ~PanelBenchmark() { stopHelper(); }

  void run() {
    addTime("request to panel, helper not running",
            compare(
                rounds(20), [&] { return coldPanel(); }, [&] { return bareDialog(); }));
    panel();
    addTime("request to panel, helper running",
            compare(
                rounds(40), [&] { return panel(); }, [&] { return bareDialog(); }));
    measureMemory();
  }

 private:
  double coldPanel() {
    const double milliseconds = panel();
    stopHelper();
    return milliseconds;
  }

  /// The time until the panel is on screen. It is cancelled then.
  double panel() {
    _screen.forgetThePast();
    const auto request = _requester.makeRequest(helperName, _home.documents());
    const double milliseconds = millisecondsOf([&] {
      _requester.send(request);
      _requester.flush();
      _screen.waitForWindow();
    });
    _display.waitForActiveWindow(panelTitle);
    _display.pressKey("Escape");
    _screen.waitUntilGone();
    _requester.takeAnswers();
    return milliseconds;
  }

  double bareDialog() {
    _screen.forgetThePast();
    std::optional<test::Process> program;
    const double milliseconds = millisecondsOf([&] {
      program.emplace(std::vector<std::string>{PANEL_REFERENCE, _home.documents()},
                      _home.environment());
      _screen.waitForWindow();
    });
    program->sendSignal(SIGKILL);
    _screen.waitUntilGone();
    return milliseconds;
  }

  void measureMemory() {
    stopHelper();
    panel();
    const double first = privateMemory();
    const int count = _report.isSmoke() ? 3 : 50;
    for (int shown = 1; shown < count; ++shown) {
      panel();
    }
    _report.add({"private memory that " + std::to_string(count) + " panels leave, over one",
                 "kB",
                 privateMemory() - first,
                 0,
                 {Goal::Kind::OursAtMost, 1024}});
  }

  double privateMemory() {
    _requester.ping(helperName);  // answered when the panel has been cleared away
    std::ifstream file("/proc/" + std::to_string(_requester.processOf(helperName)) +
                       "/smaps_rollup");
    double sum = 0;
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("Private_Clean:") || line.starts_with("Private_Dirty:")) {
        sum += std::stod(line.substr(line.find(':') + 1));
      }
    }
    return sum;
  }

  void stopHelper() {
    if (const int process = _requester.processOf(helperName)) {
      kill(process, SIGTERM);
      while (_requester.processOf(helperName) != 0) {
      }
    }
  }

  void addTime(const std::string& name, const Medians& medians) {
    _report.add({name, "ms", medians.ours, medians.reference, {Goal::Kind::RatioAtMost, 1.2}});
  }

  int rounds(int measuring) const { return _report.isSmoke() ? 3 : measuring; }

  Report& _report;
  Home _home;
  test::XServer _display;
  test::PrivateBus _bus{{{helperName, QUENNEL_HELPER}}, _home.environment()};
  Requester _requester{_bus.address()};
  Screen _screen;
};

}  // namespace
}  // namespace quennel::bench

int main(int argc, char** argv) {
  quennel::bench::Report report(argc, argv);
  if (const auto program = quennel::test::XServer::missingProgram()) {
    report.addNotMeasured("request to panel", "no " + *program);
    return 0;
  }
  try {
    quennel::bench::PanelBenchmark(report).run();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "panel: %s\n", failure.what());
    return 1;
  }
  return report.exitStatus();
}
