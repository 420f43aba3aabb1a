#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/UserScripts.h"
#include "platform/linux/tasks/ScriptRun.h"
#include "platform/linux/tasks/ScriptTurns.h"

namespace quennel {

/// The user's scripts as programs in sessions of their own, each waited for by a thread. No more
/// than four run at a time, so that a key that is held down does not overrun the desktop; the
/// others wait in the order of their start, and their time begins when they run.
///
/// A script that exceeds its limits is ended, with everything it started and did not set apart on
/// purpose, and its completion carries an error; so does that of one that exits with a status other
/// than 0. What it detaches on purpose, by a session of its own, is let live.
class LinuxUserScripts final : public UserScripts {
 public:
  /// `bundle` names the folder and translates the descriptions of errors; it outlives this object.
  /// Completions may use the run loop: make this object after it, so that it goes first.
  explicit LinuxUserScripts(const Bundle& bundle, const ScriptLimits& limits = {});
  LinuxUserScripts(const LinuxUserScripts&) = delete;
  LinuxUserScripts& operator=(const LinuxUserScripts&) = delete;
  ~LinuxUserScripts() override;

  std::optional<std::string> applicationScriptsDirectory(Error* error) override;
  std::unique_ptr<UserUnixTask> createTask(const std::string& path, Error* error) override;

 private:
  void start(ScriptRun::Request request);

  const Bundle& _bundle;
  ScriptLimits _limits;
  ScriptTurns _turns;
  std::list<ScriptRun> _runs;
};

}  // namespace quennel
