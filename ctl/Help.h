#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ctl/Command.h"

namespace quennel {

/// The texts of --help: for the program, for the commands that share a first word, for one command.
std::string helpForProgram(std::span<const Command> commands);
std::string helpForGroup(std::string_view firstWord, std::span<const Command> commands);
std::string helpForCommand(const Command& command);

}  // namespace quennel
