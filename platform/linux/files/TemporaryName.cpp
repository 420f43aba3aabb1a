#include "platform/linux/files/TemporaryName.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "platform/linux/files/FileFailure.h"

namespace quennel {

std::string temporaryName() {
  std::array<std::uint8_t, 8> bytes;
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw FileFailure(errno, FileFailure::Step::Creating);
  }
  constexpr std::string_view digits = "0123456789abcdef";
  std::string name = ".quennel-";
  for (const std::uint8_t byte : bytes) {
    name += digits[byte >> 4];
    name += digits[byte & 0xf];
  }
  return name;
}

}  // namespace quennel
