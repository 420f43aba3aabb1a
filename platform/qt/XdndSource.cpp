#include "platform/qt/XdndSource.h"

#include <QtGui/qguiapplication_platform.h>

#include <QtCore/QEvent>
#include <QtCore/QMimeData>
#include <QtWidgets/QApplication>
#include <utility>

#include "platform/linux/filemanagers/DropType.h"
#include "platform/linux/x11/XCB.h"
#include "platform/qt/DropTargets.h"

namespace quennel {
namespace {

constexpr std::uint32_t longestProperty = 16384;  // in units of four bytes

xcb_connection_t* connectionOfToolkit() {
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

}  // namespace

std::unique_ptr<XdndSource> XdndSource::create(const QMimeData& data, QByteArray fileName) {
  xcb_connection_t* const connection = connectionOfToolkit();
  return connection
             ? std::unique_ptr<XdndSource>(new XdndSource(connection, data, std::move(fileName)))
             : nullptr;
}

XdndSource::XdndSource(xcb_connection_t* connection, const QMimeData& data, QByteArray fileName)
    : _connection(connection),
      _root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root),
      _data(data),
      _fileName(std::move(fileName)) {
  qApp->installNativeEventFilter(this);
  // Before the toolkit's own filter, which it installs as the drag begins and which announces the
  // drag to the target: the one that was installed last is asked first.
  startTimer(0);
}

XdndSource::~XdndSource() {
  qApp->removeNativeEventFilter(this);
  if (_source != XCB_NONE) {
    xcb_delete_property(_connection, _source, atom(drop_type::directSave));
    xcb_flush(_connection);
  }
}

void XdndSource::nameFile() {
  if (_source != XCB_NONE) {
    return;
  }
  const XCBReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      _connection, xcb_get_selection_owner(_connection, atom("XdndSelection")), nullptr));
  if (!owner || owner->owner == XCB_NONE) {
    return;
  }
  _source = owner->owner;
  xcb_change_property(_connection, XCB_PROP_MODE_REPLACE, _source, atom(drop_type::directSave),
                      atom("text/plain"), 8, static_cast<std::uint32_t>(_fileName.size()),
                      _fileName.constData());
  xcb_flush(_connection);
}

QByteArray XdndSource::whereToSave() const {
  QByteArray uri = property(_source, drop_type::directSave);
  if (const auto end = uri.indexOf('\0'); end >= 0) {
    uri.truncate(end);
  }
  return uri == _fileName ? QByteArray() : uri;
}

bool XdndSource::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
  const auto* const event = static_cast<const xcb_generic_event_t*>(message);
  constexpr unsigned withoutSentFlag = 0x7F;
  if ((event->response_type & withoutSentFlag) != XCB_SELECTION_REQUEST) {
    return false;
  }
  const auto& request = *static_cast<const xcb_selection_request_event_t*>(message);
  if (_source == XCB_NONE || request.selection != atom("XdndSelection")) {
    return false;
  }
  answer(request);
  return true;
}

void XdndSource::timerEvent(QTimerEvent* event) {
  killTimer(event->timerId());
  qApp->installEventFilter(this);
}

bool XdndSource::eventFilter(QObject*, QEvent* event) {
  if (event->type() == QEvent::MouseMove && _source != XCB_NONE) {
    offerTo(classOfWindowUnderPointer());
  }
  return false;
}

void XdndSource::offerTo(const QByteArray& windowClass) {
  if (_target == windowClass) {
    return;
  }
  _target = windowClass;
  const std::vector<xcb_atom_t> types = offeredTypes();
  xcb_change_property(_connection, XCB_PROP_MODE_REPLACE, _source, atom("XdndTypeList"),
                      XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(types.size()), types.data());
  xcb_flush(_connection);
}

std::vector<xcb_atom_t> XdndSource::offeredTypes() const {
  std::vector<xcb_atom_t> types;
  for (const QString& format : _data.formats()) {
    if (!_target || isOfferedTo(*_target, format)) {
      types.push_back(atom(format.toUtf8()));
    }
  }
  return types;
}

