#pragma once

#include <optional>
#include <string>

#include "platform/Error.h"
#include "platform/FileManager.h"
#include "platform/UserInterface.h"
#include "platform/values/PropertyList.h"

namespace quennel {

class DistributedNotificationCenter;
class SecurityScope;

/// The operations on paths and files that the flows of file creation share, and the alert. Keeps no
/// state. Failures show in the results alone. Main thread only.
class AppUtil {
 public:
  struct Services {
    FileManager& fileManager;
    SecurityScope& securityScope;
    DistributedNotificationCenter& notifications;
    UserInterface& userInterface;
  };
  explicit AppUtil(const Services& services) : _services(services) {}

  /// `path` if nothing exists there, else the first free one of "name-1.ext", "name-2.ext" and so
  /// on beside it. The number is always appended to the name as given. Nothing reserves the result.
  std::string genNewPathForPath(const std::string& path) const;

  /// Copies contents and permissions of a file, or of a folder with all it holds; permissions of
  /// the top folder excepted. An item at `toPath` is removed first. False when both paths are the
  /// same, or at the first failure: then what was copied stays. A missing source counts as copied.
  /// `error` is filled by failures to remove and to make folders only.
  bool copyItemAtPath(const std::string& path, const std::string& toPath,
                      Error* error = nullptr) const;
  bool copyFilePermissionsAtPath(const std::string& path, const std::string& toPath) const;

  /// Sets (clears) the execute bits of owner, group and others together and keeps all other bits.
  /// False for a folder or when there is no item.
  bool makeItemExecutableAtPath(const std::string& path) const;
  bool removeExecutableFlagAtPath(const std::string& path) const;
  bool makeItemExecutable(bool flag, const std::string& atPath) const;

  /// Whether the item at `path`, or else its nearest ancestor that exists, can be written, as
  /// written or with its percent escapes removed. No path is not writable.
  bool isWritableFileAtPath(const std::optional<std::string>& path) const;

  /// A token by which a later run finds the directory again; nothing when none can be made. `url`
  /// is the path of the file URL.
  std::optional<PropertyList::Data> bookmarkFromURL(const std::string& url) const;
  /// The path of the token's directory; nothing when it cannot be found.
  std::optional<std::string> urlFromBookmark(const PropertyList::Data& bookmark) const;

  /// Gives the item, and everything below it if it is a folder, this date of creation and of
  /// modification.
  void updateDateForPath(FileAttributes::Date date, const std::string& path) const;
  /// The same for the item alone.
  void updateDateForFile(FileAttributes::Date date, const std::string& path) const;

  /// Tells the session's programs that something has changed; `object` is a path.
  void postRefreshNotification(const std::string& object) const;

  /// The description, in the user's language, of the type of files with that name extension.
  std::optional<std::string> humanReadableFileTypeForFileExtension(
      const std::string& extension) const;

  bool isDir(const std::string& path) const;

  /// Shows a modal alert with the platform's default button; returns once it is dismissed.
  void showAlert(const std::optional<std::string>& title, const std::optional<std::string>& message,
                 AlertStyle style) const;
  /// The same in the informational style.
  void showAlert(const std::optional<std::string>& title,
                 const std::optional<std::string>& message) const;

 private:
  bool copyFile(const std::string& path, const std::string& toPath) const;
  bool copyFolder(const std::string& path, const std::string& toPath, Error* error) const;
  FileManager& files() const { return _services.fileManager; }

  Services _services;
};

}  // namespace quennel
