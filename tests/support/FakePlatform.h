#pragma once

#include "platform/Platform.h"
#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeDistributedNotificationCenter.h"
#include "tests/support/FakeFileManager.h"
#include "tests/support/FakeHotKeyCenter.h"
#include "tests/support/FakeKernelQueue.h"
#include "tests/support/FakeRunLoop.h"
#include "tests/support/FakeSecurityScope.h"
#include "tests/support/FakeSound.h"
#include "tests/support/FakeURLEvents.h"
#include "tests/support/FakeUserDefaults.h"
#include "tests/support/FakeUserInterface.h"
#include "tests/support/FakeUserScripts.h"
#include "tests/support/FakeVolumeEvents.h"
#include "tests/support/FakeWorkspace.h"

namespace quennel::test {

/// A whole desktop of fakes.
struct FakePlatform {
  CallLog log;
  FakeRunLoop runLoop;
  FakeUserDefaults sharedDefaults;
  FakeUserDefaults standardDefaults;
  FakeBundle mainBundle;
  FakeFileManager fileManager{log};
  FakeSecurityScope securityScope;
  FakeWorkspace workspace{log};
  FakeVolumeEvents volumeEvents;
  LocalNotificationCenter workspaceNotificationCenter;
  FakeDistributedNotificationCenter distributedNotificationCenter{runLoop};
  FakeURLEvents urlEvents{runLoop};
  FakeUserInterface userInterface{log};
  FakeUserScripts userScripts;
  FakeHotKeyCenter hotKeyCenter{runLoop};
  FakeSound sound{log};
  FakeKernelQueueFactory kernelQueues;

  /// What a test has of the real desktop; the rest is fakes.
  struct Real {
    RunLoop* runLoop = nullptr;
    Bundle* mainBundle = nullptr;
    FileManager* fileManager = nullptr;
    SecurityScope* securityScope = nullptr;
    UserInterface* userInterface = nullptr;
    UserScripts* userScripts = nullptr;
  };

  Platform platform() { return platformWith({}); }
  Platform platformWith(const Real& real) {
    return {.runLoop = *either<RunLoop>(real.runLoop, runLoop),
            .sharedDefaults = sharedDefaults,
            .standardDefaults = standardDefaults,
            .mainBundle = *either<Bundle>(real.mainBundle, mainBundle),
            .fileManager = *either<FileManager>(real.fileManager, fileManager),
            .securityScope = *either<SecurityScope>(real.securityScope, securityScope),
            .workspace = workspace,
            .volumeEvents = volumeEvents,
            .workspaceNotificationCenter = workspaceNotificationCenter,
            .kernelQueues = kernelQueues,
            .distributedNotificationCenter = distributedNotificationCenter,
            .urlEvents = urlEvents,
            .userInterface = *either<UserInterface>(real.userInterface, userInterface),
            .userScripts = *either<UserScripts>(real.userScripts, userScripts),
            .hotKeyCenter = hotKeyCenter,
            .sound = sound};
  }

 private:
  template <typename Port>
  static Port* either(Port* real, Port& fake) {
    return real ? real : &fake;
  }
};

}  // namespace quennel::test
