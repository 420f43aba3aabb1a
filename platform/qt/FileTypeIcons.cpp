#include "platform/qt/FileTypeIcons.h"

#include <QtCore/QMimeDatabase>
#include <QtCore/QMimeType>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

namespace quennel {

QIcon iconOfFileExtension(const std::string& extension) {
  QIcon anyFile = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
  if (extension.empty()) {
    return anyFile;
  }
  const QString name = "name." + QString::fromStdString(extension);
  const QMimeType type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
  return QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), anyFile));
}

}  // namespace quennel
