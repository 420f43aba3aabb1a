#pragma once

#include <optional>
#include <string>

#include "platform/values/Path.h"

namespace quennel {

/// Where the user script is installed; empty without a scripts folder.
inline std::string userScriptPath(const std::optional<std::string>& scriptsFolder) {
  return scriptsFolder ? appendingPathComponent(*scriptsFolder, "QuennelHelper.sh") : "";
}

}  // namespace quennel
