#pragma once

#include <sys/stat.h>

#include "platform/FileManager.h"

namespace quennel {

/// Drops the access rules that the open item took over from the folder it was made in; those of its
/// source are to hold.
void dropInheritedAccessRules(int item, FileManager::ItemKind kind);

/// Gives the open item `copy` the owner, permissions, extended attributes, ACLs and dates of
/// `source`, as far as the process may and the filesystem can. Comes last, since writing changes
/// the dates and a change of owner the permissions. Throws FileFailure when the permissions or
/// dates cannot be set.
void copyMetadata(int source, const struct stat& status, int copy);

/// The same for the symbolic link `name` in the open folder, from the status of its source.
void copyLinkMetadata(const struct stat& status, int folder, const char* name);

/// The bits of a mode that say who may do what, without those that change whom a program runs as.
inline constexpr mode_t accessPermissions = 0777;

}  // namespace quennel
