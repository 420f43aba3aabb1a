#include "tests/support/Volume.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/RootCommands.h"

namespace quennel::test {
namespace {

using Filesystem = Volume::Filesystem;

bool hasImage(Filesystem filesystem) {
  return filesystem == Filesystem::Ext4 || filesystem == Filesystem::Xfs ||
         filesystem == Filesystem::Btrfs || filesystem == Filesystem::Fuse;
}

std::string programThatMakes(Filesystem filesystem) {
  return std::string("mkfs.") +
         (filesystem == Filesystem::Fuse ? "exfat" : Volume::nameOf(filesystem));
}

std::string makeCommand(Filesystem filesystem) {
  const std::string size = filesystem == Filesystem::Ext4 ? "32M" : "320M";
  return "truncate -s " + size + " image && " + programThatMakes(filesystem) +
         " image >/dev/null 2>&1";
}

bool isKnownToKernel(const char* name) {
  return RootCommands::run(std::string("grep -qw ") + name + " /proc/filesystems || modprobe -q " +
                           name + " 2>/dev/null");
}

}  // namespace

std::string Volume::whyUnavailable(Filesystem filesystem) {
  const std::string name = nameOf(filesystem);
  if (const std::string reason = RootCommands::whyUnavailable(); !reason.empty()) {
    return reason;
  }
  if (!isKnownToKernel(name.c_str())) {
    return "the kernel has no " + name;
  }
  if (!hasImage(filesystem)) {
    return {};
  }
  const std::string needed =
      programThatMakes(filesystem) + (filesystem == Filesystem::Fuse ? " mount.exfat-fuse" : "");
  if (!RootCommands::run("command -v " + needed + " >/dev/null")) {
    return needed + ": not installed";
  }
  return RootCommands::run("[ -e /dev/loop-control ]") ? "" : "there are no loop devices";
}

Volume::Volume(Filesystem filesystem) : _filesystem(filesystem) {
  const std::string enter = "cd " + _folder.path() + " && ";
  bool made = true;
  if (hasImage(filesystem)) {
    made = RootCommands::run(enter + makeCommand(filesystem));
  } else if (filesystem == Filesystem::Overlay) {
    made = RootCommands::run(enter + "mkdir -m 777 lower upper work");
  }
  if (!made) {
    throw std::runtime_error(std::string("a volume could not be made: ") + nameOf(filesystem));
  }
}

Volume::~Volume() {
  while (!_points.empty()) {
    RootCommands::run("umount -l " + _points.back());
    _points.pop_back();
  }
  RootCommands::run("rm -rf " + _folder.path() + "/*");
}

bool Volume::mountAt(const std::string& point) {
  if (!RootCommands::run(mountCommand(point))) {
    return false;
  }
  _points.push_back(point);
  // Fuse has no owners: everything belongs to the user from the start.
  return _filesystem == Filesystem::Fuse ||
         RootCommands::run("chown " + std::to_string(geteuid()) + ":" + std::to_string(getegid()) +
                           " " + point + " && chmod 755 " + point);
}

bool Volume::unmountFrom(const std::string& point) {
  if (!RootCommands::run("umount " + point)) {
    return false;
  }
  _points.erase(std::remove(_points.begin(), _points.end(), point), _points.end());
  return true;
}

std::string Volume::mountCommand(const std::string& point) const {
  const std::string type = nameOf(_filesystem);
  const std::string image = _folder / "image";
  switch (_filesystem) {
    case Filesystem::Fuse:
      return "mount -t exfat-fuse -o loop,uid=" + std::to_string(geteuid()) + " " + image + " " +
             point + " >/dev/null 2>&1";
    case Filesystem::Overlay:
      return "mount -t overlay -o lowerdir=" + (_folder / "lower") +
             ",upperdir=" + (_folder / "upper") + ",workdir=" + (_folder / "work") + " overlay " +
             point;
    case Filesystem::Tmpfs:
    case Filesystem::Ramfs:
      return "mount -t " + type + " none " + point;
    default:
      return "mount -t " + type + " -o loop " + image + " " + point;
  }
}

}  // namespace quennel::test
