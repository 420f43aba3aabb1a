#include "platform/qt/QtPopover.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QScreen>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>

#include "platform/qt/QtInstallScriptWindow.h"
#include "ui_InstallScriptCmdViewController.h"

namespace quennel {
namespace {

/// The left upper corner of something of this size beside `rect`, or at its opposite side when it
/// would stand out of the screen there.
QPoint placeBeside(const QRect& rect, QSize size, RectEdge edge, const QRect& screen) {
  QPoint place = rect.center() - QPoint(size.width(), size.height()) / 2;
  const int below = rect.bottom() + 1;
  const int above = rect.top() - size.height();
  const int right = rect.right() + 1;
  const int left = rect.left() - size.width();
  switch (edge) {
    case RectEdge::MinY:
      place.setY(below + size.height() <= screen.bottom() + 1 ? below : above);
      break;
    case RectEdge::MaxY:
      place.setY(above >= screen.top() ? above : below);
      break;
    case RectEdge::MinX:
      place.setX(left >= screen.left() ? left : right);
      break;
    case RectEdge::MaxX:
      place.setX(right + size.width() <= screen.right() + 1 ? right : left);
      break;
  }
  place.setX(std::max(screen.left(), std::min(place.x(), screen.right() + 1 - size.width())));
  place.setY(std::max(screen.top(), std::min(place.y(), screen.bottom() + 1 - size.height())));
  return place;
}

}  // namespace

QtInstallScriptCmdView::QtInstallScriptCmdView()
    : _interface(std::make_unique<Ui::InstallScriptCmdViewController>()) {
  _interface->setupUi(&_widget);
}

QtInstallScriptCmdView::~QtInstallScriptCmdView() = default;

void QtInstallScriptCmdView::selectAll() {
  _interface->textView->selectAll();
  _interface->textView->setFocus();
}

void QtInstallScriptCmdView::setString(const std::string& text) {
  _interface->textView->setPlainText(QString::fromStdString(text));
}

void QtInstallScriptCmdView::setUserFixedPitchFont(double size) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPointSizeF(size);
  _interface->textView->setFont(font);
}

QtPopover::QtPopover() {
  _frame.setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
  _frame.setLayout(new QVBoxLayout);
  _frame.layout()->setContentsMargins(0, 0, 0, 0);
}

QtPopover::~QtPopover() {
  if (_view) {
    _view->widget().setParent(nullptr);  // it is not this object's
  }
}

void QtPopover::setContentView(InstallScriptCmdView& view) {
  _view = static_cast<QtInstallScriptCmdView*>(&view);
  _frame.layout()->addWidget(&_view->widget());
}

void QtPopover::setBehavior(PopoverBehavior behavior) {
  _frame.setWindowFlags(behavior == PopoverBehavior::Transient ? Qt::Popup : Qt::Tool);
}

void QtPopover::showRelativeToRect(const Rect& rect, Window& ofWindow, RectEdge preferredEdge) {
  QDialog& window = static_cast<QtInstallScriptWindow&>(ofWindow).dialog();
  QObject::connect(&window, &QDialog::finished, &_frame, &QWidget::close, Qt::UniqueConnection);
  const QRect anchor(window.mapToGlobal(QPoint(rect.origin.x, rect.origin.y)),
                     QSize(rect.size.width, rect.size.height));
  _frame.adjustSize();
  _frame.move(
      placeBeside(anchor, _frame.size(), preferredEdge, window.screen()->availableGeometry()));
  _frame.show();
  if (_view) {
    _view->selectAll();
  }
}

}  // namespace quennel
