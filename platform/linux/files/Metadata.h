#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace quennel {

/// What a folder has to say of the items that are made in it.
struct PlaceRules {
  /// Whether they belong to its group, or to whom its default ACL says.
  bool givesGroup = false;
  /// The most that its default ACL lets owner, group and others do; nothing when it has none.
  std::optional<mode_t> mostPermissions;
};

/// Those of the folder at `path`; they hold for all that is below a new item, too. None when they
/// cannot be read.
PlaceRules rulesOfPlace(const std::string& path);

/// Gives the open item `copy` the owner, permissions, extended attributes, ACLs and dates of
/// `source`, as far as the process may, the filesystem can and the rules of the place leave open:
/// the group and ACLs that it got from the folder it was made in stay. Comes last, since writing
/// changes the dates and a change of owner the permissions. Throws FileFailure when the permissions
/// or dates cannot be set.
void copyMetadata(int source, const struct stat& status, int copy, const PlaceRules& rules);

/// The same for the symbolic link `name` in the open folder, from the status of its source.
void copyLinkMetadata(const struct stat& status, int folder, const char* name,
                      const PlaceRules& rules);

/// The bits of a mode that say who may do what, without those that change whom a program runs as.
inline constexpr mode_t accessPermissions = 0777;

}  // namespace quennel
