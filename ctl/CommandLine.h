#pragma once

#include <span>
#include <string>

#include "ctl/Command.h"

namespace quennel {

/// Finds the command that `words` (without the program's name) start with and runs it. Answers the
/// exit status: 0 done, 1 failed, 2 not understood.
int runCommandLine(std::span<const std::string> words, CommandContext& context);

}  // namespace quennel
