#pragma once

#include <string>
#include <vector>

#include "platform/SavePanel.h"

namespace quennel {

/// What a save panel shows; see SavePanel.h.
struct SavePanelContents {
  std::string title;
  std::string name;
  /// Empty: any type.
  std::vector<std::string> fileTypes;
  bool extensionHidden = false;
  std::string directory;
  PanelLevel level = PanelLevel::Normal;
  bool canCreateDirectories = false;
  /// Not owned; may be null.
  PopUpButton* accessory = nullptr;

  /// The name of the file for what stands in the name field, and the reverse.
  std::string completedName(const std::string& shown) const;
  std::string shownName(const std::string& completed) const;
};

}  // namespace quennel
