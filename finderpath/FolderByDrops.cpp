#include "finderpath/FolderByDrops.h"

#include <algorithm>
#include <array>
#include <memory>

#include "finderpath/DirectSaveOffer.h"
#include "finderpath/Drag.h"
#include "finderpath/ExtractionOffer.h"
#include "finderpath/FileManagerBus.h"
#include "finderpath/FileManagerWindow.h"
#include "finderpath/Pointer.h"
#include "finderpath/ShownFolder.h"
#include "finderpath/WindowTitle.h"
#include "finderpath/XDisplay.h"

namespace quennel {
namespace {

using Columns = std::array<ColumnOfDrops, 2>;

/// In percent of the window's size: in both halves, where there may be two panes, and clear of side
/// pane, tool bar, status bar and scroll bar.
constexpr std::array<int, 2> columnPlaces{42, 90};
constexpr std::array<int, 2> rowPlaces{45, 83};

/// Drops something at places of a window, until the window does not keep up. Nothing is dropped
/// while another program holds the pointer.
class Dropper {
 public:
  Dropper(XDisplay& display, const FileManagerWindow& window, DragOffer& offer)
      : _display(display),
        _window(window),
        _offer(offer),
        _pointer(display),
        _keepsUp(_pointer.isHeld()) {}

  std::optional<std::string> folderAt(Point place) {
    const bool needsPointer = _window.kind == FileManagerKind::SavesDropsUnderPointer;
    if (!_keepsUp || (needsPointer && !bringPointerTo(place))) {
      return std::nullopt;
    }
    Drag drag(_display, _offer);
    auto folder = drag.folderAt(_window.window, place);
    _keepsUp = drag.isSettled();
    return folder;
  }

 private:
  bool bringPointerTo(Point place) {
    const auto onScreen = _display.onScreen(_window.window, place);
    if (!onScreen || !_display.isUncovered(_window.window, *onScreen)) {
      return false;
    }
    _pointer.moveTo(*onScreen);
    return true;
  }

  XDisplay& _display;
  const FileManagerWindow& _window;
  DragOffer& _offer;
  Pointer _pointer;
  bool _keepsUp;
};

Columns askByDrops(XDisplay& display, const FileManagerWindow& window, Size size,
                   DragOffer& offer) {
  Dropper dropper(display, window, offer);
  Columns columns;
  for (std::size_t column = 0; column < columns.size(); ++column) {
    for (std::size_t row = 0; row < columns[column].size(); ++row) {
      columns[column][row] = dropper.folderAt(
          {size.width * columnPlaces[column] / 100, size.height * rowPlaces[row] / 100});
    }
  }
  return columns;
}

bool isAnswered(const Columns& columns) {
  return std::any_of(columns.begin(), columns.end(),
                     [](const ColumnOfDrops& column) { return column[0] || column[1]; });
}

Columns askWindow(XDisplay& display, const FileManagerBus* bus, const FileManagerWindow& window,
                  Size size) {
  if (window.kind != FileManagerKind::ExtractsDrops) {
    DirectSaveOffer offer(display);
    return askByDrops(display, window, size, offer);
  }
  const auto offer = bus != nullptr ? ExtractionOffer::create(*bus) : nullptr;
  return offer ? askByDrops(display, window, size, *offer) : Columns();
}

}  // namespace

std::optional<std::string> folderByDrops(XDisplay& display, const FileManagerBus* bus,
                                         const FileManagerWindow& window) {
  const auto size = display.size(window.window);
  if (!size) {
    return std::nullopt;
  }
  const Columns columns = askWindow(display, bus, window, *size);
  // A folder that may not be written takes no drops, but its path may be the title.
  return isAnswered(columns) ? folderShown(columns, window.title) : folderInTitle(window.title);
}

}  // namespace quennel
