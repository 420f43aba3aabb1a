#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>

namespace quennel {

/// What is known of one watch of the kernel.
struct Watch {
  /// The first of the descriptors that are open on its object; -1 when it is not in the table.
  int firstDescriptor = -1;
  /// Its events that were read and not yet dealt with.
  std::uint32_t events = 0;
};

/// Watches by their numbers. The kernel gives these out in rising order, so pages of neighbours
/// take less room than the nodes of a map, which matters with ten thousands of them.
class WatchTable {
 public:
  /// Null when the watch is not in the table. Stays valid until it is removed.
  Watch* find(int watch) {
    if (watch < 0) {
      return nullptr;
    }
    if (watch / pageSize != _lastNumber) {
      const auto page = _pages.find(watch / pageSize);
      if (page == _pages.end()) {
        return nullptr;
      }
      _lastNumber = page->first;
      _lastPage = page->second.get();
    }
    Watch& found = _lastPage->watches[index(watch)];
    return found.firstDescriptor < 0 ? nullptr : &found;
  }

  void insert(int watch, int descriptor) {
    auto& page = _pages[watch / pageSize];
    if (!page) {
      page = std::make_unique<Page>();
    }
    ++page->count;
    page->watches[index(watch)] = {descriptor, 0};
  }

  /// Removes a watch that is in the table.
  void remove(int watch) {
    const auto page = _pages.find(watch / pageSize);
    page->second->watches[index(watch)] = {};
    if (--page->second->count == 0) {
      _lastNumber = -1;
      _pages.erase(page);
    }
  }

 private:
  static constexpr int pageSize = 256;
  struct Page {
    int count = 0;
    std::array<Watch, pageSize> watches;
  };
  static std::size_t index(int watch) { return static_cast<std::size_t>(watch % pageSize); }

  std::unordered_map<int, std::unique_ptr<Page>> _pages;
  /// The page that was found last, -1 for none: what follows mostly concerns the same one.
  int _lastNumber = -1;
  Page* _lastPage = nullptr;
};

}  // namespace quennel
