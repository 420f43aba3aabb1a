#include "platform/linux/mounts/MountTable.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <iterator>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

namespace {

/// Takes the text up to the next separator, or all that is left.
std::string_view takeUpTo(char separator, std::string_view& text) {
  const std::size_t end = text.find(separator);
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return taken;
}

bool isOctal(char character) { return character >= '0' && character <= '7'; }

/// The table writes blanks, line ends and backslashes as a backslash and three octal digits.
std::string unescaped(std::string_view field) {
  std::string text;
  while (!field.empty()) {
    const bool escape = field.size() > 3 && field[0] == '\\' && isOctal(field[1]) &&
                        isOctal(field[2]) && isOctal(field[3]);
    if (escape) {
      const int value = (field[1] - '0') * 64 + (field[2] - '0') * 8 + (field[3] - '0');
      text += static_cast<char>(static_cast<unsigned char>(value));
    } else {
      text += field[0];
    }
    field.remove_prefix(escape ? 4 : 1);
  }
  return text;
}

/// "36 35 98:0 /root /point options optional... - type source options"
std::optional<Mount> mountOfLine(std::string_view line) {
  Mount mount;
  const std::string_view number = takeUpTo(' ', line);
  const auto parsed = std::from_chars(number.data(), number.data() + number.size(), mount.id);
  takeUpTo(' ', line);  // parent
  takeUpTo(' ', line);  // device
  mount.root = unescaped(takeUpTo(' ', line));
  mount.point = unescaped(takeUpTo(' ', line));
  while (!line.empty() && takeUpTo(' ', line) != "-") {
  }
  mount.type = takeUpTo(' ', line);
  mount.source = unescaped(takeUpTo(' ', line));
  // Namespaces kept alive by a mount show no folder of any filesystem.
  const bool showsFolder = mount.root.starts_with('/') && mount.point.starts_with('/');
  return parsed.ec == std::errc() && showsFolder && !mount.type.empty() ? std::optional(mount)
                                                                        : std::nullopt;
}

std::string contentsOf(const char* path) {
  const FileDescriptor file(open(path, O_RDONLY | O_CLOEXEC));
  std::string text;
  std::array<char, 16384> buffer;
  while (file) {
    const ssize_t count = read(file.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      break;
    }
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

/// The part of `path` below `folder`, without slashes at its start; nothing when it is not there.
std::optional<std::string_view> partBelow(std::string_view folder, std::string_view path) {
  while (folder.ends_with('/')) {
    folder.remove_suffix(1);
  }
  if (!path.starts_with(folder)) {
    return std::nullopt;
  }
  path.remove_prefix(folder.size());
  if (!path.empty() && !path.starts_with('/')) {
    return std::nullopt;
  }
  return path.empty() ? path : path.substr(1);
}

std::string joined(std::string_view folder, std::string_view part) {
  std::string path(folder);
  if (!part.empty()) {
    path.append(path.ends_with('/') ? "" : "/").append(part);
  }
  return path;
}

}  // namespace

bool Mount::contains(std::string_view path) const { return partBelow(point, path).has_value(); }

std::string Mount::relativePathOf(std::string_view path) const {
  return joined(root, partBelow(point, path).value_or("")).substr(1);
}

std::optional<std::string> Mount::pathOf(std::string_view relativePath) const {
  std::string inside("/");
  inside += relativePath;
  const auto part = partBelow(root, inside);
  return part ? std::optional(joined(point, *part)) : std::nullopt;
}

MountTable MountTable::current() { return parse(contentsOf(path)); }

MountTable MountTable::parse(std::string_view text) {
  MountTable table;
  while (!text.empty()) {
    if (auto mount = mountOfLine(takeUpTo('\n', text))) {
      table._mounts.push_back(std::move(*mount));
    }
  }
  std::sort(table._mounts.begin(), table._mounts.end());
  return table;
}

const Mount* MountTable::mountWithId(std::uint64_t id) const {
  const auto mount = std::lower_bound(
      _mounts.begin(), _mounts.end(), id,
      [](const Mount& candidate, std::uint64_t wanted) { return candidate.id < wanted; });
  return mount == _mounts.end() || mount->id != id ? nullptr : &*mount;
}

std::vector<Mount> MountTable::without(const MountTable& other) const {
  std::vector<Mount> missing;
  std::set_difference(_mounts.begin(), _mounts.end(), other._mounts.begin(), other._mounts.end(),
                      std::back_inserter(missing));
  return missing;
}

}  // namespace quennel
