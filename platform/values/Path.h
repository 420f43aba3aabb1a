#pragma once

#include <string>
#include <string_view>

namespace quennel {

// Operations on paths as texts: bytes in the POSIX form, with no look at the filesystem. Slashes at
// the end of a path do not count, and several slashes in a row count as one.

/// "/a/b.txt" and "/a/b.txt/" → "b.txt"; "/" → "/"; "" → "".
std::string lastPathComponent(std::string_view path);

/// "/a/b" → "/a"; "/a" and "/" → "/"; "a" → "".
std::string deletingLastPathComponent(std::string_view path);

/// The two with exactly one slash between them and none at the end; with either one empty, the
/// other.
std::string appendingPathComponent(std::string_view path, std::string_view component);

/// What follows the last dot of the last component, without the dot. A dot at its start or at its
/// end makes no extension: "a.tar.gz" → "gz"; ".bashrc" and "a." → "".
std::string pathExtension(std::string_view path);

/// The path without its extension and that extension's dot, and without slashes at the end.
std::string deletingPathExtension(std::string_view path);

/// The path, without slashes at the end, then a dot and the extension; with an empty extension no
/// dot either.
std::string appendingPathExtension(std::string_view path, std::string_view extension);

/// A file name with the extension appended that it is to have, of which only what is missing:
/// "report.v2" with "txt" → "report.v2.txt", "report.TXT" as it is, and "backup.tar" with "tar.gz"
/// → "backup.tar.gz".
std::string completingPathExtension(std::string_view name, std::string_view extension);

/// A leading "~" replaced by the user's home folder (the environment's HOME; left alone without
/// one, and so is "~name"), empty and "." components removed, and in an absolute path ".." taken
/// together with the component before it. Symbolic links are not looked at.
std::string standardizingPath(std::string_view path);

}  // namespace quennel
