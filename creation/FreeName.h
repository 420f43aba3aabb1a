#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"

namespace quennel {

/// The names "base-1.ext", "base-2.ext" and so on beside a path that is taken, and the search for
/// the first one that is free.
class FreeName {
 public:
  FreeName(const FileManager& files, const std::string& takenPath);

  /// The path with the lowest number at which nothing exists.
  std::string find();

 private:
  std::string pathWithNumber(std::size_t number) const;
  std::size_t numberOf(std::string_view name) const;
  void readTakenNumbers();
  void markTaken(std::size_t number);
  std::size_t firstNotKnownTaken(std::size_t number) const;

  const FileManager& _files;
  std::string _folder;
  /// What stands before and after the number.
  std::string _start;
  std::string _end;
  /// A bit for each number that is known to be taken.
  std::vector<std::uint64_t> _taken;
};

}  // namespace quennel
