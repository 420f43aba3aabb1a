#include "platform/qt/SavePanelContents.h"

#include <algorithm>

#include "platform/values/Path.h"

namespace quennel {
namespace {

bool hasType(const std::string& name, const std::string& type) {
  return completingPathExtension(name, type) == name;
}

}  // namespace

std::string SavePanelContents::completedName(const std::string& shown) const {
  const bool isComplete =
      fileTypes.empty() || std::any_of(fileTypes.begin(), fileTypes.end(),
                                       [&](const auto& type) { return hasType(shown, type); });
  return isComplete ? shown : completingPathExtension(shown, fileTypes.front());
}

std::string SavePanelContents::shownName(const std::string& completed) const {
  for (const std::string& type : fileTypes) {
    if (extensionHidden && hasType(completed, type) && completed.size() > type.size() + 1) {
      return completed.substr(0, completed.size() - type.size() - 1);
    }
  }
  return completed;
}

}  // namespace quennel
