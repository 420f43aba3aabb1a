#include "platform/linux/files/FileFailure.h"

#include <cerrno>

#include "platform/linux/locale/UserLocale.h"

namespace quennel {

namespace {

std::string_view nameOfStep(FileFailure::Step step) {
  switch (step) {
    case FileFailure::Step::Opening:
      return "opening ";
    case FileFailure::Step::Reading:
      return "reading ";
    case FileFailure::Step::CopyingSpecialFile:
      return "copying the special file ";
    case FileFailure::Step::Creating:
      return "creating ";
    case FileFailure::Step::Writing:
      return "writing ";
    case FileFailure::Step::Removing:
      return "removing ";
    case FileFailure::Step::ChangingAttributes:
      return "changing the attributes of ";
    case FileFailure::Step::CopyingIntoItself:
      return "copying the folder into itself as ";
  }
  return "";
}

bool isAtSource(FileFailure::Step step) {
  return step == FileFailure::Step::Opening || step == FileFailure::Step::Reading ||
         step == FileFailure::Step::CopyingSpecialFile;
}

}  // namespace

bool isUnsupported(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EISDIR;
}

std::string quoted(const std::string& path) { return "“" + path + "”"; }

void FileFailure::locate(const std::string& source, const std::string& copy) {
  if (_path.empty()) {
    _path = isAtSource(_step) ? source : copy;
  }
}

Error FileFailure::describe(const std::string& intent) const {
  std::string sentence = intent;
  sentence.append(": ").append(nameOfStep(_step)).append(quoted(_path)).append(" failed");
  return errorOf(sentence, _code);
}

Error errorOf(const std::string& intent, int code) {
  return {code, intent + ": " + UserLocale::errorDescription(code) + "."};
}

}  // namespace quennel
