#include "ctl/Words.h"

#include <charconv>
#include <limits>

#include "ctl/CommandError.h"
#include "ctl/Sentence.h"
#include "manage/Failure.h"

namespace quennel {

std::string existingPath(const std::string& path, const FileInspector& files) {
  Failure failure{.reason = Failure::Reason::UnreadableItem, .item = path};
  const auto absolute = files.absolutePath(path, &failure.error);
  if (!absolute) {
    fail(failure);
  }
  return *absolute;
}

std::string existingFolder(const std::string& path, const FileInspector& files) {
  std::string folder = existingPath(path, files);
  const auto facts = files.factsOf(folder);
  if (!facts || facts->kind != FileFacts::Kind::Folder) {
    fail({.reason = Failure::Reason::NotAFolder, .item = folder});
  }
  return folder;
}

std::size_t templateIndex(const std::string& text) {
  std::size_t index = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, index);
  if (text.empty() || stopped != end || error == std::errc::invalid_argument) {
    throw UsageError("'" + shown(text) + "' is not the index of a template");
  }
  // A number that is too large is too large for every list.
  return error == std::errc() ? index : std::numeric_limits<std::size_t>::max();
}

}  // namespace quennel
