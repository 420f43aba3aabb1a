#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ImageView.h"

namespace quennel {

class FileManager;
class PasteboardItem;
class SecurityScope;

/// Is told how a drag with a `DragDropImageView` ended. Both operations are optional.
class DragDropImageViewDelegate {
 public:
  virtual ~DragDropImageViewDelegate() = default;

  /// `path` was written where the user dropped it; or it was dropped onto the view, where nothing
  /// means something that is not a file.
  virtual void dropComplete(const std::optional<std::string>& path) { static_cast<void>(path); }
  /// `path` could not be written.
  virtual void dropFail(const std::optional<std::string>& path) { static_cast<void>(path); }
};

/// The behaviour of an image view that stands for one file: the user drags it into a folder of the
/// file manager, where a copy of the file is written, executable. It can also take a file that is
/// dropped onto it, if the owner wants that. Main thread only, but for `path` and `destDir`.
class DragDropImageView : public ImageViewResponder {
 public:
  /// Nothing is owned. The file may be dragged out and nothing may be dropped.
  DragDropImageView(ImageView& view, FileManager& fileManager, SecurityScope& securityScope);
  DragDropImageView(const DragDropImageView&) = delete;
  DragDropImageView& operator=(const DragDropImageView&) = delete;
  ~DragDropImageView() override;

  void setImage(std::shared_ptr<const Image> image) { _view.setImage(std::move(image)); }
  void setToolTip(const std::string& text) { _view.setToolTip(text); }

  bool allowDrag() const { return _allowDrag; }
  void setAllowDrag(bool allow) { _allowDrag = allow; }
  bool allowDrop() const { return _allowDrop; }
  void setAllowDrop(bool allow) { _allowDrop = allow; }
  /// Not owned; may be null.
  DragDropImageViewDelegate* delegate() const { return _delegate; }
  void setDelegate(DragDropImageViewDelegate* delegate) { _delegate = delegate; }
  /// The file that the view stands for. Read only when it is dropped somewhere.
  std::optional<std::string> path() const override;
  void setPath(std::optional<std::string> path);
  /// For the owner: the view does not look at it.
  std::optional<std::string> destDir() const;
  void setDestDir(std::optional<std::string> destDir);

  /// Gives the file the permissions rwxr-xr-x; whether no error was reported.
  bool makeItemExecutableAtPath(const std::string& path);
  /// The frame of a window whose content is as large as the image and stays where this view's
  /// window is.
  Rect windowWillUseStandardFrame(const Window& window, const Rect& defaultFrame);
  /// Puts a picture of the view on an item that is to be a file.
  void provideDataForType(PasteboardItem& item, const std::string& type) const;

  void mouseDown(const MouseEvent& event) override;
  bool acceptsFirstMouse() const override { return true; }
  void dragImage(std::shared_ptr<const Image> image, Point at, Point offset,
                 const MouseEvent& event, SlideBack slideBack) override;
  unsigned draggingSessionSourceOperationMask(DraggingContext context) const override;
  std::vector<std::string> namesOfPromisedFilesDroppedAtDestination(
      const std::string& destination) override;

  DragOperation draggingEntered(DraggingInfo& info) override;
  void draggingExited() override;
  bool prepareForDragOperation(DraggingInfo& info) override;
  bool performDragOperation(DraggingInfo& info) override;
  void drawRect(GraphicsContext& context, const Rect& rect) override;

 private:
  bool writeFile(const std::string& target);
  void setHighlight(bool highlight);

  ImageView& _view;
  FileManager& _fileManager;
  SecurityScope& _securityScope;
  bool _highlight = false;
  bool _allowDrag = true;
  bool _allowDrop = false;
  DragDropImageViewDelegate* _delegate = nullptr;
  mutable std::mutex _mutex;  // guards what follows
  std::optional<std::string> _path;
  std::optional<std::string> _destDir;
};

}  // namespace quennel
