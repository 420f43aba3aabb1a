#pragma once

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quennel {

/// Room for what the kernel calls a file handle: a head, and behind it the filesystem's bytes.
class FileHandle {
 public:
  FileHandle() { head()->handle_bytes = MAX_HANDLE_SZ; }
  /// `bytes` are at most MAX_HANDLE_SZ.
  FileHandle(std::int32_t type, std::string_view bytes) {
    head()->handle_type = type;
    head()->handle_bytes = static_cast<unsigned int>(bytes.size());
    std::transform(bytes.begin(), bytes.end(), _room.begin() + sizeof(file_handle),
                   [](char byte) { return static_cast<std::byte>(byte); });
  }

  file_handle* head() { return reinterpret_cast<file_handle*>(_room.data()); }

  std::int32_t type() { return head()->handle_type; }
  std::string bytes() {
    return {reinterpret_cast<const char*>(_room.data() + sizeof(file_handle)),
            head()->handle_bytes};
  }

 private:
  alignas(file_handle) std::array<std::byte, sizeof(file_handle) + MAX_HANDLE_SZ> _room{};
};

}  // namespace quennel
