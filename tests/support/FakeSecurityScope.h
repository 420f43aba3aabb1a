#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/SecurityScope.h"

namespace quennel::test {

/// A scope over folders that the test writes down. Work runs where it is called, held back only
/// when its item is not below a granted folder.
class FakeSecurityScope : public SecurityScope {
 public:
  /// Every access that was started or ended, by its path, in order.
  std::vector<std::string> started;
  std::vector<std::string> stopped;
  /// Every access gives nothing, as it may be on a platform that refuses.
  bool refusesToStart = false;
  /// What happens during each `startAccessing`.
  std::function<void()> whileStarting;
  /// Every folder that was entered, and how many are now.
  std::vector<std::string> entered;
  int enteredNow = 0;
  /// Every `renewBookmark`, by its path.
  std::vector<std::string> renewed;
  /// The panels' answers.
  std::vector<std::pair<std::string, Extent>> allowed;
  /// Folders that no token can be made for.
  std::set<std::string> unbookmarkable;

  /// A folder is the same one wherever it is moved, and another one when it was removed and added
  /// again.
  void addFolder(const std::string& path) { _folders[path] = ++_lastFolder; }
  void removeFolder(const std::string& path) { _folders.erase(path); }
  void moveFolder(const std::string& path, const std::string& toPath);
  /// The folder's volume is away, or back: as the same folder, there or in another place.
  void hide(const std::string& path) { _away = _folders.extract(path); }
  void showAt(const std::string& path);

  std::optional<PropertyList::Data> bookmarkDataForPath(const std::string& path,
                                                        Error* error = nullptr) override;
  std::optional<std::string> pathByResolvingBookmarkData(const PropertyList::Data& bookmark,
                                                         Error* error = nullptr) override;
  bool renewBookmark(const PropertyList::Data& bookmark, const std::string& path,
                     Error* error = nullptr) override;
  std::unique_ptr<Access> startAccessing(const PropertyList::Data& bookmark) override;
  void allowForThisRun(const std::string& path, Extent extent) override;
  void disallow(const std::string& path) override;
  std::unique_ptr<Registration> enterFolder(const std::string& path) override;
  bool isAccessible(const std::string& path) const override;
  bool performConfined(const std::string& path, const Work& work, Error* error) override;
  bool performOnItem(const std::string& path, const Work& work, Error* error) const override;

 private:
  class FakeAccess;
  class FakeStay;

  std::map<std::string, int> _folders;
  std::map<std::string, int>::node_type _away;
  int _lastFolder = 0;
  /// By a token's bytes, the folder that it leads to besides its own.
  std::map<std::string, std::string> _renewals;
  std::multiset<std::string> _accessible;
};

}  // namespace quennel::test
