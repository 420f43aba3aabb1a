#pragma once

#include <cstddef>
#include <iosfwd>
#include <span>
#include <string_view>

#include "ctl/Options.h"
#include "manage/GrantedFolders.h"
#include "manage/Switches.h"
#include "manage/Templates.h"
#include "platform/FileInspector.h"
#include "platform/HelperConnection.h"

namespace quennel {

/// What a command works with.
struct CommandContext {
  Templates& templates;
  Switches& switches;
  GrantedFolders& grants;
  HelperConnection& helper;
  const FileInspector& files;
  std::ostream& output;
  std::ostream& errors;
};

/// One command, with everything that its help says about it.
struct Command {
  /// One or two words.
  std::string_view name;
  std::string_view arguments;
  std::string_view summary;
  /// More than the summary says, in lines of at most 80 characters.
  std::string_view description;
  std::span<const Option> options;
  std::size_t leastArguments = 0;
  std::size_t mostArguments = 0;
  /// Throws a UsageError or a CommandFailure.
  void (*run)(const Options& options, CommandContext& context);
};

std::span<const Command> templateCommands();
std::span<const Command> settingCommands();
std::span<const Command> grantCommands();
std::span<const Command> shortcutCommands();
std::span<const Command> helperCommands();

}  // namespace quennel
