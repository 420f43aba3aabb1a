#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Deadline.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/XServer.h"

namespace quennel::test {

/// A display, a session bus and a fresh home folder, on which one file manager runs.
class FileManagerSession {
 public:
  /// What is run, a name or a path; its file name is also what its windows say they are.
  using FileManager = std::string;

  /// The first program that the machine lacks for this; nothing when all are there.
  static std::optional<std::string> missingProgram(const FileManager& fileManager);

  /// `patience` is how long it waits for a window.
  explicit FileManagerSession(FileManager fileManager,
                              Deadline::Clock::duration patience = Deadline::standard);

  const std::string& home() const { return _home.path(); }
  const XServer& server() const { return _server; }

  /// Makes a folder of that name in the home folder; answers its path.
  std::string makeFolder(const std::string& name) const;
  /// Makes a folder and waits until the file manager's window of it is in front; answers the
  /// window.
  std::string openNewFolder(const std::string& name);
  /// Waits until the file manager has a new window in front; answers the window. One that shows
  /// none is started once more; then what it wrote is in the exception.
  std::string openFolder(const std::string& path);

  void activate(const std::string& window) const;
  void minimize(const std::string& window) const;
  /// The process of the file manager that a window belongs to.
  pid_t processOf(const std::string& window) const;
  /// Runs another program and waits until its window is in front.
  Process openOtherProgram() const;
  /// How many windows there are.
  std::size_t countWindows() const;

 private:
  std::optional<std::string> waitForNewWindow(const std::string& before) const;
  bool isOfFileManager(const std::string& window) const;

  FileManager _fileManager;
  Deadline::Clock::duration _patience;
  TemporaryDirectory _home;
  XServer _server;
  PrivateBus _bus;
  EnvironmentVariable _homeVariable{"HOME", _home.path()};
  EnvironmentVariable _runtimeVariable{"XDG_RUNTIME_DIR", _home.path()};
  EnvironmentVariable _busVariable{"DBUS_SESSION_BUS_ADDRESS", _bus.address()};
  EnvironmentVariable _waylandVariable{"WAYLAND_DISPLAY", std::nullopt};
  EnvironmentVariable _configurationVariable{"XDG_CONFIG_HOME", std::nullopt};
  EnvironmentVariable _dataVariable{"XDG_DATA_HOME", std::nullopt};
  EnvironmentVariable _cacheVariable{"XDG_CACHE_HOME", std::nullopt};
  // An animation that is drawn in software leaves GTK no time for anything else.
  EnvironmentVariable _rendererVariable{"GSK_RENDERER", "cairo"};
  std::vector<Process> _processes;
};

}  // namespace quennel::test
