#pragma once

#include <string>

#include "platform/Autostart.h"

namespace quennel {

/// The entry in the user's folder of programs that the desktop starts at login.
class DesktopAutostart final : public Autostart {
 public:
  /// `folder` is where the desktop looks for entries, `helper` the absolute path of the program.
  DesktopAutostart(std::string folder, std::string helper);

  bool isEnabled() const override;
  bool setEnabled(bool isEnabled, Error* error = nullptr) override;

 private:
  std::string entry() const;

  std::string _folder;
  std::string _path;
  std::string _helper;
};

}  // namespace quennel
