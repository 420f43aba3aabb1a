#include "platform/linux/desktop/CanberraSound.h"

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/base/OpenedLibrary.h"

namespace quennel {
namespace {

/// Of the types that the desktop's sound themes use, in the order of preference.
std::optional<std::string> soundFile(const Bundle& bundle, const std::string& name) {
  for (const char* const type : {"oga", "ogg", "wav"}) {
    if (auto path = bundle.pathForResource(name, type)) {
      return path;
    }
  }
  return std::nullopt;
}

}  // namespace

/// The few functions of libcanberra that are used, declared here because the library is not linked.
class CanberraSound::Library {
 public:
  /// Null when the library is not installed. It stays open: its threads may outlive a sound.
  static const Library* shared() {
    static const Library library;
    return library._complete ? &library : nullptr;
  }

  int (*create)(ca_context** context) = nullptr;
  int (*destroy)(ca_context* context) = nullptr;
  int (*play)(ca_context* context, std::uint32_t id, ...) = nullptr;

 private:
  Library() {
    const OpenedLibrary library("libcanberra.so.0");
    _complete = library.find("ca_context_create", create) &&
                library.find("ca_context_destroy", destroy) &&
                library.find("ca_context_play", play);
  }

  bool _complete = false;
};

CanberraSound::~CanberraSound() {
  if (_context) {
    _library->destroy(_context);
  }
}

void CanberraSound::playSoundNamed(const std::string& name) {
  const auto path = soundFile(_bundle, name);
  if (!path) {
    return;
  }
  if (!_context) {
    _library = Library::shared();
    if (!_library || _library->create(&_context) != 0) {
      _context = nullptr;
      return;
    }
  }
  constexpr const char* end = nullptr;
  _library->play(_context, 0, "media.filename", path->c_str(), "media.role", "event", end);
}

}  // namespace quennel
