#pragma once

#include <dlfcn.h>

#include <string>

namespace quennel {

/// A shared library, or a module of this program, that is opened while the program runs, so that a
/// start loads nothing that it may not need. It stays open for good: what it started (threads, exit
/// handlers) may outlive every object here.
class OpenedLibrary {
 public:
  /// `binding` is RTLD_NOW, or RTLD_LAZY for a library of which few functions are used.
  explicit OpenedLibrary(const std::string& name, int binding = RTLD_NOW)
      : _handle(dlopen(name.c_str(), binding | RTLD_LOCAL | RTLD_NODELETE)) {}

  /// The function of this name; null when there is none, or no library.
  template <typename Function>
  Function* function(const char* name) const {
    return _handle ? reinterpret_cast<Function*>(dlsym(_handle, name)) : nullptr;
  }

  /// The same into a pointer to the function; false when it is null.
  template <typename Function>
  bool find(const char* name, Function*& found) const {
    found = function<Function>(name);
    return found != nullptr;
  }

 private:
  void* _handle;
};

}  // namespace quennel
