#pragma once

#include <QtWidgets/QFileDialog>
#include <optional>
#include <string>

#include "platform/UserInterface.h"

namespace quennel {

/// An open panel on screen. It changes nothing: no folder is made, renamed or removed in it.
class OpenPanelDialog : public QFileDialog {
 public:
  explicit OpenPanelDialog(const OpenPanel& panel);

  /// Shows the panel above everything else until it is answered.
  std::optional<std::string> run();

  /// What was chosen; nothing when the panel was dismissed otherwise.
  std::optional<std::string> choice() const;

 private:
  void setTexts(const OpenPanel& panel);
  void simplify(const OpenPanel& panel);
};

}  // namespace quennel
