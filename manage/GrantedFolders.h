#pragma once

#include <optional>
#include <string>
#include <vector>

#include "manage/Failure.h"
#include "manage/StoredList.h"
#include "platform/Error.h"
#include "platform/FileInspector.h"
#include "platform/HelperConnection.h"
#include "platform/SecurityScope.h"
#include "platform/UserDefaults.h"
#include "settings/AuthorizedDir.h"

namespace quennel {

/// One folder in which the helper may make files.
struct GrantedFolder {
  /// The path that it had when it was granted; nothing in a record of somebody else's that has
  /// none.
  std::optional<std::string> path = std::nullopt;
  /// Where it is now; nothing when it is not to be found.
  std::optional<std::string> place = std::nullopt;

  /// Why it cannot be known where it is.
  std::optional<Error> obstacle = std::nullopt;

  bool isInItsPlace() const { return path && place == path; }
};

/// The folders that the user has granted. When a change of them returns it is in force for a helper
/// that is running, too, but for what that has under way.
class GrantedFolders {
 public:
  /// Nothing is owned.
  GrantedFolders(UserDefaults& settings, SecurityScope& scope, const FileInspector& files,
                 HelperConnection& helper);

  Result<std::vector<GrantedFolder>, Failure> all() const;

  /// Grants the folder at `path`, which is absolute, once.
  Result<void, Failure> grant(const std::string& path);

  /// Withdraws the grants that were made for either path, which are two ways to write one: as the
  /// user said it and made absolute.
  Result<void, Failure> revoke(const std::string& name, const std::string& path);

 private:
  Result<void, Failure> change(const ListChange& change);
  std::optional<std::string> placeOf(const AuthorizedDir& record, Error* obstacle = nullptr) const;

  UserDefaults& _settings;
  SecurityScope& _scope;
  const FileInspector& _files;
  HelperConnection& _helper;
};

}  // namespace quennel
