#include "platform/qt/FileTypes.h"

#include <QtCore/QMimeDatabase>
#include <QtCore/QMimeType>
#include <QtCore/QString>

namespace quennel {

std::optional<std::string> descriptionOfFileExtension(const std::string& extension) {
  const QString suffix = QString::fromStdString(extension);
  if (suffix.isEmpty() || suffix.contains('/')) {
    return std::nullopt;
  }
  const auto types = QMimeDatabase().mimeTypesForFileName("name." + suffix);
  return types.isEmpty() ? std::nullopt : std::optional(types.first().comment().toStdString());
}

}  // namespace quennel
