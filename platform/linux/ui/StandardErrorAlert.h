#pragma once

#include "platform/UserInterface.h"

namespace quennel {

/// The answer of an alert that was dismissed without choosing: its last button.
int dismissingAnswer(const Alert& alert);

/// An alert where nothing can be shown: writes "title: message" to standard error and answers as if
/// it had been dismissed.
int runOnStandardError(const Alert& alert);

}  // namespace quennel
