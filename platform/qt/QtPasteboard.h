#pragma once

#include "platform/Pasteboard.h"

namespace quennel {

/// The clipboard of the toolkit. What is put there is gone with the last window, unless the desktop
/// keeps it.
class QtPasteboard : public Pasteboard {
 public:
  void clearContents() override;
  void setString(const std::string& text, const std::string& type) override;
};

}  // namespace quennel
