#pragma once

#include <QtWidgets/QDialog>
#include <memory>
#include <string>

#include "platform/InstallScriptWindow.h"

class QAbstractButton;
class QLabel;

namespace Ui {
class InstallScriptWindowController;
}

namespace quennel {

class Bundle;
class QtApplication;
class QtImageView;

/// A label of an interface file.
class QtTextField : public TextField {
 public:
  explicit QtTextField(QLabel& label) : _label(label) {}

  void setStringValue(const std::string& text) override;
  void setToolTip(const std::string& text) override;
  std::string toolTip() const override { return _toolTip; }

 private:
  QLabel& _label;
  std::string _toolTip;
};

/// The install window in Qt Widgets, from resources/InstallScriptWindowController.ui.
class QtInstallScriptWindow : public InstallScriptWindow {
 public:
  QtInstallScriptWindow(std::shared_ptr<QtApplication> application, const Bundle& bundle,
                        Owner& owner);
  QtInstallScriptWindow(const QtInstallScriptWindow&) = delete;
  QtInstallScriptWindow& operator=(const QtInstallScriptWindow&) = delete;
  ~QtInstallScriptWindow() override;

  QDialog& dialog() { return _dialog; }
  /// Whether the icon is being dragged, or a drop target still busy with it.
  bool isDragging() const;

  void setTitle(const std::string& title) override;
  void close() override { _dialog.close(); }
  Rect frame() const override;
  Rect frameRectForContentRect(const Rect& content) const override;
  ImageView& imageView() override;
  TextField& filenameTextField() override { return *_filenameTextField; }
  TextField& messageTextField() override { return *_messageTextField; }
  void setExpectedDestination(const std::string& folder) override;

 private:
  using Action = void (Owner::*)(const View* sender);

  void connectButton(QAbstractButton& button, Owner& owner, Action action);
  void translateTexts(const Bundle& bundle);

  std::shared_ptr<QtApplication> _application;  // goes after everything on screen
  QDialog _dialog;
  std::unique_ptr<Ui::InstallScriptWindowController> _interface;
  std::unique_ptr<QtTextField> _filenameTextField;
  std::unique_ptr<QtTextField> _messageTextField;
};

}  // namespace quennel
