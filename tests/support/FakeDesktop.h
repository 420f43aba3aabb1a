#pragma once

#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeApplicationActions.h"
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
struct FakeDesktop {
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
  FakeApplicationActions actions;
  FakeUserInterface userInterface{log};
  FakeUserScripts userScripts;
  FakeHotKeyCenter hotKeyCenter{runLoop};
  FakeSound sound{log};
  FakeKernelQueueFactory kernelQueues;
};

}  // namespace quennel::test
