#pragma once

#include <optional>
#include <string>

#include "platform/UserInterface.h"

namespace quennel {

/// The answer of an alert that was dismissed without choosing: its last button.
int dismissingAnswer(const Alert& alert);

/// An alert where nothing can be shown: writes "title: message" to standard error and answers as if
/// it had been dismissed.
int runOnStandardError(const Alert& alert);

/// An open panel where nothing can be shown: writes "title: message (folder)" to standard error and
/// answers as if it had been dismissed.
std::optional<std::string> runOnStandardError(const OpenPanel& panel);

/// A save panel where nothing can be shown: writes "title (folder)" to standard error and is
/// aborted.
ModalResponse runOnStandardError(const std::string& title, const std::string& directory);

}  // namespace quennel
