#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/linux/bundle/PrefixBundle.h"
#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/desktop/CanberraSound.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/keys/BusHotKeyList.h"
#include "platform/linux/keys/SessionHotKeys.h"
#include "platform/linux/mounts/MountTableEvents.h"
#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "platform/linux/scope/ConfinedFileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "platform/linux/tasks/LinuxUserScripts.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

constexpr auto help =
    "usage: quennelhelper [URL...]\n"
    "\n"
    "Makes new files from templates. Each URL asks for one file: its path is the folder, its "
    "query\n"
    "the template's index (quennel:///home/me/Documents?0). Without a URL it waits for requests "
    "on\n"
    "the session bus and leaves by itself after a while. Settings: quennelctl --help.\n";

/// Everything the helper is made of, in the order in which the parts need each other.
class Helper {
 public:
  Helper(EventRunLoop& runLoop, SessionBus& bus, BusURLEvents& urlEvents, BusHotKeyList& hotKeyList)
      : _runLoop(runLoop),
        _hotKeyList(hotKeyList),
        _sharedDefaults(PropertyListUserDefaults::pathForDomain(sharedSuiteName)),
        _standardDefaults(PropertyListUserDefaults::pathForDomain(_bundle.bundleIdentifier())),
        _workspace(runLoop, bus),
        _volumeEvents(runLoop),
        _notificationCenter(bus),
        _userInterface(runLoop, _bundle, _bundle.userInterfaceModulePath()),
        _userScripts(_bundle),
        _hotKeyCenter(runLoop, openHotKeysOfSession(bus, _bundle.bundleIdentifier(),
                                                    _bundle.hotKeyModulePath())),
        _sound(_bundle),
        _delegate({.runLoop = runLoop,
                   .sharedDefaults = _sharedDefaults,
                   .standardDefaults = _standardDefaults,
                   .mainBundle = _bundle,
                   .fileManager = _fileManager,
                   .securityScope = _securityScope,
                   .workspace = _workspace,
                   .volumeEvents = _volumeEvents,
                   .workspaceNotificationCenter = _workspaceNotificationCenter,
                   .kernelQueues = _kernelQueues,
                   .distributedNotificationCenter = _notificationCenter,
                   .urlEvents = urlEvents,
                   .userInterface = _userInterface,
                   .userScripts = _userScripts,
                   .hotKeyCenter = _hotKeyCenter,
                   .sound = _sound}) {}

  void run() {
    _runLoop.setWillTerminateHandler([this] { _delegate.applicationWillTerminate(); });
    _delegate.applicationWillFinishLaunching();
    _delegate.applicationDidFinishLaunching();
    _hotKeyList.setCenter(_hotKeyCenter);
    _runLoop.run();
  }

  /// A request that came too late for the loop.
  void handleLate(const std::string& url) {
    _delegate.handleURLEvent({.directObject = url, .activationToken = {}});
  }

 private:
  EventRunLoop& _runLoop;
  BusHotKeyList& _hotKeyList;
  PrefixBundle _bundle;
  PropertyListUserDefaults _sharedDefaults;
  PropertyListUserDefaults _standardDefaults;
  PosixFileManager _allFiles;
  LandlockSecurityScope _securityScope;
  ConfinedFileManager _fileManager{_allFiles, _securityScope};
  DesktopWorkspace _workspace;
  LocalNotificationCenter _workspaceNotificationCenter;
  InotifyKernelQueueFactory _kernelQueues;
  MountTableEvents _volumeEvents;
  BusDistributedNotificationCenter _notificationCenter;
  LazyUserInterface _userInterface;
  LinuxUserScripts _userScripts;
  DesktopHotKeyCenter _hotKeyCenter;
  CanberraSound _sound;
  AppDelegate _delegate;
};

void serve(const std::vector<std::string>& urls) {
  EventRunLoop runLoop;
  SessionBus bus(runLoop);
  BusHotKeyList hotKeyList(bus);
  BusURLEvents urlEvents(bus);
  const auto role = urlEvents.claim(urls);
  if (role == BusURLEvents::Role::HandedOver || role == BusURLEvents::Role::Terminated) {
    return;
  }
  Helper helper(runLoop, bus, urlEvents, hotKeyList);
  helper.run();
  for (const auto& url : urlEvents.release()) {
    helper.handleLate(url);
  }
}

int main(int argc, char** argv) {
  // Threads come for a moment, one at a time: heaps of their own would only take time and memory.
  mallopt(M_ARENA_MAX, 1);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  for (const auto& argument : arguments) {
    if (argument == "--help" || argument == "-h") {
      std::fputs(help, stdout);
      return 0;
    }
    if (argument == "--version") {
      std::puts("quennelhelper " QUENNEL_VERSION);
      return 0;
    }
    if (argument.rfind('-', 0) == 0) {
      std::fprintf(stderr, "quennelhelper: unknown option %s\n%s", argument.c_str(), help);
      return 2;
    }
  }
  try {
    serve(arguments);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "quennelhelper: %s\n", exception.what());
    return 1;
  }
}

}  // namespace
}  // namespace quennel

int main(int argc, char** argv) { return quennel::main(argc, argv); }
