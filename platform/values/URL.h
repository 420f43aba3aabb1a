#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// A URL as RFC 3986 writes it, absolute or relative. Immutable.
class URL {
 public:
  /// Nothing when `string` is no URI reference: a raw space, a byte above ASCII or an unfinished
  /// percent escape, for example.
  static std::optional<URL> create(std::string_view string);

  const std::string& string() const { return _string; }

  /// The path with its percent escapes decoded once and, unless it is the root, one slash at the
  /// end dropped. Bytes: a file name that is not UTF-8 comes out as it is. Empty when there is no
  /// path: in "scheme:text", where no slash follows the scheme, and where the decoded path holds a
  /// NUL byte, which no file name can.
  const std::string& path() const { return _path; }

  /// What stands between the first "?" and the "#", not decoded; nothing without a "?".
  const std::optional<std::string>& query() const { return _query; }

 private:
  URL(std::string_view string, std::string path, std::optional<std::string> query);

  std::string _string;
  std::string _path;
  std::optional<std::string> _query;
};

/// Makes a URL of what launchers pass in a human-readable form: spaces, control characters, bytes
/// above ASCII, a "%" that starts no escape and everything else that RFC 3986 does not allow where
/// it stands are escaped. The query starts at the first "?". The result is always a URL, and a
/// string that is one already comes back unchanged.
std::string escapingInvalidCharacters(std::string_view string);

/// `reference`, which need not be a valid URL; where it is a relative path, that path below the
/// folder, an absolute path. An empty path stays empty.
std::string resolvingRelativePath(std::string_view reference, std::string_view folder);

/// "file://" and the absolute path, with everything escaped that is no plain part of a path.
std::string fileURL(std::string_view path);

/// `scheme`, "://", the absolute path escaped as above, "?" and the query.
std::string urlForDirectory(std::string_view scheme, std::string_view path, std::string_view query);

}  // namespace quennel
