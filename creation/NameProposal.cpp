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
  const std::string freeName = lastPathComponent(path);
  // The panel appends a suffix to what the field holds. Without one the field holds the whole name,
  // of which what follows a dot is a part.
  return templateText(template_, "suffix").empty() ? freeName : deletingPathExtension(freeName);
}

}  // namespace quennel
