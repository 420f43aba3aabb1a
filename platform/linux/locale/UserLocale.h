#pragma once

#include <string>

namespace quennel {

/// The user's language, as the environment names it.
///
/// The program never calls `setlocale`: loading a locale costs a plain request more than its own
/// work does, and would change how numbers are read and written. The locale is made at the first
/// text that a user is going to see. Any thread may use it.
class UserLocale {
 public:
  /// The entry for `key` in the catalogue `domain` below `directory`, in UTF-8; without one, `key`.
  static std::string translation(const std::string& key, const char* domain,
                                 const std::string& directory);
};

}  // namespace quennel
