#pragma once

namespace quennel {

class ApplicationActions;
class Bundle;
class DistributedNotificationCenter;
class FileManager;
class KernelQueueFactory;
class NotificationCenter;
class PTHotKeyCenter;
class RunLoop;
class SecurityScope;
class Sound;
class URLEvents;
class UserDefaults;
class UserInterface;
class UserScripts;
class VolumeEvents;
class Workspace;

/// Everything the helper needs of a desktop. The references are not owned and outlive whoever is
/// given them.
struct Platform {
  RunLoop& runLoop;
  /// The settings shared with the main application.
  UserDefaults& sharedDefaults;
  /// The helper's own settings.
  UserDefaults& standardDefaults;
  Bundle& mainBundle;
  FileManager& fileManager;
  SecurityScope& securityScope;
  Workspace& workspace;
  VolumeEvents& volumeEvents;
  NotificationCenter& workspaceNotificationCenter;
  KernelQueueFactory& kernelQueues;
  DistributedNotificationCenter& distributedNotificationCenter;
  URLEvents& urlEvents;
  ApplicationActions& actions;
  UserInterface& userInterface;
  UserScripts& userScripts;
  PTHotKeyCenter& hotKeyCenter;
  Sound& sound;
};

}  // namespace quennel
