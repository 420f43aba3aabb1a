#pragma once

#include <map>
#include <memory>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// A session bus of the test's own. It ends with this object, and so do the connections to it.
///
/// Begin a test that needs one with
/// `if (!PrivateBus::isAvailable()) GTEST_SKIP() << PrivateBus::whatIsMissing;`
class PrivateBus {
 public:
  static constexpr auto whatIsMissing = "dbus-daemon is not installed";
  static bool isAvailable() { return isInstalled("dbus-daemon"); }

  /// What the bus starts on demand: bus name to command line, absolute program path first.
  using Services = std::map<std::string, std::string>;

  /// Starts the bus; services that it activates see `environment` on top of this process's own.
  explicit PrivateBus(const Services& services = {}, const Process::Environment& environment = {});

  /// As DBUS_SESSION_BUS_ADDRESS has it.
  const std::string& address() const { return _address; }
  pid_t pid() const { return _daemon->pid(); }

  /// Ends the bus, as when the session ends.
  void stop();

 private:
  void writeConfiguration() const;
  void writeService(const std::string& name, const std::string& command) const;

  TemporaryDirectory _folder;
  std::string _address;
  std::unique_ptr<Process> _daemon;
};

}  // namespace quennel::test
