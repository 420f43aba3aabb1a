#include "platform/linux/desktop/DesktopWorkspace.h"

#include <algorithm>

#include "platform/linux/bus/BusTypes.h"
#include "platform/values/Path.h"
#include "platform/values/URL.h"

namespace quennel {

/// One call of ShowItems, until it is answered. What it could not show is opened as a folder.
class DesktopWorkspace::Reveal {
 public:
  Reveal(DesktopWorkspace& workspace, std::string folder)
      : _workspace(workspace), _folder(std::move(folder)) {}

  /// False when the call cannot even be sent.
  bool send(sd_bus* connection, const std::vector<std::string>& paths) {
    sd_bus_message* created = nullptr;
    if (!connection ||
        sd_bus_message_new_method_call(connection, &created, "org.freedesktop.FileManager1",
                                       "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowItems") < 0) {
      return false;
    }
    const BusMessage call(created);
    if (!appendItems(call.get(), paths)) {
      return false;
    }
    sd_bus_slot* slot = nullptr;
    // A file manager that is started for this takes its time.
    constexpr std::uint64_t timeout = 30'000'000;
    if (sd_bus_call_async(connection, &slot, call.get(), answered, this, timeout) < 0) {
      return false;
    }
    _slot.reset(slot);
    return true;
  }

 private:
  static bool appendItems(sd_bus_message* call, const std::vector<std::string>& paths) {
    if (sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "s") < 0) {
      return false;
    }
    for (const std::string& path : paths) {
      if (sd_bus_message_append(call, "s", fileURL(path).c_str()) < 0) {
        return false;
      }
    }
    return sd_bus_message_close_container(call) >= 0 && sd_bus_message_append(call, "s", "") >= 0;
  }

  static int answered(sd_bus_message* answer, void* self, sd_bus_error*) {
    auto& reveal = *static_cast<Reveal*>(self);
    DesktopWorkspace& workspace = reveal._workspace;
    if (sd_bus_message_is_method_error(answer, nullptr)) {
      workspace._bus.runLoop().dispatchAsync(
          [&workspace, folder = reveal._folder] { workspace.openFile(folder); });
    }
    const auto isThis = [&reveal](const auto& other) { return other.get() == &reveal; };
    std::erase_if(workspace._reveals, isThis);
    return 0;
  }

  DesktopWorkspace& _workspace;
  std::string _folder;
  BusSlot _slot;
};

DesktopWorkspace::DesktopWorkspace(EventRunLoop& runLoop, SessionBus& bus)
    : _bus(bus), _launcher(runLoop) {}

DesktopWorkspace::~DesktopWorkspace() = default;

void DesktopWorkspace::activateFileViewerSelectingItems(const std::vector<std::string>& paths) {
  if (paths.empty()) {
    return;
  }
  const std::string folder = deletingLastPathComponent(paths.front());
  auto reveal = std::make_unique<Reveal>(*this, folder);
  if (reveal->send(_bus.connection(), paths)) {
    _reveals.push_back(std::move(reveal));
  } else {
    openFile(folder);
  }
}

bool DesktopWorkspace::openFile(const std::string& path) {
  return _launcher.start({"xdg-open", path});
}

}  // namespace quennel
