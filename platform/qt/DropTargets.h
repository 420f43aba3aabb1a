#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace quennel {

/// The types that a drag of a promised file has. There are more than three, because only then do
/// targets look at the list of types, which is made to fit each of them.
namespace drop_type {
inline constexpr auto directSave = "XdndDirectSave0";
inline constexpr auto fileList = "text/uri-list";
inline constexpr auto extractionService = "application/x-kde-ark-dndextract-service";
inline constexpr auto extractionPath = "application/x-kde-ark-dndextract-path";
}  // namespace drop_type

/// Whether a drop on a window of this class (the property WM_CLASS) is to be offered the type. File
/// managers that can save prefer a finished file if they are offered one.
bool isOfferedTo(const QByteArray& windowClass, const QString& type);

}  // namespace quennel
