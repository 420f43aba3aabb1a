#include "tests/e2e/HelperTest.h"

#include <systemd/sd-bus.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "platform/values/URL.h"

namespace quennel::test {

namespace {

constexpr auto busName = "net.brellow.QuennelHelper";

void check(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), what);
  }
}

}  // namespace

struct HelperTest::Connection {
  explicit Connection(const std::string& address) {
    check(sd_bus_new(&bus), "sd_bus_new");
    check(sd_bus_set_address(bus, address.c_str()), "sd_bus_set_address");
    check(sd_bus_set_bus_client(bus, 1), "sd_bus_set_bus_client");
    check(sd_bus_start(bus), "sd_bus_start");
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { sd_bus_flush_close_unref(bus); }

  sd_bus* bus = nullptr;
};

void HelperTest::SetUp() {
  if (!PrivateBus::isAvailable()) {
    GTEST_SKIP() << PrivateBus::whatIsMissing;
  }
  for (const auto* name : {"home", "config", "runtime", "folder", "templates/project/src"}) {
    std::filesystem::create_directories(_root / name);
  }
  std::filesystem::permissions(_root / "runtime", std::filesystem::perms::owner_all);
  write(_root / "templates/note.txt", "Dear reader\n");
  write(_root / "templates/script.sh", "#!/bin/sh\n");
  write(_root / "templates/project/src/main.c", "int main;\n");
  auto script = templateRecord("script", "sh", "script.sh");
  script.insert_or_assign("executable", true);
  set("fileTemplates", PropertyList::Array{templateRecord("note", "txt", "note.txt"), script,
                                           templateRecord("project", "", "project")});
  set("skipFilename", true);
  set("playSound", false);
  set("showFileOnCreation", false);
  set("openFileOnCreation", false);
  grant(folder());
  _bus =
      std::make_unique<PrivateBus>(PrivateBus::Services{{busName, QUENNEL_HELPER}}, environment());
  _connection = std::make_shared<Connection>(_bus->address());
}

PropertyList::Dictionary HelperTest::templateRecord(const std::string& prefix,
                                                    const std::string& suffix,
                                                    const std::string& file) {
  return {{"title", prefix},
          {"prefix", prefix},
          {"suffix", suffix},
          {"filePath", file},
          {"enabled", true}};
}

void HelperTest::set(const std::string& key, PropertyList value) {
  if (key == "fileTemplates" && value.array()) {
    // File names stand for files among the test's templates.
    PropertyList::Array templates;
    for (const auto& entry : *value.array()) {
      auto record = *entry.dictionary();
      const auto file = *record.at("filePath").string();
      record.insert_or_assign("filePath", file[0] == '/' ? file : _root / ("templates/" + file));
      templates.emplace_back(record);
    }
    value = templates;
  }
  auto defaults = settings();
  defaults.setObject(std::move(value), key);
  ASSERT_TRUE(defaults.synchronize());
}

void HelperTest::grant(const std::string& folder) const {
  ASSERT_EQ(Process({QUENNEL_CTL, "grant", folder}, environment()).wait(), 0);
}

Process::Environment HelperTest::environment() const {
  return {{"HOME", _root / "home"},
          {"XDG_CONFIG_HOME", _root / "config"},
          {"XDG_DATA_HOME", _root / "home/.local/share"},
          {"XDG_RUNTIME_DIR", _root / "runtime"},
          {"DBUS_SESSION_BUS_ADDRESS", _bus ? _bus->address() : ""},
          {"DISPLAY", ""},
          {"WAYLAND_DISPLAY", ""},
          {"LC_ALL", "C.UTF-8"}};
}

std::string HelperTest::settingsPath() const {
  return _root / "config/Q4T7N2W9X5.net.brellow.Quennel.plist";
}

Process HelperTest::startHelper(const std::vector<std::string>& urls) {
  std::vector<std::string> arguments{QUENNEL_HELPER};
  arguments.insert(arguments.end(), urls.begin(), urls.end());
  return Process(arguments, environment());
}

Process HelperTest::startReadyHelper() {
  Process helper = startHelper();
  EXPECT_TRUE(eventually([&] { return ownsName(); }));
  return helper;
}

bool HelperTest::ownsName() const {
  int owned = 0;
  sd_bus_message* reply = nullptr;
  check(sd_bus_call_method(_connection->bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s", busName),
        "NameHasOwner");
  check(sd_bus_message_read(reply, "b", &owned), "NameHasOwner's answer");
  sd_bus_message_unref(reply);
  return owned != 0;
}

void HelperTest::open(const std::vector<std::string>& urls, const std::string& token) {
  sd_bus_message* call = nullptr;
  check(
      sd_bus_message_new_method_call(_connection->bus, &call, busName, "/net/brellow/QuennelHelper",
                                     "org.freedesktop.Application", "Open"),
      "Open");
  check(sd_bus_message_open_container(call, 'a', "s"), "Open's URLs");
  for (const auto& url : urls) {
    check(sd_bus_message_append(call, "s", url.c_str()), "Open's URL");
  }
  check(sd_bus_message_close_container(call), "Open's URLs");
  check(token.empty()
            ? sd_bus_message_append(call, "a{sv}", 0)
            : sd_bus_message_append(call, "a{sv}", 1, "activation-token", "s", token.c_str()),
        "Open's platform data");
  const int result = sd_bus_call(_connection->bus, call, 0, nullptr, nullptr);
  sd_bus_message_unref(call);
  check(result, "Open");
}

void HelperTest::send(const std::string& url) {
  check(sd_bus_call_method_async(_connection->bus, nullptr, busName, "/net/brellow/QuennelHelper",
                                 "org.freedesktop.Application", "Open", nullptr, nullptr, "asa{sv}",
                                 1, url.c_str(), 0),
        "Open");
}

void HelperTest::command(const std::string& object) {
  check(sd_bus_emit_signal(_connection->bus, "/net/brellow/DistributedNotificationCenter",
                           "net.brellow.DistributedNotificationCenter", "Posted", "ssa{sv}",
                           busName, object.c_str(), 0),
        "Posted");
  check(sd_bus_flush(_connection->bus), "flush");
}

std::string HelperTest::requestFor(const std::string& folder, const std::string& query) const {
  return urlForDirectory("quennel", folder, query);
}

bool HelperTest::exists(const std::string& path) { return std::filesystem::exists(path); }

std::string HelperTest::contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void HelperTest::write(const std::string& path, const std::string& contents) {
  std::ofstream(path) << contents;
}

bool HelperTest::eventuallyExists(const std::string& path) {
  return eventually([&] { return exists(path); });
}

std::size_t HelperTest::countEntries(const std::string& folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
    ++count;
  }
  return count;
}

}  // namespace quennel::test
