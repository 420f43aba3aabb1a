#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace quennel {

struct FreeXCBReply {
  void operator()(void* reply) const { std::free(reply); }
};

/// Owns a reply, an event or an error; null is none.
template <typename T>
using XCBReply = std::unique_ptr<T, FreeXCBReply>;

struct CloseXCBConnection {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XCBConnection = std::unique_ptr<xcb_connection_t, CloseXCBConnection>;

}  // namespace quennel
