#pragma once

#include "platform/Bundle.h"
#include "platform/Sound.h"

struct ca_context;

namespace quennel {

/// Plays sound files of the bundle by libcanberra, which follows the desktop's choice of sound
/// server and of silence. The library is opened at the first sound; where it is missing nothing
/// plays.
class CanberraSound final : public Sound {
 public:
  /// The bundle is not owned and outlives this object.
  explicit CanberraSound(const Bundle& bundle) : _bundle(bundle) {}
  CanberraSound(const CanberraSound&) = delete;
  CanberraSound& operator=(const CanberraSound&) = delete;
  /// Ends what is still playing.
  ~CanberraSound() override;

  void playSoundNamed(const std::string& name) override;

 private:
  class Library;

  const Bundle& _bundle;
  const Library* _library = nullptr;
  ca_context* _context = nullptr;
};

}  // namespace quennel
