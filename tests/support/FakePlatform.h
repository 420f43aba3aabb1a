#pragma once

#include "app/Platform.h"
#include "tests/support/FakeDesktop.h"

namespace quennel::test {

/// What a test has of the real desktop; the rest is fakes.
struct RealParts {
  RunLoop* runLoop = nullptr;
  FileManager* fileManager = nullptr;
  SecurityScope* securityScope = nullptr;
  UserInterface* userInterface = nullptr;
  UserScripts* userScripts = nullptr;
};

template <typename Port>
Port& either(Port* real, Port& fake) {
  return real ? *real : fake;
}

/// The desktop of fakes as the application object knows it.
inline Platform platformOf(FakeDesktop& fakes, const RealParts& real = {}) {
  return {.runLoop = either<RunLoop>(real.runLoop, fakes.runLoop),
          .sharedDefaults = fakes.sharedDefaults,
          .standardDefaults = fakes.standardDefaults,
          .mainBundle = fakes.mainBundle,
          .fileManager = either<FileManager>(real.fileManager, fakes.fileManager),
          .securityScope = either<SecurityScope>(real.securityScope, fakes.securityScope),
          .workspace = fakes.workspace,
          .volumeEvents = fakes.volumeEvents,
          .workspaceNotificationCenter = fakes.workspaceNotificationCenter,
          .kernelQueues = fakes.kernelQueues,
          .distributedNotificationCenter = fakes.distributedNotificationCenter,
          .urlEvents = fakes.urlEvents,
          .actions = fakes.actions,
          .userInterface = either<UserInterface>(real.userInterface, fakes.userInterface),
          .userScripts = either<UserScripts>(real.userScripts, fakes.userScripts),
          .hotKeyCenter = fakes.hotKeyCenter,
          .sound = fakes.sound};
}

}  // namespace quennel::test
