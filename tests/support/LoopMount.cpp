#include "tests/support/LoopMount.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace quennel::test {

namespace {

bool succeeds(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

// Mounts of a namespace of our own go away with this process, however it ends.
bool ownMountNamespace() {
  static const bool isOwn = ::unshare(CLONE_NEWNS) == 0 &&
                            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return isOwn;
}

}  // namespace

LoopMount::LoopMount(const std::string& type, int size)
    : _image(_folder / "image"), _path(_folder / "mount") {
  if (::geteuid() != 0 || !ownMountNamespace()) {
    _reason = "mounting a filesystem takes root";
  } else if (::mkdir(_path.c_str(), 0755) != 0) {
    _reason = "no folder to mount on";
  } else if (type == "tmpfs") {
    mount("mount -t tmpfs -o mode=755,size=" + std::to_string(size) + "m tmpfs " + _path);
  } else if (!makeImage(type, size)) {
    _reason = "the program that makes " + type + " failed or is missing";
  } else {
    mount("mount -t " + type + " -o loop " + _image + " " + _path);
  }
}

LoopMount::~LoopMount() {
  if (_isMounted) {
    ::umount2(_path.c_str(), MNT_DETACH);
  }
}

bool LoopMount::makeImage(const std::string& type, int size) {
  constexpr off_t bytesInMiB = off_t{1024} * 1024;
  // As on a disk of usual size.
  const std::string options = type == "ext4" ? " -b 4096" : "";
  const std::string program = "mkfs." + type.substr(0, type.find('-'));
  std::ofstream(_image).close();
  return ::truncate(_image.c_str(), size * bytesInMiB) == 0 &&
         succeeds("PATH=$PATH:/usr/sbin:/sbin " + program + options + " " + _image);
}

void LoopMount::mount(const std::string& command) {
  _isMounted = succeeds(command);
  if (!_isMounted) {
    _reason = "the command failed: " + command;
  }
}

}  // namespace quennel::test
