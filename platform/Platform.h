#pragma once

namespace quennel {

class Bundle;
class DistributedNotificationCenter;
class FileManager;
class RunLoop;
class Sound;
class URLEvents;
class UserDefaults;
class UserInterface;
class Workspace;

/// Everything the helper needs of a desktop. The references are not owned and outlive whoever is
/// given them.
struct Platform {
  RunLoop& runLoop;
  /// The settings shared with the main application.
  UserDefaults& sharedDefaults;
  Bundle& mainBundle;
  FileManager& fileManager;
  Workspace& workspace;
  DistributedNotificationCenter& distributedNotificationCenter;
  URLEvents& urlEvents;
  UserInterface& userInterface;
  Sound& sound;
};

}  // namespace quennel
