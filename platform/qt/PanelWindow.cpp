#include "platform/qt/PanelWindow.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QTextDocument>
#include <QtWidgets/QWidget>

#include "platform/values/Path.h"

namespace quennel {

void keepAboveOthers(QWidget& window) { window.setWindowFlag(Qt::WindowStaysOnTopHint); }

void showInFront(QWidget& window) {
  window.show();
  window.raise();
  window.activateWindow();
}

QString buttonTitle(const std::string& text) {
  return QString::fromStdString(text).replace('&', "&&");
}

QString nearestFolder(std::string path) {
  QString name = QFile::decodeName(path.c_str());
  while (path.size() > 1 &&
         (QFile::encodeName(name).toStdString() != path || !QFileInfo(name).isDir())) {
    path = deletingLastPathComponent(path);
    name = QFile::decodeName(path.c_str());
  }
  return name;
}

QString toolTipText(const std::string& text) {
  const QString tip = QString::fromStdString(text);
  return Qt::mightBeRichText(tip) ? tip.toHtmlEscaped() : tip;
}

}  // namespace quennel