void XdndSource::answer(const xcb_selection_request_event_t& request) const {
  const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
  // The server reads as many bytes as its largest event has.
  union {
    xcb_selection_notify_event_t event;
    char bytes[32];
  } notification{};
  notification.event.response_type = XCB_SELECTION_NOTIFY;
  notification.event.time = request.time;
  notification.event.requestor = request.requestor;
  notification.event.selection = request.selection;
  notification.event.target = request.target;
  notification.event.property = putData(request, property) ? property : xcb_atom_t{XCB_ATOM_NONE};
  xcb_send_event(_connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, notification.bytes);
  xcb_flush(_connection);
}

bool XdndSource::putData(const xcb_selection_request_event_t& request, xcb_atom_t property) const {
  const QByteArray type = nameOf(request.target);
  if (type == "TARGETS") {
    const std::vector<xcb_atom_t> types = offeredTypes();
    xcb_change_property(_connection, XCB_PROP_MODE_REPLACE, request.requestor, property,
                        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(types.size()), types.data());
    return true;
  }
  if (!_data.hasFormat(type)) {
    return false;
  }
  const QByteArray data = _data.data(type);
  xcb_change_property(_connection, XCB_PROP_MODE_REPLACE, request.requestor, property,
                      request.target, 8, static_cast<std::uint32_t>(data.size()), data.constData());
  return true;
}

xcb_atom_t XdndSource::atom(const QByteArray& name) const {
  const XCBReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
      _connection,
      xcb_intern_atom(_connection, 0, static_cast<std::uint16_t>(name.size()), name.constData()),
      nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

QByteArray XdndSource::nameOf(xcb_atom_t atom) const {
  const XCBReply<xcb_get_atom_name_reply_t> reply(
      xcb_get_atom_name_reply(_connection, xcb_get_atom_name(_connection, atom), nullptr));
  return reply ? QByteArray(xcb_get_atom_name_name(reply.get()),
                            xcb_get_atom_name_name_length(reply.get()))
               : QByteArray();
}

QByteArray XdndSource::property(xcb_window_t window, const char* name) const {
  const auto cookie = xcb_get_property(_connection, 0, window, atom(name),
                                       XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty);
  const XCBReply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(_connection, cookie, nullptr));
  return reply ? QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                            xcb_get_property_value_length(reply.get()))
               : QByteArray();
}

std::vector<xcb_window_t> XdndSource::windowsFromTheTop() const {
  const QByteArray bytes = property(_root, "_NET_CLIENT_LIST_STACKING");
  const auto* const first = reinterpret_cast<const xcb_window_t*>(bytes.constData());
  const auto count = static_cast<std::size_t>(bytes.size()) / sizeof(xcb_window_t);
  std::vector<xcb_window_t> windows(first, first + count);
  return {windows.rbegin(), windows.rend()};
}

bool XdndSource::isUnder(xcb_window_t window, int x, int y) const {
  const XCBReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
      _connection, xcb_get_window_attributes(_connection, window), nullptr));
  const XCBReply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(_connection, xcb_get_geometry(_connection, window), nullptr));
  const XCBReply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
      _connection,
      xcb_translate_coordinates(_connection, _root, window, static_cast<std::int16_t>(x),
                                static_cast<std::int16_t>(y)),
      nullptr));
  return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE && geometry && place &&
         place->dst_x >= 0 && place->dst_y >= 0 && place->dst_x < geometry->width &&
         place->dst_y < geometry->height;
}

QByteArray XdndSource::classOfWindowUnderPointer() const {
  const XCBReply<xcb_query_pointer_reply_t> pointer(
      xcb_query_pointer_reply(_connection, xcb_query_pointer(_connection, _root), nullptr));
  if (!pointer) {
    return {};
  }
  // What hangs at the pointer itself is none of these.
  for (const xcb_window_t window : windowsFromTheTop()) {
    if (isUnder(window, pointer->root_x, pointer->root_y)) {
      return property(window, "WM_CLASS");
    }
  }
  return {};
}

}  // namespace quennel
