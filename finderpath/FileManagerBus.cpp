#include "finderpath/FileManagerBus.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace quennel {
namespace {

struct UnrefMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

constexpr std::uint64_t oneSecond = 1'000'000;

Message newCall(sd_bus* bus, const std::string& destination, const std::string& path,
                const char* interface, const char* member) {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(bus, &message, destination.c_str(), path.c_str(), interface,
                                     member) < 0) {
    return nullptr;
  }
  return Message(message);
}

/// Nothing on any failure. Never starts the program that is called.
Message send(sd_bus* bus, const Message& call) {
  sd_bus_message* reply = nullptr;
  if (!call || sd_bus_message_set_auto_start(call.get(), 0) < 0 ||
      sd_bus_call(bus, call.get(), oneSecond, nullptr, &reply) < 0) {
    return nullptr;
  }
  return Message(reply);
}

Message getProperty(sd_bus* bus, const std::string& destination, const std::string& path,
                    const char* interface, const char* property) {
  const Message call = newCall(bus, destination, path, "org.freedesktop.DBus.Properties", "Get");
  if (!call || sd_bus_message_append(call.get(), "ss", interface, property) < 0) {
    return nullptr;
  }
  return send(bus, call);
}

std::optional<std::vector<std::string>> readStrings(sd_bus_message* message) {
  std::vector<std::string> strings;
  if (sd_bus_message_enter_container(message, 'a', "s") < 0) {
    return std::nullopt;
  }
  const char* string = nullptr;
  while (sd_bus_message_read(message, "s", &string) > 0) {
    strings.emplace_back(string);
  }
  if (sd_bus_message_exit_container(message) < 0) {
    return std::nullopt;
  }
  return strings;
}

/// An entry of a dictionary of lists; false at its end, and on failure.
bool readEntry(sd_bus_message* message, std::map<std::string, std::vector<std::string>>& entries) {
  const char* key = nullptr;
  if (sd_bus_message_enter_container(message, 'e', "sas") <= 0 ||
      sd_bus_message_read(message, "s", &key) <= 0) {
    return false;
  }
  auto values = readStrings(message);
  if (!values || sd_bus_message_exit_container(message) < 0) {
    return false;
  }
  entries[key] = std::move(*values);
  return true;
}

}  // namespace

std::unique_ptr<FileManagerBus> FileManagerBus::open() {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) {
    return nullptr;
  }
  return std::unique_ptr<FileManagerBus>(new FileManagerBus(bus));
}

std::vector<std::string> FileManagerBus::names() const {
  const Message reply = send(handle(), newCall(handle(), "org.freedesktop.DBus", "/",
                                               "org.freedesktop.DBus", "ListNames"));
  auto names = reply ? readStrings(reply.get()) : std::nullopt;
  if (!names) {
    return {};
  }
  std::erase_if(*names, [](const std::string& name) { return name.starts_with(':'); });
  return *names;
}

std::optional<FileManagerBus::Locations> FileManagerBus::openWindowsWithLocations(
    const std::string& destination) const {
  const Message reply = getProperty(handle(), destination, "/org/freedesktop/FileManager1",
                                    "org.freedesktop.FileManager1", "OpenWindowsWithLocations");
  if (!reply || sd_bus_message_enter_container(reply.get(), 'v', "a{sas}") <= 0 ||
      sd_bus_message_enter_container(reply.get(), 'a', "{sas}") < 0) {
    return std::nullopt;
  }
  Locations locations;
  while (readEntry(reply.get(), locations)) {
  }
  return locations;
}

std::vector<std::string> FileManagerBus::children(const std::string& destination,
                                                  const std::string& path) const {
  const Message reply = send(
      handle(),
      newCall(handle(), destination, path, "org.freedesktop.DBus.Introspectable", "Introspect"));
  const char* description = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "s", &description) <= 0) {
    return {};
  }
  constexpr std::string_view opening = "<node name=\"";
  std::vector<std::string> names;
  std::string_view rest = description;
  for (auto at = rest.find(opening); at != std::string_view::npos; at = rest.find(opening)) {
    rest.remove_prefix(at + opening.size());
    names.emplace_back(rest.substr(0, rest.find('"')));
  }
  return names;
}

bool FileManagerBus::asks(const std::string& destination, const std::string& path,
                          const char* interface, const char* method,
                          const std::optional<std::string>& argument) const {
  const Message call = newCall(handle(), destination, path, interface, method);
  if (call && argument && sd_bus_message_append(call.get(), "s", argument->c_str()) < 0) {
    return false;
  }
  const Message reply = send(handle(), call);
  int answer = 0;
  return reply && sd_bus_message_read(reply.get(), "b", &answer) > 0 && answer != 0;
}

std::optional<std::string> FileManagerBus::textProperty(const std::string& destination,
                                                        const std::string& path,
                                                        const char* interface,
                                                        const char* property) const {
  const Message reply = getProperty(handle(), destination, path, interface, property);
  const char* text = nullptr;
  if (!reply || sd_bus_message_enter_container(reply.get(), 'v', "s") <= 0 ||
      sd_bus_message_read(reply.get(), "s", &text) <= 0) {
    return std::nullopt;
  }
  return text;
}

}  // namespace quennel
