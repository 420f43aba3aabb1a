#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace quennel {

/// Whether a drop on a window of this class (the property WM_CLASS) is to be offered the type. File
/// managers that can save prefer a finished file if they are offered one. A drag has more than
/// three types, because only then do targets look at the list of types, which is made to fit each
/// of them.
bool isOfferedTo(const QByteArray& windowClass, const QString& type);

}  // namespace quennel
