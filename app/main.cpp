#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/linux/bundle/PrefixBundle.h"
#include "platform/linux/bus/BusApplicationActions.h"
#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/HandOver.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/desktop/CanberraSound.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/keys/BusHotKeyList.h"
#include "platform/linux/keys/DisplayFollower.h"
#include "platform/linux/keys/SessionHotKeys.h"
#include "platform/linux/mounts/MountTableEvents.h"
#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "platform/linux/processes/BackgroundProgram.h"
#include "platform/linux/processes/EnvironmentRoom.h"
#include "platform/linux/processes/Restart.h"
#include "platform/linux/scope/ConfinedFileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "platform/linux/tasks/LinuxUserScripts.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "platform/values/URL.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

constexpr auto help =
    "usage: quennelhelper [URL...]\n"
    "       quennelhelper --open [URL...]\n"
    "\n"
    "Makes new files from templates. Each URL asks for one file: its path is the folder, its "
    "query\n"
    "the template's index (quennel:///home/me/Documents?0). Without a URL it waits for requests "
    "on\n"
    "the session bus and leaves by itself after a while. With --open it hands the URLs to the "
    "session's\n"
    "helper, which is started if need be, and ends at once. Settings: quennelctl --help.\n";

/// Where the toolkit looks for the token of a request; set for as long as it shows something.
constexpr std::initializer_list<const char*> activationTokenVariables{"XDG_ACTIVATION_TOKEN",
                                                                      "DESKTOP_STARTUP_ID"};

/// Everything the helper is made of, in the order in which the parts need each other.
class Helper {
 public:
  Helper(EventRunLoop& runLoop, SessionBus& bus,
         BusDistributedNotificationCenter& notificationCenter, BusURLEvents& urlEvents,
         BusApplicationActions& actions, BusHotKeyList& hotKeyList)
      : _runLoop(runLoop),
        _hotKeyList(hotKeyList),
        _urlEvents(urlEvents),
        _sharedDefaults(PropertyListUserDefaults::pathForDomain(sharedSuiteName)),
        _standardDefaults(PropertyListUserDefaults::pathForDomain(_bundle.bundleIdentifier())),
        _workspace(runLoop, bus),
        _volumeEvents(runLoop),
        _userInterface(runLoop, _bundle, _bundle.userInterfaceModulePath()),
        _userScripts(_bundle),
        _hotKeyCenter(runLoop, openHotKeysOfSession(bus, _bundle.bundleIdentifier(),
                                                    _bundle.hotKeyModulePath())),
        _displayFollower(runLoop, _hotKeyCenter, meansOfFollowing()),
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
                   .distributedNotificationCenter = notificationCenter,
                   .urlEvents = urlEvents,
                   .actions = actions,
                   .userInterface = _userInterface,
                   .userScripts = _userScripts,
                   .hotKeyCenter = _hotKeyCenter,
                   .sound = _sound}) {}

  void run() {
    _runLoop.setWillTerminateHandler([this] { _delegate.applicationWillTerminate(); });
    _delegate.applicationWillFinishLaunching();
    _delegate.applicationDidFinishLaunching();
    _hotKeyList.setCenter(_hotKeyCenter, _bundle);
    _urlEvents.setActivateHandler([this] { _displayFollower.lookAround(); });
    _runLoop.run();
    _urlEvents.setActivateHandler(nullptr);
  }

  /// Where to begin anew once `run` has returned; nothing when the program is to end.
  const std::optional<std::string>& nextDisplay() const { return _nextDisplay; }
  std::string executablePath() const { return _bundle.executablePath(); }

  /// A request that came too late for the loop.
  void handleLate(const std::string& url) {
    _delegate.handleURLEvent({.directObject = url, .activationToken = {}});
  }

 private:
  DisplayFollower::Means meansOfFollowing() {
    DisplayFollower::Means means;
    const char* const display = std::getenv("DISPLAY");
    means.display = display ? display : "";
    means.canUse = [this](const std::string& other) { return canUse(other); };
    means.moveTo = [this](const std::string& other) { moveTo(other); };
    return means;
  }

  bool canUse(const std::string& display) const {
    return canUseDisplay(_bundle.hotKeyModulePath(), display);
  }

  void moveTo(const std::string& display) {
    _nextDisplay = display;
    _runLoop.terminate();
  }

  EventRunLoop& _runLoop;
  BusHotKeyList& _hotKeyList;
  BusURLEvents& _urlEvents;
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
  LazyUserInterface _userInterface;
  LinuxUserScripts _userScripts;
  DesktopHotKeyCenter _hotKeyCenter;
  DisplayFollower _displayFollower;
  std::optional<std::string> _nextDisplay;
  CanberraSound _sound;
  AppDelegate _delegate;
};

