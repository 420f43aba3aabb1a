#pragma once

#include <string>

#include "settings/FileTemplate.h"

namespace quennel {

class AppUtil;

/// What a panel proposes as the name of a file made from the template in the folder `dir`: one that
/// is free there, without the suffix that the panel appends. Empty for a template without a name.
std::string proposedName(const AppUtil& util, const std::string& dir,
                         const FileTemplate& template_);

}  // namespace quennel
