#include "platform/qt/QtInstallScriptWindow.h"

#include <QtCore/QMargins>
#include <utility>

#include "platform/Bundle.h"
#include "platform/qt/PanelWindow.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtImageView.h"
#include "ui_InstallScriptWindowController.h"

namespace quennel {
namespace {

Rect rectOf(const QRect& rect) { return {{rect.x(), rect.y()}, {rect.width(), rect.height()}}; }

/// A widget as the sender of an action.
class SendingView : public View {
 public:
  explicit SendingView(const QWidget& widget) : _widget(widget) {}

  Rect frame() const override {
    return {rectOf(QRect(_widget.mapTo(_widget.window(), QPoint()), _widget.size()))};
  }

 private:
  const QWidget& _widget;
};

}  // namespace

void QtTextField::setStringValue(const std::string& text) {
  _label.setText(QString::fromStdString(text));
}

void QtTextField::setToolTip(const std::string& text) {
  _toolTip = text;
  _label.setToolTip(toolTipText(text));
}

QtInstallScriptWindow::QtInstallScriptWindow(std::shared_ptr<QtApplication> application,
                                             const Bundle& bundle, Owner& owner)
    : _application(std::move(application)),
      _interface(std::make_unique<Ui::InstallScriptWindowController>()) {
  _interface->setupUi(&_dialog);
  _interface->imageView->setWindow(*this);
  _filenameTextField = std::make_unique<QtTextField>(*_interface->filenameTextField);
  _messageTextField = std::make_unique<QtTextField>(*_interface->messageTextField);
  translateTexts(bundle);
  _dialog.setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  // The file manager that is opened beside it may come up at any time, and takes the front.
  keepAboveOthers(_dialog);
  _dialog.setModal(true);
  connectButton(*_interface->helpButton, owner, &Owner::didClickHelp);
  connectButton(*_interface->copyPathButton, owner, &Owner::copyPath);
  connectButton(*_interface->openDestinationButton, owner, &Owner::openDestination);
  QObject::connect(&_dialog, &QDialog::finished, &_dialog, [&owner] { owner.windowWillClose(); });
}

QtInstallScriptWindow::~QtInstallScriptWindow() = default;

bool QtInstallScriptWindow::isDragging() const { return _interface->imageView->isDragging(); }

void QtInstallScriptWindow::setTitle(const std::string& title) {
  _dialog.setWindowTitle(QString::fromStdString(title));
}

Rect QtInstallScriptWindow::frame() const { return rectOf(_dialog.frameGeometry()); }

Rect QtInstallScriptWindow::frameRectForContentRect(const Rect& content) const {
  const QRect inner = _dialog.geometry();
  const QRect outer = _dialog.frameGeometry();
  const QMargins borders(inner.left() - outer.left(), inner.top() - outer.top(),
                         outer.right() - inner.right(), outer.bottom() - inner.bottom());
  return rectOf(QRect(content.origin.x, content.origin.y, content.size.width, content.size.height)
                    .marginsAdded(borders));
}

ImageView& QtInstallScriptWindow::imageView() { return *_interface->imageView; }

void QtInstallScriptWindow::setExpectedDestination(const std::string& folder) {
  _interface->imageView->setExpectedDestination(folder);
}

void QtInstallScriptWindow::connectButton(QAbstractButton& button, Owner& owner, Action action) {
  QObject::connect(&button, &QAbstractButton::clicked, &_dialog, [&button, &owner, action] {
    const SendingView sender(button);
    (owner.*action)(&sender);
  });
}

void QtInstallScriptWindow::translateTexts(const Bundle& bundle) {
  const auto translated = [&bundle](const QString& text) {
    return bundle.localizedStringForKey(text.toStdString());
  };
  _dialog.setWindowTitle(QString::fromStdString(translated(_dialog.windowTitle())));
  for (QAbstractButton* const button : _dialog.findChildren<QAbstractButton*>()) {
    button->setText(buttonTitle(translated(button->text())));
    button->setToolTip(toolTipText(translated(button->toolTip())));
  }
}

}  // namespace quennel
