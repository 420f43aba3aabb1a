#pragma once

#include <string>

#include "platform/Error.h"

namespace quennel {

/// Thrown inside this adapter when a step of an operation on files fails; it never leaves it.
class FileFailure {
 public:
  enum class Step {
    Opening,
    Reading,
    CopyingSpecialFile,
    Creating,
    Writing,
    Removing,
    ChangingAttributes,
    CopyingIntoItself,
  };

  FileFailure(int code, Step step, std::string path = {})
      : _code(code), _step(step), _path(std::move(path)) {}

  int code() const { return _code; }
  Step step() const { return _step; }

  /// Says where it happened, for the steps of a copy that know their descriptors only: opening and
  /// reading at the source, all else at the copy. The first call counts.
  void locate(const std::string& source, const std::string& copy);

  /// `intent` ("“/a” could not be removed") and the reason why.
  Error describe(const std::string& intent) const;

 private:
  int _code;
  Step _step;
  std::string _path;
};

/// `intent` and the system's text for the errno value.
Error errorOf(const std::string& intent, int code);

/// Whether the errno value is what a filesystem answers that does not know the operation or its
/// flags.
bool isUnsupported(int code);

/// The path as sentences show it.
std::string quoted(const std::string& path);

}  // namespace quennel