/// What a helper that ends leaves to its successor at another display.
struct Succession {
  std::string executable;
  std::string display;
};

std::optional<Succession> serve(const std::vector<std::string>& urls) {
  EventRunLoop runLoop;
  SessionBus bus(runLoop);
  BusHotKeyList hotKeyList(bus);
  BusApplicationActions actions(bus);
  BusURLEvents urlEvents(bus);
  urlEvents.setActions(actions);
  // A command may be sent to the helper as soon as it has its name.
  BusDistributedNotificationCenter notificationCenter(bus);
  notificationCenter.listen(BusURLEvents::busName);
  notificationCenter.listen(sharedSuiteName);
  const auto role = urlEvents.claim(urls);
  if (role == BusURLEvents::Role::HandedOver || role == BusURLEvents::Role::Terminated) {
    return std::nullopt;
  }
  makeRoomInEnvironment(activationTokenVariables);
  Helper helper(runLoop, bus, notificationCenter, urlEvents, actions, hotKeyList);
  helper.run();
  for (const auto& url : urlEvents.release()) {
    helper.handleLate(url);
  }
  return helper.nextDisplay()
             ? std::optional(Succession{helper.executablePath(), *helper.nextDisplay()})
             : std::nullopt;
}

/// What a launcher starts, which may wait for its end. Where no helper can be reached over a bus,
/// one of its own serves the URLs in the background.
int handOver(const std::vector<std::string>& urls) {
  switch (handOverToHelper(urls)) {
    case HandOver::Accepted:
      return 0;
    case HandOver::NobodyThere: {
      std::vector<std::string> arguments{PrefixBundle().executablePath()};
      arguments.insert(arguments.end(), urls.begin(), urls.end());
      if (startInBackground(arguments)) {
        return 0;
      }
      break;
    }
    case HandOver::Failed:
      break;
  }
  std::fputs("quennelhelper: the helper could not be reached\n", stderr);
  return 1;
}

/// Of an option that ends the program, or could not be understood, the exit status.
std::optional<int> statusForOption(const std::string& option) {
  if (option == "--help" || option == "-h") {
    std::fputs(help, stdout);
    return 0;
  }
  if (option == "--version") {
    std::puts("quennelhelper " QUENNEL_VERSION);
    return 0;
  }
  if (option.rfind('-', 0) == 0) {
    std::fprintf(stderr, "quennelhelper: unknown option %s\n%s", option.c_str(), help);
    return 2;
  }
  return std::nullopt;
}

/// A relative path means a folder below the one in which the program was started.
void resolveRelativePaths(std::vector<std::string>& urls) {
  std::error_code error;
  const std::string folder = std::filesystem::current_path(error);
  if (error) {
    return;
  }
  for (auto& url : urls) {
    url = resolvingRelativePath(url, folder);
  }
}

int main(int argc, char** argv) {
  // Threads come for a moment, one at a time: heaps of their own would only take time and memory.
  mallopt(M_ARENA_MAX, 1);
  const bool opens = argc > 1 && std::strcmp(argv[1], "--open") == 0;
  std::vector<std::string> arguments(argv + (opens ? 2 : 1), argv + argc);
  for (const auto& argument : arguments) {
    if (const auto status = statusForOption(argument)) {
      return *status;
    }
  }
  resolveRelativePaths(arguments);
  if (chdir("/") != 0) {  // any other folder would keep its volume from being unmounted
    std::perror("quennelhelper: /");
  }
  try {
    if (opens) {
      return handOver(arguments);
    }
    if (const auto succession = serve(arguments)) {
      restartWithVariable(succession->executable, "DISPLAY", succession->display);
    }
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "quennelhelper: %s\n", exception.what());
    return 1;
  }
}

}  // namespace
}  // namespace quennel

int main(int argc, char** argv) { return quennel::main(argc, argv); }
