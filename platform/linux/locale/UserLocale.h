#pragma once

#include <string>

namespace quennel {

/// The user's language, as the environment names it.
///
/// The program never calls `setlocale`: loading a locale costs a plain request more than its own
/// work does, and would change how numbers are read and written. The locale is made at the first
/// text that a user is going to see. `strerror` itself would therefore answer in English; every
/// error description comes from here instead. Any thread may use it.
class UserLocale {
 public:
  /// The system's sentence for an errno value, in UTF-8.
  static std::string errorDescription(int code);

  /// The entry for `key` in the catalogue `domain` below `directory`, in UTF-8; without one, `key`.
  static std::string translation(const std::string& key, const char* domain,
                                 const std::string& directory);
};

}  // namespace quennel
