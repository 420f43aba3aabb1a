#pragma once

#include <functional>
#include <map>
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
  /// Every `startAccessing` and `stopAccessing` by its path, in order.
  std::vector<std::string> started;
  std::vector<std::string> stopped;
  /// Every `startAccessing` fails, as it may on a platform that refuses.
  bool refusesToStart = false;
  /// What happens during each `startAccessing`.
  std::function<void()> whileStarting;
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
  bool startAccessing(const std::string& path) override;
  void stopAccessing(const std::string& path) override;
  void allowForThisRun(const std::string& path, Extent extent) override;
  bool isAccessible(const std::string& path) const override;
  bool performConfined(const std::string& path, const Work& work, Error* error) override;
  bool performOnItem(const std::string& path, const Work& work, Error* error) const override;

 private:
  std::map<std::string, int> _folders;
  std::map<std::string, int>::node_type _away;
  int _lastFolder = 0;
  std::set<std::string> _resolved;
  std::multiset<std::string> _accessible;
};

}  // namespace quennel::test
