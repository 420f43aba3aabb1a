#pragma once

#include <string>

namespace quennel::test {

/// Shell commands run as root for a test program that may itself go on as an ordinary user. What
/// they mount is seen by the test program alone and gone when it ends.
class RootCommands {
 public:
  /// Call it first thing in `main`. As root it starts the process that runs the commands, and then,
  /// when the environment variable QUENNEL_TEST_USER is "nobody", makes this process that user for
  /// good. As an ordinary user it does nothing.
  static void start();

  /// Why no commands can be run; empty when they can.
  static std::string whyUnavailable();

  /// Whether the command ended with status 0. Words it holds are read by the shell.
  static bool run(const std::string& command);
};

}  // namespace quennel::test
