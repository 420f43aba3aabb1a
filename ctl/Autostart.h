#pragma once

#include <string>

#include "platform/Error.h"

namespace quennel {

/// The entry by which the desktop starts the helper at login, so that the templates' shortcuts work
/// from then on.
class Autostart {
 public:
  /// `folder` is where the desktop looks for entries, `helper` the absolute path of the program.
  Autostart(std::string folder, std::string helper);

  /// Makes the entry or removes it. One that is there stays as it is: its user may have switched it
  /// off.
  bool setEnabled(bool isEnabled, Error* error = nullptr) const;

 private:
  std::string entry() const;

  std::string _folder;
  std::string _path;
  std::string _helper;
};

}  // namespace quennel
