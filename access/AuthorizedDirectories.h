#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/SecurityScope.h"

namespace quennel {

class UserDefaults;

/// The directories that the user has granted: their records in the settings, and access to them.
/// Main thread only.
class AuthorizedDirectories {
 public:
  AuthorizedDirectories(SecurityScope& securityScope, UserDefaults& sharedDefaults)
      : _securityScope(securityScope), _sharedDefaults(sharedDefaults) {}
  AuthorizedDirectories(const AuthorizedDirectories&) = delete;
  AuthorizedDirectories& operator=(const AuthorizedDirectories&) = delete;

  /// Starts access to every recorded directory that can be found. Does not end access that was
  /// started before.
  void startAccessingURLs();
  /// Ends access to all `openedURLs`, and leaves them in the set.
  void stopAccessingURLs();
  void restartAccessingURLs();
  /// Another program has changed the records, and asks for them to be in force: restarts access,
  /// and takes back what a panel gave in this run and is recorded no more.
  void recordsDidChange();
  /// Records the directory that the user chose, for later runs: access to it is not started. A
  /// directory whose path is recorded already is not recorded again. `url` is the path of the file
  /// URL.
  void saveAuthorizedURL(const std::string& url);
  /// The paths of the directories to which `startAccessingURLs` started access.
  const std::set<std::string>& openedURLs() const { return _openedURLs; }

 private:
  SecurityScope& _securityScope;
  UserDefaults& _sharedDefaults;
  std::set<std::string> _openedURLs;
  /// The directories that the user has authorized in this run and that are recorded.
  std::set<std::string> _authorizedPaths;
  std::vector<std::unique_ptr<SecurityScope::Access>> _accesses;
  /// Those that were followed by another start without a stop.
  std::vector<std::unique_ptr<SecurityScope::Access>> _earlierAccesses;
};

}  // namespace quennel
