#include "platform/linux/watch/ParentWatches.h"

#include <utility>

namespace quennel {

std::vector<int> ParentWatches::children(int parentWatch, const char* name) const {
  std::vector<int> descriptors;
  if (const auto parent = _parents.find(parentWatch); parent != _parents.end()) {
    const auto [first, last] = parent->second.equal_range(name);
    for (auto child = first; child != last; ++child) {
      descriptors.push_back(child->second);
    }
  }
  return descriptors;
}

std::optional<int> ParentWatches::remove(int descriptor) {
  const auto entry = _entries.find(descriptor);
  if (entry == _entries.end()) {
    return std::nullopt;
  }
  const Entry removed = std::move(entry->second);
  _entries.erase(entry);
  auto& children = _parents[removed.parentWatch];
  auto [child, last] = children.equal_range(removed.name);
  while (child->second != descriptor) {
    ++child;
  }
  children.erase(child);
  if (!children.empty()) {
    return std::nullopt;
  }
  _parents.erase(removed.parentWatch);
  return removed.parentWatch;
}

std::vector<int> ParentWatches::removeAll() {
  std::vector<int> watches;
  for (const auto& [watch, children] : _parents) {
    watches.push_back(watch);
  }
  _parents.clear();
  _entries.clear();
  return watches;
}

}  // namespace quennel
