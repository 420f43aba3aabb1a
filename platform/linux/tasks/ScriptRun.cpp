#include "platform/linux/tasks/ScriptRun.h"

#include <string.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/linux/tasks/ScriptProcess.h"

namespace quennel {
namespace {

FileDescriptor makeEvent() {
  FileDescriptor event(eventfd(0, EFD_CLOEXEC));
  if (!event) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return event;
}

std::string signalName(int number) {
  const char* abbreviation = sigabbrev_np(number);
  return abbreviation != nullptr ? "SIG" + std::string(abbreviation) : std::to_string(number);
}

}  // namespace

ScriptRun::ScriptRun(Request request, const ScriptLimits& limits, ScriptTurns& turns)
    : _request(std::move(request)),
      _limits(limits),
      _turn(turns),
      _stop(makeEvent()),
      _thread([this] { perform(); }) {}

ScriptRun::~ScriptRun() {
  // Cannot fail: the counter is nowhere near its limit.
  eventfd_write(_stop.get(), 1);
  _thread.join();
}

void ScriptRun::perform() {
  const Result result = runInTurn();
  if (_request.standardOutput) {
    _request.standardOutput->writeData(result.output);
    _request.standardOutput->closeFile();
  }
  if (!result.stopped) {
    _request.completion(result.error);
  }
  _request = {};  // what the completion holds goes on the thread that called it
  _done = true;
}

/// The turn ends with the script: a completion may wait for the user.
ScriptRun::Result ScriptRun::runInTurn() {
  const bool isToRun = _turn.wait();
  Result result = isToRun ? runScript() : Result{std::nullopt, {}, true};
  _turn.end();
  return result;
}

ScriptRun::Result ScriptRun::runScript() const {
  try {
    return watchScript();
  } catch (const std::system_error& failure) {
    return {errorOfStart(failure.code().value()), {}, false};
  }
}

ScriptRun::Result ScriptRun::watchScript() const {
  const ScriptProcess process(_request.path, _request.arguments);
  ScriptWatch watch(process, _stop, _limits);
  const auto outcome = watch.run();
  if (outcome == ScriptWatch::Outcome::Stopped) {
    return {std::nullopt, {}, true};
  }
  auto error = describe(outcome, process);
  return {error, error ? std::string() : watch.output(), false};
}

std::optional<Error> ScriptRun::describe(ScriptWatch::Outcome outcome,
                                         const ScriptProcess& process) const {
  if (outcome == ScriptWatch::Outcome::TookTooLong) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(_limits.time);
    return Error{ETIMEDOUT, Error::Kind::ScriptTookTooLong, std::to_string(seconds.count())};
  }
  if (outcome == ScriptWatch::Outcome::PrintedTooMuch) {
    return Error{EFBIG, Error::Kind::ScriptPrintedTooMuch, _request.path};
  }
  const auto [kind, statusOrSignal] = process.ending();
  if (kind == ScriptProcess::Ending::Kind::Signaled) {
    return Error{0, Error::Kind::ScriptEndedBySignal, signalName(statusOrSignal)};
  }
  if (statusOrSignal != 0) {
    return Error{0, Error::Kind::ScriptFailed, std::to_string(statusOrSignal)};
  }
  return std::nullopt;
}

Error ScriptRun::errorOfStart(int code) const {
  // The system answers a missing interpreter as if the script were missing.
  std::error_code ignored;
  const bool isThere = code == ENOENT && std::filesystem::exists(_request.path, ignored);
  return {code, isThere ? Error::Kind::MissingInterpreter : Error::Kind::StartingScript,
          _request.path};
}

}  // namespace quennel
