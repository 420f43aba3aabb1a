#include "platform/linux/autostart/DesktopAutostart.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/linux/base/FileError.h"
#include "platform/linux/base/FileReplacement.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

/// The path as one word of an entry's command: in quotes, whose special characters need a
/// backslash, which the entry's own rules then want doubled.
std::string quoted(std::string_view path) {
  std::string text = "\"";
  for (const char character : path) {
    switch (character) {
      case '\\':
        text += R"(\\\\)";
        break;
      case '"':
      case '`':
      case '$':
        text.append(R"(\\)").push_back(character);
        break;
      case '%':
        text += "%%";
        break;
      default:
        text += character;
    }
  }
  return text + '"';
}

/// The path as a value of the entry.
std::string escaped(std::string_view path) {
  std::string text;
  for (const char character : path) {
    text += character == '\\' ? R"(\\)" : std::string(1, character);
  }
  return text;
}

bool failWith(Error* error, Error reason) {
  if (error) {
    *error = std::move(reason);
  }
  return false;
}

}  // namespace

DesktopAutostart::DesktopAutostart(std::string folder, std::string helper)
    : _folder(std::move(folder)),
      _path(appendingPathComponent(_folder, "net.brellow.QuennelHelper.desktop")),
      _helper(std::move(helper)) {}

bool DesktopAutostart::isEnabled() const { return access(_path.c_str(), F_OK) == 0; }

bool DesktopAutostart::setEnabled(bool isEnabled, Error* error) {
  if (this->isEnabled() == isEnabled) {
    return true;
  }
  if (!isEnabled) {
    return unlink(_path.c_str()) == 0 || failWith(error, {errno, Error::Kind::Removing, _path});
  }
  try {
    makeFolder(_folder);
    replaceFile(_path, entry());
    return true;
  } catch (const FileError& failure) {
    return failWith(error, {failure.code().value(), Error::Kind::Writing, failure.path()});
  }
}

std::string DesktopAutostart::entry() const {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Quennel\n"
         "Comment=Makes new files from templates by keyboard shortcuts\n"
         "Exec=" +
         quoted(_helper) +
         "\n"
         // Without its program, the entry is left alone.
         "TryExec=" +
         escaped(_helper) +
         "\n"
         "Terminal=false\n"
         "NoDisplay=true\n";
}

}  // namespace quennel
