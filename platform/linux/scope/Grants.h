#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/scope/DirectoryIdentity.h"
#include "platform/linux/scope/OpenItem.h"

namespace quennel {

/// A folder that is accessible, or the one item of that name in it.
struct Grant {
  DirectoryIdentity folder;
  std::optional<std::string> onlyItem;

  bool operator==(const Grant&) const = default;
};

/// All grants in force. Folders are known by what they are, not by a path, and no descriptor is
/// kept: neither renaming nor unmounting is in the way of a grant, or it in theirs. Finding a grant
/// takes the same time however many there are.
class Grants {
 public:
  /// Grants count: one that was added twice is in force until it was removed twice.
  void add(Grant grant) {
    _byInode.emplace(grant.folder.inode, std::move(grant));
    ++_changes;
  }
  void remove(const Grant& grant);

  /// How often grants have come or gone: what `folderGranting` answered holds until this changes.
  std::uint64_t changes() const { return _changes; }

  /// The folder of the grant, the nearest one, that covers the item: its own or one further up, as
  /// the kernel knows the way up at this moment. None when no grant does.
  FileDescriptor folderGranting(const ItemLocation& location) const;

 private:
  struct Child;
  bool isGranted(int folder, std::uint64_t inode, const Child& child) const;

  std::unordered_multimap<std::uint64_t, Grant> _byInode;
  std::uint64_t _changes = 0;
};

}  // namespace quennel
