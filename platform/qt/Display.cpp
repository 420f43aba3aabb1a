#include "platform/qt/Display.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/xcb.h>

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QList>
#include <QtCore/QStringList>
#include <algorithm>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {
namespace {

bool hasPlugin(const QString& pattern) {
  const QStringList folders = QCoreApplication::libraryPaths();
  return std::any_of(folders.begin(), folders.end(), [&](const QString& folder) {
    return !QDir(folder + "/platforms").entryList({pattern}, QDir::Files).isEmpty();
  });
}

bool reachesX11() {
  if (qEnvironmentVariableIsEmpty("DISPLAY") || !hasPlugin("libqxcb.so")) {
    return false;
  }
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  const bool reached = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return reached;
}

QByteArray waylandSocketPath() {
  const QByteArray name = qgetenv("WAYLAND_DISPLAY");
  return name.isEmpty() || name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name;
}

bool connects(const QByteArray& socketPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketPath.isEmpty() || socketPath.size() >= qsizetype{sizeof address.sun_path}) {
    return false;
  }
  std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
  const FileDescriptor descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return descriptor && connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address),
                               sizeof address) == 0;
}

bool reachesWayland() { return connects(waylandSocketPath()) && hasPlugin("libqwayland-*.so"); }

bool reaches(const QByteArray& platform) {
  if (platform.startsWith("xcb")) {
    return reachesX11();
  }
  // What is neither, such as "offscreen", needs no display.
  return !platform.startsWith("wayland") || reachesWayland();
}

}  // namespace

std::string reachablePlatforms() {
  const QByteArray wanted = qgetenv("QT_QPA_PLATFORM");
  QByteArrayList platforms = (wanted.isEmpty() ? QByteArray("xcb;wayland") : wanted).split(';');
  platforms.removeIf([](const QByteArray& platform) { return !reaches(platform); });
  return platforms.join(';').toStdString();
}

}  // namespace quennel
