#include "creation/NameProposal.h"

#include "creation/AppUtil.h"
#include "platform/values/Path.h"

namespace quennel {

std::string proposedName(const AppUtil& util, const std::string& dir,
                         const FileTemplate& template_) {
  const std::string name = templateFileName(template_);
  if (name.empty()) {
    // Joined to the folder it would name the folder itself.
    return "";
  }
  const std::string path = util.genNewPathForPath(appendingPathComponent(dir, name));
  return deletingPathExtension(lastPathComponent(path));
}

}  // namespace quennel
