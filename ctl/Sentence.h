#pragma once

#include <string>

#include "manage/Failure.h"
#include "platform/HelperConnection.h"
#include "platform/values/Result.h"

namespace quennel {

/// The path, or another text, as messages show it, on one line whatever its bytes are.
std::string shown(const std::string& text);

/// Why the helper does not answer. `refusal` is what it then has not done: "did not take the
/// request".
std::string sentenceOf(const HelperSilence& silence, const std::string& refusal);

/// Ends the command: throws a UsageError for what makes no sense and a CommandFailure for what
/// could not be done.
[[noreturn]] void fail(const Failure& failure);

/// What the operation made; its failure ends the command.
template <class Value>
Value orFail(Result<Value, Failure> result) {
  if (!result) {
    fail(result.failure());
  }
  return std::move(result).value();
}

inline void orFail(const Result<void, Failure>& result) {
  if (!result) {
    fail(result.failure());
  }
}

}  // namespace quennel
