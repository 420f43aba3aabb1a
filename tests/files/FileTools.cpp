#include "tests/files/FileTools.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/ChildProcess.h"

namespace quennel::test {

void writeFile(const std::string& path, const std::string& contents) {
  std::ofstream file(path, std::ios::binary);
  file << contents;
  file.close();
  ASSERT_TRUE(file) << path;
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  std::ostringstream contents;
  contents << file.rdbuf();
  return contents.str();
}

struct stat statusAt(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status;
}

void makeFolder(const std::string& path) {
  ASSERT_EQ(::mkdir(path.c_str(), 0755), 0) << path << ": " << std::strerror(errno);
}

void makeLink(const std::string& path, const std::string& target) {
  ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path << ": " << std::strerror(errno);
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> attributeAt(const std::string& path, const std::string& name) {
  std::string value(64 * 1024, '\0');
  const ssize_t size = ::lgetxattr(path.c_str(), name.c_str(), value.data(), value.size());
  if (size < 0) {
    return std::nullopt;
  }
  value.resize(static_cast<std::size_t>(size));
  return value;
}

bool setAttributeAt(const std::string& path, const std::string& name, const std::string& value) {
  return ::lsetxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
}

void fillFilesystem(const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(file, 0);
  constexpr off_t smallest = off_t{512} * 1024;
  off_t filled = 0;
  for (off_t step = off_t{1} << 30; step >= smallest; step /= 2) {
    while (::fallocate(file, 0, filled, step) == 0) {
      filled += step;
    }
  }
  ::close(file);
}

std::string someText(std::size_t size) {
  std::string text;
  text.reserve(size + 24);
  for (std::size_t line = 0; text.size() < size; ++line) {
    text += std::to_string(line * 2654435761U) + "\n";
  }
  text.resize(size);
  return text;
}

std::string asNobody(const std::string& folder, const std::function<std::string()>& operation) {
  EXPECT_EQ(::chmod(folder.c_str(), 0777), 0);
  return inChildProcess([&]() -> std::string {
    if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) {
      return "no way to become nobody";
    }
    return operation();
  });
}

int run(const std::string& command) { return std::system(command.c_str()); }

}  // namespace quennel::test
