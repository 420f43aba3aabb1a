#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/keys/Keyboard.h"
#include "bench/support/Figure.h"
#include "platform/linux/base/FileDescriptor.h"
#include "tests/support/Deadline.h"
#include "tests/support/KeyboardDisplay.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {
namespace {

constexpr std::uint8_t keyN = 57;
constexpr std::uint8_t keyM = 58;

/// A display, a bus, a home with a script that names a folder, and in it the programs that wait for
/// keys: the helper with ten of them, and two others.
class World {
 public:
  World() {
    for (const std::string& name : {root / "folder", root / "config", scripts}) {
      std::filesystem::create_directories(name);
    }
    write(root / "note.txt", "Dear reader\n");
    write(script, "#!/bin/sh\nprintf '%s\\n' " + folder + "\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    bus.emplace(test::PrivateBus::Services{{"net.brellow.QuennelHelper", QUENNEL_HELPER}},
                environment());
    makeTemplates();
    start();
  }

  /// Microseconds from the press of the key to the file.
  double pressToFile(std::uint8_t key, const std::string& name) {
    FileDescriptor watch(inotify_init1(IN_CLOEXEC));
    inotify_add_watch(watch.get(), folder.c_str(), IN_CREATE | IN_MOVED_TO);
    const auto start = std::chrono::steady_clock::now();
    keyboard.press(key);
    while (!std::filesystem::exists(folder + "/" + name)) {
      pollfd readable{watch.get(), POLLIN, 0};
      std::array<char, 4096> events;
      if (poll(&readable, 1, 10'000) <= 0 || read(watch.get(), events.data(), events.size()) < 0) {
        throw std::runtime_error("no file comes of a key");
      }
    }
    const auto end = std::chrono::steady_clock::now();
    keyboard.release(key);
    settle();
    std::filesystem::remove(folder + "/" + name);
    return std::chrono::duration<double, std::micro>(end - start).count();
  }

  double helperMemory() const { return memory(helper->pid()); }
  double otherMemory() const { return memory(other->pid()); }

 private:
  test::Process::Environment environment() const {
    return {{"HOME", root / "home"},
            {"XDG_CONFIG_HOME", root / "config"},
            {"XDG_DATA_HOME", root / "home/.local/share"},
            {"DBUS_SESSION_BUS_ADDRESS", bus ? bus->address() : ""},
            {"DISPLAY", display.name()},
            {"WAYLAND_DISPLAY", ""},
            {"XDG_SESSION_TYPE", ""},
            {"LC_ALL", "C.UTF-8"}};
  }

  static void write(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
  }

  /// Answers what the tool writes to its standard error.
  std::string tool(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), QUENNEL_CTL);
    test::Process process(arguments, environment());
    if (process.wait() != 0) {
      throw std::runtime_error("quennelctl: " + process.errorOutput());
    }
    return process.errorOutput();
  }

  void makeTemplates() const {
    for (int i = 0; i < 10; ++i) {
      const std::string key = i == 0 ? "Ctrl+Alt+N" : "Ctrl+Alt+F" + std::to_string(i);
      tool({"template", "add", root / "note.txt", "--shortcut", key});
    }
    for (const char* const name : {"showFileOnCreation", "playSound", "openFileOnCreation"}) {
      tool({"set", name, "no"});
    }
    tool({"set", "skipFilename", "yes"});
    tool({"grant", folder});
    // The tool has had the bus start a helper, to see whether the keys work.
    if (!test::eventually([this] {
          return tool({"notify", "quit"}).starts_with("The helper is not");
        })) {
      throw std::runtime_error("the helper does not leave");
    }
  }

  void start() {
    reference.emplace(std::vector<std::string>{QUENNEL_REFERENCE, std::to_string(keyM), script,
                                               root / "note.txt", "reference.txt"},
                      environment());
    std::string bindings;
    for (int i = 1; i <= 10; ++i) {
      bindings += "super + F" + std::to_string(i) + "\n\ttrue\n";
    }
    write(root / "sxhkdrc", bindings);
    other.emplace(std::vector<std::string>{"sxhkd", "-c", root / "sxhkdrc"}, environment());
    helper.emplace(std::vector<std::string>{QUENNEL_HELPER}, environment());
    if (!reference->waitForOutput("ready") || !test::eventually([this] { return keysWork(); })) {
      throw std::runtime_error("the programs do not start");
    }
  }

  bool keysWork() const {
    test::Process process({QUENNEL_CTL, "shortcuts", "--plain"}, environment());
    const std::string output = process.wait() == 0 ? process.output() : "";
    std::size_t count = 0;
    for (auto at = output.find("\tyes"); at != std::string::npos;
         at = output.find("\tyes", at + 1)) {
      ++count;
    }
    return count == 10;
  }

  /// What follows the file: each waits for its next key.
  static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

  /// Kilobytes of private memory.
  static double memory(int process) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/smaps_rollup");
    double kilobytes = 0;
    for (std::string word; lines >> word;) {
      if (word.starts_with("Private_")) {
        double value = 0;
        lines >> value;
        kilobytes += value;
      }
    }
    return kilobytes;
  }

  const test::TemporaryDirectory root;
  const std::string folder = root / "folder";
  const std::string scripts = root / "home/Library/Application Scripts/net.brellow.QuennelHelper";
  const std::string script = scripts + "/QuennelHelper.sh";
  const test::KeyboardDisplay display;
  std::optional<test::PrivateBus> bus;
  Keyboard keyboard{display.name()};
  std::optional<test::Process> reference;
  std::optional<test::Process> other;
  std::optional<test::Process> helper;
};

void measure(Report& report) {
  World world;
  const int samples = report.isSmoke() ? 2 : 40;
  const auto of = [&](std::uint8_t key, const std::string& name) {
    return [&world, samples, key, name] {
      std::vector<double> values;
      for (int i = 0; i < samples; ++i) {
        values.push_back(world.pressToFile(key, name));
      }
      return median(values);
    };
  };
  const auto found =
      compare(report.isSmoke() ? 1 : 9, of(keyN, "note.txt"), of(keyM, "reference.txt"));
  report.add({"keys: press to file, beside bare xcb",
              "us",
              found.ours,
              found.reference,
              {Goal::Kind::RatioAtMost, 1.2}});
  report.add({"keys: memory with ten keys, beside sxhkd",
              "kB",
              world.helperMemory(),
              world.otherMemory(),
              {Goal::Kind::OursAtMost, 4096}});
}

}  // namespace
}  // namespace quennel::bench

int main(int argumentCount, char** arguments) {
  quennel::bench::Report report(argumentCount, arguments);
  quennel::bench::measure(report);
  return report.exitStatus();
}
