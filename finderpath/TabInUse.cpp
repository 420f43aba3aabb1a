#include "finderpath/TabInUse.h"

#include <set>

#include "finderpath/FileURI.h"

namespace quennel {

std::optional<std::string> folderOfTabInUse(
    const std::vector<std::string>& uris, const std::function<bool(const std::string&)>& isNamed) {
  const std::set<std::string> different(uris.begin(), uris.end());
  if (different.size() == 1) {
    return pathOfFileURI(*different.begin());
  }
  std::vector<std::string> named;
  for (const std::string& uri : different) {
    const auto folder = pathOfFileURI(uri);
    if (folder && isNamed(*folder)) {
      named.push_back(*folder);
    }
  }
  return named.size() == 1 ? std::optional(named.front()) : std::nullopt;
}

}  // namespace quennel
