#pragma once

#include <QtGui/QIcon>
#include <string>

namespace quennel {

/// The icon, from the user's icon theme, of the type that files with this name extension have; with
/// none, or one that no type has, the icon of any file.
QIcon iconOfFileExtension(const std::string& extension);

}  // namespace quennel
