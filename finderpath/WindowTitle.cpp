#include "finderpath/WindowTitle.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/values/Path.h"

namespace quennel {
namespace {

constexpr std::array<std::string_view, 2> separators{" - ", " — "};

bool startsTitle(std::string_view text, std::string_view title) {
  if (text.empty() || !title.starts_with(text)) {
    return false;
  }
  const std::string_view rest = title.substr(text.size());
  return rest.empty() || std::any_of(separators.begin(), separators.end(),
                                     [&](auto separator) { return rest.starts_with(separator); });
}

/// The title itself, and what is left of it when it is cut at a separator.
std::vector<std::string> readings(std::string_view title) {
  std::vector<std::string> result{std::string(title)};
  for (const std::string_view separator : separators) {
    for (std::size_t at = title.find(separator); at != std::string_view::npos;
         at = title.find(separator, at + 1)) {
      result.emplace_back(title.substr(0, at));
    }
  }
  return result;
}

}  // namespace

bool isTitleOfFolder(std::string_view title, std::string_view folder) {
  return startsTitle(lastPathComponent(folder), title) || startsTitle(folder, title);
}

std::optional<std::string> folderInTitle(std::string_view title) {
  if (!title.starts_with('/')) {
    return std::nullopt;
  }
  std::vector<std::string> folders = readings(title);
  std::erase_if(folders, [](const std::string& folder) {
    std::error_code ignored;
    return !std::filesystem::is_directory(folder, ignored);
  });
  return folders.size() == 1 ? std::optional(folders.front()) : std::nullopt;
}

}  // namespace quennel
