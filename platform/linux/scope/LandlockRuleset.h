#pragma once

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// What a thread that the kernel has confined may still change: nothing but what was allowed.
class LandlockRuleset {
 public:
  /// The version of the kernel's interface; 0 where there is none, or it is switched off.
  static int kernelVersion();

  /// Restrains every change that the interface of that version knows. Throws std::system_error.
  explicit LandlockRuleset(int version);

  /// Allows changes in the open folder and below it. Throws std::system_error.
  void allowBeneath(int folder);

  /// Confines the calling thread, and the threads and programs that it starts, for good. Answers
  /// the errno value, 0 for success.
  int restrictThread() const;

 private:
  unsigned long long _changes;
  FileDescriptor _ruleset;
};

}  // namespace quennel
