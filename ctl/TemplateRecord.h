#pragma once

#include <optional>
#include <string>

#include "ctl/Options.h"
#include "settings/FileTemplate.h"

namespace quennel {

/// A template as a user describes it; what is absent is left as it is, or to a sensible default.
struct TemplateDescription {
  std::optional<std::string> title;
  std::optional<std::string> prefix;
  std::optional<std::string> suffix;
  std::optional<std::string> filePath;
  std::optional<bool> executable;
  std::optional<bool> enabled;
  /// An accelerator text; an empty one takes the shortcut away.
  std::optional<std::string> shortcut;

  /// From the options of "template add" and "template edit". Throws a UsageError for a value that
  /// makes no template, and a CommandFailure for a file that cannot be one.
  static TemplateDescription fromOptions(const Options& options);

  /// Makes the file or folder named `name` the one to copy. Throws as above.
  void setFile(const std::string& name);

  bool isEmpty() const;

  /// Fills in what was not said from the file: a report.md makes files named report.md, a program
  /// makes programs.
  TemplateDescription withDefaults() const;

  /// `record` with what is described changed and everything else in it kept. Throws a UsageError
  /// when what is described gives the new files no name, or one that is too long.
  FileTemplate appliedTo(const FileTemplate& record) const;
};

/// The name of the files that the template makes.
std::string nameMadeBy(const FileTemplate& template_);

}  // namespace quennel
