#include "tests/support/TemporaryDirectory.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace quennel::test {

TemporaryDirectory::TemporaryDirectory(const std::string& parent)
    : _path((parent.empty() ? std::filesystem::temp_directory_path().string() : parent) +
            "/quennel-test-XXXXXX") {
  if (!mkdtemp(_path.data())) {
    throw std::system_error(errno, std::generic_category(), _path);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  // A test may have taken the write permission from a folder of its own.
  for (auto item = std::filesystem::recursive_directory_iterator(_path, ignored);
       !ignored && item != std::filesystem::recursive_directory_iterator();
       item.increment(ignored)) {
    if (item->is_directory(ignored) && !item->is_symlink(ignored)) {
      std::filesystem::permissions(item->path(), std::filesystem::perms::owner_all,
                                   std::filesystem::perm_options::add, ignored);
    }
  }
  std::filesystem::remove_all(_path, ignored);
}

}  // namespace quennel::test
