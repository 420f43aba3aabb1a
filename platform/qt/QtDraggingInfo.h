#pragma once

#include "platform/Dragging.h"

class QDropEvent;

namespace quennel {

/// A drag of the toolkit over one of its widgets.
class QtDraggingInfo : public DraggingInfo {
 public:
  /// `source` is the view of the helper that the drag comes from, or null. Neither is owned.
  QtDraggingInfo(const QDropEvent& event, const ImageViewResponder* source)
      : _event(event), _source(source) {}

  const ImageViewResponder* draggingSource() const override { return _source; }
  unsigned draggingSourceOperationMask() const override;
  bool canInitImage() const override;
  std::shared_ptr<const Image> image() const override;
  std::optional<std::string> fileURLPath() const override;
  void enumerateDraggingItems(const std::function<bool(DraggingItem&)>& visit) override;

 private:
  const QDropEvent& _event;
  const ImageViewResponder* _source;
};

}  // namespace quennel
