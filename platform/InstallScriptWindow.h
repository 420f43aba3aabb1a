#pragma once

#include <string>

#include "platform/Window.h"

namespace quennel {

class ImageView;

/// What the interface file "InstallScriptWindowController" describes: a window with an icon, its
/// file's name, an instruction and three buttons.
class InstallScriptWindow : public Window {
 public:
  /// What the interface file wires the window and its buttons to. `sender` is the button that was
  /// pressed.
  class Owner {
   public:
    virtual ~Owner() = default;

    virtual void didClickHelp(const View* sender) = 0;
    virtual void copyPath(const View* sender) = 0;
    virtual void openDestination(const View* sender) = 0;
    /// However the window closes; called once, while it is still there.
    virtual void windowWillClose() = 0;
  };

  virtual ImageView& imageView() = 0;
  virtual TextField& filenameTextField() = 0;
  virtual TextField& messageTextField() = 0;

  /// The folder that the window speaks of. Where a drop does not tell the helper its folder, this
  /// is where the platform sees whether the file has come.
  virtual void setExpectedDestination(const std::string& folder) = 0;
};

}  // namespace quennel
