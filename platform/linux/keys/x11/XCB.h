#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

// The extension's header is C and has a field of this name.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#ifdef __clang__
#pragma clang diagnostic pop
#endif

namespace quennel {

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};

/// Owns a reply, an event or an error; null is none.
template <typename T>
using XCBReply = std::unique_ptr<T, FreeReply>;

struct CloseXCBConnection {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XCBConnection = std::unique_ptr<xcb_connection_t, CloseXCBConnection>;

}  // namespace quennel
