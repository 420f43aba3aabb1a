#pragma once

#include "platform/Dragging.h"

class QDropEvent;

namespace quennel {

/// A drag of the toolkit over one of its widgets.
class QtDraggingInfo : public DraggingInfo {
 public:
  /// `event` is not owned.
  explicit QtDraggingInfo(const QDropEvent& event) : _event(event) {}

  const ImageViewResponder* draggingSource() const override;
  unsigned draggingSourceOperationMask() const override;
  bool canInitImage() const override;
  std::shared_ptr<const Image> image() const override;
  std::optional<std::string> fileURLPath() const override;
  void enumerateDraggingItems(const std::function<bool(DraggingItem&)>& visit) override;

 private:
  const QDropEvent& _event;
};

}  // namespace quennel
