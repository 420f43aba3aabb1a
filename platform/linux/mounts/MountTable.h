#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quennel {

/// One line of the kernel's table of mounts.
struct Mount {
  std::uint64_t id = 0;
  /// The folder inside the filesystem that shows at `point`: "/", unless it is a bind mount or a
  /// subvolume.
  std::string root;
  std::string point;
  std::string type;
  std::string source;

  auto operator<=>(const Mount&) const = default;  // NOLINT(modernize-use-nullptr): taken for a 0

  /// Whether `path` is that of the point or of something below it (where another mount may lie).
  bool contains(std::string_view path) const;

  /// The path below `root` of what is at `path`, a path at or below `point`; paths inside the
  /// filesystem have no slash at their start.
  std::string relativePathOf(std::string_view path) const;

  /// The reverse; nothing when this mount does not show that part of the filesystem.
  std::optional<std::string> pathOf(std::string_view relativePath) const;
};

/// The mounts that this process sees, as they were when it was read.
class MountTable {
 public:
  static constexpr const char* path = "/proc/self/mountinfo";

  /// Reads the table; an empty one when that is not possible.
  static MountTable current();
  /// Takes in the table's text; lines that cannot be understood are left out.
  static MountTable parse(std::string_view text);

  const std::vector<Mount>& mounts() const { return _mounts; }

  /// The mount of that number, else null.
  const Mount* mountWithId(std::uint64_t id) const;

  /// The mounts of this table that `other` does not have.
  std::vector<Mount> without(const MountTable& other) const;

 private:
  std::vector<Mount> _mounts;  // sorted
};

}  // namespace quennel
