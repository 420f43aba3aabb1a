#pragma once

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace quennel {

/// The user's home folder: what the environment names, a relative path left out of account, else
/// what the system knows; nothing when the user has none. Main thread only.
inline std::optional<std::string> homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') {
    return home;
  }
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? std::optional<std::string>(user->pw_dir)
                                                    : std::nullopt;
}

}  // namespace quennel
