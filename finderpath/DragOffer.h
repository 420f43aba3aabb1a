#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <string>
#include <vector>

namespace quennel {

/// What a drag has to offer, made to be told where a file would go and to give none.
class DragOffer {
 public:
  virtual ~DragOffer() = default;

  /// The types to offer, up to three.
  virtual std::vector<std::string> types() const = 0;

  /// A new drag begins; `source` is its window.
  virtual void begin(xcb_window_t source) = 0;

  /// What to hand over when the target asks for the type; nothing refuses.
  virtual std::optional<std::string> dataForType(const std::string& type) = 0;

  /// The folder that the target wants the file in, once it has told it: absolute, without slashes
  /// at the end.
  virtual const std::optional<std::string>& folder() const = 0;

  /// A descriptor that becomes readable when `serve` has something to do; -1 is none.
  virtual int descriptor() const { return -1; }
  virtual void serve() {}
};

}  // namespace quennel
