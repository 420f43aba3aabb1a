#pragma once

#include <string>
#include <utility>

#include "platform/Error.h"

namespace quennel {

/// Thrown inside this adapter when a step of an operation on files fails; it never leaves it.
class FileFailure {
 public:
  using Step = Error::Kind;

  FileFailure(int code, Step step, std::string path = {}) : _error{code, step, std::move(path)} {}

  const Error& error() const { return _error; }

  /// Says where it happened, for the steps of a copy that know their descriptors only: opening and
  /// reading at the source, all else at the copy. The first call counts.
  void locate(const std::string& source, const std::string& copy);

 private:
  Error _error;
};

/// Whether the errno value is what a filesystem answers that does not know the operation or its
/// flags.
bool isUnsupported(int code);

}  // namespace quennel
