#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quennel {

/// Which watches are on the parents of watched directories. A directory that another process holds
/// open is removed without a word from its own watch; its parent's tells.
class ParentWatches {
 public:
  void insert(int descriptor, int parentWatch, const std::string& name) {
    _parents[parentWatch].emplace(name, descriptor);
    _entries.emplace(descriptor, Entry{parentWatch, name});
  }

  bool contains(int parentWatch) const { return _parents.contains(parentWatch); }
  bool containsChild(int descriptor) const { return _entries.contains(descriptor); }

  /// The descriptors that are open on the child of that name.
  std::vector<int> children(int parentWatch, const char* name) const;

  /// Forgets the descriptor; answers its parent's watch if nobody needs that any more.
  std::optional<int> remove(int descriptor);

  /// Forgets everything; answers the watches that were on parents.
  std::vector<int> removeAll();

 private:
  struct Entry {
    int parentWatch;
    std::string name;
  };
  std::unordered_map<int, std::unordered_multimap<std::string, int>> _parents;
  std::unordered_map<int, Entry> _entries;
};

}  // namespace quennel
