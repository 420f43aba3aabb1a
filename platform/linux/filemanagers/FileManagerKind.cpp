#include "platform/linux/filemanagers/FileManagerKind.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <utility>

namespace quennel {
namespace {

/// By the second text of the property WM_CLASS, in small letters; a name before those that it
/// holds.
constexpr std::array<std::pair<std::string_view, FileManagerKind>, 10> classes{{
    {"thunar", FileManagerKind::SavesDrops},
    {"xfdesktop", FileManagerKind::SavesDrops},  // Thunar's desktop
    {"pcmanfm-qt", FileManagerKind::SavesDropsUnderPointer},
    {"pcmanfm", FileManagerKind::SavesDrops},
    {"nemo", FileManagerKind::SavesDrops},
    {"caja", FileManagerKind::SavesDrops},
    {"org.kde.dolphin", FileManagerKind::ExtractsDrops},
    {"dolphin", FileManagerKind::ExtractsDrops},
    {"org.gnome.nautilus", FileManagerKind::ListsLocations},
    {"nautilus", FileManagerKind::ListsLocations},
}};

std::string inSmallLetters(std::string_view text) {
  std::string small(text);
  std::transform(small.begin(), small.end(), small.begin(),
                 [](unsigned char letter) { return std::tolower(letter); });
  return small;
}

template <typename Condition>
std::optional<FileManagerKind> firstWhose(const Condition& nameFits) {
  const auto found = std::find_if(classes.begin(), classes.end(),
                                  [&](const auto& entry) { return nameFits(entry.first); });
  return found == classes.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

std::optional<FileManagerKind> fileManagerOfClass(std::string_view name) {
  const std::string small = inSmallLetters(name);
  return firstWhose([&](std::string_view known) { return known == small; });
}

std::optional<FileManagerKind> fileManagerNamedIn(std::string_view windowClass) {
  const std::string small = inSmallLetters(windowClass);
  return firstWhose([&](std::string_view known) { return small.find(known) != std::string::npos; });
}

}  // namespace quennel
