#pragma once

#include "finderpath/DragOffer.h"

namespace quennel {

class XDisplay;

/// Offers a file by X Direct Save: the target writes the URI to save to into a property of the
/// drag's window before it asks for the file, and is then told that saving failed.
class DirectSaveOffer final : public DragOffer {
 public:
  explicit DirectSaveOffer(XDisplay& display) : _display(display) {}

  std::vector<std::string> types() const override;
  void begin(xcb_window_t source) override;
  std::optional<std::string> dataForType(const std::string& type) override;
  const std::optional<std::string>& folder() const override { return _folder; }

 private:
  XDisplay& _display;
  xcb_window_t _source = XCB_NONE;
  std::optional<std::string> _folder;
};

}  // namespace quennel
