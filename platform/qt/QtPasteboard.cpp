#include "platform/qt/QtPasteboard.h"

#include <QtCore/QString>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>

namespace quennel {

void QtPasteboard::clearContents() { QGuiApplication::clipboard()->clear(); }

void QtPasteboard::setString(const std::string& text, const std::string& type) {
  if (type == pasteboard_type::string) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
  }
}

}  // namespace quennel
