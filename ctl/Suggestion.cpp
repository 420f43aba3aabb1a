#include "ctl/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace quennel {
namespace {

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

/// How many letters have to be added, removed or changed to turn one word into the other.
std::size_t distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t change = diagonal + (lower(left[i]) == lower(right[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({change, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string suggestion(std::string_view word, std::span<const std::string_view> known,
                       std::string_view prefix) {
  if (word.empty() || known.empty()) {
    return {};
  }
  const auto isNearer = [&](std::string_view left, std::string_view right) {
    return distance(word, left) < distance(word, right);
  };
  const std::string_view nearest = *std::ranges::min_element(known, isNearer);
  const bool isLikely =
      distance(word, nearest) <= std::max<std::size_t>(1, (nearest.size() + 1) / 3);
  return isLikely ? "; did you mean " + std::string(prefix) + std::string(nearest) + "?" : "";
}

}  // namespace quennel
