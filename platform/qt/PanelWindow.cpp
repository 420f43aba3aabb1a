#include "platform/qt/PanelWindow.h"

#include <QtWidgets/QWidget>

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

}  // namespace quennel
