#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SecurityScope.h"
#include "platform/linux/scope/BookmarkKey.h"
#include "platform/linux/scope/BookmarkRenewals.h"
#include "platform/linux/scope/BookmarkResolver.h"
#include "platform/linux/scope/Grants.h"
#include "platform/linux/scope/LandlockRuleset.h"
#include "platform/linux/scope/OpenItem.h"

namespace quennel {

/// Grants enforced by the kernel.
///
/// `performConfined` runs its work on a thread that has given up, for the rest of its short life,
/// every right to change anything but the granted folder which the item is in. So neither a link
/// nor a race can carry a change elsewhere. The kernel does not restrain changes of mode, times and
/// attributes; `performOnItem` finds out on an open descriptor whether a grant covers the item, and
/// lets the work reach the item through that descriptor only. Where the kernel has no Landlock,
/// `performConfined` does the same with the item's folder.
///
/// A grant for one item allows the kernel's part the whole folder around it; that only the item is
/// meant is checked before.
class LandlockSecurityScope final : public SecurityScope {
 public:
  /// `keyPath` is the file with the key of the user's tokens, which is made when it is first
  /// needed; `landlockVersion` that of the kernel's interface to rely on, 0 for none.
  explicit LandlockSecurityScope(const std::string& keyPath = BookmarkKey::pathForUser(),
                                 int landlockVersion = LandlockRuleset::kernelVersion());

  std::optional<PropertyList::Data> bookmarkDataForPath(const std::string& path,
                                                        Error* error) override;
  std::optional<std::string> pathByResolvingBookmarkData(const PropertyList::Data& bookmark,
                                                         Error* error) override;
  bool renewBookmark(const PropertyList::Data& bookmark, const std::string& path,
                     Error* error) override;
  std::unique_ptr<Access> startAccessing(const PropertyList::Data& bookmark) override;
  void allowForThisRun(const std::string& path, Extent extent) override;
  void disallow(const std::string& path) override;
  std::unique_ptr<Registration> enterFolder(const std::string& path) override;
  bool isAccessible(const std::string& path) const override;
  bool performConfined(const std::string& path, const Work& work, Error* error) override;
  bool performOnItem(const std::string& path, const Work& work, Error* error) const override;

 private:
  class FolderAccess;
  struct Folder {
    std::string path;
    DirectoryIdentity identity;
  };

  class EnteredFolder;

  /// Where an operation works, and the folder that grants it; none where nothing does.
  struct Place {
    ItemLocation location;
    FileDescriptor granted;
  };

  const EnteredFolder* enteredFolder(std::string_view path) const;
  Place placeOfPath(const std::string& path) const;
  FileDescriptor itemOfEnteredFolder(const std::string& path) const;
  std::optional<Folder> locate(const std::optional<Bookmark>& bookmark);
  std::vector<Folder> foldersOf(const PropertyList::Data& token, Error* error);
  std::optional<Bookmark> lastingBookmark(const std::string& path, Error* error) const;

  BookmarkKey _key;
  BookmarkRenewals _renewals;
  BookmarkResolver _resolver;
  int _landlockVersion;
  Grants _grants;
  /// The folder that the present request works in, if any.
  const EnteredFolder* _entered = nullptr;
  /// The folders that panels gave, by the paths that were chosen.
  std::multimap<std::string, Grant> _allowed;
};

}  // namespace quennel
