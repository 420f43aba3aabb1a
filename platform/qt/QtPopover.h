#pragma once

#include <QtWidgets/QFrame>
#include <QtWidgets/QWidget>
#include <memory>
#include <string>

#include "platform/Popover.h"

namespace Ui {
class InstallScriptCmdViewController;
}

namespace quennel {

/// The command view in Qt Widgets, from resources/InstallScriptCmdViewController.ui.
class QtInstallScriptCmdView : public InstallScriptCmdView, private TextView {
 public:
  QtInstallScriptCmdView();
  ~QtInstallScriptCmdView() override;

  QWidget& widget() { return _widget; }
  /// Selects the text, so that copying needs no more than the key for it.
  void selectAll();

  TextView& textView() override { return *this; }

 private:
  void setString(const std::string& text) override;
  void setUserFixedPitchFont(double size) override;

  QWidget _widget;
  std::unique_ptr<Ui::InstallScriptCmdViewController> _interface;
};

/// A popover in Qt Widgets.
class QtPopover : public Popover {
 public:
  QtPopover();
  QtPopover(const QtPopover&) = delete;
  QtPopover& operator=(const QtPopover&) = delete;
  ~QtPopover() override;

  void setContentView(InstallScriptCmdView& view) override;
  void setBehavior(PopoverBehavior behavior) override;
  void showRelativeToRect(const Rect& rect, Window& ofWindow, RectEdge preferredEdge) override;

 private:
  QFrame _frame;
  QtInstallScriptCmdView* _view = nullptr;
};

}  // namespace quennel
