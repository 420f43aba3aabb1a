#pragma once

#include <optional>
#include <string>

#include "manage/Failure.h"
#include "platform/FileInspector.h"
#include "settings/FileTemplate.h"

namespace quennel {

/// A template as a user describes it; what is absent is left as it is, or to a sensible default.
struct TemplateDescription {
  std::optional<std::string> title = std::nullopt;
  std::optional<std::string> prefix = std::nullopt;
  /// With or without the dot, which people write or leave out.
  std::optional<std::string> suffix = std::nullopt;
  /// The absolute path of the file or folder to copy.
  std::optional<std::string> filePath = std::nullopt;
  std::optional<bool> executable = std::nullopt;
  std::optional<bool> enabled = std::nullopt;
  /// An accelerator text in any spelling.
  std::optional<std::string> shortcut = std::nullopt;
  /// The shortcut is taken away, whatever else is said of it.
  bool removesShortcut = false;

  bool isEmpty() const;
};

/// The description with everything spelled as it is stored; a failure when what it says makes no
/// template.
Result<TemplateDescription, Failure> checked(TemplateDescription description,
                                             const FileInspector& files);

/// What was not said, filled in from the file: a report.md makes files named report.md, a program
/// makes programs.
Result<TemplateDescription, Failure> withDefaults(TemplateDescription description,
                                                  const FileInspector& files);

/// `record` with what is described changed and everything else in it kept; a failure when the new
/// files would have no name, or one that is too long.
Result<FileTemplate, Failure> applied(const TemplateDescription& description,
                                      const FileTemplate& record);

}  // namespace quennel
