#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>

namespace quennel {

/// Some entries of a folder, as many as one system call delivers into the buffer. "." and ".." are
/// passed over.
class DirectoryEntries {
 public:
  static constexpr std::size_t defaultCapacity = std::size_t{64} * 1024;

  explicit DirectoryEntries(std::size_t capacity = defaultCapacity)
      : _buffer(std::make_unique_for_overwrite<std::byte[]>(capacity)), _capacity(capacity) {}

  /// Replaces the entries by the next ones of the open folder. False at its end; throws
  /// FileFailure.
  bool readNext(int folder);

  class Iterator {
   public:
    Iterator(const std::byte* position, const std::byte* end) : _position(position), _end(end) {
      skipDots();
    }
    const dirent64& operator*() const { return *reinterpret_cast<const dirent64*>(_position); }
    Iterator& operator++() {
      _position += (**this).d_reclen;
      skipDots();
      return *this;
    }
    bool operator==(const Iterator& other) const { return _position == other._position; }

   private:
    void skipDots();

    const std::byte* _position;
    const std::byte* _end;
  };

  Iterator begin() const { return {_buffer.get(), _buffer.get() + _size}; }
  Iterator end() const { return {_buffer.get() + _size, _buffer.get() + _size}; }

 private:
  std::unique_ptr<std::byte[]> _buffer;
  std::size_t _capacity;
  std::size_t _size = 0;
};

inline void DirectoryEntries::Iterator::skipDots() {
  while (_position != _end) {
    const char* name = (**this).d_name;
    if (name[0] != '.' || (name[1] != '\0' && (name[1] != '.' || name[2] != '\0'))) {
      return;
    }
    _position += (**this).d_reclen;
  }
}

}  // namespace quennel
