#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Error.h"
#include "platform/Registration.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// What the user lets the helper change: folders that are accessible, with all that is below them,
/// and the tokens ("bookmarks") by which a later run finds them again. Reading is never restricted.
/// Paths are absolute. Main thread only.
class SecurityScope {
 public:
  /// What a grant covers: the folder and everything below it, or the one item of that name (and
  /// what is below it), which need not exist.
  enum class Extent { Folder, Item };

  /// An operation on the item that `path` leads to; false when it failed.
  using Work = std::function<bool(const std::string& path)>;

  /// Access to a folder and all below it, until this object is destroyed.
  class Access : public Registration {
   public:
    explicit Access(std::string path) : _path(std::move(path)) {}
    /// Where the folder was when the access began.
    const std::string& path() const { return _path; }

   private:
    std::string _path;
  };

  virtual ~SecurityScope() = default;

  /// An opaque token for the folder at `path`, which only this user can make. Nothing when there is
  /// no folder, or none that could be told from another one later.
  virtual std::optional<PropertyList::Data> bookmarkDataForPath(const std::string& path,
                                                                Error* error = nullptr) = 0;

  /// Where the token's folder is now: the path it was made for as long as that leads to the same
  /// folder, else the place it was moved or its volume mounted to. When that folder is not to be
  /// found, the one that `renewBookmark` was last told of. Nothing when there is none, or when the
  /// token is not genuine. `error` is filled when it cannot be known now whether it is genuine, and
  /// not otherwise.
  virtual std::optional<std::string> pathByResolvingBookmarkData(const PropertyList::Data& bookmark,
                                                                 Error* error = nullptr) = 0;

  /// The user has authorized the folder at `path`, for which the token was made, once more. Should
  /// the token not lead to it, another folder having been there then, the token gives access to it
  /// from now on, in later runs too, without a change of its bytes. False when that fails.
  virtual bool renewBookmark(const PropertyList::Data& bookmark, const std::string& path,
                             Error* error = nullptr) = 0;

  /// Makes the token's folder accessible. Accesses count: one folder stays accessible until the
  /// last of its accesses is gone; no access may outlive this object. Nothing when the token does
  /// not lead to a folder.
  [[nodiscard]] virtual std::unique_ptr<Access> startAccessing(
      const PropertyList::Data& bookmark) = 0;

  /// Makes what the user chose in a panel accessible until the end of the run.
  virtual void allowForThisRun(const std::string& path, Extent extent) = 0;
  /// Ends what the answers of panels gave for the folder that was chosen by that path.
  virtual void disallow(const std::string& path) = 0;

  /// Whether the file at `path` may be changed, or entries made in the folder there, as far as
  /// grants go. Links are followed.
  virtual bool isAccessible(const std::string& path) const = 0;

  /// Finds the folder at `path` and what grants it, once for all that is done to it and to the
  /// items in it until the answer is destroyed or a grant comes or goes. Hold it for one request
  /// only: it keeps the folder's volume from being unmounted.
  [[nodiscard]] virtual std::unique_ptr<Registration> enterFolder(const std::string& path) = 0;

  /// Calls `work`, which makes, replaces or removes the item at `path`, so that it can change
  /// nothing that is not accessible: on a thread of its own, for which the caller waits, where the
  /// kernel can confine one. `work` has to use the path it is given. The result is that of `work`,
  /// whose exceptions pass through; false without a call when the item's folder is not accessible.
  virtual bool performConfined(const std::string& path, const Work& work,
                               Error* error = nullptr) = 0;

  /// Calls `work`, which changes attributes of the item at `path` (links followed), with a path
  /// that leads to that very item, whatever happens to its names meanwhile. On the caller's thread;
  /// results as above.
  virtual bool performOnItem(const std::string& path, const Work& work,
                             Error* error = nullptr) const = 0;
};

}  // namespace quennel
