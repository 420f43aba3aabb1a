#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The icon of the type that files with this name extension have; with none, that of any file.
struct FileTypeIcon {
  std::string fileType;
  /// Width and height, in points.
  int size = 16;
};

/// A line of a pop-up button's menu.
struct MenuItem {
  std::string title;
  FileTypeIcon image;
  /// What the line stands for.
  PropertyList representedObject;
};

/// A button that shows one line of a menu and lets the user choose another: what it holds, as plain
/// data that a user interface puts on screen. The first line is selected until another one is.
class PopUpButton {
 public:
  using Action = std::function<void()>;

  /// The text beside the button; "&" stands before the letter of its shortcut key.
  const std::string& label() const { return _label; }
  void setLabel(std::string label) { _label = std::move(label); }

  /// What happens when the user has chosen a line, be it another one or the same again.
  void setAction(Action action) { _action = std::move(action); }

  void removeAllItems() {
    _items.clear();
    _selected = 0;
  }
  void addItem(MenuItem item) { _items.push_back(std::move(item)); }
  const std::vector<MenuItem>& items() const { return _items; }

  /// An index without a line is ignored. Performs no action.
  void selectItemAtIndex(std::size_t index) {
    if (index < _items.size()) {
      _selected = index;
    }
  }
  std::size_t indexOfSelectedItem() const { return _selected; }
  /// Null when the menu is empty. Lives until the menu changes.
  const MenuItem* selectedItem() const { return _items.empty() ? nullptr : &_items[_selected]; }

  /// What a user interface calls when the user has chosen a line.
  void chooseItemAtIndex(std::size_t index) {
    selectItemAtIndex(index);
    if (_action) {
      _action();
    }
  }

 private:
  std::string _label;
  Action _action;
  std::vector<MenuItem> _items;
  std::size_t _selected = 0;
};

}  // namespace quennel
