#include "tests/contract/watch/WatchedFilesystem.h"

#include <sys/mount.h>

#include <filesystem>

namespace quennel::test {

WatchedFilesystem::WatchedFilesystem(const std::string& kind)
    : _isOverlay(kind.starts_with("overlay")) {
  if (kind == "here") {
    _folder = _source = _here.emplace().path();
    return;
  }
  _mount.emplace(_isOverlay ? "tmpfs" : kind);
  _reason = _mount->reason();
  _folder = *_mount / "folder";
  _source = kind == "overlay-lower" ? *_mount / "lower" : _folder;
  if (_reason.empty()) {
    for (const char* name : {"folder", "lower", "upper", "work"}) {
      std::filesystem::create_directory(*_mount / name);
    }
  }
  if (_source == _folder) {
    reveal();
  }
}

WatchedFilesystem::~WatchedFilesystem() {
  if (_isOverlay && _reason.empty()) {
    ::umount2(_folder.c_str(), MNT_DETACH);
  }
}

std::string WatchedFilesystem::reason() const { return _reason; }

void WatchedFilesystem::reveal() {
  if (!_isOverlay || !_reason.empty()) {
    return;
  }
  const std::string options = "lowerdir=" + (*_mount / "lower") +
                              ",upperdir=" + (*_mount / "upper") + ",workdir=" + (*_mount / "work");
  if (::mount("overlay", _folder.c_str(), "overlay", 0, options.c_str()) != 0) {
    _reason = "an overlay cannot be mounted";
  }
}

}  // namespace quennel::test
