#include "platform/linux/settings/PropertyListFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/plist/PropertyListLimits.h"

namespace quennel {
namespace {

std::optional<std::string> contentsOf(int descriptor, std::size_t expectedSize) {
  std::string contents(expectedSize + 1, '\0');
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = ::read(descriptor, contents.data() + length, contents.size() - length);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    // A file that grows while it is read is being rewritten in place.
    if (count < 0 || length == contents.size()) {
      return std::nullopt;
    }
    if (count == 0) {
      contents.resize(length);
      return contents;
    }
    length += static_cast<std::size_t>(count);
  }
}

}  // namespace

PropertyListFile PropertyListFile::read(const std::string& path) {
  PropertyListFile file;
  const FileDescriptor descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!descriptor) {
    file.state = errno == ENOENT ? State::Missing : State::Unreadable;
    return file;
  }
  file.state = State::Unreadable;
  struct stat status {};
  if (fstat(descriptor.get(), &status) != 0) {
    return file;
  }
  file.stamp = FileStamp(status);
  file.isStampSettled = file.stamp.isSettled();
  const auto size = static_cast<std::size_t>(status.st_size);
  if (!S_ISREG(status.st_mode) || size > maximumPropertyListSize) {
    return file;
  }
  auto contents = contentsOf(descriptor.get(), size);
  if (auto document =
          contents ? PropertyListDocument::create(*std::move(contents)) : std::nullopt) {
    file.state = State::Readable;
    file.document = *std::move(document);
  }
  return file;
}

std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(const std::string& path) {
  const PropertyListFile file = PropertyListFile::read(path);
  const bool isReadable = file.state == PropertyListFile::State::Readable;
  return isReadable ? std::optional(file.document.dictionary()) : std::nullopt;
}

}  // namespace quennel
