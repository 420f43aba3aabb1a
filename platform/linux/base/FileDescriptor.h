#pragma once

#include <unistd.h>

#include <utility>

namespace quennel {

/// Owns one open file descriptor; -1 is none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : _descriptor(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : _descriptor(std::exchange(other._descriptor, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      reset(std::exchange(other._descriptor, -1));
    }
    return *this;
  }
  ~FileDescriptor() { reset(); }

  int get() const { return _descriptor; }
  explicit operator bool() const { return _descriptor >= 0; }

  /// Gives up ownership.
  int release() { return std::exchange(_descriptor, -1); }

  /// Closes what is owned and takes `descriptor` in its place.
  void reset(int descriptor = -1) {
    if (_descriptor >= 0) {
      // On Linux the descriptor is gone whatever close answers, and a failure that matters has
      // already shown at a write.
      ::close(_descriptor);
    }
    _descriptor = descriptor;
  }

 private:
  int _descriptor = -1;
};

}  // namespace quennel
