#pragma once

#include <QtWidgets/QMessageBox>

#include "platform/UserInterface.h"

namespace quennel {

/// An alert on screen.
class AlertPanel : private QMessageBox {
 public:
  /// Stands above the panel that is shown already, if there is one.
  explicit AlertPanel(const Alert& alert);

  /// Shows the alert above everything else until it is dismissed and answers the button.
  int run();

 private:
  void setTexts(const Alert& alert);
  void addButtons(const Alert& alert);

  int _answer;
};

}  // namespace quennel
