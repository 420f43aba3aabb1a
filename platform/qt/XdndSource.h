#pragma once

#include <xcb/xcb.h>

#include <QtCore/QAbstractNativeEventFilter>
#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QMimeData;

namespace quennel {

/// What the toolkit lacks in the drags that it makes on X11 (the protocol XDND):
/// - a file can be saved by the target, which then learns its name from a property of the drag's
///   window and puts there where it is to be saved;
/// - each target is offered the types that lead to that;
/// - every request for data is answered. The toolkit refuses some in a way that lets GTK wait for
///   ever.
class XdndSource : public QObject, public QAbstractNativeEventFilter {
 public:
  /// Null where there is no X11. `data` is what is dragged; it is not owned.
  static std::unique_ptr<XdndSource> create(const QMimeData& data, QByteArray fileName);
  ~XdndSource() override;

  /// Tells the name of the file, from when there is a drag.
  void nameFile();
  /// The URI that the target has put in the place of the name; empty before.
  QByteArray whereToSave() const;

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  XdndSource(xcb_connection_t* connection, const QMimeData& data, QByteArray fileName);

  xcb_atom_t atom(const QByteArray& name) const;
  QByteArray nameOf(xcb_atom_t atom) const;
  QByteArray property(xcb_window_t window, const char* name) const;
  std::vector<xcb_window_t> windowsFromTheTop() const;
  bool isUnder(xcb_window_t window, int x, int y) const;
  QByteArray classOfWindowUnderPointer() const;

  void offerTo(const QByteArray& windowClass);
  std::vector<xcb_atom_t> offeredTypes() const;
  void answer(const xcb_selection_request_event_t& request) const;
  bool putData(const xcb_selection_request_event_t& request, xcb_atom_t property) const;

  xcb_connection_t* _connection;
  xcb_window_t _root;
  const QMimeData& _data;
  QByteArray _fileName;
  xcb_window_t _source = XCB_NONE;
  std::optional<QByteArray> _target;
};

}  // namespace quennel
