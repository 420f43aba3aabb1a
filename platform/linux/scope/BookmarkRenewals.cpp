#include "platform/linux/scope/BookmarkRenewals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/FileError.h"
#include "platform/linux/base/FileReplacement.h"
#include "platform/linux/scope/SealedBookmark.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

using Key = MessageAuthentication::Key;

/// No bookmark begins like this: as the length of its path it would be too long.
constexpr std::string_view purposePrefix = "renewal of ";
constexpr std::size_t largestToken = std::size_t{16} * 1024;

/// A name that fits every token and tells nothing of it; nothing without the cryptographic library,
/// and for what is too large to be a token.
std::optional<std::string> nameOfToken(std::string_view token, const Key& key) {
  const auto tag =
      token.size() <= largestToken ? MessageAuthentication::tagOf(token, key) : std::nullopt;
  if (!tag) {
    return std::nullopt;
  }
  constexpr std::string_view digits = "0123456789abcdef";
  std::string name;
  for (const char byte : *tag) {
    const auto value = static_cast<unsigned char>(byte);
    name += digits[value >> 4U];
    name += digits[value & 15U];
  }
  return name;
}

std::string contentsOf(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  std::array<char, largestToken> contents;
  const ssize_t size = file ? read(file.get(), contents.data(), contents.size()) : 0;
  return {contents.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

bool refuse(int code, const std::string& path, Error* error) {
  if (error) {
    *error = {code, Error::Kind::Remembering, path};
  }
  return false;
}

}  // namespace

std::optional<Bookmark> BookmarkRenewals::find(std::string_view token, const Key& key) const {
  const auto name = nameOfToken(token, key);
  return name ? unsealed(contentsOf(appendingPathComponent(_folder, *name)), key,
                         std::string(purposePrefix) + *name)
              : std::nullopt;
}

bool BookmarkRenewals::keep(std::string_view token, const Bookmark& folder, const Key& key,
                            Error* error) const {
  const auto name = nameOfToken(token, key);
  const auto contents =
      name ? sealed(folder, key, std::string(purposePrefix) + *name) : std::nullopt;
  if (!contents) {
    return refuse(token.size() <= largestToken ? ELIBACC : EINVAL, folder.path, error);
  }
  try {
    makeFolder(_folder);
    replaceFile(appendingPathComponent(_folder, *name), *contents);
    return true;
  } catch (const FileError& failure) {
    return refuse(failure.code().value(), folder.path, error);
  }
}

}  // namespace quennel
