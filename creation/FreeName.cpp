#include "creation/FreeName.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <system_error>

#include "platform/values/Path.h"

namespace quennel {

namespace {

constexpr std::size_t bitsInWord = 64;
// Reading a folder costs as much as looking for some names in it.
constexpr std::size_t namesToTry = 8;
// Bounds the memory that a single odd name could ask for. Above it names are tried one by one.
constexpr std::size_t highestNoted = std::size_t{1} << 24;

}  // namespace

FreeName::FreeName(const FileManager& files, const std::string& takenPath)
    : _files(files),
      _folder(deletingLastPathComponent(takenPath)),
      _start(deletingPathExtension(lastPathComponent(takenPath)) + "-") {
  const std::string extension = pathExtension(takenPath);
  if (!extension.empty()) {
    _end = "." + extension;
  }
}

std::string FreeName::find() {
  for (std::size_t number = 1;; number = firstNotKnownTaken(number + 1)) {
    if (number == namesToTry + 1) {
      readTakenNumbers();
      number = firstNotKnownTaken(number);
    }
    std::string path = pathWithNumber(number);
    if (!_files.fileExistsAtPath(path)) {
      return path;
    }
  }
}

std::string FreeName::pathWithNumber(std::size_t number) const {
  return appendingPathComponent(_folder, _start + std::to_string(number) + _end);
}

// A link is not noted, because what it points to may not exist: its name is tried when it comes up.
void FreeName::readTakenNumbers() {
  _files.visitDirectory(_folder, [this](const FileManager::DirectoryEntry& entry) {
    const std::size_t number = numberOf(entry.name);
    if (number != 0 && !entry.isLink) {
      markTaken(number);
    }
  });
}

// The number in a name of ours, written as we write it; 0 for any other name.
std::size_t FreeName::numberOf(std::string_view name) const {
  if (name.size() <= _start.size() + _end.size() || !name.starts_with(_start) ||
      !name.ends_with(_end)) {
    return 0;
  }
  name.remove_prefix(_start.size());
  name.remove_suffix(_end.size());
  std::size_t number = 0;
  const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
  const bool isCanonical = name.front() != '0' && end == name.data() + name.size();
  return failure == std::errc() && isCanonical ? number : 0;
}

void FreeName::markTaken(std::size_t number) {
  if (number > highestNoted) {
    return;
  }
  const std::size_t word = number / bitsInWord;
  if (word >= _taken.size()) {
    _taken.resize(2 * word + 1);
  }
  _taken[word] |= std::uint64_t{1} << number % bitsInWord;
}

std::size_t FreeName::firstNotKnownTaken(std::size_t number) const {
  for (std::size_t word = number / bitsInWord; word < _taken.size(); ++word) {
    const std::size_t below = number > word * bitsInWord ? number - word * bitsInWord : 0;
    const std::uint64_t free = ~_taken[word] & ~std::uint64_t{0} << below;
    if (free != 0) {
      return word * bitsInWord + static_cast<std::size_t>(std::countr_zero(free));
    }
  }
  return std::max(number, _taken.size() * bitsInWord);
}

}  // namespace quennel
