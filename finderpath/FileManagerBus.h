#pragma once

#include <systemd/sd-bus.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quennel {

/// A connection to the session bus, with the calls that file managers answer. No call starts a
/// program; one that fails or takes longer than a second answers nothing.
class FileManagerBus {
 public:
  /// Nothing when there is no session bus.
  static std::unique_ptr<FileManagerBus> open();

  sd_bus* handle() const { return _bus.get(); }

  /// The folders that each window of Nautilus shows, as the URIs of its tabs, by the window's
  /// object path.
  using Locations = std::map<std::string, std::vector<std::string>>;
  std::optional<Locations> openWindowsWithLocations(const std::string& destination) const;

  /// The names on the bus, without the unique ones.
  std::vector<std::string> names() const;
  /// The names of the objects below an object of Qt.
  std::vector<std::string> children(const std::string& destination, const std::string& path) const;
  /// What a method that answers yes or no answers; false as well when it fails.
  bool asks(const std::string& destination, const std::string& path, const char* interface,
            const char* method, const std::optional<std::string>& argument = std::nullopt) const;
  std::optional<std::string> textProperty(const std::string& destination, const std::string& path,
                                          const char* interface, const char* property) const;

 private:
  struct Unref {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };

  explicit FileManagerBus(sd_bus* bus) : _bus(bus) {}

  std::unique_ptr<sd_bus, Unref> _bus;
};

}  // namespace quennel
