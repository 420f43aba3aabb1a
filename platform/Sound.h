#pragma once

#include <string>

namespace quennel {

/// Sounds of the application bundle. Main thread only.
class Sound {
 public:
  virtual ~Sound() = default;

  /// Starts playing the bundle's sound resource of that name and returns at once. Nothing plays,
  /// and nothing is reported, when there is no such resource or no way to play it.
  virtual void playSoundNamed(const std::string& name) = 0;
};

}  // namespace quennel
