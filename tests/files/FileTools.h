#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quennel::test {

// What tests of files need beside the file manager: each fails the test when it cannot do its work.

void writeFile(const std::string& path, const std::string& contents);
std::string readFile(const std::string& path);
struct stat statusAt(const std::string& path);
void makeFolder(const std::string& path);
void makeLink(const std::string& path, const std::string& target);
/// The names in a folder, hidden ones too, sorted.
std::vector<std::string> namesIn(const std::string& folder);

/// The value of an extended attribute; nothing when there is none.
std::optional<std::string> attributeAt(const std::string& path, const std::string& name);
bool setAttributeAt(const std::string& path, const std::string& name, const std::string& value);

/// Leaves less than a MiB of room on the filesystem, by a file at that path.
void fillFilesystem(const std::string& path);

/// Text that does not repeat itself.
std::string someText(std::size_t size);

/// Runs the command; its exit status.
int run(const std::string& command);

/// What the operation answers in a process of a user without privileges, whom the folder is opened
/// to.
inline constexpr uid_t nobody = 65534;
std::string asNobody(const std::string& folder, const std::function<std::string()>& operation);

}  // namespace quennel::test
